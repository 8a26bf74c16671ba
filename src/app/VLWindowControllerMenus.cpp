// The document window's menus. Every item runs a document command, a
// canvas action or a clipboard form; each is found by its object name.

#include "app/CompositionDocumentsController.h"
#include "app/TextCheckDialog.h"
#include "app/ProductInfo.h"
#include "app/VLWindowController.h"

#include "canvas/CompositionView.h"
#include "canvas/VLMainToolbar.h"
#include "canvas/VLZoomScrollView.h"
#include "widgets/ToolbarArtwork.h"
#include "widgets/WorkProgressDialog.h"
#include "canvas/VLAlignmentController.h"
#include "document/ComponentClipboard.h"
#include "document/CompositionDocument.h"
#include "document/DocumentCommands.h"
#include "model/Composition.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDockWidget>
#include <QGuiApplication>
#include <QMenuBar>
#include <QMessageBox>

namespace app {

namespace {
constexpr int kZoomModes[] = {200, 150, 100, 50, 0};
}

QAction* VLWindowController::addCommand(QMenu* menu, const QString& name, const QString& title,
                                        const QKeySequence& shortcut, std::function<void()> run)
{
    QAction* action = menu->addAction(title);
    action->setObjectName(name);
    if (!shortcut.isEmpty()) action->setShortcut(shortcut);
    connect(action, &QAction::triggered, this, [run = std::move(run)] { run(); });
    actions_.insert(name, action);
    return action;
}

void VLWindowController::buildMenus()
{
    buildFileMenu();
    buildEditMenu();
    buildArrangeMenu();
    buildCompositionMenu();
    buildViewMenu();
    buildHelpMenu();
}

void VLWindowController::buildFileMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    // Ctrl+N belongs to the preferred format's item in the submenu (the same
    // document this item makes); giving it here too would make it ambiguous.
    addCommand(menu, QStringLiteral("newDocument"), tr("&New"), {}, [this] {
        if (controller_) controller_->newDocument();
    });
    QMenu* modes = menu->addMenu(tr("New Document"));
    modes->setObjectName(QStringLiteral("newDocumentMenu"));
    if (controller_) controller_->fillNewDocumentMenu(modes);
    addCommand(menu, QStringLiteral("openDocument"), tr("&Open…"), QKeySequence::Open, [this] {
        if (controller_) controller_->openDocumentWithPanel(this);
    });
    menu->addSeparator();
    addCommand(menu, QStringLiteral("close"), tr("&Close"), QKeySequence::Close, [this] { close(); });
    addCommand(menu, QStringLiteral("save"), tr("&Save"), QKeySequence::Save, [this] { saveDocument(); });
    addCommand(menu, QStringLiteral("saveAs"), tr("Save &As…"), QKeySequence(tr("Ctrl+Shift+S")),
               [this] { saveDocumentAs(); });
    addCommand(menu, QStringLiteral("revert"), tr("&Revert to Saved"), {}, [this] {
        const auto answer = QMessageBox::question(
            this, tr("Revert"), tr("Do you want to revert to the most recently saved version of “%1”?").arg(displayName()),
            QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel);
        if (answer == QMessageBox::Yes) revertDocumentToSaved();
    });
    menu->addSeparator();
    addCommand(menu, QStringLiteral("export"), tr("&Export…"), QKeySequence(tr("Ctrl+E")), [this] {
        const QString path = pathChooser_ ? pathChooser_(*this, QStringLiteral("qtz")) : QString();
        if (!path.isEmpty()) exportDocumentTo(path);
    });
    addCommand(menu, QStringLiteral("exportFieldSchema"), tr("Export Field Schema…"), {}, [this] {
        const QString path = pathChooser_ ? pathChooser_(*this, QStringLiteral("gdd")) : QString();
        if (!path.isEmpty()) exportFieldSchemaTo(path);
    });
    addCommand(menu, QStringLiteral("exportStepPictures"), tr("Export Step Pictures…"), {}, [this] {
        const QString folder = pathChooser_ ? pathChooser_(*this, QStringLiteral("folder")) : QString();
        if (!folder.isEmpty()) exportStepPicturesTo(folder);
    });
    addRenderMovieCommand(menu);
    menu->addSeparator();
    addCommand(menu, QStringLiteral("quit"), tr("&Quit"), QKeySequence::Quit, [] { QApplication::closeAllWindows(); });
}

