#include "model/StandardComponents.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace model {

namespace {

QString& overriddenFolder()
{
    static QString folder;
    return folder;
}

QString findFolder()
{
    QStringList candidates;
    const QString fromEnvironment = qEnvironmentVariable("VELLORAN_RESOURCES");
    if (!fromEnvironment.isEmpty()) candidates << fromEnvironment + QStringLiteral("/standard-components");
    if (QCoreApplication::instance())
        candidates << QCoreApplication::applicationDirPath() + QStringLiteral("/../share/velloran/standard-components");
#ifdef VELLORAN_SOURCE_RESOURCES
    candidates << QStringLiteral(VELLORAN_SOURCE_RESOURCES "/standard-components");
#endif
    for (const QString& candidate : candidates)
        if (QFileInfo(candidate).isDir()) return QDir(candidate).absolutePath();
    return {};
}

}  // namespace

QString StandardComponents::folder()
{
    if (!overriddenFolder().isNull()) return overriddenFolder();
    static const QString found = findFolder();
    return found;
}

QString StandardComponents::pathForComponent(const QString& name)
{
    const QString dir = folder();
    if (dir.isEmpty()) return {};
    const QString path = dir + QLatin1Char('/') + name + QStringLiteral(".qtz");
    return QFileInfo::exists(path) ? path : QString();
}

QString StandardComponents::toolbarComponentsPath()
{
    const QString dir = folder();
    const QString path = dir + QStringLiteral("/ToolbarComponents.plist");
    return !dir.isEmpty() && QFileInfo::exists(path) ? path : QString();
}

void StandardComponents::setFolderForTesting(const QString& folder)
{
    overriddenFolder() = folder.isNull() ? QString() : folder;
}

}  // namespace model
