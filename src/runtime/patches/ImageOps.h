#pragma once
// Image operations in image space (pixels, y up) for the Core Image filter
// patches. Each works on finite and infinite images alike; an infinite
// input gives an infinite result that computes what is asked of it.

#include "runtime/Image.h"
#include "runtime/Value.h"

#include <QPainter>
#include <QTransform>

#include <functional>
#include <optional>

namespace runtime {

// The part of `image` inside `rect`.
Image cropImage(const Image& image, const QRect& rect);
// `transform` maps image-space points of the source to the result.
Image transformImage(const Image& image, const QTransform& transform);
// Gaussian blur with the given standard deviation in pixels; the extent
// grows by three deviations on each side.
Image blurImage(const Image& image, double sigma);
// `top` composed onto `bottom` with a QPainter composition mode.
Image composeImages(const Image& top, const Image& bottom, QPainter::CompositionMode mode);
// Changes every pixel; `function` sees and returns straight (not
// premultiplied) colours.
Image mapColors(const Image& image, const std::function<Color(const Color&)>& function);

// Generators (infinite images). `colorAt` gets an image-space point.
Image generatedImage(const std::function<Color(double x, double y)>& colorAt);

// A raster of `region` (clamped to the size limit) whose pixels are
// `pixelAt` their centres in image space, computed on all cores.
QImage shadePixels(const QRect& region, const std::function<QRgb(double x, double y)>& pixelAt);

// Results larger than the limit (8192 a side, an 8K UHD frame in all) are
// cut to it: a filter chain must not allocate gigabytes because a file says so.
QRect clampedRect(QRect rect);
// An image of the given extent (clamped; null when empty) whose pixels
// `render` computes, or an infinite one without an extent.
Image imageFromRenderer(const Image::Generator& render, const std::optional<QRect>& extent);
// A finite image grown by `margin` pixels on each side, repeating its edge
// pixels outward, so that a blur of it does not fade at the edges.
Image clampedToExtent(const Image& image, int margin);
// Box blur with a (2 × radius + 1)-pixel square; the extent grows by the
// radius on each side.
Image boxBlurImage(const Image& image, int radius);

}  // namespace runtime
