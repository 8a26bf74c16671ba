// Zoom and pan in the scroll view: zooming around the mouse keeps the point
// under it, Space-drag and the middle button pan, a component parked off
// the page is reached, and a drag held at the edge scrolls.

#include "../support/ComponentFiles.h"

#include "canvas/CompositionView.h"
#include "canvas/VLRulerView.h"
#include "canvas/VLZoomScrollView.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/VideoResolution.h"

#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

class CanvasZoomPanTest : public ::testing::Test {
protected:
    CanvasZoomPanTest()
    {
        document = document::CompositionDocument::emptyDocumentWithResolution(
            model::VideoResolution(QStringLiteral("1080i25 RGBA")));
        composition = document->composition();
        view = new canvas::CompositionView;
        view->setDocument(document.get());
        scroll.setCompositionView(view);
        scroll.resize(1000, 700);
        scroll.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&scroll));
    }

    model::UndoManager& undoManager() { return document->store().undoManager(); }
    QPointF scrollPosition() const
    {
        return QPointF(scroll.horizontalScrollBar()->value(), scroll.verticalScrollBar()->value());
    }
    // The composition point shown at a viewport point.
    QPointF underViewport(QPointF p) const { return view->compositionPointFromView(p + scrollPosition()); }
    // The viewport point where a composition point is shown.
    QPoint inViewport(QPointF p) const { return (view->viewPointFromComposition(p) - scrollPosition()).toPoint(); }
    QPoint inView(QPointF p) const { return view->viewPointFromComposition(p).toPoint(); }

    void wheel(QPoint viewportPoint, int angle, Qt::KeyboardModifiers modifiers)
    {
        const QPoint inCanvas = view->mapFrom(scroll.viewport(), viewportPoint);
        QWheelEvent event(QPointF(inCanvas), QPointF(view->mapToGlobal(inCanvas)), QPoint(), QPoint(0, angle),
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(view, &event);
        // A wheel the canvas leaves alone goes on to the scroll area, as
        // the application passes on a real one.
        if (!event.isAccepted()) {
            QWheelEvent onViewport(QPointF(viewportPoint), event.globalPosition(), QPoint(), QPoint(0, angle),
                                   Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(scroll.viewport(), &onViewport);
        }
    }
    void mouse(QEvent::Type type, QPoint viewPoint, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, QPointF(viewPoint), QPointF(view->mapToGlobal(viewPoint)), button, buttons, {});
        QCoreApplication::sendEvent(view, &event);
    }

    model::QuartzComponent* addImage(double x, double y)
    {
        const QString path = testfiles::writeImageComposition(QDir(dir.path()), QStringLiteral("Image.qtz"));
        QImage red(QSize(100, 50), QImage::Format_ARGB32_Premultiplied);
        red.fill(Qt::red);
        model::QuartzComponent* c =
            composition->addComponenWithQuartzCompositionFile(path, {{QStringLiteral("Image"), red}});
        c->setOriginX(x);
        c->setOriginY(y);
        return c;
    }

    QTemporaryDir dir;
    std::unique_ptr<document::CompositionDocument> document;
    model::Composition* composition = nullptr;
    canvas::VLZoomScrollView scroll;
    canvas::CompositionView* view = nullptr;
};

TEST_F(CanvasZoomPanTest, ControlWheelZoomsAroundTheMouseAndPlainWheelPans)
{
    view->setZoomMode(100);
    const QPoint mouse(300, 200);
    const QPointF before = underViewport(mouse);
    wheel(mouse, 120, Qt::ControlModifier);
    EXPECT_EQ(view->zoomMode(), 120);
    EXPECT_NEAR(underViewport(mouse).x(), before.x(), 1.0);
    EXPECT_NEAR(underViewport(mouse).y(), before.y(), 1.0);
    for (int i = 0; i < 30; ++i) wheel(mouse, 120, Qt::ControlModifier);
    EXPECT_EQ(view->zoomMode(), 1600) << "held to the largest zoom";
    EXPECT_NEAR(underViewport(mouse).x(), before.x(), 1.0);
    EXPECT_NEAR(underViewport(mouse).y(), before.y(), 1.0);

    const QPointF scrolled = scrollPosition();
    wheel(mouse, -120, Qt::NoModifier);
    EXPECT_GT(scrollPosition().y(), scrolled.y()) << "a plain wheel scrolls";
    EXPECT_EQ(view->zoomMode(), 1600);
}

