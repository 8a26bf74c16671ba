#include "canvas/CanvasHitRules.h"

#include "canvas/CanvasSnapping.h"
#include "model/HandleSides.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace canvas {

using model::halfOpenContains;
using model::onMaxXSide;
using model::onMaxYSide;
using model::onMinXSide;
using model::onMinYSide;

namespace {


// Whether an offset from an anchor lies in the handle's reach on one axis:
// `outward` beyond the frame on the side the handle sits on, `inward` into
// it; a handle in the middle of an edge reaches `inward` both ways along it.
bool withinReach(double offset, bool minSide, bool maxSide, double outward, double inward)
{
    if (minSide) return offset >= -outward && offset <= inward;
    if (maxSide) return offset >= -inward && offset <= outward;
    return std::abs(offset) <= inward;
}

}  // namespace

QPointF handleAnchor(const QRectF& f, int handle)
{
    // Composition rectangles are y up: top() is the lower edge.
    const double x = onMinXSide(handle) ? f.left() : onMaxXSide(handle) ? f.right() : f.center().x();
    const double y = onMinYSide(handle) ? f.top() : onMaxYSide(handle) ? f.bottom() : f.center().y();
    return QPointF(x, y);
}

QPointF rotatedPoint(const QPointF& point, const QPointF& centre, double degrees)
{
    if (degrees == 0) return point;
    const double theta = degrees * M_PI / 180.0;
    const double s = std::sin(theta), c = std::cos(theta);
    const QPointF d = point - centre;
    return QPointF(centre.x() + d.x() * c - d.y() * s, centre.y() + d.x() * s + d.y() * c);
}

std::array<QPointF, 4> rotatedFrameCorners(const QRectF& f, double degrees)
{
    const QPointF centre = f.center();
    return {rotatedPoint(QPointF(f.left(), f.top()), centre, degrees),
            rotatedPoint(QPointF(f.right(), f.top()), centre, degrees),
            rotatedPoint(QPointF(f.right(), f.bottom()), centre, degrees),
            rotatedPoint(QPointF(f.left(), f.bottom()), centre, degrees)};
}

int handleIndexAt(const std::array<QRectF, 9>& rects, double rotationDegrees, const QPointF& point, double zoom)
{
    const QRectF& hit = rects[0];
    // The test runs in the unrotated frame, as the component's own does.
    const QPointF p = rotatedPoint(point, hit.center(), -rotationDegrees);
    if (halfOpenContains(hit, p))
        for (int i = 1; i <= 8; ++i)
            if (halfOpenContains(rects[std::size_t(i)], p)) return i;

    const double outward = compositionDistance(kGrabScreenDistance, zoom);
    const double inwardX = std::min(outward, hit.width() / 4.0);
    const double inwardY = std::min(outward, hit.height() / 4.0);
    int best = 9;
    double bestDistance = std::numeric_limits<double>::max();
    for (int i = 1; i <= 8; ++i) {
        const QPointF d = p - handleAnchor(hit, i);
        if (!withinReach(d.x(), onMinXSide(i), onMaxXSide(i), outward, inwardX)) continue;
        if (!withinReach(d.y(), onMinYSide(i), onMaxYSide(i), outward, inwardY)) continue;
        const double distance = std::max(std::abs(d.x()), std::abs(d.y()));
        if (distance < bestDistance) {
            best = i;
            bestDistance = distance;
        }
    }
    if (best != 9) return best;
    return halfOpenContains(hit, p) ? 0 : 9;
}

double guideGrabTolerance(double zoom)
{
    return std::max(kGuideGrabTolerance, compositionDistance(kGrabScreenDistance, zoom));
}

bool dragHasStarted(const QPointF& compositionDelta, const QPointF& screenDelta, int dragDistance,
                    bool compositionThreshold)
{
    if (screenDelta.manhattanLength() < dragDistance) return false;
    return !compositionThreshold || dragHasStarted(compositionDelta);
}

}  // namespace canvas
