#pragma once
// Zoom and scrolling arithmetic of the canvas, free of widgets: the zoom
// range and its steps, the zoom a wheel or pinch asks for, the ruler unit of
// a zoom mode, where to scroll so a point stays under the mouse, and how
// fast to scroll while a drag presses against the edge.

#include "canvas/CanvasGeometry.h"

#include <QPoint>
#include <QPointF>
#include <QSize>
#include <QString>

namespace canvas {

// Any zoom between these, in percent, as the composition's `zoomMode`.
inline constexpr int kMinZoomPercent = 5;
inline constexpr int kMaxZoomPercent = 1600;

// A percentage rounded to a whole one inside the range.
int clampZoomPercent(double percent);

// The next step of Zoom In (direction > 0) or Zoom Out (< 0) from a factor:
// 5, 10, 15, 20, 25, 33, 50, 67, 100, 150, 200, 300, 400, 600, 800, 1200
// and 1600 %. A factor between two steps goes to the nearer one in the
// direction asked; at either end it stays.
int nextZoomStep(double factor, int direction);

// The zoom a wheel turn asks for with Control held: a fifth more per notch
// (120 eighths of a degree), never less than a whole percent of change.
int zoomPercentForWheel(double factor, double angleDelta);
// The zoom a pinch asks for: the gesture's value is the relative change.
int zoomPercentForPinch(double factor, double pinchValue);

// The unit both rulers are set to, as the platform's ruler views knew them:
// all with the abbreviation "pt".
struct RulerUnit {
    QString name;
    double pointsPerUnit = 1.0;
};
RulerUnit rulerUnitForZoomMode(int zoomMode, double fitFactor);

// The scroll position (the document point at the viewport's top-left) that
// shows `compositionPoint` at `viewportPoint` with the geometry `after`.
QPointF scrollPositionKeeping(const CanvasGeometry& after, const QPointF& compositionPoint, const QPointF& viewportPoint);

// While a move, resize or guide drag is held near the edge of the visible
// area, or past it, the view scrolls this far per tick towards it: nothing
// further in than kAutoscrollBand points, then faster the deeper the mouse
// goes, up to kAutoscrollMaxStep.
inline constexpr double kAutoscrollBand = 24.0;
inline constexpr int kAutoscrollMaxStep = 40;
inline constexpr int kAutoscrollIntervalMs = 25;
QPoint autoscrollStep(const QPointF& pointInViewport, QSize viewport);

}  // namespace canvas
