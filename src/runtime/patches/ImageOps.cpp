#include "runtime/patches/ImageOps.h"

#include "runtime/RowBands.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace runtime {

namespace {

constexpr int kMaxSide = 8192;

QRgb premultiply(const Color& c)
{
    const auto channel = [](double v) { return int(std::lround(std::clamp(std::isnan(v) ? 0.0 : v, 0.0, 1.0) * 255)); };
    return qPremultiply(qRgba(channel(c.red), channel(c.green), channel(c.blue), channel(c.alpha)));
}

Color unpremultiply(QRgb p)
{
    const QRgb s = qUnpremultiply(p);
    return {qRed(s) / 255.0, qGreen(s) / 255.0, qBlue(s) / 255.0, qAlpha(s) / 255.0};
}

// One horizontal box-blur pass of radius r over premultiplied pixels.
void boxBlurRows(QImage& image, int r)
{
    if (r <= 0) return;
    const int w = image.width();
    // sum / window by a multiplication: exact, since a sum is at most
    // 255 × window, and far cheaper than four divisions a pixel.
    const std::uint64_t reciprocal = ((std::uint64_t(1) << 32) + 2 * r) / std::uint64_t(2 * r + 1);
    const auto mean = [reciprocal](int sum) { return int((std::uint64_t(sum) * reciprocal) >> 32); };
    uchar* const bits = image.bits();  // detached once, before the bands start
    const qsizetype stride = image.bytesPerLine();
    forEachRowBand(image.height(), qint64(w) * image.height(), [&](int, int firstRow, int endRow) {
        std::vector<int> sums(std::size_t(w + 1) * 4);
        for (int y = firstRow; y < endRow; ++y) {
            auto* line = reinterpret_cast<QRgb*>(bits + y * stride);
            // Prefix sums of the row make each output pixel O(1).
            for (int x = 0; x < w; ++x) {
                const QRgb p = line[x];
                const std::size_t i = std::size_t(x + 1) * 4, j = std::size_t(x) * 4;
                sums[i] = sums[j] + qRed(p);
                sums[i + 1] = sums[j + 1] + qGreen(p);
                sums[i + 2] = sums[j + 2] + qBlue(p);
                sums[i + 3] = sums[j + 3] + qAlpha(p);
            }
            for (int x = 0; x < w; ++x) {
                const std::size_t hi = std::size_t(std::min(x + r + 1, w)) * 4, lo = std::size_t(std::max(x - r, 0)) * 4;
                line[x] = qRgba(mean(sums[hi] - sums[lo]), mean(sums[hi + 1] - sums[lo + 1]), mean(sums[hi + 2] - sums[lo + 2]),
                                mean(sums[hi + 3] - sums[lo + 3]));
            }
        }
    });
}

// Rows become columns. Bands of the result's rows, read as columns of the
// source, keep every core writing lines of its own.
QImage transposed(const QImage& image)
{
    QImage out(image.height(), image.width(), QImage::Format_ARGB32_Premultiplied);
    uchar* const bits = out.bits();
    const qsizetype stride = out.bytesPerLine();
    const uchar* const source = image.constBits();
    const qsizetype sourceStride = image.bytesPerLine();
    const int sourceRows = image.height();
    forEachRowBand(out.height(), qint64(out.width()) * out.height(), [&](int, int firstRow, int endRow) {
        // Blocks of 64 source rows keep the lines being read in cache.
        constexpr int kBlock = 64;
        for (int y0 = 0; y0 < sourceRows; y0 += kBlock) {
            const int y1 = std::min(y0 + kBlock, sourceRows);
            for (int x = firstRow; x < endRow; ++x) {
                auto* line = reinterpret_cast<QRgb*>(bits + x * stride);
                for (int y = y0; y < y1; ++y) line[y] = reinterpret_cast<const QRgb*>(source + y * sourceStride)[x];
            }
        }
    });
    return out;
}

// Three box passes per axis approximate a Gaussian of deviation sigma.
QImage blurRaster(QImage raster, double sigma)
{
    const double ideal = std::sqrt(12.0 * sigma * sigma / 3.0 + 1.0);
    const int r = std::max(0, int(std::lround((ideal - 1.0) / 2.0)));
    if (r == 0) return raster;
    for (int pass = 0; pass < 3; ++pass) boxBlurRows(raster, r);
    raster = transposed(raster);
    for (int pass = 0; pass < 3; ++pass) boxBlurRows(raster, r);
    return transposed(raster);
}

// Raster rows (top-down) to image space (y up) for a raster of `extent`.
QTransform rasterToImageSpace(const QRect& extent)
{
    return QTransform(1, 0, 0, -1, extent.x(), extent.y() + extent.height());
}

// Draws `image` (image space) into a raster covering `region`.
void drawInto(QPainter& painter, const Image& image, const QRect& region)
{
    const QRect extent = image.extent().intersected(region);
    if (extent.isEmpty()) return;
    const QImage part = image.renderRegion(extent);
    // Image-space rectangle → raster position inside `region` (top-down rows).
    const int x = extent.x() - region.x();
    const int y = (region.y() + region.height()) - (extent.y() + extent.height());
    painter.drawImage(QPoint(x, y), part);
}

}  // namespace

