#pragma once
// How close a hand has to be on screen, whatever the zoom: handles and
// guides are grabbed within a fixed number of screen pixels and drawn at a
// fixed screen size, and a press becomes a drag only once the mouse has
// travelled the platform's drag distance. The component's own rules in
// composition pixels (its 8-pixel handles, the 3-pixel guide band, the
// 2-pixel move threshold) stay as the lower bound, so nothing that was
// grabbable at 100 % stops being so.

#include <QPointF>
#include <QPolygonF>
#include <QRectF>

#include <array>

namespace canvas {

// A handle or guide is grabbed this close, in screen pixels.
inline constexpr double kGrabScreenDistance = 6.0;
// Handles are drawn as squares of this side, in screen pixels.
inline constexpr double kHandleScreenSize = 7.0;

// The composition pixels a distance on screen covers at a zoom factor.
inline double compositionDistance(double screenDistance, double zoom) { return screenDistance / (zoom > 0 ? zoom : 1.0); }

// The point handle 1–8 sits on: the corners and edge middles of the hit
// frame (the drawing frame grown by the margins), y up: 1 bottom-left,
// 2 left, 3 top-left, 4 top, 5 bottom, 6 bottom-right, 7 right, 8 top-right.
QPointF handleAnchor(const QRectF& hitFrame, int handle);

// The hit frame's corners turned by the layer's rotation (degrees,
// counter-clockwise, y up) about its centre, in the order bottom-left,
// bottom-right, top-right, top-left.
std::array<QPointF, 4> rotatedFrameCorners(const QRectF& hitFrame, double rotationDegrees);
QPointF rotatedPoint(const QPointF& point, const QPointF& centre, double rotationDegrees);

// The handle under a point of a selected component at a zoom. `modelRects`
// are the component's own rectangles (hit frame, then handles 1–8); a point
// inside one of its handles is that handle as before. Beyond that each
// handle reaches kGrabScreenDistance outwards from its anchor, and inwards
// as far but never past a quarter of the frame, so a small component keeps
// a middle to move it by. The nearest anchor wins where reaches overlap.
// Answers 0 for the body, 9 for nothing.
int handleIndexAt(const std::array<QRectF, 9>& modelRects, double rotationDegrees, const QPointF& point, double zoom);

// Half the band in which a guide is grabbed, in composition pixels.
double guideGrabTolerance(double zoom);

// Whether a press has become a drag: the screen travel (Manhattan length)
// reached the platform's drag distance and, where a composition threshold
// applies (moving), that one too.
bool dragHasStarted(const QPointF& compositionDelta, const QPointF& screenDelta, int dragDistance,
                    bool compositionThreshold);

}  // namespace canvas
