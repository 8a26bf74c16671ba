// The timeline's rows under the mouse, checked on the model: frame
// quantised clip drags with their limits, keyframe drags, clicks with Shift
// and Control, the marquee, Delete, and every drag one undo step that undo
// and redo take back and give back exactly.

#include "TimelineViewFixture.h"

#include "model/VideoModeCatalogue.h"
#include "timeline/TimeTooltip.h"

using namespace timeline;

class TimelineViewTest : public TimelineViewFixture {};

TEST_F(TimelineViewTest, ADragSmallerThanAFrameMovesNothingAndTheNextEventCompletesIt)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 2, 6);
    startCounting();
    const QString before = snapshot();
    press(at(3, 0));
    dragTo(at(3, 0, 5));
    EXPECT_DOUBLE_EQ(c->startTime(), 2) << "5 pixels are less than a frame of 12";
    dragTo(at(3, 0, 12));
    EXPECT_DOUBLE_EQ(c->startTime(), 2.04) << "the next 7 pixels complete the frame";
    EXPECT_DOUBLE_EQ(c->endTime(), 6.04);
    dragTo(at(3, 0, 30));
    EXPECT_DOUBLE_EQ(c->startTime(), 2.08) << "18 more pixels: one frame, 6 kept";
    dragTo(at(3, 0, 36));
    EXPECT_DOUBLE_EQ(c->startTime(), 2.12) << "the kept 6 and these 6 make the third frame";
    release(at(3, 0, 36));
    expectOneUndoableStep(before);
}

TEST_F(TimelineViewTest, AClipDraggedPastTheEndStopsThereWhileItsKeyframesMoveTheFullDistance)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 5, 9);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {6, 7});
    startCounting();
    const QString before = snapshot();
    drag(at(7, 0), at(9, 0));
    EXPECT_DOUBLE_EQ(c->startTime(), 6) << "the clip stops with its end at the composition's end";
    EXPECT_DOUBLE_EQ(c->endTime(), 10);
    EXPECT_EQ(keys(x), (QList<float>{8, 9})) << "its keyframes moved the full 2 seconds";
    expectOneUndoableStep(before);
}

TEST_F(TimelineViewTest, AStartEdgeDraggedOntoTheEndDoesNothing)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 2, 6);
    startCounting();
    drag(at(2, 0, 2), at(6, 0, 2));
    EXPECT_DOUBLE_EQ(c->startTime(), 2);
    EXPECT_DOUBLE_EQ(c->endTime(), 6);
    drag(at(2, 0, 2), at(8, 0, 2));
    EXPECT_DOUBLE_EQ(c->startTime(), 2) << "past the end: nothing either";
    EXPECT_EQ(steps(), 0u) << "a drag that changed nothing leaves no step";
}

TEST_F(TimelineViewTest, EdgesTrimTheClip)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 2, 6);
    startCounting();
    QString before = snapshot();
    drag(at(2, 0, 2), at(3, 0, 2));
    EXPECT_DOUBLE_EQ(c->startTime(), 3);
    EXPECT_DOUBLE_EQ(c->endTime(), 6) << "the end stays";
    expectOneUndoableStep(before);
    undoManager().removeAllActions();
    before = snapshot();
    drag(at(6, 0, -2), at(9.6, 0, -2));
    EXPECT_DOUBLE_EQ(c->endTime(), 9.6);
    EXPECT_DOUBLE_EQ(c->startTime(), 3);
    expectOneUndoableStep(before);
}

TEST_F(TimelineViewTest, ShiftClickSelectsTheRangeInRowOrder)
{
    std::vector<model::QuartzComponent*> made;
    for (const char* title : {"E", "D", "C", "B", "A"}) made.push_back(addComponent(QString::fromLatin1(title), 0, 5));
    std::reverse(made.begin(), made.end());  // now in row order: A, B, C, D, E
    startCounting();
    click(at(2, 1));
    click(at(2, 3), Qt::ShiftModifier);
    const std::vector<bool> selected = {made[0]->selected(), made[1]->selected(), made[2]->selected(),
                                        made[3]->selected(), made[4]->selected()};
    EXPECT_EQ(selected, (std::vector<bool>{false, true, true, true, false}));
    click(at(2, 0), Qt::ShiftModifier);
    EXPECT_TRUE(made[0]->selected()) << "upwards too, from the last clicked row";
    EXPECT_TRUE(made[3]->selected());
    click(at(2, 2), Qt::ControlModifier);
    EXPECT_FALSE(made[2]->selected()) << "Control takes one out";
    EXPECT_TRUE(made[1]->selected() && made[3]->selected());
    click(at(2, 4));
    EXPECT_TRUE(made[4]->selected());
    EXPECT_EQ(composition->selectedComponents().size(), 1u) << "a plain click selects one";
    EXPECT_EQ(steps(), 0u) << "selecting is never an undo step";
}

