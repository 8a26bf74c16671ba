#include "model/StoreResources.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

namespace model {

namespace {

// "Images/" followed by a content name: nothing outside the folder, ever.
bool isResourceName(const QString& name)
{
    static const QRegularExpression form(QStringLiteral("^Images/[0-9a-f]{32}\\.[a-z]{1,8}$"));
    return form.match(name).hasMatch();
}

}  // namespace

StoreResources::StoreResources(QString folder) : folder_(std::move(folder)) {}

QString StoreResources::put(const QByteArray& bytes, const QString& extension, QString* error)
{
    const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Blake2b_160).toHex().left(32);
    const QString name = imagesFolder() + QLatin1Char('/') + QString::fromLatin1(hash) + QLatin1Char('.') + extension;
    const QString path = QDir(folder_).filePath(name);
    // Named by content: a file of this name and size already holds these bytes.
    if (QFileInfo(path).size() != bytes.size()) {
        if (!QDir(folder_).mkpath(imagesFolder())) {
            if (error) *error = QStringLiteral("cannot create the folder %1").arg(QDir(folder_).filePath(imagesFolder()));
            return {};
        }
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
            if (error) *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
            return {};
        }
    }
    used_.insert(name);
    return name;
}

QByteArray StoreResources::get(const QString& name, QString* error) const
{
    if (!isResourceName(name)) {
        if (error) *error = QStringLiteral("\"%1\" is not the name of a file of the package").arg(name);
        return {};
    }
    QFile file(QDir(folder_).filePath(name));
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = QStringLiteral("the file %1 of the package cannot be read: %2").arg(name, file.errorString());
        return {};
    }
    return file.readAll();
}

void StoreResources::removeUnused() const
{
    QDir images(QDir(folder_).filePath(imagesFolder()));
    for (const QString& file : images.entryList(QDir::Files)) {
        const QString name = imagesFolder() + QLatin1Char('/') + file;
        // Only our own names: whatever else a user put there stays.
        if (isResourceName(name) && !used_.contains(name)) images.remove(file);
    }
}

}  // namespace model