QRect clampedRect(QRect r)
{
    // No side above kMaxSide, no area above an 8K UHD frame.
    r.setWidth(std::min(r.width(), kMaxSide));
    r.setHeight(std::min(r.height(), kMaxSide));
    constexpr qint64 kMaxPixels = 7680 * 4320;
    if (qint64(r.width()) * r.height() > kMaxPixels) r.setHeight(int(kMaxPixels / std::max(r.width(), 1)));
    return r;
}

Image imageFromRenderer(const Image::Generator& render, const std::optional<QRect>& extent)
{
    if (!extent) return Image::infinite(render);
    const QRect bounds = clampedRect(*extent);
    if (bounds.isEmpty()) return {};
    return Image::fromRaster(render(bounds), bounds.topLeft());
}

Image cropImage(const Image& image, const QRect& rect)
{
    if (image.isNull() || rect.isEmpty()) return {};
    const QRect region = clampedRect(image.isInfinite() ? rect : image.extent().intersected(rect));
    if (region.isEmpty()) return {};
    return Image::fromRaster(image.renderRegion(region), region.topLeft());
}

Image transformImage(const Image& image, const QTransform& transform)
{
    if (image.isNull()) return {};
    if (transform.isIdentity()) return image;
    if (!transform.isInvertible()) return {};
    const auto render = [image, transform](const QRect& region) {
        QImage out(region.size(), QImage::Format_ARGB32_Premultiplied);
        out.fill(Qt::transparent);
        // Only the source pixels that land in `region` are needed.
        const QRectF sourceArea = transform.inverted().mapRect(QRectF(region));
        if (!(std::abs(sourceArea.left()) < 1e7 && std::abs(sourceArea.right()) < 1e7 && std::abs(sourceArea.top()) < 1e7 &&
              std::abs(sourceArea.bottom()) < 1e7))
            return out;
        const QRect source = sourceArea.toAlignedRect().adjusted(-2, -2, 2, 2);
        const QRect wanted = image.isInfinite() ? clampedRect(source) : image.extent().intersected(source);
        if (wanted.isEmpty()) return out;
        const QImage pixels = image.renderRegion(wanted);
        const QTransform toDestination = QTransform(1, 0, 0, -1, -region.x(), region.y() + region.height());
        QPainter painter(&out);
        painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
        painter.setTransform(rasterToImageSpace(wanted) * transform * toDestination);
        painter.drawImage(QPoint(0, 0), pixels);
        return out;
    };
    if (image.isInfinite()) return Image::infinite(render);
    const QRectF mapped = transform.mapRect(QRectF(image.extent()));
    // Far outside any destination (or not a number): nothing to draw.
    if (!(std::abs(mapped.left()) < 1e7 && std::abs(mapped.right()) < 1e7 && std::abs(mapped.top()) < 1e7 &&
          std::abs(mapped.bottom()) < 1e7))
        return {};
    const QRect bounds = clampedRect(mapped.toAlignedRect());
    if (bounds.isEmpty()) return {};
    return Image::fromRaster(render(bounds), bounds.topLeft());
}

Image blurImage(const Image& image, double sigma)
{
    if (image.isNull() || !(sigma > 0.05)) return image;
    sigma = std::min(sigma, 500.0);
    const int margin = int(std::ceil(3 * sigma));
    if (image.isInfinite()) {
        return Image::infinite([image, sigma, margin](const QRect& region) {
            const QRect wider = region.adjusted(-margin, -margin, margin, margin);
            return blurRaster(image.renderRegion(wider), sigma).copy(margin, margin, region.width(), region.height());
        });
    }
    const QRect grown = clampedRect(image.extent().adjusted(-margin, -margin, margin, margin));
    return Image::fromRaster(blurRaster(image.renderRegion(grown), sigma), grown.topLeft());
}

