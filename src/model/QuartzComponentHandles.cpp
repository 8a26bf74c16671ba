// Handle rectangles, hit-testing through the layer's rotation, and resizing
// by dragging a handle. The arithmetic follows the editor's long-standing
// behaviour exactly, quirks included, because templates were made with it.

#include "model/QuartzComponent.h"
#include "model/HandleSides.h"

#include <cmath>

namespace model {

namespace {
constexpr double kHandleSize = 8.0;
}  // namespace

std::array<QRectF, 9> QuartzComponent::handleRects() const
{
    // Canvas coordinates: y grows upwards, so a rectangle's "top" is its minimum y.
    const QRectF hit = drawingFrame().adjusted(-marginX(), -marginY(), marginX(), marginY());
    const double minX = hit.left(), midX = hit.center().x(), maxX = hit.right();
    const double minY = hit.top(), midY = hit.center().y(), maxY = hit.bottom();
    auto square = [](double x, double y) { return QRectF(x, y, kHandleSize, kHandleSize); };
    return {hit,
            square(minX, minY),
            square(minX, midY - 4),
            square(minX, maxY - 8),
            square(midX - 4, maxY - 8),
            square(midX - 4, minY),
            square(maxX - 8, minY),
            square(maxX - 8, midY - 4),
            square(maxX - 8, maxY - 8)};
}

int QuartzComponent::handleIndexForLocation(const QPointF& location) const
{
    if (!visible() || !visibleInCompositionEditor()) return kHandleNone;
    const std::array<QRectF, 9> rects = handleRects();
    QPointF p = location;
    const float rotation = float(zRotation());
    if (rotation != 0.0f) {
        // Undo the layer's rotation so the test runs in the unrotated frame.
        const float theta = float(rotation / -180.0f * M_PI);
        const float s = std::sin(theta), c = std::cos(theta);
        const float cx = float(rects[0].center().x()), cy = float(rects[0].center().y());
        const float dx = float(p.x()) - cx, dy = float(p.y()) - cy;
        p = QPointF(cx + (dx * c - dy * s), cy + (dx * s + dy * c));
    }
    if (!halfOpenContains(rects[0], p)) return kHandleNone;
    for (int i = 1; i <= 8; ++i)
        if (halfOpenContains(rects[std::size_t(i)], p)) return i;
    return kHandleBody;
}

int QuartzComponent::resizeByMovingHandle(int h, const QPointF& point, bool proportional, bool fromCenter, const QRectF& s)
{
    const double px = point.x(), py = point.y();
    const double sx = s.x(), sy = s.y(), sw = s.width(), sh = s.height();
    double dx = 0, dy = 0;
    if (h <= 8) {
        if (onMinXSide(h)) dx = sx - px;
        else if (onMaxXSide(h)) dx = px - (sx + sw);
        if (onMaxYSide(h)) dy = py - (sy + sh);
        else if (onMinYSide(h)) dy = sy - py;
    }
    double ox = px, oy = py;
    if (proportional) {
        const double r = sw / sh;
        // The same ratio multiplies in both branches; templates rely on it.
        if (dx >= dy) {
            const double oldDy = dy;
            dy = r * dx;
            if (!onMaxYSide(h)) oy = py + (oldDy - r * dx);
        } else {
            const double oldDx = dx;
            dx = r * dy;
            if (!onMaxXSide(h)) ox = px + (oldDx - r * dy);
        }
        if (h == 2 || h == 4 || h == 5 || h == 7) fromCenter = true;
    }
    if (dx != 0) {
        double w = sw + dx;
        if (w < 2.0) return h;
        if (!onMaxXSide(h)) setOriginX(ox);
        if (fromCenter) {
            setOriginX(sx - dx);
            w = sw + 2 * dx;
        }
        setWidth(w);
    }
    if (dy != 0) {
        double hh = sh + dy;
        if (hh < 2.0) return h;
        if (!onMaxYSide(h)) setOriginY(oy);
        if (fromCenter) {
            setOriginY(sy - dy);
            hh = sh + 2 * dy;
        }
        setHeight(hh);
    }
    if (width() < 1.0) setWidth(1.0);
    if (height() < 1.0) setHeight(1.0);
    return h;
}

}  // namespace model
