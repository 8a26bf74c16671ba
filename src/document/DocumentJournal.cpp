#include "document/DocumentJournal.h"

#include "document/PersistentPackageDocument.h"
#include "model/ObjectStore.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QScopeGuard>
#include <QUuid>

namespace document {

Q_LOGGING_CATEGORY(lcJournal, "velloran.journal")

namespace {

QString& testFolder()
{
    static QString folder;
    return folder;
}

// What the records were made on: the store file as saved then.
QJsonObject baseOf(const QString& packagePath)
{
    if (packagePath.isEmpty()) return {};
    const QFileInfo store(PersistentPackageDocument::storeURLFromPath(packagePath));
    return {{QStringLiteral("size"), double(store.size())},
            {QStringLiteral("modified"), double(store.lastModified().toMSecsSinceEpoch())}};
}

QString canonicalPackage(const QString& packagePath)
{
    const QFileInfo info(packagePath);
    return info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
}

}  // namespace

QString DocumentJournal::folder()
{
    if (!testFolder().isEmpty()) return testFolder();
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty()) state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/Velloran/journals");
}

void DocumentJournal::setFolderForTesting(const QString& folder) { testFolder() = folder; }

QString DocumentJournal::journalPathForPackage(const QString& packagePath)
{
    const QByteArray key = QCryptographicHash::hash(canonicalPackage(packagePath).toUtf8(), QCryptographicHash::Sha1).toHex();
    return QDir(folder()).filePath(QString::fromLatin1(key) + QStringLiteral(".journal"));
}

JournalStatus DocumentJournal::statusOf(const QString& journalPath)
{
    JournalStatus status;
    status.path = journalPath;
    const model::JournalFile::Contents contents = model::JournalFile::read(journalPath);
    status.records = int(contents.records.size());
    status.problem = contents.problem;
    status.document = contents.header.value(QLatin1String("document")).toString();
    if (!status.document.isEmpty()) status.baseChanged = baseOf(status.document) != contents.header.value(QLatin1String("base")).toObject();
    return status;
}

JournalStatus DocumentJournal::statusForPackage(const QString& packagePath)
{
    const QString path = journalPathForPackage(packagePath);
    if (!QFileInfo::exists(path)) return {path, canonicalPackage(packagePath), 0, {}, false};
    return statusOf(path);
}

QList<JournalStatus> DocumentJournal::pendingJournals()
{
    QList<JournalStatus> pending;
    const QDir dir(folder());
    for (const QString& name : dir.entryList({QStringLiteral("*.journal")}, QDir::Files, QDir::Time)) {
        const JournalStatus status = statusOf(dir.filePath(name));
        if (status.records > 0) pending.append(status);
    }
    return pending;
}

bool DocumentJournal::replay(model::ObjectStore& store, const QString& journalPath, QString* error, int* applied)
{
    const model::JournalFile::Contents contents = model::JournalFile::read(journalPath);
    if (applied) *applied = 0;
    // Replaying is not an edit of its own: nothing listening records it.
    model::StoreChangeListener* listener = store.changeListener();
    store.setChangeListener(nullptr);
    const auto restore = qScopeGuard([&] { store.setChangeListener(listener); });
    for (const QByteArray& record : contents.records) {
        QString why;
        if (!model::replayJournalRecord(store, record, &why)) {
            if (error) *error = QStringLiteral("record %1 of %2 does not apply: %3").arg(applied ? *applied + 1 : 0).arg(contents.records.size()).arg(why);
            return false;
        }
        if (applied) ++*applied;
    }
    return true;
}

void DocumentJournal::discard(const QString& journalPath) { QFile::remove(journalPath); }

DocumentJournal::DocumentJournal(model::ObjectStore& store, const QString& packagePath)
    : package_(packagePath.isEmpty() ? QString() : canonicalPackage(packagePath))
{
    path_ = package_.isEmpty() ? QDir(folder()).filePath(QStringLiteral("untitled-%1.journal").arg(QUuid::createUuid().toString(QUuid::WithoutBraces)))
                               : journalPathForPackage(package_);
    startRecorder(store);
    if (package_.isEmpty()) snapshot_ = recorder_->snapshotRecord();
}

DocumentJournal::~DocumentJournal()
{
    recorder_.reset();
    file_.close();
    discard(path_);
}

void DocumentJournal::startRecorder(model::ObjectStore& store)
{
    recorder_ = std::make_unique<model::JournalRecorder>(store);
    connect(recorder_.get(), &model::JournalRecorder::recordReady, this, &DocumentJournal::append);
}

void DocumentJournal::attach(model::ObjectStore& store) { startRecorder(store); }

QJsonObject DocumentJournal::header() const
{
    return {{QStringLiteral("document"), package_},
            {QStringLiteral("base"), baseOf(package_)},
            {QStringLiteral("started"), QDateTime::currentDateTimeUtc().toString(Qt::ISODate)}};
}

void DocumentJournal::append(const QByteArray& record)
{
    if (!file_.isOpen()) {
        // Made at the first change: an untouched document leaves no file.
        QString error;
        if (!QDir().mkpath(folder()) || !file_.create(path_, header(), &error)) {
            qCWarning(lcJournal).noquote() << QStringLiteral("Cannot start the journal %1: %2").arg(path_, error);
            return;
        }
        if (!snapshot_.isEmpty()) file_.append(snapshot_);
    }
    if (!file_.append(record)) qCWarning(lcJournal).noquote() << QStringLiteral("Cannot write to the journal %1").arg(path_);
}

void DocumentJournal::continueJournal(const QString& journalPath)
{
    file_.close();
    if (journalPath != path_) discard(path_);
    path_ = journalPath;
    snapshot_.clear();
    QString error;
    if (!file_.openForAppend(path_, &error))
        qCWarning(lcJournal).noquote() << QStringLiteral("Cannot continue the journal %1: %2").arg(path_, error);
}

void DocumentJournal::documentSaved(const QString& packagePath)
{
    if (recorder_) recorder_->flush();
    file_.close();
    discard(path_);
    package_ = canonicalPackage(packagePath);
    path_ = journalPathForPackage(package_);
    discard(path_);  // whatever an earlier session left for this package is older than this save
    snapshot_.clear();
}

void DocumentJournal::flush()
{
    if (recorder_) recorder_->flush();
    file_.sync();
}

}  // namespace document
