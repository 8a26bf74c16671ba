#pragma once
// The document's object store on disk ("data.xml"): a versioned XML file of
// objects with stable ids, their stored values and their relationships.
// Reading builds a new store and hands it over only when the whole file was
// understood, so a damaged file never leaves a half-loaded composition.

#include "model/ObjectStore.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

namespace model {

class Composition;
class StoreResources;

// Strict reading refuses a file with anything it cannot read. Repairing
// reading drops what it cannot read (a value, an object, a link, the end of
// a cut-off file) and says what it dropped.
enum class StoreReadMode { Strict, DropUnreadable };

struct LoadedStore {
    std::unique_ptr<ObjectStore> store;  // null on failure
    Composition* composition = nullptr;
    QStringList warnings;  // things kept out of the model, e.g. unknown stored keys
    QStringList dropped;   // what a repairing read left out, one line each
    QString error;         // what went wrong and where: line, object and stored value
    explicit operator bool() const { return store != nullptr; }
};

class StoreFile {
public:
    static constexpr int kVersion = 1;

    // With `resources`, large pictures are written as files beside the store.
    static QByteArray write(const ObjectStore& store, StoreResources* resources = nullptr);
    // Writes the pictures' files, then a temporary store file beside the
    // target renamed over the old one, then removes the files no longer used.
    static bool writeToFile(const ObjectStore& store, const QString& path, QString* error = nullptr);

    // Without a folder, a store that keeps pictures in files cannot be read.
    static LoadedStore read(const QByteArray& bytes, StoreReadMode mode = StoreReadMode::Strict,
                            const StoreResources* resources = nullptr);
    static LoadedStore readFile(const QString& path, StoreReadMode mode = StoreReadMode::Strict);
};

}  // namespace model
