#include "document/PackageLocation.h"

#include "document/CompositionDocument.h"

#include <QDir>
#include <QFileInfo>

namespace document {

namespace {

bool isPackageFolder(const QDir& folder)
{
    return folder.dirName().endsWith(QLatin1Char('.') + CompositionDocument::packageExtension()) ||
           folder.exists(CompositionDocument::storeFileName());
}

}  // namespace

QString packageContainingPath(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists()) return {};
    // Clean, so that ".." in the path climbs the way the user wrote it.
    QDir folder(QDir::cleanPath(info.isDir() ? info.absoluteFilePath() : info.absolutePath()));
    do {
        if (isPackageFolder(folder)) return folder.absolutePath();
    } while (folder.cdUp());
    return {};
}

}  // namespace document
