#include "runtime/gl/GlProgramCheck.h"

#include "runtime/gl/GlContext.h"

#include <QOpenGLShader>

namespace runtime {

namespace {

QString text(const plist::Value& node, std::string_view key)
{
    const plist::Value* value = node.find(key);
    return value ? QString::fromStdString(value->string()) : QString();
}

// Every GLSL Shader node below `patch` (a node's "state"), with its path.
void collect(const plist::Value& state, const QString& path, int depth,
             std::vector<std::pair<QString, const plist::Value*>>& found)
{
    const plist::Value* nodes = state.find("nodes");
    if (!nodes || !nodes->isArray() || depth > 48) return;
    for (const plist::Value& node : nodes->array()) {
        const plist::Value* nodeState = node.find("state");
        if (!nodeState || !nodeState->isDictionary()) continue;
        const QString where = path.isEmpty() ? text(node, "key") : path + QLatin1Char('/') + text(node, "key");
        if (text(node, "class") == QLatin1String("QCGLSLShader")) found.emplace_back(where, nodeState);
        collect(*nodeState, where, depth + 1, found);
    }
}

// A driver's log, one error a line (never none: a failure says so).
QStringList logLines(const QString& log)
{
    QStringList lines;
    for (const QString& line : log.split(u'\n', Qt::SkipEmptyParts))
        if (!line.trimmed().isEmpty()) lines << line.trimmed();
    if (lines.isEmpty()) lines << QStringLiteral("no log");
    return lines;
}

}  // namespace

std::optional<QStringList> programProblemsFromDriver(const Composition& composition)
{
    std::vector<std::pair<QString, const plist::Value*>> shaders;
    const plist::Value* root = composition.document().find("rootPatch");
    const plist::Value* rootState = root ? root->find("state") : nullptr;
    if (rootState) collect(*rootState, QString(), 0, shaders);
    if (shaders.empty()) return QStringList();
    const auto context = GlContext::forThisThread();
    if (!context || !context->makeCurrent()) return std::nullopt;

    QStringList problems;
    for (const auto& [path, state] : shaders) {
        QOpenGLShaderProgram program;
        bool compiled = true;
        const struct {
            const char* key;
            QOpenGLShader::ShaderTypeBit type;
            const char* name;
        } stages[] = {{"vertexShader", QOpenGLShader::Vertex, "vertex"}, {"fragmentShader", QOpenGLShader::Fragment, "fragment"}};
        for (const auto& stage : stages) {
            const QString source = text(*state, stage.key);
            if (source.trimmed().isEmpty()) continue;
            auto shader = new QOpenGLShader(stage.type, &program);
            if (!shader->compileSourceCode(source)) {
                compiled = false;
                for (const QString& line : logLines(shader->log()))
                    problems << QStringLiteral("%1: the OpenGL driver does not compile the %2 shader: %3")
                                    .arg(path, QLatin1String(stage.name), line);
                continue;
            }
            program.addShader(shader);
        }
        if (compiled && !program.link())
            for (const QString& line : logLines(program.log()))
                problems << QStringLiteral("%1: the OpenGL driver does not link the program: %2").arg(path, line);
    }
    return problems;
}

}  // namespace runtime
