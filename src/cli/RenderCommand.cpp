// velloran-cli render FILE.qtz|DOC.composition --time T [--size WxH] [--backend gl|raster] [--input KEY=VALUE]... -o OUT.png

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "document/CompositionDocument.h"
#include "playout/Player.h"
#include "runtime/BackendFactory.h"
#include "runtime/Renderer.h"

#include <QColor>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QImage>
#include <QRegularExpression>

#include <cmath>
#include <optional>

namespace cli {

namespace {


struct RenderRequest {
    std::optional<runtime::BackendPreference> backend;
    QString file;
    double time = 0;
    bool hasTime = false;
    QSize size{640, 480};
    QList<QPair<QString, QString>> inputs;
    QString output;
    bool hasSize = false;
};

// Returns an empty string on success, else the usage problem.
QString parseArguments(const QStringList& args, RenderRequest& r)
{
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        const bool hasValue = i + 1 < args.size();
        if (a == QLatin1String("--time")) {
            bool ok = false;
            if (hasValue) r.time = args[++i].toDouble(&ok);
            if (!ok || !std::isfinite(r.time)) return QStringLiteral("--time needs a number of seconds");
            r.hasTime = true;
        } else if (a == QLatin1String("--backend")) {
            const auto preference = hasValue ? runtime::backendPreferenceFromName(args[++i]) : std::nullopt;
            if (!preference) return QStringLiteral("--backend is gl or raster");
            r.backend = preference;
        } else if (a == QLatin1String("--size")) {
            if (!hasValue) return QStringLiteral("--size needs WIDTHxHEIGHT");
            if (const QString problem = readFrameSize(args[++i], &r.size); !problem.isEmpty()) return problem;
            r.hasSize = true;
        } else if (a == QLatin1String("--input")) {
            const qsizetype eq = hasValue ? args[i + 1].indexOf(QLatin1Char('=')) : -1;
            if (eq <= 0) return QStringLiteral("--input needs KEY=VALUE");
            ++i;
            r.inputs.append({args[i].left(eq), args[i].mid(eq + 1)});
        } else if (a == QLatin1String("-o")) {
            if (!hasValue) return QStringLiteral("-o needs a file name");
            r.output = args[++i];
        } else if (a.startsWith(QLatin1Char('-')) || !r.file.isEmpty()) {
            return QStringLiteral("unexpected argument '%1'").arg(a);
        } else {
            r.file = a;
        }
    }
    if (r.file.isEmpty()) return QStringLiteral("no composition file");
    if (!r.hasTime) return QStringLiteral("--time is required");
    if (r.output.isEmpty()) return QStringLiteral("-o OUT.png is required");
    return {};
}

// The text of --input as a value of the port's type.
std::optional<QVariant> parseValue(const runtime::PortDescription& port, const QString& text, QString* error)
{
    switch (port.type) {
    case runtime::PortType::Number:
    case runtime::PortType::Index: {
        bool ok = false;
        const double d = text.toDouble(&ok);
        if (!ok) {
            *error = QStringLiteral("%1 needs a number, not '%2'").arg(port.key, text);
            return std::nullopt;
        }
        return d;
    }
    case runtime::PortType::Boolean:
        if (text == QLatin1String("true") || text == QLatin1String("1")) return true;
        if (text == QLatin1String("false") || text == QLatin1String("0")) return false;
        *error = QStringLiteral("%1 needs true or false, not '%2'").arg(port.key, text);
        return std::nullopt;
    case runtime::PortType::Color: {
        static const QRegularExpression re(QStringLiteral("^#([0-9A-Fa-f]{6})([0-9A-Fa-f]{2})?$"));
        const auto m = re.match(text);
        if (!m.hasMatch()) {
            *error = QStringLiteral("%1 needs a colour #RRGGBB or #RRGGBBAA, not '%2'").arg(port.key, text);
            return std::nullopt;
        }
        QColor c(QLatin1Char('#') + m.captured(1));
        if (!m.captured(2).isEmpty()) c.setAlpha(m.captured(2).toInt(nullptr, 16));
        return c;
    }
    case runtime::PortType::Image: {
        QImage image(text);
        if (image.isNull()) {
            *error = QStringLiteral("%1: cannot read image '%2'").arg(port.key, text);
            return std::nullopt;
        }
        return image;
    }
    default: return text;
    }
}

// A document is played as its preview is: the export with the background,
// from 0 to the time asked for in the steps of its video mode, the trigger
// pulsed at every stop frame.
int renderDocument(const RenderRequest& request, Streams& io)
{
    if (!request.inputs.isEmpty()) {
        io.err << "velloran-cli: --input applies to .qtz files; change a document with doc apply\n";
        return kUsage;
    }
    QString error;
    auto document = document::CompositionDocument::open(request.file, &error);
    if (!document) {
        io.err << "velloran-cli: cannot open " << request.file << ": " << error << "\n";
        return kFailure;
    }
    QTemporaryDir scratch;
    auto played = playout::exportForPlayout(*document, {true, scratch.filePath(QStringLiteral("Preview.qtz"))}, &error);
    if (!played) {
        io.err << "velloran-cli: cannot export " << request.file << ": " << error << "\n";
        return kFailure;
    }
    playout::Player player;
    player.load(*played, playout::PlayerOptions{true, request.hasSize ? request.size : QSize(), true});
    player.playTo(request.time);
    // The whole picture at that moment, both fields of an interlaced mode.
    if (!player.stepImage().save(request.output, "PNG")) {
        io.err << "velloran-cli: cannot write " << request.output << "\n";
        return kFailure;
    }
    return kSuccess;
}

}  // namespace

int runRenderCommand(const QStringList& args, Streams& io)
{
    RenderRequest request;
    const QString usageProblem = parseArguments(args, request);
    if (!usageProblem.isEmpty()) {
        io.err << "velloran-cli render: " << usageProblem << "\n"
               << "usage: velloran-cli render FILE.qtz|DOC.composition --time T [--size WxH] [--backend gl|raster] [--input KEY=VALUE]... -o OUT.png\n";
        return kUsage;
    }
    const runtime::ScopedBackendPreference backend(request.backend);
    QString error;
    if (QFileInfo(request.file).isDir() || request.file.endsWith(QLatin1String(".composition")))
        return renderDocument(request, io);
    const auto composition = runtime::Composition::loadFile(request.file, &error);
    if (!composition) {
        io.err << "velloran-cli: cannot load " << request.file << ": " << error << "\n";
        return kFailure;
    }
    runtime::Renderer renderer(composition, request.size);
    for (const auto& [key, text] : request.inputs) {
        const runtime::PortDescription* port = composition->input(key);
        if (!port) {
            io.err << "velloran-cli: " << request.file << " has no input '" << key << "'\n";
            return kFailure;
        }
        const auto value = parseValue(*port, text, &error);
        if (!value) {
            io.err << "velloran-cli: " << error << "\n";
            return kFailure;
        }
        renderer.setInputValue(key, *value);
    }
    renderer.render(request.time);
    if (!renderer.snapshot().save(request.output, "PNG")) {
        io.err << "velloran-cli: cannot write " << request.output << "\n";
        return kFailure;
    }
    return kSuccess;
}

}  // namespace cli
