#pragma once
// The crash journal of a store: every step that changes the store becomes a
// record of the step's changes in the store's own value form (objects named
// by their stable ids, never by their addresses), appended to a file at once
// and synced at most once a second. Replaying the records on the store as
// last saved gives back what a crash took away.
//
// File: a header line (JSON), then records, each a 4-byte length, a 4-byte
// CRC-32 of the payload (both little-endian) and the payload. A record cut
// short or damaged ends the journal: it and what follows are never applied.

#include "model/StoreChangeListener.h"

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QSet>
#include <QTimer>

namespace model {

class ObjectStore;

// Collects what changes in a store and hands over one record per step: per
// undo step, or per turn of the event loop for changes outside any.
class JournalRecorder : public QObject, public StoreChangeListener {
    Q_OBJECT
public:
    explicit JournalRecorder(ObjectStore& store, QObject* parent = nullptr);
    ~JournalRecorder() override;

    // A record that makes the whole store: the first record of a journal
    // whose document has no saved state to replay on.
    QByteArray snapshotRecord() const;
    // Hands over what has changed so far, unless an undo group is still
    // open (its record follows when it closes).
    void flush();

Q_SIGNALS:
    void recordReady(const QByteArray& payload);

private:
    void objectInserted(ManagedObject* object) override;
    void objectDeleted(quint64 objectId) override;
    void storedValueChanged(ManagedObject* object, int attributeIndex) override;
    void relationshipChanged(ManagedObject* owner, const QString& toManyKey) override;
    void scheduleFlush();

    ObjectStore& store_;
    QSet<quint64> inserted_, deleted_;
    QHash<quint64, QSet<int>> values_;
    QHash<quint64, QSet<QString>> relationships_;
    bool flushPosted_ = false;
};

// Applies one record to a store, without undo or notifications: inserted
// objects are not set up (the caller reads the store anew afterwards).
bool replayJournalRecord(ObjectStore& store, const QByteArray& payload, QString* error);

class JournalFile {
public:
    static constexpr const char* kMagic = "VELLORAN-JOURNAL 1";

    struct Contents {
        bool exists = false;
        QJsonObject header;
        QList<QByteArray> records;
        QString problem;  // a damaged or cut-off end, or an unreadable file
    };

    // Starts a new journal (replacing any file there) with the header.
    bool create(const QString& path, const QJsonObject& header, QString* error);
    // Opens an existing journal to add records after its intact ones.
    bool openForAppend(const QString& path, QString* error);
    bool isOpen() const { return file_.isOpen(); }
    const QString& path() const { return path_; }
    // Written at once; the disk is asked to keep it within a second.
    bool append(const QByteArray& payload);
    void sync();
    void close();

    static Contents read(const QString& path);

private:
    QFile file_;
    QString path_;
    QTimer syncTimer_;
    bool unsynced_ = false;
};

}  // namespace model
