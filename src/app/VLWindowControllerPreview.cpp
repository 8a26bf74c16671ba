// The document window's way into the preview and the movie: the toolbar's
// Preview item, the Composition menu's preview, full screen and slideshow
// items, and File > Render Movie….

#include "app/CompositionDocumentsController.h"
#include "app/VLWindowController.h"

#include "canvas/VLMainToolbar.h"
#include "document/CompositionDocument.h"
#include "preview/MovieRendering.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>

namespace app {

void VLWindowController::addPreviewCommands(QMenu* menu)
{
    menu->addSeparator();
    addCommand(menu, QStringLiteral("showPreview"), tr("&Preview"), QKeySequence(tr("Ctrl+Alt+P")), [this] { showPreview(); });
    addCommand(menu, QStringLiteral("togglePreviewFullscreen"), tr("Preview &Full Screen"),
               QKeySequence(tr("Ctrl+Alt+Shift+F")), [this] {
                   if (controller_) controller_->preview().togglePreviewFullscreen();
               });
    // One item per screen, listed when the menu opens: screens come and go.
    QMenu* screens = menu->addMenu(tr("Preview Full Screen &On"));
    screens->setObjectName(QStringLiteral("previewScreensMenu"));
    connect(screens, &QMenu::aboutToShow, this, [this, screens] {
        screens->clear();
        const QList<QScreen*> all = QGuiApplication::screens();
        for (int i = 0; i < all.size(); ++i) {
            QScreen* screen = all[i];
            screens->addAction(tr("%1: %2").arg(i + 1).arg(screen->name()), this, [this, screen] {
                if (!controller_) return;
                if (!controller_->preview().controller()) showPreview();
                controller_->preview().togglePreviewFullscreen(screen);
            });
        }
    });
    addCommand(menu, QStringLiteral("runSlideshow"), tr("Run &Slideshow"), {}, [this] {
        if (controller_) controller_->preview().runSlideshowForCompositions(controller_->openDocuments());
    });
    connect(toolbar_, &canvas::VLMainToolbar::previewRequested, this, &VLWindowController::showPreview);
}

void VLWindowController::addRenderMovieCommand(QMenu* menu)
{
    addCommand(menu, QStringLiteral("renderMovie"), tr("Render &Movie…"), QKeySequence(tr("Ctrl+Alt+M")), [this] {
        // Beside the document, as Export suggests.
        const QString folder = document_->fileURL().isEmpty() ? QDir::homePath()
                                                              : QFileInfo(document_->fileURL()).absolutePath();
        const preview::MovieChoice choice =
            preview::chooseMovieFile(this, QDir(folder).filePath(displayName() + QStringLiteral(".mov")));
        if (!choice.path.isEmpty()) renderMovieTo(choice.path, choice.codec);
    });
}

void VLWindowController::showPreview()
{
    if (controller_) controller_->preview().togglePreviewForCompositionDocument(document_.get());
}

bool VLWindowController::renderMovieTo(const QString& path, playout::MovieCodec codec)
{
    const playout::RenderOutcome outcome = preview::renderMovieWithProgress(this, *document_, {path, codec});
    if (!outcome.ok && !outcome.cancelled)
        showError(tr("The movie could not be rendered."),
                  tr("Writing “%1” failed: %2").arg(QDir::toNativeSeparators(path), outcome.error));
    return outcome.ok;
}

}  // namespace app
