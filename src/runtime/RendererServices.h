#pragma once
// What a renderer offers its patches besides ports: the user-information
// dictionary, the composition's folder for relative paths, logging, and
// the JavaScript engine its script patches share.

#include <QLoggingCategory>
#include <QSet>
#include <QString>
#include <QVariantMap>

#include <memory>

Q_DECLARE_LOGGING_CATEGORY(lcRuntime)

namespace runtime {

class ScriptEngine;

class RendererServices {
public:
    RendererServices();
    ~RendererServices();
    RendererServices(const RendererServices&) = delete;
    RendererServices& operator=(const RendererServices&) = delete;

    QVariantMap userInfo;
    QString compositionDirectory;  // empty for compositions loaded from data

    // Logs a message once per renderer (font substitutions, missing files).
    void logOnce(const QString& message);

    // Made on first use: most compositions have no script.
    ScriptEngine& scriptEngine();

private:
    QSet<QString> logged_;
    std::unique_ptr<ScriptEngine> scriptEngine_;
};

}  // namespace runtime
