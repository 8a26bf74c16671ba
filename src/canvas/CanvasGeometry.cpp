#include "canvas/CanvasGeometry.h"

#include <algorithm>
#include <cmath>

namespace canvas {

CanvasGeometry::CanvasGeometry(QSizeF compositionSize, QSizeF viewSize, double zoom)
    : compositionSize_(compositionSize), viewSize_(viewSize), zoom_(zoom > 0 ? zoom : 1.0)
{
}

QRectF CanvasGeometry::drawingAreaRect() const
{
    const QSizeF zoomed = zoomedSize();
    const double left = std::floor((viewSize_.width() - zoomed.width()) * 0.5);
    const double top = std::floor((viewSize_.height() - zoomed.height()) * 0.5);
    return QRectF(QPointF(left, top), zoomed);
}

QPointF CanvasGeometry::compositionPointFromView(const QPointF& p) const
{
    const QRectF area = drawingAreaRect();
    return QPointF((p.x() - area.left()) / zoom_, (area.bottom() - p.y()) / zoom_);
}

QPointF CanvasGeometry::viewPointFromComposition(const QPointF& p) const
{
    const QRectF area = drawingAreaRect();
    return QPointF(area.left() + p.x() * zoom_, area.bottom() - p.y() * zoom_);
}

QRectF CanvasGeometry::compositionRectFromView(const QRectF& r) const
{
    return QRectF(compositionPointFromView(r.topLeft()), compositionPointFromView(r.bottomRight())).normalized();
}

QRectF CanvasGeometry::viewRectFromComposition(const QRectF& r) const
{
    return QRectF(viewPointFromComposition(r.topLeft()), viewPointFromComposition(r.bottomRight())).normalized();
}

QTransform CanvasGeometry::renderTransform(const QRectF& area, double dpr) const
{
    // Target pixels: px = (viewX − area.left)·dpr, py = (viewY − area.top)·dpr.
    // The target maps units to pixels as px = (u + 1)·w/2, py = h/2 − v·w/2.
    const double w = std::max(1.0, std::round(area.width() * dpr));
    const double h = std::round(area.height() * dpr);
    const QRectF drawing = drawingAreaRect();
    const double scale = 2.0 * zoom_ * dpr / w;
    const double dx = 2.0 * (drawing.left() - area.left()) * dpr / w - 1.0;
    const double dy = (h - 2.0 * (drawing.bottom() - area.top()) * dpr) / w;
    return QTransform(scale, 0, 0, scale, dx, dy);
}

double zoomFactorForMode(int zoomMode, QSizeF available, QSizeF compositionSize, double verticalRulerThickness,
                         double horizontalRulerThickness)
{
    if (zoomMode != kZoomFit) return zoomMode / 100.0;
    if (compositionSize.isEmpty()) return 1.0;
    const double width = available.width() - 2.0 * (verticalRulerThickness + 8.0);
    const double height = available.height() - 2.0 * (horizontalRulerThickness + 8.0);
    const double factor = std::min(width / compositionSize.width(), height / compositionSize.height());
    // A window shrunk to nothing still shows a speck, never a mirror image;
    // a tiny composition in a large window is not blown up past 1600 %.
    return std::clamp(factor, 0.05, 16.0);
}

double workAreaMargin(double zoomedLength) { return std::max(std::ceil(zoomedLength * 0.5), 50.0); }

QSize documentSizeForZoom(QSizeF zoomed, QSize visible)
{
    auto extent = [](double length, int shown) {
        return std::max(shown, int(std::ceil(length) + 2.0 * workAreaMargin(length)));
    };
    return QSize(extent(zoomed.width(), visible.width()), extent(zoomed.height(), visible.height()));
}

}  // namespace canvas
