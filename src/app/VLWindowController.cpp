#include "app/VLWindowController.h"

#include "app/CompositionDocumentsController.h"
#include "app/VLLibraryController.h"
#include "canvas/AlertSheet.h"
#include "document/FieldSchema.h"
#include "document/Thumbnail.h"
#include "canvas/CompositionView.h"
#include "canvas/VLMainToolbar.h"
#include "canvas/VLZoomScrollView.h"
#include "document/Alert.h"
#include "document/CompositionDocument.h"
#include "document/CompositionExport.h"
#include "document/DocumentCommands.h"
#include "document/ExportKeyFactory.h"
#include "model/Composition.h"
#include "model/NotificationHelper.h"
#include "model/Timecode.h"
#include "inspector/VLInspectorController.h"
#include "timeline/TimelinePanel.h"
#include "widgets/WorkProgressDialog.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>

namespace app {

VLWindowController::VLWindowController(std::unique_ptr<document::CompositionDocument> document,
                                       const QString& untitledName, CompositionDocumentsController* controller)
    : document_(std::move(document)),
      controller_(controller),
      untitledName_(untitledName),
      view_(new canvas::CompositionView),
      scrollView_(new canvas::VLZoomScrollView(this)),
      timecodeLabel_(new QLabel(this)),
      formatLabel_(new QLabel(this)),
      selectionLabel_(new QLabel(this)),
      zoomLabel_(new QLabel(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("DocumentWindow"));
    setUnifiedTitleAndToolBarOnMac(true);
    scrollView_->setCompositionView(view_);
    buildPanels();
    toolbar_ = new canvas::VLMainToolbar(view_, [this] { return commands_.get(); });
    addToolBar(Qt::TopToolBarArea, toolbar_);

    QFont mono = timecodeLabel_->font();
    mono.setFamily(QStringLiteral("DejaVu Sans Mono"));
    mono.setStyleHint(QFont::Monospace);
    timecodeLabel_->setFont(mono);
    timecodeLabel_->setObjectName(QStringLiteral("Timecode"));
    statusBar()->addWidget(timecodeLabel_);
    statusBar()->addWidget(selectionLabel_);
    auto* readout = new QLabel(this);
    readout->setObjectName(QStringLiteral("CanvasReadout"));
    statusBar()->addWidget(readout, 1);
    connect(view_, &canvas::CompositionView::readoutChanged, readout,
            [this, readout] { readout->setText(canvas::formatReadout(view_->readout())); });
    statusBar()->addPermanentWidget(formatLabel_);
    statusBar()->addPermanentWidget(zoomLabel_);

    buildMenus();
    attachDocument();
    connect(view_, &canvas::CompositionView::selectionChanged, this, [this] {
        updateSelectionActions();
        updateStatus();
    });
    connect(view_, &canvas::CompositionView::editorTimepointChanged, this, &VLWindowController::updateStatus);
    connect(view_, &canvas::CompositionView::zoomChanged, this, [this] {
        updateViewActions();
        updateStatus();
    });
    connect(view_, &canvas::CompositionView::layoutChanged, this, &VLWindowController::updateStatus);

    const QRect screen = QGuiApplication::primaryScreen() ? QGuiApplication::primaryScreen()->availableGeometry()
                                                          : QRect(0, 0, 1600, 1000);
    resize(std::min(1500, int(screen.width() * 0.9)), std::min(950, int(screen.height() * 0.9)));
    restoreWindowState();
    view_->setFocus();
}

VLWindowController::~VLWindowController() { detachDocument(); }

QAction* VLWindowController::action(const QString& name) const { return actions_.value(name); }

// The document ------------------------------------------------------------------

void VLWindowController::attachDocument()
{
    commands_ = std::make_unique<document::DocumentCommands>(
        *document_->composition(), [this](const QList<QVariantMap>& copies) {
            document_->pendingResources() = copies;
            return saveDocument();
        });
    view_->setDocument(document_.get());
    timelinePanel_->setDocument(document_.get(), [this] { return commands_.get(); });
    inspector_->setDocument(document_.get(), [this] { return commands_.get(); });
    observeDocument();
    undoConnection_ = connect(&document_->store().undoManager(), &model::UndoManager::changed, this,
                              &VLWindowController::updateUndoActions);
    updateTitle();
    updateUndoActions();
    updateSelectionActions();
    updateViewActions();
    updateStatus();
}

void VLWindowController::detachDocument()
{
    model::NotificationHelper::removeObserver(this);
    if (undoConnection_) disconnect(undoConnection_);
    undoConnection_ = {};
    view_->setDocument(nullptr);
    timelinePanel_->setDocument(nullptr);
    inspector_->setDocument(nullptr);
    commands_.reset();
}

void VLWindowController::observeDocument()
{
    model::Composition* c = document_->composition();
    for (const char* key : {"showsRulers", "showsSafeZones"})
        model::NotificationHelper::addObserver(this, c, QString::fromLatin1(key),
                                               [this](model::ManagedObject*, const QString&) { updateViewActions(); });
    // Adding or deleting components changes the count in the status line.
    model::NotificationHelper::addObserver(this, c, QStringLiteral("componentsSortedByInverseZLevel"),
                                           [this](model::ManagedObject*, const QString&) { updateStatus(); });
}

QString VLWindowController::displayName() const
{
    const QString path = document_->fileURL();
    return path.isEmpty() ? untitledName_ : QFileInfo(path).completeBaseName();
}

QString VLWindowController::windowTitleForDocumentDisplayName(const QString& name) const
{
    return name + QStringLiteral(" - ") + document_->composition()->broadcastMode();
}

void VLWindowController::updateTitle()
{
    setWindowTitle(windowTitleForDocumentDisplayName(displayName()));
    setWindowFilePath(document_->fileURL());
    if (QAction* revert = action(QStringLiteral("revert"))) revert->setEnabled(!document_->fileURL().isEmpty());
}

void VLWindowController::updateStatus()
{
    const model::Composition* c = document_ ? document_->composition() : nullptr;
    if (!c) return;
    const model::Timecode timecode = model::Timecode::fromSeconds(c->editorTimepoint(), c->videoResolution().frameRate());
    timecodeLabel_->setText(QStringLiteral("  %1  ").arg(timecode.toString()));
    formatLabel_->setText(QStringLiteral("%1  ·  %2 × %3").arg(c->broadcastMode()).arg(c->width()).arg(c->height()));
    zoomLabel_->setText(QStringLiteral("  %1%  ").arg(qRound(view_->zoomFactor() * 100)));
    const std::size_t selected = c->selectedComponents().size();
    const std::size_t total = c->componentArray().size();
    selectionLabel_->setText(selected == 0 ? tr("%n component(s)", nullptr, int(total))
                                           : tr("%1 of %2 selected").arg(selected).arg(total));
}

// Saving ------------------------------------------------------------------------

bool VLWindowController::saveDocument()
{
    if (document_->fileURL().isEmpty()) return saveDocumentAs();
    QString error;
    widgets::WorkProgressDialog progress(this, tr("Saving “%1”…").arg(displayName()), false);
    if (!document_->save(&error, progress.callback())) {
        showError(tr("The document “%1” could not be saved.").arg(displayName()), error);
        return false;
    }
    return true;
}

bool VLWindowController::saveDocumentAs()
{
    const QString path = pathChooser_ ? pathChooser_(*this, QStringLiteral("composition")) : QString();
    return !path.isEmpty() && saveDocumentTo(path);
}

bool VLWindowController::saveDocumentTo(const QString& chosen)
{
    QString path = chosen;
    const QString suffix = QStringLiteral(".") + document::CompositionDocument::packageExtension();
    if (!path.endsWith(suffix)) path += suffix;
    QString error;
    widgets::WorkProgressDialog progress(this, tr("Saving “%1”…").arg(QFileInfo(path).completeBaseName()), false);
    if (!document_->saveAs(path, &error, progress.callback())) {
        showError(tr("The document “%1” could not be saved.").arg(displayName()), error);
        return false;
    }
    updateTitle();
    return true;
}

void VLWindowController::revertDocumentToSaved()
{
    const QString path = document_->fileURL();
    if (path.isEmpty()) return;
    detachDocument();
    QString error;
    // A failed read leaves the open document as it was.
    const bool reverted = document_->revertToContentsOfURL(path, &error);
    attachDocument();
    if (!reverted) showError(tr("The document “%1” could not be reverted.").arg(displayName()), error);
}

bool VLWindowController::exportDocumentTo(const QString& path)
{
    if (path.isEmpty()) return false;
    widgets::WorkProgressDialog progress(this, tr("Exporting “%1”…").arg(QFileInfo(path).fileName()), false);
    if (!document::CompositionExport::exportToPath(*document_->composition(), path, false, &document::exportKeyFactory,
                                                   progress.callback())) {
        showError(tr("The composition could not be exported."),
                  tr("Writing “%1” failed, or a standard component it needs is missing.").arg(QDir::toNativeSeparators(path)));
        return false;
    }
    return true;
}

bool VLWindowController::exportFieldSchemaTo(const QString& path)
{
    QString error;
    if (!document::writeFieldSchema(*document_->composition(), displayName(), path, &error)) {
        showError(tr("The field schema could not be exported."), tr("Writing “%1” failed: %2").arg(QDir::toNativeSeparators(path), error));
        return false;
    }
    return true;
}

bool VLWindowController::exportStepPicturesTo(const QString& folder)
{
    QString error;
    const QUrl location = document_->fileURL().isEmpty() ? QUrl() : QUrl::fromLocalFile(document_->fileURL());
    if (!document::exportStepPictures(*document_->composition(), folder, {}, location, &error)) {
        showError(tr("The step pictures could not be exported."), error);
        return false;
    }
    return true;
}

QString VLWindowController::choosePath(VLWindowController& window, const QString& kind)
{
    if (kind == QLatin1String("folder"))
        return QFileDialog::getExistingDirectory(&window, tr("Export Step Pictures"), QDir::homePath());
    if (kind == QLatin1String("gdd")) {
        const QString directory = window.document()->fileURL().isEmpty() ? QDir::homePath()
                                                                        : QFileInfo(window.document()->fileURL()).absolutePath();
        return QFileDialog::getSaveFileName(&window, tr("Export Field Schema"),
                                            directory + QLatin1Char('/') + window.displayName() + QStringLiteral(".gdd.json"),
                                            tr("Field Schema (*.gdd.json *.json)"));
    }
    const bool package = kind == QLatin1String("composition");
    const QString directory = window.document()->fileURL().isEmpty()
                                  ? QDir::homePath()
                                  : QFileInfo(window.document()->fileURL()).absolutePath();
    const QString name = directory + QLatin1Char('/') + window.displayName() + (package ? QStringLiteral(".composition") : QStringLiteral(".qtz"));
    return package ? QFileDialog::getSaveFileName(&window, tr("Save As"), name, tr("Composition (*.composition)"))
                   : QFileDialog::getSaveFileName(&window, tr("Export"), name, tr("Quartz Composer Composition (*.qtz)"));
}

void VLWindowController::showError(const QString& title, const QString& text)
{
    // A sheet, not a blocking dialog: the document stays open and usable.
    canvas::showAlertSheet(this, document::Alert{title, text, {}}, true);
}

void VLWindowController::showAlert(const document::Alert& alert) { canvas::showAlertSheet(this, alert); }

// Closing -----------------------------------------------------------------------

VLWindowController::CloseAnswer VLWindowController::askToSave(VLWindowController& window)
{
    QMessageBox box(QMessageBox::Warning, tr("Save Changes"),
                    tr("Do you want to save the changes made to the document “%1”?").arg(window.displayName()),
                    QMessageBox::NoButton, &window);
    box.setInformativeText(tr("Your changes will be lost if you don’t save them."));
    QPushButton* save = box.addButton(tr("Save"), QMessageBox::AcceptRole);
    QPushButton* discard = box.addButton(tr("Don’t Save"), QMessageBox::DestructiveRole);
    box.addButton(tr("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(save);
    box.exec();
    if (box.clickedButton() == save) return CloseAnswer::Save;
    if (box.clickedButton() == discard) return CloseAnswer::DontSave;
    return CloseAnswer::Cancel;
}

void VLWindowController::closeEvent(QCloseEvent* event)
{
    if (document_ && !document_->canCloseDocument()) {
        event->ignore();
        return;
    }
    // A template is always treated as edited: there is always the question.
    const CloseAnswer answer = closeQuestion_ ? closeQuestion_(*this) : CloseAnswer::DontSave;
    if (answer == CloseAnswer::Cancel || (answer == CloseAnswer::Save && !saveDocument())) {
        event->ignore();
        return;
    }
    saveWindowState();
    detachDocument();
    library_->cleanUp();
    event->accept();
}

}  // namespace app
