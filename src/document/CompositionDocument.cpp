#include "document/CompositionDocument.h"

#include "document/CompositionExport.h"
#include "document/FieldSchema.h"
#include "document/Thumbnail.h"
#include "model/Composition.h"
#include "model/UndoManager.h"
#include "model/VideoResolution.h"
#include "plist/PropertyList.h"
#include "quartz/QuartzComposition.h"
#include "quartz/QuartzValues.h"
#include "runtime/Composition.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QUrl>

namespace document {

Q_LOGGING_CATEGORY(lcDocument, "velloran.document")

namespace {

bool writeInfoFile(const QVariantMap& info, const QString& path)
{
    const auto xml = plist::writeXml(quartz::fileValueForVariant(info));
    if (!xml) return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(xml->data(), qint64(xml->size()));
    return file.commit();
}

}  // namespace

CompositionDocument::CompositionDocument() = default;
CompositionDocument::~CompositionDocument()
{
    if (composition_) composition_->cleanUp();
}

QString CompositionDocument::previewPath()
{
    return QDir::temp().filePath(QStringLiteral("VelloranPreview.qtz"));
}

std::unique_ptr<CompositionDocument> CompositionDocument::emptyDocumentWithResolution(
    const model::VideoResolution& resolution)
{
    auto document = std::make_unique<CompositionDocument>();
    document->beforeLoad();
    document->composition_ = document->store().insertNewObject<model::Composition>();
    document->composition_->setVideoResolution(resolution);
    document->afterLoad();
    return document;
}

std::unique_ptr<CompositionDocument> CompositionDocument::open(const QString& packagePath, QString* error,
                                                               model::StoreReadMode mode)
{
    auto document = std::make_unique<CompositionDocument>();
    document->setReadMode(mode);
    if (!document->readFromURL(packagePath, error)) return nullptr;
    return document;
}

QString CompositionDocument::quartzCompositionURL() const
{
    return fileURL().isEmpty() ? QString() : QDir(fileURL()).filePath(compositionFileName());
}

void CompositionDocument::beforeLoad()
{
    qCInfo(lcDocument) << "CompositionDocument before load";
    store().undoManager().disableUndoRegistration();
}

void CompositionDocument::afterLoad()
{
    qCInfo(lcDocument) << "CompositionDocument after load";
    model::UndoManager& undo = store().undoManager();
    {
        model::UndoRegistrationPause quiet(undo);
        store().processPendingChanges();
    }
    undo.enableUndoRegistration();
    // The first undoable step is the user's.
    undo.removeAllActions();
}

bool CompositionDocument::readFromURL(const QString& packagePath, QString* error)
{
    qCInfo(lcDocument).noquote() << QStringLiteral("CompositionDocument will read from %1").arg(packagePath);
    QString reason;
    // The journal must let go of a store before the store is replaced.
    if (journal_) journal_->detach();
    if (!PersistentPackageDocument::readFromURL(packagePath, &reason)) {
        if (journal_) journal_->attach(store());
        qCWarning(lcDocument).noquote()
            << QStringLiteral("CompositionDocument failed to read from %1 with error %2").arg(packagePath, reason);
        if (error) *error = reason;
        return false;
    }
    beforeLoad();
    composition_->setFileURL(QUrl::fromLocalFile(quartzCompositionURL()));
    afterLoad();
    if (journal_) journal_->attach(store());
    return true;
}

void CompositionDocument::enableJournal()
{
    if (!journal_) journal_ = std::make_unique<DocumentJournal>(store(), fileURL());
}

bool CompositionDocument::adoptReplayedStore(QString* error)
{
    // Objects made by the records are not set up: reading the whole store
    // anew sets every object up as opening a document does.
    store().processPendingChanges();
    model::LoadedStore loaded = model::StoreFile::read(model::StoreFile::write(store()));
    if (!loaded) {
        if (error) *error = loaded.error;
        return false;
    }
    beforeLoad();
    if (journal_) journal_->detach();
    didReadStore(loaded);
    adoptStore(std::move(loaded.store));
    if (journal_) journal_->attach(store());
    if (!fileURL().isEmpty()) composition_->setFileURL(QUrl::fromLocalFile(quartzCompositionURL()));
    afterLoad();
    return true;
}

bool CompositionDocument::recoverFromJournal(const JournalStatus& status, QString* error)
{
    if (!status.recoverable()) {
        if (error) *error = status.baseChanged ? QStringLiteral("the document was saved after these changes were made")
                                               : QStringLiteral("the journal holds no changes");
        return false;
    }
    if (!DocumentJournal::replay(store(), status.path, error) || !adoptReplayedStore(error)) return false;
    enableJournal();
    journal_->attach(store());
    journal_->continueJournal(status.path);
    return true;
}

std::unique_ptr<CompositionDocument> CompositionDocument::recoverUntitled(const JournalStatus& status, QString* error)
{
    auto document = std::make_unique<CompositionDocument>();
    if (!DocumentJournal::replay(document->store(), status.path, error) || !document->adoptReplayedStore(error)) return nullptr;
    if (!document->composition_) {
        if (error) *error = QStringLiteral("the journal holds no composition");
        return nullptr;
    }
    document->enableJournal();
    document->journal_->continueJournal(status.path);
    return document;
}

void CompositionDocument::didReadStore(const model::LoadedStore& loaded)
{
    // The store is read without undo registration; what is left is cleared
    // in afterLoad once the store is ours.
    if (composition_) composition_->cleanUp();
    composition_ = loaded.composition;
    loaded.store->undoManager().removeAllActions();
}

bool CompositionDocument::canCloseDocument()
{
    if (composition_) composition_->setPlayMode(0);
    return true;
}

bool CompositionDocument::revertToContentsOfURL(const QString& packagePath, QString* error)
{
    return readFromURL(packagePath, error);
}

void CompositionDocument::setFileURL(const QString& packagePath)
{
    PersistentPackageDocument::setFileURL(packagePath);
    if (composition_) composition_->setFileURL(QUrl::fromLocalFile(quartzCompositionURL()));
}

bool CompositionDocument::writeSafelyToURL(const QString& packagePath, SaveOperation operation, QString* error)
{
    // Save As onto the document's own location writes nothing at all.
    if (operation == SaveOperation::SaveAs && !fileURL().isEmpty() && QFileInfo(packagePath) == QFileInfo(fileURL()))
        return true;
    QString reason;
    saveTimings_ = {};
    QElapsedTimer clock;
    clock.start();
    reportProgress(saveProgress_, 0, kSaveParts);
    const bool stored = PersistentPackageDocument::writeSafelyToURL(packagePath, operation, &reason);
    saveTimings_.storeMs = double(clock.nsecsElapsed()) / 1e6;
    if (!stored) {
        qCWarning(lcDocument).noquote() << QStringLiteral("Could not write document with error is %1").arg(reason);
        if (error) *error = reason;
        return false;
    }
    const QString quickLook = QDir(packagePath).filePath(QStringLiteral("QuickLook"));
    if (!QDir().mkpath(quickLook)) {
        reason = QStringLiteral("Could not create the folder \"%1\".").arg(QDir::toNativeSeparators(quickLook));
        qCWarning(lcDocument).noquote() << QStringLiteral("Could not create QuickLook folder with error %1").arg(reason);
        if (error) *error = reason;
        return false;
    }
    if (journal_) journal_->documentSaved(packagePath);
    writePackageExtras(packagePath);
    return true;
}

void CompositionDocument::copyPendingResources()
{
    for (const QVariantMap& copy : std::as_const(pendingResources_)) {
        const QString source = copy.value(QStringLiteral("source")).toString();
        const QString dest = copy.value(QStringLiteral("dest")).toString();
        QFile::remove(dest);
        if (!QFile::copy(source, dest))
            qCWarning(lcDocument).noquote() << QStringLiteral("Could not embed %1 at %2 with error %3")
                                                   .arg(source, dest, QStringLiteral("the copy failed"));
    }
    pendingResources_.clear();
}

void CompositionDocument::writePackageExtras(const QString& packagePath)
{
    QElapsedTimer clock;
    clock.start();
    const QDir package(packagePath);
    writeInfoFile(composition_->compositionInfo(), package.filePath(infoFileName()));
    writeFieldSchema(*composition_, QFileInfo(packagePath).completeBaseName(), package.filePath(fieldSchemaFileName()));
    copyPendingResources();
    reportProgress(saveProgress_, 1, kSaveParts);
    const QString previewFile = previewPath();
    const auto preview = CompositionExport::exportedComposition(*composition_, true, &CompositionExport::documentKey);
    const bool exported =
        CompositionExport::exportToPath(*composition_, package.filePath(compositionFileName()), false,
                                        &CompositionExport::documentKey) &&
        preview && preview->writeToFile(previewFile, true);
    saveTimings_.exportMs = double(clock.nsecsElapsed()) / 1e6;
    clock.restart();
    // A failed export costs only the thumbnail; the store is saved.
    if (!exported) return;
    reportProgress(saveProgress_, 2, kSaveParts);
    QImage picture;
    // The preview's tree as written, played without reading the file back.
    const std::shared_ptr<const runtime::Composition> played =
        runtime::Composition::fromPlist(preview->fileDictionary(true), nullptr, QFileInfo(previewFile).absolutePath());
    const QSize size(composition_->width(), composition_->height());
    if (composition_->posterFrameMode() == 1 && !composition_->posterFrameImage().isNull())
        picture = composition_->posterFrameImage();
    else
        picture = renderThumbnail(played, size, composition_->posterFrameTimepoint(), QUrl::fromLocalFile(packagePath));
    writeThumbnail(picture, package.filePath(thumbnailPath()));
    saveTimings_.thumbnailMs = double(clock.nsecsElapsed()) / 1e6;
    clock.restart();
    reportProgress(saveProgress_, 3, kSaveParts);
    writeStepPictures(played, QDir(package.filePath(QStringLiteral("QuickLook"))), QUrl::fromLocalFile(packagePath));
    saveTimings_.stepPicturesMs = double(clock.nsecsElapsed()) / 1e6;
    qCInfo(lcDocument, "Saved in %.0f ms: store %.0f ms, export %.0f ms, thumbnail %.0f ms",
           saveTimings_.storeMs + saveTimings_.exportMs + saveTimings_.thumbnailMs, saveTimings_.storeMs,
           saveTimings_.exportMs, saveTimings_.thumbnailMs);
}

void CompositionDocument::writeStepPictures(std::shared_ptr<const runtime::Composition> played, QDir quickLook,
                                            const QUrl& documentURL)
{
    const int stops = int(composition_->stopFrames().size());
    const QList<QImage> pictures = renderStopFramePictures(std::move(played), QSize(composition_->width(), composition_->height()),
                                                           stops, composition_->duration(), documentURL);
    for (int i = 0; i < pictures.size(); ++i) writeThumbnail(pictures[i], quickLook.filePath(stepPictureName(i)));
    // Pictures of stop frames that are gone go with them.
    for (const QString& name : quickLook.entryList({QStringLiteral("Step-*.jpg")}, QDir::Files))
        if (name.mid(5, name.size() - 9).toInt() > pictures.size()) quickLook.remove(name);
}

namespace {

// Hands the save's progress to the document for as long as the save runs.
class SaveProgressScope {
public:
    SaveProgressScope(WorkProgress& slot, const WorkProgress& progress) : slot_(slot) { slot_ = progress; }
    ~SaveProgressScope() { slot_ = {}; }
    SaveProgressScope(const SaveProgressScope&) = delete;
    SaveProgressScope& operator=(const SaveProgressScope&) = delete;

private:
    WorkProgress& slot_;
};

}  // namespace

bool CompositionDocument::save(QString* error, const WorkProgress& progress)
{
    if (fileURL().isEmpty()) {
        if (error) *error = QStringLiteral("The document has never been saved; choose a location first.");
        return false;
    }
    SaveProgressScope scope(saveProgress_, progress);
    const bool saved = writeSafelyToURL(fileURL(), SaveOperation::Save, error);
    if (saved) reportProgress(progress, kSaveParts, kSaveParts);
    return saved;
}

bool CompositionDocument::saveAs(const QString& packagePath, QString* error, const WorkProgress& progress)
{
    SaveProgressScope scope(saveProgress_, progress);
    if (!writeSafelyToURL(packagePath, SaveOperation::SaveAs, error)) return false;
    reportProgress(progress, kSaveParts, kSaveParts);
    setFileURL(packagePath);
    return true;
}

QImage CompositionDocument::thumbnail() const
{
    return fileURL().isEmpty() ? QImage() : QImage(QDir(fileURL()).filePath(thumbnailPath()));
}

}  // namespace document