TEST_F(TimelineViewTest, DraggingASelectedClipMovesTheWholeSelection)
{
    model::QuartzComponent* a = addComponent(QStringLiteral("A"), 1, 3);
    model::QuartzComponent* b = addComponent(QStringLiteral("B"), 2, 4);  // row 0
    click(at(2.5, 0));
    click(at(2, 1), Qt::ShiftModifier);
    startCounting();
    const QString before = snapshot();
    drag(at(3, 0), at(4, 0));
    EXPECT_DOUBLE_EQ(b->startTime(), 3);
    EXPECT_DOUBLE_EQ(a->startTime(), 2) << "the other selected clip moves too";
    expectOneUndoableStep(before);
}

TEST_F(TimelineViewTest, KeyframeDragsMoveEverySelectedKeyframeByWholeFrames)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 0, 10);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 2, 3});
    model::Attribute* y = animate(c, QStringLiteral("originY"), {2});
    c->setExpanded(true);
    const int xRow = rowOf(x), yRow = rowOf(y);
    click(at(2, xRow));
    click(at(2, yRow), Qt::ControlModifier);
    startCounting();
    const QString before = snapshot();
    press(at(2, xRow));
    dragTo(at(2, xRow, 30));
    release(at(2, xRow, 30));
    EXPECT_EQ(keys(x), (QList<float>{1, 2.08f, 3})) << "30 pixels: two frames";
    EXPECT_EQ(keys(y), QList<float>{2.08f});
    EXPECT_TRUE(x->isTimePointSelected(2.08f)) << "the moved keyframes stay selected";
    expectOneUndoableStep(before);
    EXPECT_TRUE(x->isTimePointSelected(2.08f)) << "redo brings the selection along";
    EXPECT_FALSE(x->isTimePointSelected(2.0f));
}

TEST_F(TimelineViewTest, ControlClickDeselectsOneKeyframeOnly)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 0, 10);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 2, 3});
    c->setExpanded(true);
    const int row = rowOf(x);
    click(at(1, row));
    click(at(2, row), Qt::ControlModifier);
    click(at(3, row), Qt::ControlModifier);
    EXPECT_EQ(selectedTimes(x), (std::vector<double>{1, 2, 3}));
    click(at(2, row), Qt::ControlModifier);
    EXPECT_EQ(selectedTimes(x), (std::vector<double>{1, 3}));
    EXPECT_TRUE(c->selected()) << "the component stays selected";
    click(at(1, row));
    EXPECT_EQ(selectedTimes(x), (std::vector<double>{1, 3})) << "a plain click on a selected keyframe keeps the selection";
    click(at(2, row));
    EXPECT_EQ(selectedTimes(x), std::vector<double>{2}) << "on an unselected one it replaces it";
    click(at(5, row));
    EXPECT_TRUE(selectedTimes(x).empty()) << "a click on nothing clears keyframes";
    EXPECT_FALSE(c->selected()) << "and components";
}

