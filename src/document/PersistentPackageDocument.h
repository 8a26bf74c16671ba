#pragma once
// A document stored as a package directory whose object store is the file
// "data.xml" inside it. Knows nothing of compositions: it opens, saves,
// saves-as, reverts and moves the store with the package.

#include "model/ObjectStore.h"
#include "model/StoreFile.h"

#include <QString>

#include <memory>

namespace document {

enum class SaveOperation { Save = 0, SaveAs = 1, SaveTo = 2, AutosaveElsewhere = 3, AutosaveInPlace = 4 };

class PersistentPackageDocument {
public:
    PersistentPackageDocument();
    virtual ~PersistentPackageDocument();
    PersistentPackageDocument(const PersistentPackageDocument&) = delete;
    PersistentPackageDocument& operator=(const PersistentPackageDocument&) = delete;

    static QString storeFileName() { return QStringLiteral("data.xml"); }
    // The store's path inside a package; empty for an empty path.
    static QString storeURLFromPath(const QString& packagePath);

    model::ObjectStore& store() { return *store_; }
    // The package directory, empty for a document never saved.
    const QString& fileURL() const { return fileURL_; }
    // Moves the document and its open store to a new location; no file moves.
    virtual void setFileURL(const QString& packagePath);

    virtual bool readFromURL(const QString& packagePath, QString* error);
    virtual bool writeSafelyToURL(const QString& packagePath, SaveOperation operation, QString* error);
    virtual bool revertToContentsOfURL(const QString& packagePath, QString* error);

    // The location the store is written to, empty while there is none.
    const QString& storePath() const { return storePath_; }

    // How the next read treats what it cannot read (refuse the file, or drop
    // it), and what the last read dropped.
    void setReadMode(model::StoreReadMode mode) { readMode_ = mode; }
    const QStringList& droppedOnRead() const { return droppedOnRead_; }

protected:
    // Sets the location without moving the store.
    void simpleSetFileURL(const QString& packagePath) { fileURL_ = packagePath; }
    // Takes over a store read from disk (or a fresh one for a new document).
    void adoptStore(std::unique_ptr<model::ObjectStore> store);
    // Called with the store just read, before it is adopted; the
    // composition document takes its composition from it.
    virtual void didReadStore(const model::LoadedStore&) {}

private:
    std::unique_ptr<model::ObjectStore> store_;
    QString fileURL_;
    QString storePath_;
    model::StoreReadMode readMode_ = model::StoreReadMode::Strict;
    QStringList droppedOnRead_;
};

}  // namespace document
