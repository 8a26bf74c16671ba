#include "canvas/CanvasSnapping.h"

#include <cmath>

namespace canvas {

bool dragHasStarted(const QPointF& delta)
{
    return std::abs(delta.x()) >= kDragThreshold || std::abs(delta.y()) >= kDragThreshold;
}

QPointF lockAxis(QPointF delta, bool shiftHeld, AxisLock& lock)
{
    if (!shiftHeld) return delta;
    const bool vertical =
        lock != AxisLock::None ? lock == AxisLock::Vertical : std::abs(delta.x()) < std::abs(delta.y());
    if (vertical)
        delta.setX(0);
    else
        delta.setY(0);
    lock = vertical ? AxisLock::Vertical : AxisLock::Horizontal;
    return delta;
}

QPointF snapMoveDelta(const QRectF& frame, QPointF delta, const std::vector<Guide>& guides)
{
    const QRectF moved = frame.translated(delta);
    // Composition rectangles have y up: top() is the lower edge.
    for (const Guide& g : guides) {
        if (!g.horizontal) continue;
        if (std::abs(g.position - moved.top()) < kSnapDistance) {
            delta.ry() += g.position - moved.top();
            break;
        }
        if (std::abs(g.position - moved.bottom()) < kSnapDistance) {
            delta.ry() += g.position - moved.bottom();
            break;
        }
    }
    for (const Guide& g : guides) {
        if (g.horizontal) continue;
        if (std::abs(g.position - moved.left()) < kSnapDistance) {
            delta.rx() += g.position - moved.left();
            break;
        }
        if (std::abs(g.position - moved.right()) < kSnapDistance) {
            delta.rx() += g.position - moved.right();
            break;
        }
    }
    return delta;
}

QPointF snapResizePoint(QPointF point, const std::vector<Guide>& guides)
{
    for (const Guide& g : guides) {
        if (g.horizontal && std::abs(point.y() - g.position) < kSnapDistance) {
            point.setY(g.position);
            break;
        }
        if (!g.horizontal && std::abs(point.x() - g.position) < kSnapDistance) {
            point.setX(g.position);
            break;
        }
    }
    return point;
}

int guideIndexAt(const QPointF& point, const std::vector<Guide>& guides, double tolerance)
{
    for (std::size_t i = 0; i < guides.size(); ++i) {
        const double coordinate = guides[i].horizontal ? point.y() : point.x();
        if (guides[i].position - tolerance < coordinate && coordinate < guides[i].position + tolerance)
            return int(i);
    }
    return -1;
}

}  // namespace canvas
