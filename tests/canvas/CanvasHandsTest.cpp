// Forgiving hands: a click that shakes by a pixel changes nothing, handles
// and guides are found within a fixed distance on screen at any zoom, the
// point where the mouse is let go is where a drag ends, and the status line
// says where things are.

#include "CanvasFixture.h"

#include "canvas/CanvasHitRules.h"
#include "model/Ruler.h"

#include <QGuiApplication>
#include <QStyleHints>

class CanvasHandsTest : public CanvasFixture {
protected:
    CanvasHandsTest()
    {
        c = addImage(300, 200);  // selected, 100 × 50
        startCounting();
    }

    QRectF frame() const { return c->drawingFrame(); }
    // Mouse events in widget pixels, for distances measured on screen.
    void pressAt(QPoint p) { QTest::mousePress(&view, Qt::LeftButton, {}, p); }
    void moveTo(QPoint p)
    {
        QMouseEvent move(QEvent::MouseMove, QPointF(p), view.mapToGlobal(QPointF(p)), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&view, &move);
    }
    void releaseAt(QPoint p) { QTest::mouseRelease(&view, Qt::LeftButton, {}, p); }

    model::QuartzComponent* c = nullptr;
};

TEST_F(CanvasHandsTest, AClickThatShakesByAPixelLeavesNoUndoStep)
{
    for (int zoom : {25, 100, 400}) {
        view.setZoomMode(zoom);
        const QPoint body = at(350, 225);
        pressAt(body);
        moveTo(body + QPoint(1, 1));
        releaseAt(body + QPoint(1, 0));
        EXPECT_EQ(frame(), QRectF(300, 200, 100, 50)) << zoom << " %";
        EXPECT_EQ(undoManager().undoCount(), 0u) << zoom << " %";

        // The same on a handle: no resize from a shaky click.
        const QPoint corner = at(400, 250);
        pressAt(corner);
        moveTo(corner + QPoint(-1, 1));
        releaseAt(corner + QPoint(-1, 1));
        EXPECT_EQ(frame(), QRectF(300, 200, 100, 50)) << zoom << " %";
        EXPECT_EQ(undoManager().undoCount(), 0u) << zoom << " %";
    }
}

TEST_F(CanvasHandsTest, APressBecomesAMoveAtThePlatformDragDistance)
{
    view.setZoomMode(400);  // 2 composition pixels are 8 on screen, less than the distance
    const int distance = QGuiApplication::styleHints()->startDragDistance();
    const QPoint body = at(350, 225);
    pressAt(body);
    moveTo(body + QPoint(distance - 1, 0));
    EXPECT_EQ(frame().topLeft(), QPointF(300, 200)) << "not yet";
    moveTo(body + QPoint(distance + 3, 0));
    releaseAt(body + QPoint(distance + 3, 0));
    EXPECT_NEAR(c->originX(), 300 + (distance + 3) / 4.0, 0.26);
    EXPECT_EQ(undoManager().undoCount(), 1u);
}

TEST_F(CanvasHandsTest, AHandleIsHitFiveScreenPixelsAwayAtAQuarterZoom)
{
    view.setZoomMode(25);
    // Five screen pixels beyond the top-right corner (20 composition pixels),
    // where the component's own 8-pixel handle is far out of reach.
    const QPoint corner = at(400, 250) + QPoint(5, -5);
    EXPECT_EQ(view.handleAt(*c, view.compositionPointFromView(corner)), 8);
    pressAt(corner);
    moveTo(corner + QPoint(20, -10));
    releaseAt(corner + QPoint(25, -10));
    // The edge goes to the pointer: 5 + 25 and 5 + 10 screen pixels out.
    EXPECT_NEAR(frame().width(), 100 + 30 * 4, 4.0);
    EXPECT_NEAR(frame().height(), 50 + 15 * 4, 4.0);
    EXPECT_EQ(frame().topLeft(), QPointF(300, 200)) << "the opposite corner stays";
    ASSERT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(frame(), QRectF(300, 200, 100, 50));
    undoManager().redo();
    EXPECT_NEAR(frame().width(), 220, 4.0);

    // Nine pixels beyond the corner is empty canvas.
    const QPoint farCorner = at(frame().right(), frame().bottom()) + QPoint(9, -9);
    EXPECT_EQ(view.handleAt(*c, view.compositionPointFromView(farCorner)), model::kHandleNone);
}

TEST_F(CanvasHandsTest, AGuideIsGrabbedFiveScreenPixelsAwayAndItsLabelAndReadoutFollow)
{
    view.setZoomMode(25);
    composition->addRulerAtPosition(600, true);  // y = 600
    model::Ruler* guide = composition->rulers().front();
    startCounting();
    const QPoint near = at(900, 600) + QPoint(0, 5);
    pressAt(near);
    moveTo(near + QPoint(0, -40));
    EXPECT_EQ(view.readout().drag, canvas::CanvasReadout::Drag::Guide);
    EXPECT_TRUE(canvas::formatReadout(view.readout()).contains(QStringLiteral("Guide Y ")));
    releaseAt(near + QPoint(0, -50));
    // Let go 50 screen pixels higher: 200 composition pixels at 25 %.
    EXPECT_NEAR(guide->position(), 600 + 200 - 20, 4.0);
    ASSERT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(guide->position(), 600);
    undoManager().redo();
    EXPECT_NEAR(guide->position(), 780, 4.0);
}

TEST_F(CanvasHandsTest, TheMouseUpPointEndsAMoveEvenWithoutAMoveThere)
{
    press({350, 225});
    dragTo({380, 225});
    release({420, 260});  // a flick: the last move was far behind
    EXPECT_EQ(frame().topLeft(), QPointF(370, 235));
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(frame().topLeft(), QPointF(300, 200));
    undoManager().redo();
    EXPECT_EQ(frame().topLeft(), QPointF(370, 235));
}

TEST_F(CanvasHandsTest, TheReadoutGivesPointerSelectionAndTheDragDelta)
{
    int changes = 0;
    QObject::connect(&view, &canvas::CompositionView::readoutChanged, [&] { ++changes; });
    QMouseEvent hover(QEvent::MouseMove, QPointF(at(123, 456)), view.mapToGlobal(QPointF(at(123, 456))), Qt::NoButton,
                      Qt::NoButton, {});
    QCoreApplication::sendEvent(&view, &hover);
    ASSERT_TRUE(view.readout().pointer.has_value());
    EXPECT_NEAR(view.readout().pointer->x(), 123, 1);
    EXPECT_NEAR(view.readout().pointer->y(), 456, 1);
    EXPECT_EQ(view.readout().selection, QRectF(300, 200, 100, 50));

    press({350, 225});
    dragTo({370, 215});
    EXPECT_EQ(view.readout().drag, canvas::CanvasReadout::Drag::Move);
    EXPECT_EQ(view.readout().delta, QPointF(20, -10));
    EXPECT_TRUE(canvas::formatReadout(view.readout()).contains(QStringLiteral("ΔX +20  ΔY -10")));
    release({370, 215});
    EXPECT_EQ(view.readout().drag, canvas::CanvasReadout::Drag::None);
    EXPECT_EQ(view.readout().selection, QRectF(320, 190, 100, 50));
    EXPECT_GT(changes, 2);

    composition->clearSelection();
    EXPECT_FALSE(view.readout().selection.has_value());
}
