#pragma once
// One open template: a package document holding exactly one composition.
// Every save also writes, beside the store, the generated composition file
// that a playout engine plays, the information file and the thumbnail.

#include "document/DocumentJournal.h"
#include "document/PersistentPackageDocument.h"
#include "document/WorkProgress.h"

#include <QImage>
#include <QList>
#include <QVariantMap>

#include <QDir>

class QUrl;

namespace runtime {
class Composition;
}

namespace model {
class Composition;
class VideoResolution;
}  // namespace model

namespace document {

// How long the parts of the last save took, for logs and benchmarks.
struct SaveTimings {
    double storeMs = 0;      // data.xml
    double exportMs = 0;     // Composition.qtz and the preview file
    double thumbnailMs = 0;  // rendering and writing Thumbnail.jpg
    double stepPicturesMs = 0;  // the pictures of the stop frames
};

class CompositionDocument : public PersistentPackageDocument {
public:
    static QString packageExtension() { return QStringLiteral("composition"); }
    static QString compositionFileName() { return QStringLiteral("Composition.qtz"); }
    static QString infoFileName() { return QStringLiteral("CompositionInfo.xml"); }
    static QString thumbnailPath() { return QStringLiteral("QuickLook/Thumbnail.jpg"); }
    // The export with the background that the thumbnail is rendered from.
    static QString previewPath();

    CompositionDocument();
    ~CompositionDocument() override;

    // A new, never saved document at the given resolution.
    static std::unique_ptr<CompositionDocument> emptyDocumentWithResolution(const model::VideoResolution& resolution);
    // Opens a package; null with the reason on failure. A repairing open
    // drops what cannot be read (see droppedOnRead).
    static std::unique_ptr<CompositionDocument> open(const QString& packagePath, QString* error,
                                                     model::StoreReadMode mode = model::StoreReadMode::Strict);

    model::Composition* composition() const { return composition_; }
    QString quartzCompositionURL() const;

    bool readFromURL(const QString& packagePath, QString* error) override;
    bool writeSafelyToURL(const QString& packagePath, SaveOperation operation, QString* error) override;
    bool revertToContentsOfURL(const QString& packagePath, QString* error) override;
    void setFileURL(const QString& packagePath) override;

    // Asked before the window closes: playback stops first, so nothing
    // plays on behind the save question.
    bool canCloseDocument();

    // What the editor's Save and Save As do: write, then take the location.
    // `progress` is told each part of the save as it starts (the store, the
    // export, the thumbnail, the step pictures); a save cannot be stopped,
    // so its answer is ignored.
    bool save(QString* error, const WorkProgress& progress = {});
    bool saveAs(const QString& packagePath, QString* error, const WorkProgress& progress = {});
    static constexpr int kSaveParts = 4;

    // Copies the next save makes into the package: {"source", "dest"}.
    QList<QVariantMap>& pendingResources() { return pendingResources_; }

    // The picture of the composition at its poster frame, from a preview
    // export (see thumbnailFromPreview).
    QImage thumbnail() const;

    const SaveTimings& lastSaveTimings() const { return saveTimings_; }

    // The crash journal (the editor keeps one; velloran-cli does not).
    void enableJournal();
    DocumentJournal* journal() const { return journal_.get(); }
    // Replays a journal left by a crash on this document, opened from the
    // journal's package; the document then holds the edits, unsaved, and its
    // journal goes on in that file.
    bool recoverFromJournal(const JournalStatus& status, QString* error);
    // A document never saved, rebuilt from its journal.
    static std::unique_ptr<CompositionDocument> recoverUntitled(const JournalStatus& status, QString* error);

protected:
    void didReadStore(const model::LoadedStore& loaded) override;

private:
    void beforeLoad();
    void afterLoad();
    void writePackageExtras(const QString& packagePath);
    void copyPendingResources();
    void writeStepPictures(std::shared_ptr<const runtime::Composition> played, QDir quickLook, const QUrl& documentURL);
    // Takes the store as the journal's records left it, set up as if read.
    bool adoptReplayedStore(QString* error);

    model::Composition* composition_ = nullptr;
    QList<QVariantMap> pendingResources_;
    SaveTimings saveTimings_;
    WorkProgress saveProgress_;  // only while save or saveAs runs
    std::unique_ptr<DocumentJournal> journal_;
};

}  // namespace document
