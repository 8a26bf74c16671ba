#pragma once
// A kernel's view of an input image: pixels read in sampler space, which
// is image space shifted so that the image's lower-left corner is the
// origin. Samples between pixel centres are bilinear unless the sampler is
// set to nearest; outside the pixels a sample is transparent, or the
// nearest edge pixel when the sampler clamps.

#include "runtime/Image.h"
#include "runtime/kernel/KernelValue.h"

#include <QImage>
#include <QPointF>
#include <QRect>

namespace runtime::kernel {

class Sampler {
public:
    enum class Filter { Linear, Nearest };
    enum class Wrap { Transparent, ClampToEdge };

    Sampler() = default;
    // A finite image is read from its own raster. An infinite one has no
    // corner: its sampler space is image space, and only `neededRegion`
    // (image space) of it is rendered, so reads outside are transparent.
    Sampler(const Image& image, const QRect& neededRegion, Filter filter, Wrap wrap);

    Vec sample(float x, float y) const;
    // The image's extent in image space: x, y, width, height.
    Vec extent() const { return extent_; }
    // Image space → sampler space.
    float spaceOriginX() const { return spaceOriginX_; }
    float spaceOriginY() const { return spaceOriginY_; }

private:
    Vec pixel(int column, int rowFromBottom) const;

    QImage raster_;  // premultiplied ARGB32, top row first
    const uchar* bits_ = nullptr;
    qsizetype stride_ = 0;
    int width_ = 0, height_ = 0;
    // Sampler-space position of the raster's lower-left corner.
    float rasterX_ = 0, rasterY_ = 0;
    float spaceOriginX_ = 0, spaceOriginY_ = 0;
    Vec extent_;
    Filter filter_ = Filter::Linear;
    Wrap wrap_ = Wrap::Transparent;
};

}  // namespace runtime::kernel
