#include "document/PersistentPackageDocument.h"

#include <QDir>
#include <QFileInfo>

namespace document {

PersistentPackageDocument::PersistentPackageDocument() : store_(std::make_unique<model::ObjectStore>()) {}

PersistentPackageDocument::~PersistentPackageDocument() = default;

QString PersistentPackageDocument::storeURLFromPath(const QString& packagePath)
{
    if (packagePath.isEmpty()) return {};
    return QDir(packagePath).filePath(storeFileName());
}

void PersistentPackageDocument::adoptStore(std::unique_ptr<model::ObjectStore> store)
{
    store_ = std::move(store);
}

bool PersistentPackageDocument::readFromURL(const QString& packagePath, QString* error)
{
    const QDir package(packagePath);
    if (!package.exists() || !package.entryList(QDir::Files).contains(storeFileName())) {
        if (error) *error = QStringLiteral("\"%1\" is not a composition document: it has no %2.")
                                .arg(QDir::toNativeSeparators(packagePath), storeFileName());
        return false;
    }
    const QString path = package.filePath(storeFileName());
    model::LoadedStore loaded = model::StoreFile::readFile(path, readMode_);
    if (!loaded) {
        if (error) *error = loaded.error;
        return false;
    }
    droppedOnRead_ = loaded.dropped;
    didReadStore(loaded);
    adoptStore(std::move(loaded.store));
    storePath_ = path;
    simpleSetFileURL(packagePath);
    return true;
}

bool PersistentPackageDocument::writeSafelyToURL(const QString& packagePath, SaveOperation operation, QString* error)
{
    const bool elsewhere = fileURL_.isEmpty() || QFileInfo(packagePath) != QFileInfo(fileURL_);
    const QString previousStorePath = storePath_;
    if (operation == SaveOperation::SaveAs && elsewhere) {
        // A new package: the store is written there from memory, which is
        // the same as copying the store and saving the copy. An existing
        // folder keeps whatever else it holds.
        if (!QDir().mkpath(packagePath)) {
            if (error) *error = QStringLiteral("Could not create the folder \"%1\".").arg(QDir::toNativeSeparators(packagePath));
            return false;
        }
        storePath_ = storeURLFromPath(packagePath);
    } else if (storePath_.isEmpty()) {
        storePath_ = storeURLFromPath(packagePath);
        if (!QDir().mkpath(packagePath)) {
            if (error) *error = QStringLiteral("Could not create the folder \"%1\".").arg(QDir::toNativeSeparators(packagePath));
            return false;
        }
    }
    store_->processPendingChanges();
    if (model::StoreFile::writeToFile(*store_, storePath_, error)) return true;
    storePath_ = previousStorePath;  // still where it was
    return false;
}

bool PersistentPackageDocument::revertToContentsOfURL(const QString& packagePath, QString* error)
{
    return readFromURL(packagePath, error);
}

void PersistentPackageDocument::setFileURL(const QString& packagePath)
{
    if (!storePath_.isEmpty()) storePath_ = storeURLFromPath(packagePath);
    simpleSetFileURL(packagePath);
}

}  // namespace document
