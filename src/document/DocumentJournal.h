#pragma once
// A document's crash journal in the user's state folder
// ($XDG_STATE_HOME/Velloran/journals, else ~/.local/state/Velloran/journals),
// one file per document, named after the package's path (or, for a
// document never saved, after a random id). Every step is appended as it
// happens; a save cuts the journal; a normal close drops it; only a crash
// leaves one behind, which the next start or the next opening offers to
// replay.

#include "model/StoreJournal.h"

#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace model {
class ObjectStore;
}

namespace document {

struct JournalStatus {
    QString path;         // the journal file
    QString document;     // the package it belongs to; empty for a document never saved
    int records = 0;      // intact records
    QString problem;      // a damaged end that was left out, an unreadable file
    bool baseChanged = false;  // the package was saved since: the records no longer fit it
    bool recoverable() const { return records > 0 && !baseChanged; }
};

class DocumentJournal : public QObject {
public:
    static QString folder();
    static void setFolderForTesting(const QString& folder);
    static QString journalPathForPackage(const QString& packagePath);
    // Every journal with records in the folder: what a crash left behind.
    static QList<JournalStatus> pendingJournals();
    static JournalStatus statusOf(const QString& journalPath);
    static JournalStatus statusForPackage(const QString& packagePath);

    // Records the store's steps into the journal of the package (empty: a
    // document never saved, whose journal starts with the whole store).
    DocumentJournal(model::ObjectStore& store, const QString& packagePath);
    // A normal end: the journal goes (a crash never gets here).
    ~DocumentJournal() override;

    // Continues an existing journal (after its records were replayed).
    void continueJournal(const QString& journalPath);
    // The document was saved at `packagePath`: the journal starts afresh there.
    void documentSaved(const QString& packagePath);
    // Follows the document's store when it is replaced (revert, recovery):
    // detach before the old store goes, attach to the new one.
    void detach() { recorder_.reset(); }
    void attach(model::ObjectStore& store);
    const QString& journalPath() const { return path_; }
    // Writes out what is pending at once (tests, and before a deliberate stop).
    void flush();

    // Replays a journal's records on a store; false with the reason when one
    // does not apply (the records before it stay applied).
    static bool replay(model::ObjectStore& store, const QString& journalPath, QString* error, int* applied = nullptr);
    static void discard(const QString& journalPath);

private:
    void startRecorder(model::ObjectStore& store);
    void append(const QByteArray& record);
    QJsonObject header() const;

    std::unique_ptr<model::JournalRecorder> recorder_;
    model::JournalFile file_;
    QString package_;
    QString path_;
    QByteArray snapshot_;  // the first record of a document never saved
};

}  // namespace document
