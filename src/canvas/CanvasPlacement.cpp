#include "canvas/CanvasPlacement.h"

#include <algorithm>
#include <cmath>

namespace canvas {

namespace {
constexpr double kSameOrigin = 0.5;
constexpr int kMaxCascade = 1000;  // a bound, so the search always ends
}  // namespace

QPointF cascadeOffset(const QPointF& origin, const std::vector<QPointF>& taken)
{
    for (int step = 0; step < kMaxCascade; ++step) {
        const QPointF candidate = origin + kCascadeStep * step;
        const bool occupied = std::any_of(taken.begin(), taken.end(), [&](const QPointF& p) {
            return std::abs(p.x() - candidate.x()) < kSameOrigin && std::abs(p.y() - candidate.y()) < kSameOrigin;
        });
        if (!occupied) return kCascadeStep * step;
    }
    return {};
}

QPointF offsetCentring(const QRectF& bounds, const QPointF& centre)
{
    const QPointF origin(std::round(centre.x() - bounds.width() / 2.0), std::round(centre.y() - bounds.height() / 2.0));
    return origin - bounds.topLeft();
}

}  // namespace canvas
