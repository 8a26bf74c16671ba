#include "app/CompositionDocumentsController.h"

#include "app/VLPreferencesController.h"
#include "app/VLWindowController.h"
#include "app/VideoModeItems.h"
#include "document/CompositionDocument.h"
#include "document/DocumentJournal.h"
#include "document/PackageLocation.h"
#include "model/VideoModeCatalogue.h"
#include "model/VideoResolution.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

namespace app {

Q_LOGGING_CATEGORY(lcDocuments, "velloran.documents")

CompositionDocumentsController::CompositionDocumentsController(QObject* parent) : QObject(parent)
{
    // The preview's status line names a document as its window does.
    preview_.setDisplayNames([this](const document::CompositionDocument& document) {
        for (VLWindowController* window : windows())
            if (window->document() == &document) return window->displayName();
        return QString();
    });
}

CompositionDocumentsController::~CompositionDocumentsController() = default;

std::vector<VLWindowController*> CompositionDocumentsController::windows() const
{
    std::vector<VLWindowController*> result;
    for (const auto& window : windows_)
        if (window) result.push_back(window);
    return result;
}

QString CompositionDocumentsController::nextUntitledName()
{
    ++untitledCount_;
    return untitledCount_ == 1 ? tr("Untitled") : tr("Untitled %1").arg(untitledCount_);
}

std::vector<const document::CompositionDocument*> CompositionDocumentsController::openDocuments() const
{
    std::vector<const document::CompositionDocument*> documents;
    for (VLWindowController* window : windows()) documents.push_back(window->document());
    return documents;
}

VLWindowController* CompositionDocumentsController::show(VLWindowController* window)
{
    windows_.emplace_back(window);
    // The preview may hold the document for its slideshow; it lets go
    // before anything could reach the freed document.
    connect(window, &QObject::destroyed, this, [this, document = window->document()] { preview_.documentWillClose(document); });
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

VLWindowController* CompositionDocumentsController::newDocument()
{
    qCInfo(lcDocuments) << "CompositionDocumentsController will create a new document";
    return newDocumentWithMode(model::VideoResolution::defaultVideoResolution().title());
}

VLWindowController* CompositionDocumentsController::newDocumentWithMode(const QString& broadcastMode)
{
    qCInfo(lcDocuments) << "CompositionDocumentsController will open an untitled document";
    model::VideoResolution resolution = model::VideoResolution::videoResolutionForBroadcastMode(broadcastMode);
    if (!resolution.isValid()) resolution = model::VideoResolution::defaultVideoResolution();
    if (!resolution.isValid()) resolution = model::VideoResolution(model::VideoModeCatalogue::defaultModeName());
    if (!resolution.isValid()) return nullptr;
    auto document = document::CompositionDocument::emptyDocumentWithResolution(resolution);
    if (crashRecovery_) document->enableJournal();
    return show(new VLWindowController(std::move(document), nextUntitledName(), this));
}

VLWindowController* CompositionDocumentsController::openDocument(const QString& chosen, QWidget* parent, QString* error)
{
    // A package is a folder; any file inside it (the store, the info file a
    // file manager hands over) means the package.
    QString path = document::packageContainingPath(chosen);
    if (path.isEmpty()) path = QFileInfo(chosen).absoluteFilePath();
    for (VLWindowController* window : windows()) {
        if (!window->document()->fileURL().isEmpty() && QFileInfo(window->document()->fileURL()) == QFileInfo(path)) {
            window->raise();
            window->activateWindow();
            return window;
        }
    }
    QString reason;
    auto document = document::CompositionDocument::open(path, &reason);
    if (!document) {
        if (error) {
            *error = reason;
            return nullptr;
        }
        if (parent || windows().empty()) {
            QMessageBox box(QMessageBox::Warning, tr("Open"),
                            tr("The document “%1” could not be opened.").arg(QFileInfo(path).fileName()),
                            QMessageBox::NoButton, parent);
            box.setInformativeText(reason);
            box.addButton(tr("Ok"), QMessageBox::AcceptRole);
            box.exec();
        }
        return nullptr;
    }
    if (crashRecovery_) {
        offerRecovery(*document);
        document->enableJournal();
    }
    return show(new VLWindowController(std::move(document), QString(), this));
}

CompositionDocumentsController::RecoveryAnswer CompositionDocumentsController::askToRecover(const QString& documentName,
                                                                                            int changes)
{
    if (recoveryQuestion_) return recoveryQuestion_(documentName, changes);
    QMessageBox box(QMessageBox::Question, tr("Recover unsaved changes?"), tr("Recover unsaved changes?"),
                    QMessageBox::NoButton);
    box.setInformativeText(tr("Velloran stopped before “%1” was saved. %n change(s) made after the last save can be "
                              "recovered.", nullptr, changes).arg(documentName));
    QPushButton* recover = box.addButton(tr("Recover"), QMessageBox::AcceptRole);
    box.addButton(tr("Discard"), QMessageBox::DestructiveRole);
    box.setDefaultButton(recover);
    box.exec();
    return box.clickedButton() == recover ? RecoveryAnswer::Recover : RecoveryAnswer::Discard;
}

void CompositionDocumentsController::offerRecovery(document::CompositionDocument& document)
{
    const document::JournalStatus status = document::DocumentJournal::statusForPackage(document.fileURL());
    if (status.records == 0) return;
    if (status.baseChanged) {
        // Made on an older save of the package: they would not fit.
        qCWarning(lcDocuments).noquote() << QStringLiteral("Dropping the journal %1: %2 was saved after it").arg(status.path, document.fileURL());
        document::DocumentJournal::discard(status.path);
        return;
    }
    const QString name = QFileInfo(document.fileURL()).completeBaseName();
    if (askToRecover(name, status.records) == RecoveryAnswer::Discard) {
        document::DocumentJournal::discard(status.path);
        return;
    }
    QString error;
    if (!document.recoverFromJournal(status, &error))
        qCWarning(lcDocuments).noquote() << QStringLiteral("Could not recover %1: %2").arg(name, error);
}

void CompositionDocumentsController::offerRecoveryAtStart()
{
    if (!crashRecovery_) return;
    for (const document::JournalStatus& status : document::DocumentJournal::pendingJournals()) {
        if (!status.document.isEmpty()) {
            // Opening it offers its journal.
            if (QFileInfo::exists(status.document)) openDocument(status.document);
            continue;
        }
        if (askToRecover(tr("Untitled"), status.records) == RecoveryAnswer::Discard) {
            document::DocumentJournal::discard(status.path);
            continue;
        }
        QString error;
        auto document = document::CompositionDocument::recoverUntitled(status, &error);
        if (!document) {
            qCWarning(lcDocuments).noquote() << QStringLiteral("Could not recover %1: %2").arg(status.path, error);
            continue;
        }
        show(new VLWindowController(std::move(document), nextUntitledName(), this));
    }
}

void CompositionDocumentsController::openDocumentWithPanel(QWidget* parent)
{
    // Packages are folders, so the panel chooses folders.
    QFileDialog dialog(parent, tr("Open"));
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setNameFilter(tr("Compositions (*.composition)"));
    dialog.setDirectory(QDir::homePath());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    openDocument(dialog.selectedFiles().constFirst(), parent);
}

void CompositionDocumentsController::fillNewDocumentMenu(QMenu* menu)
{
    addVideoModeItems(menu, [this](QAction* action, const QString& name) {
        connect(action, &QAction::triggered, this, [this, name] { newDocumentWithMode(name); });
    });
    newDocumentMenus_.emplace_back(menu);
    VLPreferencesController::registerNewDocumentMenu(menu);
}

std::vector<QMenu*> CompositionDocumentsController::newDocumentMenus() const
{
    std::vector<QMenu*> result;
    for (const auto& menu : newDocumentMenus_)
        if (menu) result.push_back(menu);
    return result;
}

VLPreferencesController* CompositionDocumentsController::preferencesController()
{
    if (!preferences_) preferences_ = std::make_unique<VLPreferencesController>(this);
    return preferences_.get();
}

void CompositionDocumentsController::showPreferences()
{
    VLPreferencesController* preferences = preferencesController();
    preferences->show();
    preferences->raise();
    preferences->activateWindow();
}

}  // namespace app
