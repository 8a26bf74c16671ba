#include "runtime/GlslValidator.h"

#include <glslang/Public/ResourceLimits.h>
#include <glslang/Public/ShaderLang.h>

#include <QRegularExpression>

#include <mutex>

namespace runtime {

namespace {

// Sources without #version are GLSL 1.10 to a driver; 1.20 accepts all of
// that and what Quartz Composer's files add from 1.20.
constexpr int kDefaultVersion = 120;

void initializeOnce()
{
    static std::once_flag once;
    // The process-wide tables glslang needs; they live until exit.
    std::call_once(once, [] { glslang::InitializeProcess(); });
}

}  // namespace

QStringList glslErrors(const QString& source, ShaderStage stage)
{
    initializeOnce();
    glslang::TShader shader(stage == ShaderStage::Vertex ? EShLangVertex : EShLangFragment);
    const QByteArray text = source.toUtf8();
    const char* strings[] = {text.constData()};
    const int lengths[] = {int(text.size())};
    shader.setStringsWithLengths(strings, lengths, 1);
    // glslang stops at the first error, as drivers mostly do; going on
    // would list the errors that follow from it.
    const auto messages = EShMsgDefault;
    if (shader.parse(GetDefaultResources(), kDefaultVersion, ENoProfile, false, false, messages)) {
        // Linking the stage alone finds what a compile does not: no main().
        glslang::TProgram program;
        program.addShader(&shader);
        if (program.link(messages)) return {};
        QStringList errors;
        for (const QString& line : QString::fromUtf8(program.getInfoLog()).split(u'\n', Qt::SkipEmptyParts))
            if (line.startsWith(QLatin1String("ERROR:"))) errors << line.mid(6).trimmed();
        if (errors.isEmpty()) errors << QStringLiteral("the stage does not link");
        return errors;
    }

    // "ERROR: 0:5: 'foo' : undeclared identifier" → "line 5: 'foo' : …";
    // glslang's closing summary lines carry no place and are dropped.
    static const QRegularExpression located(QStringLiteral(R"(^ERROR:\s*\d+:(\d+):\s*(.*)$)"));
    QStringList errors;
    for (const QString& line : QString::fromUtf8(shader.getInfoLog()).split(u'\n', Qt::SkipEmptyParts)) {
        const auto match = located.match(line.trimmed());
        if (!match.hasMatch()) continue;
        const QString message = match.captured(2).trimmed();
        if (message.endsWith(QLatin1String("compilation terminated"))) continue;
        errors << QStringLiteral("line %1: %2").arg(match.captured(1), message);
    }
    if (errors.isEmpty()) errors << QString::fromUtf8(shader.getInfoLog()).trimmed();
    return errors;
}

}  // namespace runtime