TEST_F(TimelineViewTest, APlainMarqueeReplacesAndAControlMarqueeAdds)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 0, 10);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 2, 3});
    model::Attribute* y = animate(c, QStringLiteral("originY"), {1, 2, 3});
    c->setExpanded(true);
    const int xRow = rowOf(x), yRow = rowOf(y);
    const int top = std::min(xRow, yRow), bottom = std::max(xRow, yRow);
    click(at(1, xRow));
    startCounting();
    // Over both rows around 2 s.
    press(at(1.8, top, 0) - QPointF(0, 8));
    dragTo(at(2.2, bottom) + QPointF(0, 8));
    EXPECT_FALSE(view()->draggingKeyFrameRect().isEmpty()) << "the marquee is shown while dragged";
    release(at(2.2, bottom) + QPointF(0, 8));
    EXPECT_TRUE(view()->draggingKeyFrameRect().isNull()) << "and gone at release";
    EXPECT_EQ(selectedTimes(x), std::vector<double>{2}) << "a plain marquee replaces";
    EXPECT_EQ(selectedTimes(y), std::vector<double>{2});
    press(at(2.8, xRow) - QPointF(0, 8), Qt::ControlModifier);
    dragTo(at(3.2, xRow) + QPointF(0, 8), Qt::ControlModifier);
    release(at(3.2, xRow) + QPointF(0, 8), Qt::ControlModifier);
    EXPECT_EQ(selectedTimes(x), (std::vector<double>{2, 3})) << "a Control marquee adds to what was selected";
    EXPECT_EQ(selectedTimes(y), std::vector<double>{2});
    // Shrinking a Control marquee back to nothing leaves the saved selection.
    press(at(5, xRow) - QPointF(0, 8), Qt::ControlModifier);
    dragTo(at(5.5, xRow), Qt::ControlModifier);
    dragTo(at(5, xRow) - QPointF(0, 8), Qt::ControlModifier);
    release(at(5, xRow) - QPointF(0, 8), Qt::ControlModifier);
    EXPECT_EQ(selectedTimes(x), (std::vector<double>{2, 3}));
    EXPECT_EQ(steps(), 0u) << "selecting is never an undo step";
}

TEST_F(TimelineViewTest, DeleteRemovesSelectedKeyframesOrReachesTheDocument)
{
    model::QuartzComponent* keep = addComponent(QStringLiteral("Keep"), 0, 10);
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 0, 10);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 2, 3});
    c->setExpanded(true);
    click(at(2, rowOf(x)));
    startCounting();
    key(Qt::Key_Delete);
    EXPECT_EQ(keys(x), (QList<float>{1, 3})) << "the selected keyframe goes";
    EXPECT_EQ(composition->componentArray().size(), 2u) << "the components stay";
    EXPECT_EQ(steps(), 1u);
    click(at(1, rowOf(keep)));
    EXPECT_FALSE(view()->hasSelectedKeyframes());
    key(Qt::Key_Backspace);
    QCoreApplication::processEvents();
    const auto left = composition->componentArray();
    ASSERT_EQ(left.size(), 1u) << "with no keyframe selected the document deletes the components";
    EXPECT_EQ(left.front(), c);
    undoManager().undo();
    QCoreApplication::processEvents();
    EXPECT_EQ(composition->componentArray().size(), 2u);
}

TEST_F(TimelineViewTest, AStructuralChangeEndsADrag)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 2, 6);
    addComponent(QStringLiteral("Other"), 0, 10);
    startCounting();
    press(at(3, 1));
    dragTo(at(4, 1));
    EXPECT_TRUE(view()->isDragging());
    composition->removeComponents({c});
    QCoreApplication::processEvents();
    EXPECT_FALSE(view()->isDragging()) << "the dragged clip went away";
    dragTo(at(5, 1));
    release(at(5, 1));
    EXPECT_EQ(composition->componentArray().size(), 1u);
}

TEST_F(TimelineViewTest, TheTooltipShowsTheDraggedTimeAndGoesAtRelease)
{
    addComponent(QStringLiteral("C"), 2, 6);
    press(at(3, 0));
    dragTo(at(4, 0));
    TimeTooltip* tooltip = TimeTooltip::shared();
    EXPECT_TRUE(tooltip->isVisible());
    EXPECT_EQ(tooltip->text(), QStringLiteral("00:00:03:00")) << "the clip's new start";
    dragTo(at(4.48, 0));
    EXPECT_EQ(tooltip->text(), QStringLiteral("00:00:03:12"));
    release(at(4.48, 0));
    EXPECT_FALSE(tooltip->isVisible());
    EXPECT_EQ(TimeTooltip::textForTime(0.5, model::kRate2997), QStringLiteral("00:00:00;14")) << "drop-frame labels";
    EXPECT_EQ(TimeTooltip::textForTime(-0.04, model::kRate25), QStringLiteral("-00:00:00:01"));
}
