#pragma once
// One document window: the canvas with its rulers in the middle above the
// timeline, the toolbar above them, the inspector and the library
// as dock panels, the menus that run the document's commands, and the
// status line with the playhead's timecode. The window owns its document;
// closing it always asks whether to save, since a template counts as edited
// once opened. The panels' arrangement is kept under "windowState" for the
// next window.

#include <QMainWindow>

#include <functional>
#include <memory>

class QDockWidget;
class QLabel;
class QSplitter;

namespace document {
class CompositionDocument;
class DocumentCommands;
struct Alert;
}  // namespace document

namespace playout {
enum class MovieCodec;
}

namespace canvas {
class CompositionView;
class VLMainToolbar;
class VLZoomScrollView;
}  // namespace canvas

namespace timeline {
class TimelinePanel;
}

namespace inspector {
class VLInspectorController;
}

namespace app {

class CompositionDocumentsController;
class VLLibraryController;

class VLWindowController : public QMainWindow {
    Q_OBJECT
public:
    enum class CloseAnswer { Save, DontSave, Cancel };
    using CloseQuestion = std::function<CloseAnswer(VLWindowController&)>;
    // Where Save As and Export write; empty when the user cancels.
    using PathChooser = std::function<QString(VLWindowController&, const QString& kind)>;

    VLWindowController(std::unique_ptr<document::CompositionDocument> document, const QString& untitledName,
                       CompositionDocumentsController* controller = nullptr);
    ~VLWindowController() override;

    document::CompositionDocument* document() const { return document_.get(); }
    document::DocumentCommands* commands() const { return commands_.get(); }
    canvas::CompositionView* compositionView() const { return view_; }
    canvas::VLZoomScrollView* scrollView() const { return scrollView_; }
    canvas::VLMainToolbar* mainToolbar() const { return toolbar_; }
    QSplitter* splitter() const { return splitter_; }
    timeline::TimelinePanel* timelinePanel() const { return timelinePanel_; }
    QDockWidget* inspectorDock() const { return inspectorDock_; }
    ::inspector::VLInspectorController* inspector() const { return inspector_; }
    QDockWidget* libraryDock() const { return libraryDock_; }
    VLLibraryController* library() const { return library_; }
    // A menu action by its object name (the command names: "save", "undo",
    // "bringToFront", "zoom100", ...).
    QAction* action(const QString& name) const;

    QString displayName() const;
    QString windowTitleForDocumentDisplayName(const QString& displayName) const;

    // Save asks for a location when the document has none. Both report a
    // failure in a message box and keep the document open and unchanged.
    bool saveDocument();
    bool saveDocumentAs();
    bool saveDocumentTo(const QString& packagePath);
    void revertDocumentToSaved();
    bool exportDocumentTo(const QString& path);
    // The operator's fields as a Graphics Data Definition (JSON).
    bool exportFieldSchemaTo(const QString& path);
    // The picture at each stop frame, as PNG files in a folder.
    bool exportStepPicturesTo(const QString& folder);
    // The preview window playing this document; the movie of it, keyed.
    void showPreview();
    bool renderMovieTo(const QString& path, playout::MovieCodec codec);

    void setCloseQuestion(CloseQuestion question) { closeQuestion_ = std::move(question); }
    void setPathChooser(PathChooser chooser) { pathChooser_ = std::move(chooser); }
    // Off for windows that only show something once (the screenshot), so
    // they do not change the layout the user's next window starts with.
    void setRemembersWindowState(bool remembers) { remembersWindowState_ = remembers; }

    // Shows a command's alert on this window.
    void showAlert(const document::Alert& alert);

    // The library's double-click: opens each selected document.
    void doubleClickedItem();
    void showHelp();
    void showAbout();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void buildFileMenu();
    void buildEditMenu();
    void buildArrangeMenu();
    void buildCompositionMenu();
    void buildViewMenu();
    void buildHelpMenu();
    void addPreviewCommands(QMenu* compositionMenu);
    void addRenderMovieCommand(QMenu* fileMenu);
    void buildPanels();
    void restoreWindowState();
    void saveWindowState();
    QAction* addCommand(QMenu* menu, const QString& name, const QString& title, const QKeySequence& shortcut,
                        std::function<void()> run);
    void attachDocument();
    void detachDocument();
    void observeDocument();
    void updateTitle();
    void updateUndoActions();
    void updateSelectionActions();
    void updateViewActions();
    void updateStatus();
    void showError(const QString& title, const QString& text);
    static CloseAnswer askToSave(VLWindowController& window);
    static QString choosePath(VLWindowController& window, const QString& kind);

    std::unique_ptr<document::CompositionDocument> document_;
    std::unique_ptr<document::DocumentCommands> commands_;
    CompositionDocumentsController* controller_;
    QString untitledName_;
    canvas::CompositionView* view_;
    canvas::VLZoomScrollView* scrollView_;
    canvas::VLMainToolbar* toolbar_;
    QSplitter* splitter_;
    timeline::TimelinePanel* timelinePanel_;
    QDockWidget* inspectorDock_;
    ::inspector::VLInspectorController* inspector_;
    QDockWidget* libraryDock_;
    VLLibraryController* library_;
    bool remembersWindowState_ = true;
    QLabel* timecodeLabel_;
    QLabel* formatLabel_;
    QLabel* selectionLabel_;
    QLabel* zoomLabel_;
    CloseQuestion closeQuestion_ = &VLWindowController::askToSave;
    PathChooser pathChooser_ = &VLWindowController::choosePath;
    QHash<QString, QAction*> actions_;
    QMetaObject::Connection undoConnection_;
};

}  // namespace app
