// The drag arithmetic at its boundaries: one pixel either side of the snap
// distance and the guide grab band decides, and nothing else.

#include "canvas/CanvasSnapping.h"

#include <gtest/gtest.h>

using namespace canvas;

namespace {
const std::vector<Guide> kGuides{{100.0, true}, {300.0, false}};  // y = 100, x = 300
}

TEST(CanvasSnapping, EdgesSnapJustInsideTheDistanceAndNotAtIt)
{
    const QRectF frame(0, 0, 50, 20);  // y up: bottom edge at 0, top edge at 20
    const double inside = kSnapDistance - 0.001;
    // The bottom edge just under the distance below the guide, then just above it.
    EXPECT_EQ(snapMoveDelta(frame, {0, 100 - inside}, kGuides), QPointF(0, 100));
    EXPECT_EQ(snapMoveDelta(frame, {0, 100 + inside}, kGuides), QPointF(0, 100));
    EXPECT_EQ(snapMoveDelta(frame, {0, 100 - kSnapDistance}, kGuides), QPointF(0, 100 - kSnapDistance));
    EXPECT_EQ(snapMoveDelta(frame, {0, 100 + kSnapDistance}, kGuides), QPointF(0, 100 + kSnapDistance));
    // The top edge (y + 20) meets the guide too.
    EXPECT_EQ(snapMoveDelta(frame, {0, 80 + inside}, kGuides), QPointF(0, 80));
    EXPECT_EQ(snapMoveDelta(frame, {0, 80 + kSnapDistance}, kGuides), QPointF(0, 80 + kSnapDistance));
    // Left and right edges against the vertical guide, on both sides.
    EXPECT_EQ(snapMoveDelta(frame, {300 - inside, 500}, kGuides), QPointF(300, 500));
    EXPECT_EQ(snapMoveDelta(frame, {300 + kSnapDistance, 500}, kGuides), QPointF(300 + kSnapDistance, 500));
    EXPECT_EQ(snapMoveDelta(frame, {250 + inside, 500}, kGuides), QPointF(250, 500));
    EXPECT_EQ(snapMoveDelta(frame, {250 - kSnapDistance, 500}, kGuides), QPointF(250 - kSnapDistance, 500));
}

TEST(CanvasSnapping, AResizePointSnapsOnOneAxisAtMost)
{
    const double inside = kSnapDistance - 0.001;
    EXPECT_EQ(snapResizePoint({300 + inside, 100 + inside}, kGuides), QPointF(300 + inside, 100)) << "the first guide wins";
    EXPECT_EQ(snapResizePoint({300 - inside, 500}, kGuides), QPointF(300, 500));
    EXPECT_EQ(snapResizePoint({300 + kSnapDistance, 100 - kSnapDistance}, kGuides), QPointF(300 + kSnapDistance, 100 - kSnapDistance));
}

TEST(CanvasSnapping, AGuideIsGrabbedInsideItsBandOnly)
{
    const double inside = kGuideGrabTolerance - 0.001;
    EXPECT_EQ(guideIndexAt({0, 100 + inside}, kGuides), 0);
    EXPECT_EQ(guideIndexAt({0, 100 - inside}, kGuides), 0);
    EXPECT_EQ(guideIndexAt({0, 100 + kGuideGrabTolerance}, kGuides), -1);
    EXPECT_EQ(guideIndexAt({0, 100 - kGuideGrabTolerance}, kGuides), -1);
    EXPECT_EQ(guideIndexAt({300 - inside, 0}, kGuides), 1);
    EXPECT_EQ(guideIndexAt({300 + kGuideGrabTolerance, 0}, kGuides), -1);
}

TEST(CanvasSnapping, TheDragStartsAtTheThresholdAndShiftKeepsItsAxis)
{
    EXPECT_FALSE(dragHasStarted({kDragThreshold - 0.001, -(kDragThreshold - 0.001)}));
    EXPECT_TRUE(dragHasStarted({0, -kDragThreshold}));
    AxisLock lock = AxisLock::None;
    EXPECT_EQ(lockAxis({5, 3}, true, lock), QPointF(5, 0));
    EXPECT_EQ(lockAxis({1, 30}, true, lock), QPointF(1, 0)) << "the axis chosen first stays";
    EXPECT_EQ(lockAxis({1, 30}, false, lock), QPointF(1, 30));
}
