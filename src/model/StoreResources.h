#pragma once
// Files kept beside a store file in its package: large pictures are written
// once as files named by their content ("Images/<hash>.tiff") instead of as
// base64 text inside the store, so the store stays small and quick to read
// and a picture that did not change is never written again.
//
// A save writes the files first and the store last (renamed over the old
// one), then removes the files the new store no longer names: a save cut
// short leaves the previous store with all of its files.

#include <QByteArray>
#include <QSet>
#include <QString>

namespace model {

class StoreResources {
public:
    // `folder`: the package, the folder of the store file.
    explicit StoreResources(QString folder);

    // Values smaller than this stay inside the store.
    static constexpr qsizetype kSmallestFileBytes = 32 * 1024;

    // Keeps the bytes as a file (unless one of that content is there) and
    // answers its name relative to the folder; empty when it cannot be written.
    QString put(const QByteArray& bytes, const QString& extension, QString* error = nullptr);
    // The bytes of a file a store names; empty with the reason when the name
    // is not one of ours or the file cannot be read.
    QByteArray get(const QString& name, QString* error) const;

    // The names put since the last clear: what the store being written uses.
    const QSet<QString>& used() const { return used_; }
    // Removes the files of the resource folders that `used` does not name.
    void removeUnused() const;

    static QString imagesFolder() { return QStringLiteral("Images"); }

private:
    QString folder_;
    QSet<QString> used_;
};

}  // namespace model