Image clampedToExtent(const Image& image, int margin)
{
    if (image.isNull() || image.isInfinite() || margin <= 0) return image;
    const QImage& source = image.raster();
    const QRect grown = clampedRect(image.extent().adjusted(-margin, -margin, margin, margin));
    QImage out(grown.size(), QImage::Format_ARGB32_Premultiplied);
    // Raster columns and rows of the result, back to the source's.
    const int left = image.extent().x() - grown.x();
    const int top = (grown.y() + grown.height()) - (image.extent().y() + image.extent().height());
    for (int y = 0; y < out.height(); ++y) {
        const auto* from = reinterpret_cast<const QRgb*>(source.constScanLine(std::clamp(y - top, 0, source.height() - 1)));
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < out.width(); ++x) line[x] = from[std::clamp(x - left, 0, source.width() - 1)];
    }
    return Image::fromRaster(out, grown.topLeft());
}

Image boxBlurImage(const Image& image, int radius)
{
    if (image.isNull() || radius <= 0) return image;
    const auto blurred = [radius](QImage raster) {
        boxBlurRows(raster, radius);
        raster = transposed(raster);
        boxBlurRows(raster, radius);
        return transposed(raster);
    };
    if (image.isInfinite()) {
        return Image::infinite([image, radius, blurred](const QRect& region) {
            const QRect wider = region.adjusted(-radius, -radius, radius, radius);
            return blurred(image.renderRegion(wider)).copy(radius, radius, region.width(), region.height());
        });
    }
    const QRect grown = clampedRect(image.extent().adjusted(-radius, -radius, radius, radius));
    return Image::fromRaster(blurred(image.renderRegion(grown)), grown.topLeft());
}

Image composeImages(const Image& top, const Image& bottom, QPainter::CompositionMode mode)
{
    if (top.isNull()) return bottom;
    if (bottom.isNull()) return mode == QPainter::CompositionMode_SourceOver || mode == QPainter::CompositionMode_Plus ? top : Image();
    const auto render = [top, bottom, mode](const QRect& region) {
        QImage out(region.size(), QImage::Format_ARGB32_Premultiplied);
        out.fill(Qt::transparent);
        QPainter painter(&out);
        drawInto(painter, bottom, region);
        painter.setCompositionMode(mode);
        if (mode == QPainter::CompositionMode_Multiply) {
            // Multiply only where both images have pixels.
            QImage layer(region.size(), QImage::Format_ARGB32_Premultiplied);
            layer.fill(Qt::transparent);
            QPainter lp(&layer);
            drawInto(lp, top, region);
            lp.end();
            painter.drawImage(QPoint(0, 0), layer);
        } else {
            drawInto(painter, top, region);
        }
        return out;
    };
    if (top.isInfinite() || bottom.isInfinite()) return Image::infinite(render);
    const QRect bounds = clampedRect(top.extent().united(bottom.extent()));
    return Image::fromRaster(render(bounds), bounds.topLeft());
}

Image mapColors(const Image& image, const std::function<Color(const Color&)>& function)
{
    if (image.isNull()) return {};
    const auto apply = [function](QImage pixels) {
        pixels = pixels.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < pixels.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(pixels.scanLine(y));
            for (int x = 0; x < pixels.width(); ++x) line[x] = premultiply(function(unpremultiply(line[x])));
        }
        return pixels;
    };
    if (image.isInfinite())
        return Image::infinite([image, apply](const QRect& region) { return apply(image.renderRegion(region)); });
    return Image::fromRaster(apply(image.raster().copy()), image.origin());
}

QImage shadePixels(const QRect& region, const std::function<QRgb(double x, double y)>& pixelAt)
{
    QImage out(clampedRect(region).size(), QImage::Format_ARGB32_Premultiplied);
    uchar* const bits = out.bits();  // detached once, before the bands start
    const qsizetype stride = out.bytesPerLine();
    const int width = out.width();
    forEachRowBand(out.height(), qint64(width) * out.height(), [&](int, int firstRow, int endRow) {
        for (int row = firstRow; row < endRow; ++row) {
            auto* line = reinterpret_cast<QRgb*>(bits + row * stride);
            // Pixel centres in image space; rows run top-down.
            const double y = region.y() + region.height() - row - 0.5;
            for (int x = 0; x < width; ++x) line[x] = pixelAt(region.x() + x + 0.5, y);
        }
    });
    return out;
}

Image generatedImage(const std::function<Color(double x, double y)>& colorAt)
{
    return Image::infinite(
        [colorAt](const QRect& region) { return shadePixels(region, [&colorAt](double x, double y) { return premultiply(colorAt(x, y)); }); });
}

}  // namespace runtime
