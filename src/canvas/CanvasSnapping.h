#pragma once
// The pure arithmetic of canvas drags: the start threshold, the Shift axis
// lock and snapping to guide rulers. Kept free of widgets and events so each
// rule can be checked on its own.

#include <QPointF>
#include <QRectF>

#include <vector>

namespace canvas {

struct Guide {
    double position = 0;
    bool horizontal = false;  // a horizontal guide lies at a y, a vertical one at an x
};

inline constexpr double kDragThreshold = 2.0;   // composition pixels on either axis
inline constexpr double kSnapDistance = 10.0;   // strictly less than this snaps
inline constexpr double kGuideGrabTolerance = 3.0;
inline constexpr double kNudge = 1.0;
inline constexpr double kFarNudge = 10.0;

// The lock kept for one drag once Shift has been pressed.
enum class AxisLock { None, Vertical, Horizontal };

bool dragHasStarted(const QPointF& delta);

// Applies Shift to a delta. The axis is chosen by the larger movement the
// first time Shift is seen and then kept for the rest of the drag.
QPointF lockAxis(QPointF delta, bool shiftHeld, AxisLock& lock);

// A move's delta adjusted so that the moved frame's edges meet a guide
// within the snap distance: the first horizontal guide near the bottom or
// top edge, then the first vertical guide near the left or right edge.
QPointF snapMoveDelta(const QRectF& frame, QPointF delta, const std::vector<Guide>& guides);

// A resize handle's point pulled onto the first guide within the snap
// distance; at most one axis snaps.
QPointF snapResizePoint(QPointF point, const std::vector<Guide>& guides);

// The first guide within `tolerance` (strictly) of a point, or -1.
int guideIndexAt(const QPointF& point, const std::vector<Guide>& guides, double tolerance = kGuideGrabTolerance);

}  // namespace canvas
