// Where new components land and the window pieces around the canvas: paste
// and the toolbar put them in the middle of what is shown, cascading; a
// drop puts them under the mouse; Add Component File takes a composition
// from the components library; the split view keeps both sides usable and
// the status line reads the canvas.

#include "../support/ComponentFiles.h"

#include "app/CompositionDocumentsController.h"
#include "app/VLWindowController.h"
#include "canvas/CompositionView.h"
#include "canvas/VLMainToolbar.h"
#include "canvas/VLZoomScrollView.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Settings.h"
#include "model/StandardComponents.h"
#include "timeline/TimelinePanel.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QTimer>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPointer>
#include <QSplitter>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

using app::VLWindowController;

class CanvasPlacementTest : public ::testing::Test {
protected:
    CanvasPlacementTest()
    {
        window = controller.newDocument();
        window->setCloseQuestion([](VLWindowController&) { return VLWindowController::CloseAnswer::DontSave; });
        window->resize(1400, 900);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window));
        view()->setZoomMode(50);
    }
    ~CanvasPlacementTest() override
    {
        if (window) window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    model::Composition* composition() const { return window->document()->composition(); }
    canvas::CompositionView* view() const { return window->compositionView(); }
    model::UndoManager& undoManager() { return window->document()->store().undoManager(); }
    QPointF centreOf(const model::QuartzComponent* c) const { return c->drawingFrame().center(); }
    model::QuartzComponent* addBox(double x, double y)
    {
        model::QuartzComponent* box = composition()->addComponenWithQuartzCompositionFile(
            model::StandardComponents::pathForComponent(QStringLiteral("Box")));
        box->setOriginX(x);
        box->setOriginY(y);
        return box;
    }

    app::CompositionDocumentsController controller;
    QPointer<VLWindowController> window;
    QTemporaryDir dir;
};

TEST_F(CanvasPlacementTest, PastesLandInTheMiddleOfTheViewEachTwentyPixelsOn)
{
    model::QuartzComponent* original = addBox(20, 30);
    ASSERT_TRUE(original);
    composition()->clearSelection();
    original->setSelected(true);
    window->action(QStringLiteral("copy"))->trigger();
    // Look at the top-right quarter of the page.
    window->scrollView()->zoomTo(200);
    const QPointF middle = view()->visibleCentre();
    undoManager().removeAllActions();

    std::vector<QPointF> origins;
    for (int i = 0; i < 3; ++i) {
        window->action(QStringLiteral("paste"))->trigger();
        const model::QuartzComponent* pasted = composition()->componentsSortedByZLevel().back();
        origins.push_back(pasted->drawingFrame().topLeft());
        if (i == 0) {
            EXPECT_NEAR(centreOf(pasted).x(), middle.x(), 1.0);
            EXPECT_NEAR(centreOf(pasted).y(), middle.y(), 1.0);
        }
    }
    EXPECT_EQ(origins[1] - origins[0], QPointF(20, -20));
    EXPECT_EQ(origins[2] - origins[1], QPointF(20, -20));
    EXPECT_EQ(original->drawingFrame().topLeft(), QPointF(20, 30)) << "the original stays";
    // Each paste, placing included, is one step.
    ASSERT_EQ(undoManager().undoCount(), 3u);
    undoManager().undo();
    EXPECT_EQ(composition()->componentArray().size(), 3u);
    undoManager().redo();
    EXPECT_EQ(composition()->componentsSortedByZLevel().back()->drawingFrame().topLeft(), origins[2]);
}

