// The rules of timeline editing on the model, one at a time: frame
// quantised drags, clip and edge moves with their limits, keyframe moves,
// click and marquee selection, and the control buttons' flags.

#include "TimelineModelFixture.h"

#include "model/VideoModeCatalogue.h"
#include "timeline/TimelineDrag.h"

using namespace timeline;

class TimelineDragTest : public TimelineModelFixture {
protected:
    TimelineGeometry geometry{100, model::kRate25};  // 4 pixels a frame
};

TEST_F(TimelineDragTest, ADragOfLessThanAFrameIsKeptForTheNextEvent)
{
    double remainder = 0;
    EXPECT_EQ(draggingDeltaTime(remainder, 3, geometry), 0);
    EXPECT_DOUBLE_EQ(remainder, 3) << "the pixels are kept";
    EXPECT_DOUBLE_EQ(draggingDeltaTime(remainder, 2, geometry), 0.04) << "5 pixels: one frame";
    EXPECT_DOUBLE_EQ(remainder, 1) << "the rest of the frame carries over";
    EXPECT_DOUBLE_EQ(draggingDeltaTime(remainder, -6, geometry), -0.04) << "back by 5 pixels: one frame back";
    EXPECT_DOUBLE_EQ(remainder, -1);
    EXPECT_DOUBLE_EQ(draggingDeltaTime(remainder, 41, geometry), 0.4);
    EXPECT_DOUBLE_EQ(remainder, 0);
}

TEST_F(TimelineDragTest, AWholeClipStopsAtTheEndWhileItsKeyframesMoveTheFullDistance)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 1, 5);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {2, 3});
    adjustStartTime(*c, true, 8, composition->duration());
    EXPECT_DOUBLE_EQ(c->startTime(), 6) << "the end stops at the composition's end";
    EXPECT_DOUBLE_EQ(c->endTime(), 10);
    EXPECT_EQ(keys(x), (QList<float>{4, 5})) << "the keyframes move by as much as the clip's span allowed";
    adjustStartTime(*c, true, -20, composition->duration());
    EXPECT_DOUBLE_EQ(c->startTime(), 0) << "the start stops at 0";
    EXPECT_DOUBLE_EQ(c->endTime(), 4);
}

TEST_F(TimelineDragTest, KeyframesKeepMovingWhileTheClipWaitsAtTheEnd)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 5, 9);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {6, 7});
    adjustStartTime(*c, true, 2, composition->duration());  // the clip can go only 1 second further
    EXPECT_DOUBLE_EQ(c->startTime(), 6);
    EXPECT_DOUBLE_EQ(c->endTime(), 10);
    EXPECT_EQ(keys(x), (QList<float>{8, 9})) << "keyframes move by the requested 2 seconds, not by the clip's 1";
    model::Attribute* still = c->attributeForKey(QStringLiteral("originY"));
    EXPECT_EQ(keys(still).size(), 1) << "an unanimated attribute keeps its constant";
    adjustStartTime(*c, true, 1, composition->duration());
    EXPECT_EQ(keys(x), (QList<float>{8, 9})) << "a clip that cannot move at all moves nothing";
}

TEST_F(TimelineDragTest, TheStartEdgeNeverPassesTheEndAndStopsAtZero)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 2, 5);
    adjustStartTime(*c, false, 3, composition->duration());
    EXPECT_DOUBLE_EQ(c->startTime(), 2) << "onto the end: nothing at all";
    adjustStartTime(*c, false, 4, composition->duration());
    EXPECT_DOUBLE_EQ(c->startTime(), 2) << "past the end: nothing at all";
    adjustStartTime(*c, false, 1, composition->duration());
    EXPECT_DOUBLE_EQ(c->startTime(), 3);
    EXPECT_DOUBLE_EQ(c->endTime(), 5) << "the end stays";
    adjustStartTime(*c, false, -9, composition->duration());
    EXPECT_DOUBLE_EQ(c->startTime(), 0);
}

