#pragma once
// Blurs beyond the Gaussian and box blurs of ImageOps: a disc, a line
// (camera motion) and streaks toward a centre (zoom). Radii are in pixels.

#include "runtime/Image.h"

#include <QPointF>

namespace runtime {

// Average over a disc; the extent grows by the radius (at most 100).
Image discBlurImage(const Image& image, double radius);
// Average along a line of ±radius (at most 500) through each pixel at
// `angle` radians (counter-clockwise from +x); the extent grows along it.
Image motionBlurImage(const Image& image, double radius, double angle);
// Each pixel averages the line from itself toward `center` over `fraction`
// of the distance (negative: away from it; at most 500 pixels long), as a
// zoom during exposure.
Image zoomBlurImage(const Image& image, QPointF center, double fraction);

}  // namespace runtime