TEST_F(CanvasPlacementTest, ADropLandsUnderTheMouseAndFurtherFilesCascadeFromThere)
{
    const QString box = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(box), QUrl::fromLocalFile(box)});
    const QPointF dropPoint = view()->viewPointFromComposition(QPointF(1500, 200));
    QDragEnterEvent enter(dropPoint.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(view(), &enter);
    QDropEvent drop(dropPoint, Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(view(), &drop);
    const auto added = composition()->componentsSortedByZLevel();
    ASSERT_EQ(added.size(), 2u);
    EXPECT_NEAR(centreOf(added[0]).x(), 1500, 1.0);
    EXPECT_NEAR(centreOf(added[0]).y(), 200, 1.0);
    EXPECT_EQ(added[1]->drawingFrame().topLeft() - added[0]->drawingFrame().topLeft(), QPointF(20, -20));
}

TEST_F(CanvasPlacementTest, AddComponentFileOpensTheComponentsLibraryAndAddsTheChosenFile)
{
    const QString box = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Lower Third.qtz"), {});
    model::Settings::setValue(model::Settings::kComponentsLibraryPath, dir.path());
    QAction* add = window->action(QStringLiteral("addComponentFile"));
    ASSERT_TRUE(add);
    EXPECT_EQ(add->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+A")));
    undoManager().removeAllActions();

    // The panel opens in the library folder and shows composition files.
    QFileDialog panel;
    canvas::VLMainToolbar::prepareComponentFilePanel(panel);
    EXPECT_EQ(panel.directory().absolutePath(), QDir(dir.path()).absolutePath());
    EXPECT_TRUE(panel.selectedNameFilter().contains(QStringLiteral("*.qtz")));

    // What is chosen there is added as it is, in the middle of the view, as one step.
    QString chosen = box;
    bool asked = false;
    window->mainToolbar()->setFileChooser([&](const canvas::ToolbarComponentEntry&) {
        asked = true;
        return chosen;
    });
    add->trigger();
    EXPECT_TRUE(asked);
    ASSERT_EQ(composition()->componentArray().size(), 1u);
    const model::QuartzComponent* added = composition()->componentArray().front();
    EXPECT_EQ(added->compositionFilename(), box);
    EXPECT_NEAR(centreOf(added).x(), view()->visibleCentre().x(), 1.0);
    EXPECT_EQ(undoManager().undoCount(), 1u);

    chosen.clear();
    add->trigger();
    EXPECT_EQ(composition()->componentArray().size(), 1u) << "cancelling adds nothing";
}

TEST_F(CanvasPlacementTest, TheSplitViewKeepsTheCanvasAt150AndTheTimelineAt50)
{
    QSplitter* split = window->splitter();
    QSplitterHandle* handle = split->handle(1);
    // Drags the divider by the mouse to a height in the split view.
    auto dragDividerTo = [&](int y) {
        const QPoint grab(handle->width() / 2, handle->height() / 2);
        QTest::mousePress(handle, Qt::LeftButton, {}, grab);
        const QPoint to = handle->mapFrom(split, QPoint(grab.x(), y));
        QMouseEvent move(QEvent::MouseMove, QPointF(to), handle->mapToGlobal(QPointF(to)), Qt::NoButton,
                         Qt::LeftButton, {});
        QCoreApplication::sendEvent(handle, &move);
        QTest::mouseRelease(handle, Qt::LeftButton, {}, to);
    };
    dragDividerTo(5);
    EXPECT_EQ(split->sizes().front(), 150);
    dragDividerTo(split->height() - 2);
    EXPECT_EQ(split->sizes().back(), 50);
}

TEST_F(CanvasPlacementTest, TheStatusLineReadsThePointerAndTheSelection)
{
    addBox(100, 100)->setSelected(true);
    auto* readout = window->statusBar()->findChild<QLabel*>(QStringLiteral("CanvasReadout"));
    ASSERT_TRUE(readout);
    // At 50 % a widget point covers two composition pixels; the readout
    // shows whole ones there.
    const QPointF point = view()->viewPointFromComposition(QPointF(640, 360));
    QMouseEvent move(QEvent::MouseMove, point, view()->mapToGlobal(point), Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(view(), &move);
    EXPECT_TRUE(readout->text().contains(QStringLiteral("X 640  Y 360"))) << readout->text().toStdString();
    EXPECT_TRUE(readout->text().contains(QStringLiteral("Selection X 100  Y 100"))) << readout->text().toStdString();
}

TEST_F(CanvasPlacementTest, SpaceOverTheCanvasStillPlaysAndStops)
{
    view()->setFocus();
    QTest::keyPress(view(), Qt::Key_Space);
    QTest::keyRelease(view(), Qt::Key_Space);
    EXPECT_EQ(composition()->playMode(), 1);
    QTest::keyPress(view(), Qt::Key_Space);
    QTest::keyRelease(view(), Qt::Key_Space);
    EXPECT_EQ(composition()->playMode(), 0);
}

TEST_F(CanvasPlacementTest, TheViewMenuZoomsInAndOutByStepsWithItsKeys)
{
    QAction* in = window->action(QStringLiteral("zoomIn"));
    QAction* out = window->action(QStringLiteral("zoomOut"));
    ASSERT_TRUE(in && out);
    EXPECT_TRUE(in->shortcuts().contains(QKeySequence(QStringLiteral("Ctrl+="))));
    EXPECT_EQ(out->shortcut(), QKeySequence(QStringLiteral("Ctrl+-")));
    EXPECT_EQ(window->action(QStringLiteral("zoom0"))->shortcut(), QKeySequence(QStringLiteral("Ctrl+0")));
    EXPECT_EQ(window->action(QStringLiteral("zoom100"))->shortcut(), QKeySequence(QStringLiteral("Ctrl+1")));
    in->trigger();
    EXPECT_EQ(view()->zoomMode(), 67);
    in->trigger();
    EXPECT_EQ(view()->zoomMode(), 100);
    EXPECT_TRUE(window->action(QStringLiteral("zoom100"))->isChecked());
    out->trigger();
    out->trigger();
    out->trigger();
    EXPECT_EQ(view()->zoomMode(), 33);
}
