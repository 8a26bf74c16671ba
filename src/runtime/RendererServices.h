#pragma once
// What a renderer offers its patches besides ports: the user-information
// dictionary, the composition's folder for relative paths, and logging.

#include <QLoggingCategory>
#include <QSet>
#include <QString>
#include <QVariantMap>

Q_DECLARE_LOGGING_CATEGORY(lcRuntime)

namespace runtime {

class RendererServices {
public:
    QVariantMap userInfo;
    QString compositionDirectory;  // empty for compositions loaded from data

    // Logs a message once per renderer (font substitutions, missing files).
    void logOnce(const QString& message);

private:
    QSet<QString> logged_;
};

}  // namespace runtime