void VLWindowController::buildEditMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Edit"));
    addCommand(menu, QStringLiteral("undo"), tr("&Undo"), QKeySequence::Undo,
               [this] { document_->store().undoManager().undo(); });
    addCommand(menu, QStringLiteral("redo"), tr("&Redo"), QKeySequence(tr("Ctrl+Shift+Z")),
               [this] { document_->store().undoManager().redo(); });
    menu->addSeparator();
    addCommand(menu, QStringLiteral("cut"), tr("Cu&t"), QKeySequence::Cut, [this] {
        document::ComponentClipboard::cut(*document_->composition(), *QGuiApplication::clipboard());
    });
    addCommand(menu, QStringLiteral("copy"), tr("&Copy"), QKeySequence::Copy, [this] {
        document::ComponentClipboard::copy(*document_->composition(), *QGuiApplication::clipboard());
    });
    addCommand(menu, QStringLiteral("paste"), tr("&Paste"), QKeySequence::Paste, [this] {
        // Pasted components land where the designer is looking, cascading.
        view_->addPlacedComponents(
            [this] { document::ComponentClipboard::paste(*document_->composition(), *QGuiApplication::clipboard()); },
            true);
    });
    QAction* remove = addCommand(menu, QStringLiteral("deleteForward"), tr("&Delete"), QKeySequence::Delete,
                                 [this] { commands_->deleteForward(); });
    remove->setShortcuts({QKeySequence::Delete, QKeySequence(Qt::Key_Backspace)});
    menu->addSeparator();
    addCommand(menu, QStringLiteral("selectAll"), tr("Select &All"), QKeySequence::SelectAll,
               [this] { commands_->selectAll(); });
    menu->addSeparator();
    // Most Linux desktops define no standard key for preferences.
    const QKeySequence standard(QKeySequence::Preferences);
    QAction* preferences = addCommand(menu, QStringLiteral("showPreferences"), tr("Pr&eferences…"),
                                      standard.isEmpty() ? QKeySequence(tr("Ctrl+,")) : standard, [this] {
                                          if (controller_) controller_->showPreferences();
                                      });
    preferences->setMenuRole(QAction::PreferencesRole);
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &VLWindowController::updateSelectionActions);
}

void VLWindowController::buildArrangeMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Arrange"));
    addCommand(menu, QStringLiteral("bringToFront"), tr("Bring to &Front"), QKeySequence(tr("Ctrl+Shift+]")),
               [this] { commands_->bringToFront(); });
    addCommand(menu, QStringLiteral("sendForward"), tr("Bring F&orward"), QKeySequence(tr("Ctrl+]")),
               [this] { commands_->sendForward(); });
    addCommand(menu, QStringLiteral("sendBackward"), tr("Send Back&ward"), QKeySequence(tr("Ctrl+[")),
               [this] { commands_->sendBackward(); });
    addCommand(menu, QStringLiteral("sendToBack"), tr("Send to &Back"), QKeySequence(tr("Ctrl+Shift+[")),
               [this] { commands_->sendToBack(); });
    menu->addSeparator();
    QMenu* align = menu->addMenu(tr("&Align"));
    QMenu* distribute = menu->addMenu(tr("&Distribute"));
    for (const canvas::AlignmentItem& item : canvas::VLAlignmentController::items()) {
        const int tag = item.tag;
        QAction* action = addCommand(item.distributes ? distribute : align, QStringLiteral("align%1").arg(tag), item.title, {},
                                     [this, tag] {
                                         canvas::VLAlignmentController([this] { return commands_.get(); }).executeTag(tag);
                                     });
        action->setIcon(widgets::ToolbarArtwork::toolbarImageWithName(item.imageName));
        action->setToolTip(tr("%1 (Shift: keep the first selected in place)").arg(item.title));
    }
    menu->addSeparator();
    addCommand(menu, QStringLiteral("swapSelected"), tr("&Swap Selected"), {}, [this] {
        if (const auto alert = commands_->swapSelected()) showAlert(*alert);
    });
    addCommand(menu, QStringLiteral("soloComponents"), tr("S&olo Selected"), {}, [this] { commands_->soloComponents(); });
    addCommand(menu, QStringLiteral("showAllComponents"), tr("Show All &Components"), {},
               [this] { commands_->showAllComponents(); });
    menu->addSeparator();
    addCommand(menu, QStringLiteral("sizeToFit"), tr("Size to &Fit"), QKeySequence(tr("Ctrl+Alt+F")),
               [this] { commands_->sizeToFit(); });
}

