// The document window's layout: the canvas above the timeline in a
// splitter, the inspector and the library as dock panels, and the
// arrangement remembered between windows.

#include "app/CompositionDocumentsController.h"
#include "app/VLLibraryController.h"
#include "app/VLWindowController.h"

#include "canvas/VLZoomScrollView.h"
#include "inspector/VLInspectorController.h"
#include "model/Settings.h"
#include "timeline/TimelinePanel.h"

#include <QDockWidget>
#include <QFileInfo>
#include <QSplitter>
#include <QVariantMap>

namespace app {

namespace {

const QString kMainWindowState = QStringLiteral("mainWindow");
const QString kSplitterState = QStringLiteral("splitter");

QDockWidget* makeDock(QMainWindow* window, const QString& name, const QString& title, QWidget* content)
{
    auto* dock = new QDockWidget(title, window);
    dock->setObjectName(name);
    dock->setWidget(content);
    return dock;
}

}  // namespace

void VLWindowController::buildPanels()
{
    splitter_ = new QSplitter(Qt::Vertical, this);
    splitter_->setObjectName(QStringLiteral("documentSplitter"));
    splitter_->setChildrenCollapsible(false);
    // The splitter gives the timeline the height it asks for, the canvas the rest.
    timelinePanel_ = new timeline::TimelinePanel;
    // The divider stays between 150 points from the top and 50 from the bottom.
    scrollView_->setMinimumHeight(150);
    timelinePanel_->setMinimumHeight(50);
    splitter_->addWidget(scrollView_);
    splitter_->addWidget(timelinePanel_);
    splitter_->setStretchFactor(0, 1);
    splitter_->setStretchFactor(1, 0);
    setCentralWidget(splitter_);

    inspector_ = new inspector::VLInspectorController;
    inspectorDock_ = makeDock(this, QStringLiteral("inspectorDock"), tr("Inspector"), inspector_);
    addDockWidget(Qt::RightDockWidgetArea, inspectorDock_);

    library_ = new VLLibraryController;
    library_->setMinimumWidth(220);
    libraryDock_ = makeDock(this, QStringLiteral("libraryDock"), tr("Library"), library_);
    addDockWidget(Qt::LeftDockWidgetArea, libraryDock_);
    connect(library_, &VLLibraryController::doubleClicked, this, &VLWindowController::doubleClickedItem);
    resizeDocks({libraryDock_, inspectorDock_}, {260, 340}, Qt::Horizontal);
}

void VLWindowController::restoreWindowState()
{
    const QVariant state = model::Settings::value(model::Settings::kWindowState);
    if (!state.isValid()) {
        // Only the very first document window fills the screen; later ones
        // start from the arrangement the user left.
        setWindowState(windowState() | Qt::WindowMaximized);
        return;
    }
    const QVariantMap map = state.toMap();
    restoreState(map.value(kMainWindowState).toByteArray());
    splitter_->restoreState(map.value(kSplitterState).toByteArray());
}

void VLWindowController::saveWindowState()
{
    if (!remembersWindowState_) return;
    model::Settings::setValue(model::Settings::kWindowState,
                              QVariantMap{{kMainWindowState, saveState()}, {kSplitterState, splitter_->saveState()}});
}

void VLWindowController::doubleClickedItem()
{
    if (!controller_) return;
    // Documents are packages, folders on disk, so the extension alone tells
    // them apart; the library lists no other folders.
    for (const QString& path : library_->selectedPaths())
        if (QFileInfo(path).suffix().toLower() == QLatin1String("composition")) controller_->openDocument(path, this);
}

}  // namespace app
