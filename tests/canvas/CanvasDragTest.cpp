// Moving and resizing with the mouse: deltas in composition pixels whatever
// the zoom, one undo step per drag, Shift axis lock, guides snapping.

#include "CanvasFixture.h"

#include "model/Ruler.h"

class CanvasDragTest : public CanvasFixture {
protected:
    CanvasDragTest()
    {
        c = addImage(300, 200);
        startCounting();
    }

    QPointF origin() const { return QPointF(c->originX(), c->originY()); }

    model::QuartzComponent* c = nullptr;
};

TEST_F(CanvasDragTest, ADragMovesByTheMouseDeltaAndIsOneUndoStep)
{
    drag({350, 225}, {390, 245});
    EXPECT_EQ(origin(), QPointF(340, 220));
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(origin(), QPointF(300, 200));
    undoManager().redo();
    EXPECT_EQ(origin(), QPointF(340, 220));
}

TEST_F(CanvasDragTest, AtHalfZoomTheSameComponentMoveNeedsHalfTheMouseTravel)
{
    view.setZoomMode(50);
    const QPoint from = at(350, 225);
    QTest::mousePress(&view, Qt::LeftButton, {}, from);
    QTest::mouseMove(&view, from + QPoint(20, -10));
    QTest::mouseMove(&view, from + QPoint(40, -20));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, from + QPoint(40, -20));
    EXPECT_EQ(origin(), QPointF(380, 240));  // 40 and 20 widget points are 80 and 40 pixels, y up
}

TEST_F(CanvasDragTest, AllSelectedComponentsMoveTogether)
{
    model::QuartzComponent* other = addImage(700, 500);
    c->setSelected(true);
    startCounting();
    drag({350, 225}, {360, 215});
    EXPECT_EQ(origin(), QPointF(310, 190));
    EXPECT_EQ(QPointF(other->originX(), other->originY()), QPointF(710, 490));
    EXPECT_EQ(undoManager().undoCount(), 1u);
}

TEST_F(CanvasDragTest, MovementUnderTwoPixelsIsNoDrag)
{
    press({350, 225});
    dragTo({351, 226});
    dragTo({349, 224});
    release({349, 224});
    EXPECT_EQ(origin(), QPointF(300, 200));
    EXPECT_EQ(undoManager().undoCount(), 0u);
}

TEST_F(CanvasDragTest, ShiftLocksTheAxisOfTheLargerMovement)
{
    press({350, 225});
    dragTo({380, 235}, Qt::ShiftModifier);  // mostly horizontal
    EXPECT_EQ(origin(), QPointF(330, 200));
    dragTo({385, 290}, Qt::ShiftModifier);  // now mostly vertical, but the lock stays
    EXPECT_EQ(origin(), QPointF(335, 200));
    dragTo({385, 290});
    EXPECT_EQ(origin(), QPointF(335, 265));
    release({385, 290});
}

TEST_F(CanvasDragTest, EdgesSnapToGuidesOnlyWhileRulersAreShown)
{
    composition->addRulerAtPosition(300, true);  // a horizontal guide at y = 300
    startCounting();
    drag({350, 225}, {350, 316});  // the top edge would be at 341, the bottom at 291
    EXPECT_EQ(c->originY(), 300);   // bottom edge 9 away: snapped
    undoManager().undo();

    composition->setShowsRulers(false);
    drag({350, 225}, {350, 316});
    EXPECT_EQ(c->originY(), 291);
}

TEST_F(CanvasDragTest, AHandleResizesAndIsOneUndoStep)
{
    drag({396, 246}, {446, 276});  // the top-right handle
    EXPECT_EQ(origin(), QPointF(300, 200));
    EXPECT_EQ(c->width(), 146);
    EXPECT_EQ(c->height(), 76);
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(c->width(), 100);
    EXPECT_EQ(c->height(), 50);
}

TEST_F(CanvasDragTest, AltResizesFromTheCentre)
{
    drag({396, 225}, {420, 225}, Qt::AltModifier);  // the right handle
    EXPECT_EQ(c->width(), 140);
    EXPECT_EQ(c->originX(), 280);
}

TEST_F(CanvasDragTest, AnUnselectedComponentIsSelectedAndMovedInOneGesture)
{
    composition->clearSelection();
    drag({350, 225}, {370, 225});
    EXPECT_TRUE(c->selected());
    EXPECT_EQ(c->originX(), 320);
    EXPECT_EQ(undoManager().undoCount(), 1u);  // the move, not the selection
}

TEST_F(CanvasDragTest, ArrowKeysNudgeTheSelection)
{
    view.setFocus();
    QTest::keyClick(&view, Qt::Key_Right);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(origin(), QPointF(301, 210));
}

TEST_F(CanvasDragTest, DeletingTheDraggedComponentEndsTheDrag)
{
    press({350, 225});
    dragTo({380, 225});
    composition->removeComponents({c});
    EXPECT_FALSE(view.isDragging());
    dragTo({400, 225});
    release({400, 225});
}

TEST_F(CanvasDragTest, GuidesMoveAndLeaveWhenDraggedOffTheCanvas)
{
    model::Ruler* guide = composition->addRulerAtPosition(600, false);  // vertical, at x = 600
    startCounting();
    drag({601, 100}, {650, 100});
    EXPECT_EQ(guide->position(), 650);
    EXPECT_EQ(undoManager().undoCount(), 1u);
    drag({651, 100}, {-5, 100});
    EXPECT_TRUE(composition->rulers().empty());
}
