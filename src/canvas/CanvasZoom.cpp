#include "canvas/CanvasZoom.h"

#include <algorithm>
#include <cmath>

namespace canvas {

namespace {
constexpr int kZoomSteps[] = {5, 10, 15, 20, 25, 33, 50, 67, 100, 150, 200, 300, 400, 600, 800, 1200, 1600};
// A factor this close to a step counts as being on it (fit lands anywhere).
constexpr double kOnStep = 0.5;

int changedPercent(double factor, double wanted)
{
    const int current = int(std::lround(factor * 100.0));
    int next = int(std::lround(wanted));
    // A small turn still moves the zoom, by at least one percent.
    if (next == current && wanted != factor * 100.0) next += wanted > factor * 100.0 ? 1 : -1;
    return clampZoomPercent(next);
}
}  // namespace

int clampZoomPercent(double percent)
{
    if (!std::isfinite(percent)) return 100;
    return std::clamp(int(std::lround(percent)), kMinZoomPercent, kMaxZoomPercent);
}

int nextZoomStep(double factor, int direction)
{
    const double percent = factor * 100.0;
    if (direction > 0) {
        for (int step : kZoomSteps)
            if (step > percent + kOnStep) return step;
        return kMaxZoomPercent;
    }
    for (auto it = std::rbegin(kZoomSteps); it != std::rend(kZoomSteps); ++it)
        if (*it < percent - kOnStep) return *it;
    return kMinZoomPercent;
}

int zoomPercentForWheel(double factor, double angleDelta)
{
    if (angleDelta == 0) return clampZoomPercent(factor * 100.0);
    return changedPercent(factor, factor * 100.0 * std::pow(1.2, angleDelta / 120.0));
}

int zoomPercentForPinch(double factor, double pinchValue)
{
    if (pinchValue == 0 || !std::isfinite(pinchValue)) return clampZoomPercent(factor * 100.0);
    return changedPercent(factor, factor * 100.0 * std::max(1.0 + pinchValue, 0.01));
}

RulerUnit rulerUnitForZoomMode(int zoomMode, double fitFactor)
{
    switch (zoomMode) {
    case 200: return {QStringLiteral("Points200"), 2.0};
    case 150: return {QStringLiteral("Points150"), 1.5};
    case 50: return {QStringLiteral("Points50"), 0.5};
    case kZoomFit: return {QStringLiteral("PointsFit"), fitFactor};
    default: return {QStringLiteral("Points"), 1.0};  // 100 % and every other factor
    }
}

QPointF scrollPositionKeeping(const CanvasGeometry& after, const QPointF& compositionPoint, const QPointF& viewportPoint)
{
    return after.viewPointFromComposition(compositionPoint) - viewportPoint;
}

QPoint autoscrollStep(const QPointF& p, QSize viewport)
{
    auto axis = [](double position, double length) {
        // How deep into the band (or past the edge) the mouse is.
        const double nearStart = kAutoscrollBand - position;
        const double nearEnd = position - (length - kAutoscrollBand);
        const double depth = std::max(nearStart, nearEnd);
        if (depth <= 0) return 0;
        const int speed = std::clamp(int(std::ceil(depth / 2.0)), 2, kAutoscrollMaxStep);
        return nearStart >= nearEnd ? -speed : speed;
    };
    return QPoint(axis(p.x(), viewport.width()), axis(p.y(), viewport.height()));
}

}  // namespace canvas