TEST_F(CanvasZoomPanTest, APinchZoomsAroundItsCentre)
{
    view->setZoomMode(100);
    const QPoint centre(600, 250);
    const QPointF before = underViewport(centre);
    const QPoint inCanvas = view->mapFrom(scroll.viewport(), centre);
    QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2, QPointF(inCanvas),
                              QPointF(inCanvas), QPointF(view->mapToGlobal(inCanvas)), 0.5, QPointF(), 0);
    QCoreApplication::sendEvent(view, &pinch);
    EXPECT_EQ(view->zoomMode(), 150);
    EXPECT_NEAR(underViewport(centre).x(), before.x(), 1.0);
    EXPECT_NEAR(underViewport(centre).y(), before.y(), 1.0);
}

TEST_F(CanvasZoomPanTest, ASpaceTapPlaysAndASpaceDragOnlyPans)
{
    int taps = 0;
    QObject::connect(&scroll, &canvas::VLZoomScrollView::spaceTapped, [&] { ++taps; });
    QTest::keyPress(view, Qt::Key_Space);
    QTest::keyRelease(view, Qt::Key_Space);
    EXPECT_EQ(taps, 1);
    view->setZoomMode(200);
    const QPointF start = scrollPosition();
    QTest::keyPress(view, Qt::Key_Space);
    mouse(QEvent::MouseButtonPress, QPoint(400, 400), Qt::LeftButton, Qt::LeftButton);
    mouse(QEvent::MouseMove, QPoint(380, 390), Qt::NoButton, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, QPoint(380, 390), Qt::LeftButton, Qt::NoButton);
    QTest::keyRelease(view, Qt::Key_Space);
    EXPECT_EQ(taps, 1) << "a pan is no tap";
    EXPECT_NE(scrollPosition(), start);
}

TEST_F(CanvasZoomPanTest, ZoomStepsGoThroughTheStandardStepsAndTheRulersFollowTheMode)
{
    view->setZoomMode(100);
    scroll.zoomIn();
    EXPECT_EQ(view->zoomMode(), 150);
    EXPECT_EQ(scroll.horizontalRuler()->rulerUnit().name, QStringLiteral("Points150"));
    scroll.zoomIn();
    scroll.zoomIn();
    EXPECT_EQ(view->zoomMode(), 300);
    EXPECT_EQ(scroll.horizontalRuler()->rulerUnit().name, QStringLiteral("Points"));
    scroll.zoomTo(50);
    EXPECT_EQ(scroll.verticalRuler()->rulerUnit().name, QStringLiteral("Points50"));
    scroll.zoomOut();
    EXPECT_EQ(view->zoomMode(), 33);
    for (int i = 0; i < 10; ++i) scroll.zoomOut();
    EXPECT_EQ(view->zoomMode(), 5);
    scroll.zoomTo(0);
    EXPECT_EQ(scroll.horizontalRuler()->rulerUnit().name, QStringLiteral("PointsFit"));
    EXPECT_DOUBLE_EQ(scroll.horizontalRuler()->rulerUnit().pointsPerUnit, view->zoomFactor());
}