void VLWindowController::buildCompositionMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Composition"));
    QAction* play = addCommand(menu, QStringLiteral("play"), tr("&Play / Stop"), QKeySequence(Qt::Key_Space),
                               [this] { commands_->play(); });
    play->setShortcutContext(Qt::WindowShortcut);
    connect(scrollView_, &canvas::VLZoomScrollView::spaceTapped, play, &QAction::trigger);
    addCommand(menu, QStringLiteral("addComponentFile"), tr("Add Component &File…"), QKeySequence(tr("Ctrl+Shift+A")),
               [this] { toolbar_->addComponentFile(); });
    addCommand(menu, QStringLiteral("jumpToBeginning"), tr("Jump to &Beginning"), QKeySequence(Qt::Key_Home),
               [this] { commands_->jumpToBeginning(); });
    addCommand(menu, QStringLiteral("jumpToEnd"), tr("Jump to &End"), QKeySequence(Qt::Key_End),
               [this] { commands_->jumpToEnd(); });
    addCommand(menu, QStringLiteral("jumpToPreviousFrame"), tr("Pre&vious Frame"), QKeySequence(tr("Ctrl+Left")),
               [this] { commands_->jumpToPreviousFrame(); });
    addCommand(menu, QStringLiteral("jumpToNextFrame"), tr("&Next Frame"), QKeySequence(tr("Ctrl+Right")),
               [this] { commands_->jumpToNextFrame(); });
    addCommand(menu, QStringLiteral("jumpToPreviousKeyframe"), tr("Previous &Keyframe"),
               QKeySequence(tr("Ctrl+Shift+Left")), [this] { commands_->jumpToPreviousKeyframe(); });
    addCommand(menu, QStringLiteral("jumpToNextKeyframe"), tr("Next Ke&yframe"), QKeySequence(tr("Ctrl+Shift+Right")),
               [this] { commands_->jumpToNextKeyframe(); });
    menu->addSeparator();
    addCommand(menu, QStringLiteral("addStopFrame"), tr("&Add Stop Frame"), {}, [this] { commands_->addStopFrame(); });
    addCommand(menu, QStringLiteral("toggleStopframe"), tr("&Toggle Stop Frame"), QKeySequence(tr("Ctrl+K")),
               [this] { commands_->toggleStopframe(); });
    addCommand(menu, QStringLiteral("togglePosterframe"), tr("Set P&oster Frame"), QKeySequence(tr("Ctrl+Shift+P")),
               [this] { commands_->togglePosterframe(); });
    menu->addSeparator();
    addCommand(menu, QStringLiteral("checkTextFields"), tr("Check Text Fields…"), {}, [this] {
        QList<document::TextCheckResult> results;
        {
            widgets::WorkProgressDialog progress(this, tr("Checking the text fields…"), true);
            results = document::checkTextFields(*document_->composition(), {}, progress.callback());
            if (progress.wasCancelled()) return;
        }
        auto* dialog = new TextCheckDialog(results, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setWindowModality(Qt::WindowModal);
        dialog->show();
    });
    addCommand(menu, QStringLiteral("upgradeComposition"), tr("&Upgrade Components"), {},
               [this] { showAlert(commands_->upgradeComposition()); });
    addCommand(menu, QStringLiteral("makePathsRelative"), tr("Make Paths &Relative"), {},
               [this] { showAlert(commands_->makePathsRelative()); });
    addCommand(menu, QStringLiteral("embedResources"), tr("E&mbed Resources"), {},
               [this] { showAlert(commands_->embedResources()); });
    addPreviewCommands(menu);
}

