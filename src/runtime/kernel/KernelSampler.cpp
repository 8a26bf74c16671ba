#include "runtime/kernel/KernelSampler.h"

#include "runtime/PixelColor.h"

#include <algorithm>
#include <cmath>

namespace runtime::kernel {

namespace {

Vec vecOf(const PixelColor& c)
{
    return {{c.red, c.green, c.blue, c.alpha}};
}

}  // namespace

Sampler::Sampler(const Image& image, const QRect& neededRegion, Filter filter, Wrap wrap) : filter_(filter), wrap_(wrap)
{
    if (image.isNull()) return;
    QRect region;
    if (image.isInfinite()) {
        region = neededRegion;
        raster_ = image.renderRegion(region);
        const float huge = float(image.extent().width());
        extent_ = {{-huge / 2, -huge / 2, huge, huge}};
    } else {
        region = image.extent();
        raster_ = image.raster();
        spaceOriginX_ = float(region.x());
        spaceOriginY_ = float(region.y());
        extent_ = {{float(region.x()), float(region.y()), float(region.width()), float(region.height())}};
    }
    if (raster_.isNull()) return;
    bits_ = raster_.constBits();
    stride_ = raster_.bytesPerLine();
    width_ = raster_.width();
    height_ = raster_.height();
    rasterX_ = float(region.x()) - spaceOriginX_;
    rasterY_ = float(region.y()) - spaceOriginY_;
}

Vec Sampler::pixel(int column, int rowFromBottom) const
{
    if (column < 0 || rowFromBottom < 0 || column >= width_ || rowFromBottom >= height_) {
        if (wrap_ == Wrap::Transparent || width_ == 0 || height_ == 0) return {};
        column = std::clamp(column, 0, width_ - 1);
        rowFromBottom = std::clamp(rowFromBottom, 0, height_ - 1);
    }
    const auto* line = reinterpret_cast<const QRgb*>(bits_ + stride_ * (height_ - 1 - rowFromBottom));
    return vecOf(PixelColor::fromPixel(line[column]));
}

Vec Sampler::sample(float x, float y) const
{
    if (!bits_ || !std::isfinite(x) || !std::isfinite(y)) return {};
    // Raster coordinates with pixel centres on whole numbers.
    const float fx = std::clamp(x - rasterX_ - 0.5f, -2.0f, float(width_) + 1.0f);
    const float fy = std::clamp(y - rasterY_ - 0.5f, -2.0f, float(height_) + 1.0f);
    if (filter_ == Filter::Nearest) return pixel(int(std::floor(fx + 0.5f)), int(std::floor(fy + 0.5f)));
    const float x0 = std::floor(fx), y0 = std::floor(fy);
    const float tx = fx - x0, ty = fy - y0;
    const int c = int(x0), r = int(y0);
    if (c >= 0 && r >= 0 && c + 1 < width_ && r + 1 < height_) {
        // Inside the raster: no edge rules, and most kernels read pixel
        // centres, where one pixel is the whole answer.
        const auto* bottom = reinterpret_cast<const QRgb*>(bits_ + stride_ * (height_ - 1 - r)) + c;
        if (tx == 0 && ty == 0) return vecOf(PixelColor::fromPixel(*bottom));
        const auto* top = reinterpret_cast<const QRgb*>(reinterpret_cast<const uchar*>(bottom) - stride_);
        return vecOf(bilinearPixel(bottom[0], bottom[1], top[0], top[1], tx, ty));
    }
    const Vec a = pixel(c, r), b = pixel(c + 1, r), d = pixel(c, r + 1), e = pixel(c + 1, r + 1);
    Vec out;
    for (int i = 0; i < 4; ++i) {
        const float bottom = a.v[i] + (b.v[i] - a.v[i]) * tx;
        const float top = d.v[i] + (e.v[i] - d.v[i]) * tx;
        out.v[i] = bottom + (top - bottom) * ty;
    }
    return out;
}

}  // namespace runtime::kernel
