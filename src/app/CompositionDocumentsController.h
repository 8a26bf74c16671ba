#pragma once
// Creates and opens documents, one window each: new documents at the
// preferred video mode or one chosen from the New Document menu, existing
// ones from a package path. A document already open is brought forward
// instead of being opened twice.

#include "preview/PreviewSession.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QMenu;
class QWidget;

namespace model {
class VideoResolution;
}
namespace document {
class CompositionDocument;
}

namespace document {
class CompositionDocument;
}

namespace app {

class VLPreferencesController;
class VLWindowController;

class CompositionDocumentsController : public QObject {
    Q_OBJECT
public:
    explicit CompositionDocumentsController(QObject* parent = nullptr);
    ~CompositionDocumentsController() override;

    // A new document at the default mode; null only when no mode is known.
    VLWindowController* newDocument();
    // A new document at the named mode, or the default for an unknown name.
    VLWindowController* newDocumentWithMode(const QString& broadcastMode);
    // Opens the package; on failure answers null. The reason goes to
    // `error` when the caller asks for it (and then reports it itself);
    // otherwise it is shown over `parent`, or on its own when no window is
    // open yet.
    VLWindowController* openDocument(const QString& packagePath, QWidget* parent = nullptr, QString* error = nullptr);
    // Asks for a package and opens it.
    void openDocumentWithPanel(QWidget* parent);
    // Fills a menu with one New item per offered video mode, grouped, and
    // gives Ctrl+N to the preferred one.
    void fillNewDocumentMenu(QMenu* menu);
    // Every New Document submenu of the open windows.
    std::vector<QMenu*> newDocumentMenus() const;

    // The one preferences window, made on first use.
    VLPreferencesController* preferencesController();
    void showPreferences();

    std::vector<VLWindowController*> windows() const;

    // The application's one preview window and its slideshow.
    preview::PreviewSession& preview() { return preview_; }
    // Every open document in window order, for the slideshow.
    std::vector<const document::CompositionDocument*> openDocuments() const;

    // Crash recovery: every document keeps a journal, and a journal a crash
    // left behind is offered when its document opens, or at start for one
    // never saved. Off unless asked for (screenshots and tests ask nobody).
    enum class RecoveryAnswer { Recover, Discard };
    using RecoveryQuestion = std::function<RecoveryAnswer(const QString& documentName, int changes)>;
    void setCrashRecovery(bool on) { crashRecovery_ = on; }
    void setRecoveryQuestion(RecoveryQuestion question) { recoveryQuestion_ = std::move(question); }
    // Offers the journals of documents never saved; those of saved documents
    // are offered when the documents open (they are opened here).
    void offerRecoveryAtStart();

private:
    void offerRecovery(document::CompositionDocument& document);
    RecoveryAnswer askToRecover(const QString& documentName, int changes);
    VLWindowController* show(VLWindowController* window);
    QString nextUntitledName();

    std::vector<QPointer<VLWindowController>> windows_;
    std::vector<QPointer<QMenu>> newDocumentMenus_;
    std::unique_ptr<VLPreferencesController> preferences_;
    preview::PreviewSession preview_;
    int untitledCount_ = 0;
    bool crashRecovery_ = false;
    RecoveryQuestion recoveryQuestion_;
};

}  // namespace app
