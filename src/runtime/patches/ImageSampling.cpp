#include "runtime/patches/ImageSampling.h"

#include "runtime/patches/ImageOps.h"

#include <cmath>
#include <utility>

namespace runtime {

namespace {

// Sample points further out than this are treated as outside any image.
constexpr double kFar = 1e8;

qint64 wrapped(qint64 v, qint64 size)
{
    const qint64 m = v % size;
    return m < 0 ? m + size : m;
}

}  // namespace

SourcePixels SourcePixels::of(const Image& image, const QRectF& wanted)
{
    SourcePixels s;
    if (image.isNull() || !(std::abs(wanted.left()) < kFar && std::abs(wanted.right()) < kFar && std::abs(wanted.top()) < kFar &&
                            std::abs(wanted.bottom()) < kFar))
        return s;
    QRect area = wanted.toAlignedRect().adjusted(-1, -1, 1, 1);
    if (!image.isInfinite()) area = area.intersected(image.extent());
    area = clampedRect(area);
    if (area.isEmpty()) return s;
    s.setRaster(image.renderRegion(area));
    s.area_ = area;
    return s;
}

SourcePixels SourcePixels::tiled(const Image& image)
{
    SourcePixels s;
    if (image.isNull() || image.isInfinite()) return s;
    s.area_ = clampedRect(image.extent());
    if (s.area_.isEmpty()) return s;
    s.setRaster(image.renderRegion(s.area_));
    s.tiled_ = true;
    return s;
}

void SourcePixels::setRaster(QImage raster)
{
    raster_ = std::move(raster);
    bits_ = raster_.constBits();
    stride_ = raster_.bytesPerLine();
    width_ = raster_.width();
    height_ = raster_.height();
}

const QRgb* SourcePixels::pixel(qint64 column, qint64 row) const
{
    if (tiled_) {
        column = wrapped(column, width_);
        row = wrapped(row, height_);
    } else if (column < 0 || row < 0 || column >= width_ || row >= height_) {
        return nullptr;
    }
    return reinterpret_cast<const QRgb*>(bits_ + row * stride_) + column;
}

// Where some of the four pixels lie outside the raster, or wrap around it.
PixelColor SourcePixels::bilinearAtEdge(qint64 column, qint64 row, float tx, float ty) const
{
    const auto get = [this](qint64 c, qint64 r) {
        const QRgb* p = pixel(c, r);
        return p ? *p : QRgb(0);
    };
    return bilinearPixel(get(column, row), get(column + 1, row), get(column, row + 1), get(column + 1, row + 1), tx, ty);
}

PixelColor SourcePixels::at(double x, double y) const
{
    if (isEmpty()) return {};
    // Raster coordinates of the point, relative to pixel centres.
    const double fx = x - area_.x() - 0.5, fy = area_.y() + area_.height() - y - 0.5;
    if (!(std::abs(fx) < kFar && std::abs(fy) < kFar)) return {};
    const double x0 = std::floor(fx), y0 = std::floor(fy);
    const float tx = float(fx - x0), ty = float(fy - y0);
    const qint64 c = qint64(x0), r = qint64(y0);
    if (tiled_ || c < 0 || r < 0 || c + 1 >= width_ || r + 1 >= height_) return bilinearAtEdge(c, r, tx, ty);
    // The usual case: all four pixels inside.
    const auto* top = reinterpret_cast<const QRgb*>(bits_ + r * stride_) + c;
    const auto* bottom = reinterpret_cast<const QRgb*>(reinterpret_cast<const uchar*>(top) + stride_);
    return bilinearPixel(top[0], top[1], bottom[0], bottom[1], tx, ty);
}

PixelColor SourcePixels::nearest(double x, double y) const
{
    if (isEmpty()) return {};
    const double fx = x - area_.x(), fy = area_.y() + area_.height() - y;
    if (!(std::abs(fx) < kFar && std::abs(fy) < kFar)) return {};
    const QRgb* p = pixel(qint64(std::floor(fx)), qint64(std::floor(fy)));
    return p ? PixelColor::fromPixel(*p) : PixelColor{};
}

namespace {

QImage shadeRegion(const SourcePixels& pixels, const QRect& region, const PixelShader& shade)
{
    return shadePixels(region, [&](double x, double y) { return shade(pixels, x, y).toPixel(); });
}

}  // namespace

Image shadeImage(const Image& source, const std::optional<QRect>& extent, const SourceArea& area, const PixelShader& shade)
{
    if (source.isNull()) return {};
    return imageFromRenderer(
        [source, area, shade](const QRect& region) { return shadeRegion(SourcePixels::of(source, area(region)), region, shade); },
        extent);
}

Image shadeImage(const SourcePixels& source, const std::optional<QRect>& extent, const PixelShader& shade)
{
    if (source.isEmpty()) return {};
    return imageFromRenderer([source, shade](const QRect& region) { return shadeRegion(source, region, shade); }, extent);
}

Image remapImage(const Image& source, const std::optional<QRect>& extent, const SourceArea& area,
                 const std::function<QPointF(double x, double y)>& toSource)
{
    return shadeImage(source, extent, area, [toSource](const SourcePixels& pixels, double x, double y) {
        const QPointF p = toSource(x, y);
        return pixels.at(p.x(), p.y());
    });
}

QRectF boundsOfAffine(const QRect& rect, const std::function<QPointF(double x, double y)>& map)
{
    const double l = rect.x(), b = rect.y(), r = rect.x() + rect.width(), t = rect.y() + rect.height();
    const QPointF corners[] = {map(l, b), map(r, b), map(l, t), map(r, t)};
    double x0 = corners[0].x(), x1 = x0, y0 = corners[0].y(), y1 = y0;
    for (const QPointF& c : corners) {
        x0 = std::min(x0, c.x());
        x1 = std::max(x1, c.x());
        y0 = std::min(y0, c.y());
        y1 = std::max(y1, c.y());
    }
    return QRectF(QPointF(x0, y0), QPointF(x1, y1));
}

}  // namespace runtime