TEST_F(TimelineDragTest, EndEdgesAccumulateAsTheyAlwaysDid)
{
    model::QuartzComponent* back = addComponent(QStringLiteral("Back"), 0, 2);
    model::QuartzComponent* front = addComponent(QStringLiteral("Front"), 0, 3);
    moveEndEdges({front}, 0.5);
    EXPECT_DOUBLE_EQ(front->endTime(), 3.5);
    moveEndEdges({front, back}, 0.5);
    EXPECT_DOUBLE_EQ(front->endTime(), 4.0);
    EXPECT_DOUBLE_EQ(back->endTime(), 6.0) << "the running value: 0.5 + 3.5 (front) + 2 (back)";
    moveEndEdges({front}, -5);
    EXPECT_DOUBLE_EQ(front->endTime(), 4.0) << "an end at or before the start is not set";
}

TEST_F(TimelineDragTest, SelectedKeyframesMoveAndReportTheEarliestNewTime)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 0, 10);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 2, 3});
    model::Attribute* y = animate(c, QStringLiteral("originY"), {4, 5});
    x->setTimePointSelected(2, true);
    y->setTimePointSelected(5, true);
    const std::optional<double> least = moveSelectedKeyframes(*composition, 0.5);
    ASSERT_TRUE(least);
    EXPECT_DOUBLE_EQ(*least, 2.5);
    EXPECT_EQ(keys(x), (QList<float>{1, 2.5, 3}));
    EXPECT_EQ(keys(y), (QList<float>{4, 5.5}));
    EXPECT_TRUE(x->isTimePointSelected(2.5)) << "the selection follows the keyframes";
    composition->deselectAllKeyFrames();
    EXPECT_FALSE(moveSelectedKeyframes(*composition, 0.5)) << "nothing selected, nothing moved";
}

TEST_F(TimelineDragTest, ShiftSelectsTheRangeInRowOrderAndControlTogglesOne)
{
    model::QuartzComponent* c0 = addComponent(QStringLiteral("Bottom"));
    model::QuartzComponent* c1 = addComponent(QStringLiteral("Middle"));
    model::QuartzComponent* c2 = addComponent(QStringLiteral("Top"));
    const std::vector<model::QuartzComponent*> topFirst = composition->componentsSortedByInverseZLevel();
    int last = -1;
    composition->clearSelection();
    selectComponent(*composition, topFirst, c2, false, false, last);
    EXPECT_EQ(last, 0);
    selectComponent(*composition, topFirst, c0, true, false, last);
    EXPECT_TRUE(c0->selected() && c1->selected() && c2->selected()) << "Shift takes every row in between";
    EXPECT_EQ(last, 2);
    selectComponent(*composition, topFirst, c1, false, false, last);
    EXPECT_TRUE(c0->selected() && c1->selected() && c2->selected()) << "a selected one keeps the selection for a drag";
    selectComponent(*composition, topFirst, c1, false, true, last);
    EXPECT_FALSE(c1->selected()) << "Control deselects it";
    EXPECT_TRUE(c0->selected() && c2->selected());
    selectComponent(*composition, topFirst, c1, false, true, last);
    EXPECT_TRUE(c0->selected() && c1->selected() && c2->selected()) << "Control adds without dropping the others";
    composition->clearSelection();
    selectComponent(*composition, topFirst, c1, false, false, last);
    EXPECT_TRUE(!c0->selected() && c1->selected() && !c2->selected()) << "a plain click drops the others";
}