void VLWindowController::buildViewMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&View"));
    auto* zoomGroup = new QActionGroup(this);
    const QKeySequence shortcuts[] = {QKeySequence(tr("Ctrl+2")), QKeySequence(), QKeySequence(tr("Ctrl+1")),
                                      QKeySequence(), QKeySequence(tr("Ctrl+0"))};
    for (std::size_t i = 0; i < std::size(kZoomModes); ++i) {
        const int mode = kZoomModes[i];
        QAction* action = addCommand(menu, QStringLiteral("zoom%1").arg(mode),
                                     mode == 0 ? tr("Zoom to &Fit") : tr("Zoom %1%").arg(mode), shortcuts[i],
                                     [this, mode] { view_->setZoomMode(mode); });
        action->setCheckable(true);
        zoomGroup->addAction(action);
    }
    QAction* zoomIn = addCommand(menu, QStringLiteral("zoomIn"), tr("Zoom &In"), QKeySequence(tr("Ctrl+=")),
                                 [this] { scrollView_->zoomIn(); });
    zoomIn->setShortcuts({QKeySequence(tr("Ctrl+=")), QKeySequence(tr("Ctrl++"))});
    addCommand(menu, QStringLiteral("zoomOut"), tr("Zoom &Out"), QKeySequence(tr("Ctrl+-")),
               [this] { scrollView_->zoomOut(); });
    menu->addSeparator();
    QAction* rulers = addCommand(menu, QStringLiteral("showsRulers"), tr("Show &Rulers"), QKeySequence(tr("Ctrl+R")), [this] {
        model::Composition* c = document_->composition();
        c->setShowsRulers(!c->showsRulers());
    });
    rulers->setCheckable(true);
    QAction* safe = addCommand(menu, QStringLiteral("showsSafeZones"), tr("Show &Safe Areas"), QKeySequence(tr("Ctrl+Shift+R")), [this] {
        model::Composition* c = document_->composition();
        c->setShowsSafeZones(!c->showsSafeZones());
    });
    safe->setCheckable(true);
    menu->addSeparator();
    // The items follow the panels, which can also be closed by their own
    // title bar buttons.
    const std::pair<QString, QDockWidget*> panels[] = {{QStringLiteral("toggleInspector"), inspectorDock_},
                                                       {QStringLiteral("toggleLibrary"), libraryDock_}};
    const QString titles[] = {tr("Show &Inspector"), tr("Show &Library")};
    const QKeySequence keys[] = {QKeySequence(tr("Ctrl+Alt+I")), QKeySequence(tr("Ctrl+Alt+L"))};
    for (std::size_t i = 0; i < std::size(panels); ++i) {
        QDockWidget* dock = panels[i].second;
        QAction* toggle = addCommand(menu, panels[i].first, titles[i], keys[i],
                                     [dock] { dock->toggleViewAction()->trigger(); });
        toggle->setCheckable(true);
        toggle->setChecked(dock->toggleViewAction()->isChecked());
        connect(dock->toggleViewAction(), &QAction::toggled, toggle, &QAction::setChecked);
    }
}

void VLWindowController::buildHelpMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Help"));
    addCommand(menu, QStringLiteral("showHelp"), tr("Velloran &Help"), QKeySequence::HelpContents, [this] { showHelp(); });
    QAction* about = addCommand(menu, QStringLiteral("about"), tr("&About Velloran"), {}, [this] { showAbout(); });
    about->setMenuRole(QAction::AboutRole);
}

void VLWindowController::showHelp() { QDesktopServices::openUrl(product::helpPageUrl()); }

void VLWindowController::showAbout() { QMessageBox::about(this, tr("About Velloran"), product::aboutText()); }

void VLWindowController::updateUndoActions()
{
    if (!document_) return;
    model::UndoManager& undo = document_->store().undoManager();
    QAction* undoAction = action(QStringLiteral("undo"));
    QAction* redoAction = action(QStringLiteral("redo"));
    undoAction->setEnabled(undo.canUndo());
    redoAction->setEnabled(undo.canRedo());
    const QString undoName = undo.undoActionName(), redoName = undo.redoActionName();
    undoAction->setText(undoName.isEmpty() ? tr("&Undo") : tr("&Undo %1").arg(undoName));
    redoAction->setText(redoName.isEmpty() ? tr("&Redo") : tr("&Redo %1").arg(redoName));
}

void VLWindowController::updateSelectionActions()
{
    if (!document_ || !commands_) return;
    const bool selection = document_->composition()->validSelection();
    for (const char* name : {"cut", "copy", "deleteForward", "sizeToFit", "soloComponents", "bringToFront",
                             "sendForward", "sendBackward", "sendToBack"})
        action(QString::fromLatin1(name))->setEnabled(selection);
    action(QStringLiteral("paste"))->setEnabled(
        document::ComponentClipboard::pasteboardIsValid(*QGuiApplication::clipboard()));
    const std::size_t count = document_->composition()->selectedComponents().size();
    for (const canvas::AlignmentItem& item : canvas::VLAlignmentController::items())
        action(QStringLiteral("align%1").arg(item.tag))->setEnabled(count >= (item.distributes ? 3u : 2u));
    action(QStringLiteral("swapSelected"))->setEnabled(true);
    updateUndoActions();
}

void VLWindowController::updateViewActions()
{
    if (!document_) return;
    const model::Composition* c = document_->composition();
    if (QAction* zoom = action(QStringLiteral("zoom%1").arg(view_->zoomMode()))) zoom->setChecked(true);
    action(QStringLiteral("showsRulers"))->setChecked(c->showsRulers());
    action(QStringLiteral("showsSafeZones"))->setChecked(c->showsSafeZones());
}

}  // namespace app