TEST_F(CanvasZoomPanTest, SpaceDragAndTheMiddleButtonPanWithoutTouchingTheComponents)
{
    model::QuartzComponent* c = addImage(900, 500);
    view->setZoomMode(200);
    undoManager().removeAllActions();
    const QPoint onComponent = inView({950, 525});
    const QPointF start = scrollPosition();

    QTest::keyPress(view, Qt::Key_Space);
    mouse(QEvent::MouseButtonPress, onComponent, Qt::LeftButton, Qt::LeftButton);
    mouse(QEvent::MouseMove, onComponent + QPoint(-40, -30), Qt::NoButton, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, onComponent + QPoint(-40, -30), Qt::LeftButton, Qt::NoButton);
    QTest::keyRelease(view, Qt::Key_Space);
    EXPECT_EQ(scrollPosition(), start + QPointF(40, 30));

    const QPoint again = inView({950, 525});
    mouse(QEvent::MouseButtonPress, again, Qt::MiddleButton, Qt::MiddleButton);
    mouse(QEvent::MouseMove, again + QPoint(25, 10), Qt::NoButton, Qt::MiddleButton);
    mouse(QEvent::MouseButtonRelease, again + QPoint(25, 10), Qt::MiddleButton, Qt::NoButton);
    EXPECT_EQ(scrollPosition(), start + QPointF(15, 20));

    EXPECT_EQ(c->drawingFrame().topLeft(), QPointF(900, 500));
    EXPECT_EQ(undoManager().undoCount(), 0u);
}

TEST_F(CanvasZoomPanTest, AComponentParkedOffThePageIsSelectedAndMoved)
{
    view->setZoomMode(0);
    model::QuartzComponent* parked = addImage(-400, 300);  // left of the page, waiting for its entrance
    composition->clearSelection();
    undoManager().removeAllActions();
    const QPoint on = inView({-350, 325});
    ASSERT_TRUE(view->rect().contains(on)) << "inside the work area";
    QTest::mouseClick(view, Qt::LeftButton, {}, on);
    EXPECT_TRUE(parked->selected());
    QTest::mousePress(view, Qt::LeftButton, {}, on);
    mouse(QEvent::MouseMove, on + QPoint(20, 0), Qt::NoButton, Qt::LeftButton);
    QTest::mouseRelease(view, Qt::LeftButton, {}, on + QPoint(40, 0));
    EXPECT_GT(parked->originX(), -400 + 40);
    EXPECT_EQ(parked->originY(), 300);
    ASSERT_EQ(undoManager().undoCount(), 1u);
    const double moved = parked->originX();
    undoManager().undo();
    EXPECT_EQ(parked->originX(), -400);
    undoManager().redo();
    EXPECT_EQ(parked->originX(), moved);
}

TEST_F(CanvasZoomPanTest, AMoveHeldAtTheEdgeScrollsAndTheComponentFollows)
{
    model::QuartzComponent* c = addImage(900, 500);
    view->setZoomMode(400);
    scroll.zoomTo(400);
    // Bring the component into view, then drag it to the right edge and hold.
    scroll.horizontalScrollBar()->setValue(int(view->viewPointFromComposition({900, 0}).x()) - 300);
    scroll.verticalScrollBar()->setValue(int(view->viewPointFromComposition({0, 525}).y()) - 300);
    undoManager().removeAllActions();
    const QPoint start = inView({950, 525});
    QTest::mousePress(view, Qt::LeftButton, {}, start);
    const QPoint edge = view->mapFrom(scroll.viewport(), QPoint(scroll.viewport()->width() - 3, 300));
    mouse(QEvent::MouseMove, edge, Qt::NoButton, Qt::LeftButton);
    const int before = scroll.horizontalScrollBar()->value();
    const double originBefore = c->originX();
    // The view scrolls while the mouse stands still.
    EXPECT_TRUE(QTest::qWaitFor([&] { return scroll.horizontalScrollBar()->value() - before > 20; }, 3000));
    const int scrolled = scroll.horizontalScrollBar()->value() - before;
    // The component went along with the view, a quarter pixel per screen pixel.
    EXPECT_NEAR(c->originX() - originBefore, scrolled / 4.0, 1.0);
    QTest::mouseRelease(view, Qt::LeftButton, {}, view->mapFrom(scroll.viewport(), QPoint(scroll.viewport()->width() - 3, 300)));
    const int afterRelease = scroll.horizontalScrollBar()->value();
    QTest::qWait(100);
    EXPECT_EQ(scroll.horizontalScrollBar()->value(), afterRelease) << "letting go stops the scrolling";
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(c->originX(), 900);
}
