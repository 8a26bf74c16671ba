#pragma once
// Where the drawing area lies inside the canvas widget at a zoom, and the
// conversions between widget points (origin top-left, y down) and
// composition pixels (origin lower-left, y up). Zoom is a display transform
// only: everything the model sees is in composition pixels.

#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <QTransform>

namespace canvas {

class CanvasGeometry {
public:
    CanvasGeometry() = default;
    CanvasGeometry(QSizeF compositionSize, QSizeF viewSize, double zoom);

    QSizeF compositionSize() const { return compositionSize_; }
    QSizeF viewSize() const { return viewSize_; }
    double zoom() const { return zoom_; }
    QSizeF zoomedSize() const { return compositionSize_ * zoom_; }

    // The drawing area in widget coordinates, centred and on whole pixels so
    // that composition pixels fall on screen pixels at 100 %.
    QRectF drawingAreaRect() const;

    QPointF compositionPointFromView(const QPointF& viewPoint) const;
    QPointF viewPointFromComposition(const QPointF& compositionPoint) const;
    QRectF compositionRectFromView(const QRectF& viewRect) const;
    QRectF viewRectFromComposition(const QRectF& compositionRect) const;

    // The transform a render target needs when its image covers `area` (in
    // widget coordinates) at `devicePixelRatio` image pixels per widget
    // unit: composition pixels to the target's units, the renderer's
    // 2-unit-wide space (see QuartzComponent::viewTransformForCompositionSize).
    QTransform renderTransform(const QRectF& area, double devicePixelRatio) const;

private:
    QSizeF compositionSize_;
    QSizeF viewSize_;
    double zoom_ = 1.0;
};

// The zoom modes of the View menu and the toolbar: a percentage, 0 = fit.
inline constexpr int kZoomFit = 0;
// The thickness of the canvas's rulers, which fit mode keeps clear.
inline constexpr double kRulerThickness = 20.0;

// The factor of a zoom mode. Fit makes the whole composition visible inside
// `available` after leaving the ruler's thickness plus 8 points on each side,
// held between 5 % and 1600 % like every other zoom.
double zoomFactorForMode(int zoomMode, QSizeF available, QSizeF compositionSize, double verticalRulerThickness,
                         double horizontalRulerThickness);

// The size of the scrolled document for a zoomed drawing area: the drawing
// area with a work area of half its size (at least 50 points) on every side,
// where components wait off the page for their entrances; never smaller
// than the visible area.
QSize documentSizeForZoom(QSizeF zoomedSize, QSize visibleSize);
// The work area beside the drawing area on one axis.
double workAreaMargin(double zoomedLength);

}  // namespace canvas