TEST_F(TimelineDragTest, KeyframeClicksSelectOneOrToggleWithControl)
{
    model::QuartzComponent* other = addComponent(QStringLiteral("Other"));
    model::QuartzComponent* c = addComponent(QStringLiteral("C"));
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 2, 3});
    const std::vector<model::QuartzComponent*> topFirst = composition->componentsSortedByInverseZLevel();
    int last = -1;
    selectKeyframe(*composition, topFirst, x, 1, false, false, last);
    EXPECT_TRUE(c->selected()) << "the keyframe's component is selected";
    EXPECT_FALSE(other->selected()) << "alone, after a plain click";
    other->setSelected(true);
    c->setSelected(false);
    selectKeyframe(*composition, topFirst, x, 2, false, true, last);
    EXPECT_TRUE(x->isTimePointSelected(1) && x->isTimePointSelected(2));
    EXPECT_TRUE(c->selected() && other->selected()) << "with Control the other component stays";
    selectKeyframe(*composition, topFirst, x, 1, false, true, last);
    EXPECT_FALSE(x->isTimePointSelected(1)) << "Control deselects that one only";
    EXPECT_TRUE(x->isTimePointSelected(2));
    selectKeyframe(*composition, topFirst, x, 2, false, false, last);
    EXPECT_TRUE(x->isTimePointSelected(2)) << "a plain click on a selected keyframe keeps it";
    selectKeyframe(*composition, topFirst, x, 3, false, false, last);
    EXPECT_EQ(x->selectedTimepoints(), QList<float>{3}) << "a plain click on another one replaces the selection";
}

TEST_F(TimelineDragTest, APlainMarqueeReplacesAndAControlMarqueeAdds)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 0, 10);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 2, 3});
    c->setExpanded(true);
    const TimelineRows rows = TimelineRows::build(*composition);
    const int row = [&] {
        for (int i = 0; i < rows.count(); ++i)
            if (rows.row(i)->attribute == x) return i;
        return -1;
    }();
    ASSERT_GE(row, 0);
    x->setTimePointSelected(1, true);
    const SavedKeyframeSelection saved = saveKeyframeSelection(rows.components());
    const QRectF aroundTheThird(280, geometry.rowTop(row), 40, 20);
    applyMarquee(*composition, rows, geometry, aroundTheThird, false, saved);
    EXPECT_EQ(x->selectedTimepoints(), QList<float>{3}) << "a plain marquee replaces";
    applyMarquee(*composition, rows, geometry, aroundTheThird, true, saved);
    QList<float> selected = x->selectedTimepoints();
    std::sort(selected.begin(), selected.end());
    EXPECT_EQ(selected, (QList<float>{1, 3})) << "with Control the selection at the press is added back";
    applyMarquee(*composition, rows, geometry, QRectF(), true, saved);
    EXPECT_EQ(x->selectedTimepoints(), QList<float>{1}) << "shrunk to nothing: only the saved selection";
}

TEST_F(TimelineDragTest, ControlFlagsOfStopFramesAndKeyframes)
{
    const std::vector<double> stops{1.5, 3.0};
    EXPECT_EQ(stopFrameControlFlags({}, 2), 0);
    EXPECT_EQ(stopFrameControlFlags(stops, 0), kFlagAfter);
    EXPECT_EQ(stopFrameControlFlags(stops, 1.504), kFlagAt | kFlagAfter) << "to the hundredth of a second";
    EXPECT_EQ(stopFrameControlFlags(stops, 2), kFlagBefore | kFlagAfter);
    EXPECT_EQ(stopFrameControlFlags(stops, 3), kFlagBefore | kFlagAt);
    EXPECT_EQ(nextStopFrame(stops, 1.5), 3.0);
    EXPECT_EQ(nextStopFrame(stops, 3), std::nullopt);
    EXPECT_EQ(previousStopFrame(stops, 3.001), 1.5) << "a stop frame at the time is not before it";
    EXPECT_EQ(previousStopFrame(stops, 1.5), std::nullopt);

    model::QuartzComponent* c = addComponent(QStringLiteral("C"));
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 2});
    EXPECT_EQ(keyframeControlFlags(*x, 0.5), kFlagAfter);
    EXPECT_EQ(keyframeControlFlags(*x, 1), kFlagAt | kFlagAfter);
    EXPECT_EQ(keyframeControlFlags(*x, 5), kFlagBefore);
    EXPECT_EQ(keyframeControlFlags(*c->attributeForKey(QStringLiteral("originY")), 1), 0) << "a constant has no keyframes";
}
