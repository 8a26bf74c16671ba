#include "runtime/patches/ImageBlurs.h"

#include "runtime/patches/ImageOps.h"
#include "runtime/patches/ImageSampling.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace runtime {

namespace {

constexpr int kMaxDiscRadius = 100;
// Longer blur lines sample more sparsely; and no line is longer than
// kMaxReach each way, which bounds both the extent and the work per pixel.
constexpr int kMaxLineSamples = 64;
constexpr double kMaxReach = 500;
constexpr int kZoomSamplesPerPass = 6;

// Prefix sums of the four channels of one raster row.
void rowPrefixSums(const QImage& raster, int y, std::uint32_t* sums)
{
    const auto* line = reinterpret_cast<const QRgb*>(raster.constScanLine(y));
    sums[0] = sums[1] = sums[2] = sums[3] = 0;
    for (int x = 0; x < raster.width(); ++x) {
        const QRgb p = line[x];
        std::uint32_t* s = sums + std::size_t(x) * 4;
        s[4] = s[0] + qRed(p);
        s[5] = s[1] + qGreen(p);
        s[6] = s[2] + qBlue(p);
        s[7] = s[3] + qAlpha(p);
    }
}

QImage discBlurRaster(const QImage& raster, int r)
{
    const int w = raster.width(), h = raster.height(), rows = 2 * r + 1;
    std::vector<int> halfWidth(rows);
    std::uint32_t count = 0;
    for (int dy = -r; dy <= r; ++dy) {
        // Half a pixel beyond the radius makes the disc round at small radii.
        halfWidth[dy + r] = int(std::floor(std::sqrt((r + 0.5) * (r + 0.5) - dy * dy)));
        count += 2 * halfWidth[dy + r] + 1;
    }
    // Prefix sums of the rows a window reads, kept in a ring of 2r + 1 rows.
    const std::size_t stride = std::size_t(w + 1) * 4;
    std::vector<std::uint32_t> ring(stride * rows);
    std::vector<int> ringRow(rows, -1);
    std::vector<std::uint32_t> acc(std::size_t(w) * 4);
    QImage out(raster.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < h; ++y) {
        std::fill(acc.begin(), acc.end(), 0);
        for (int dy = -r; dy <= r; ++dy) {
            const int yy = y + dy;
            if (yy < 0 || yy >= h) continue;  // transparent beyond the raster
            std::uint32_t* sums = ring.data() + stride * std::size_t(yy % rows);
            if (ringRow[yy % rows] != yy) {
                rowPrefixSums(raster, yy, sums);
                ringRow[yy % rows] = yy;
            }
            const int half = halfWidth[dy + r];
            for (int x = 0; x < w; ++x) {
                const std::size_t hi = std::size_t(std::min(x + half + 1, w)) * 4, lo = std::size_t(std::max(x - half, 0)) * 4;
                for (int c = 0; c < 4; ++c) acc[std::size_t(x) * 4 + c] += sums[hi + c] - sums[lo + c];
            }
        }
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const std::uint32_t* a = acc.data() + std::size_t(x) * 4;
            line[x] = qRgba(int(a[0] / count), int(a[1] / count), int(a[2] / count), int(a[3] / count));
        }
    }
    return out;
}

// The mean of `samples` points evenly spaced from `from` to `to`.
PixelColor averageAlong(const SourcePixels& pixels, QPointF from, QPointF to, int samples)
{
    if (samples <= 1) return pixels.at(to.x(), to.y());
    PixelColor sum;
    const QPointF step = (to - from) / (samples - 1);
    for (int i = 0; i < samples; ++i) sum += pixels.at(from.x() + step.x() * i, from.y() + step.y() * i);
    return sum * (1.0f / float(samples));
}

// One pass of the zoom blur: each pixel averages the source at the given
// fractions of its way to `center` (growing in size), its streak shortened
// to `reach` where it would be longer.
Image zoomPass(const Image& image, QPointF center, const std::vector<double>& fractions, double reach)
{
    const double last = fractions.back();
    const auto shade = [center, fractions, last, reach](const SourcePixels& pixels, double x, double y) {
        const double dx = center.x() - x, dy = center.y() - y;
        const double length = std::sqrt(dx * dx + dy * dy) * std::abs(last);
        const double shorten = length > reach ? reach / length : 1.0;
        PixelColor sum;
        for (double f : fractions) sum += pixels.at(x + dx * f * shorten, y + dy * f * shorten);
        return sum * (1.0f / float(fractions.size()));
    };
    // Unshortened, the streak's end is affine in the pixel, so corners bound it.
    const auto unshortenedEnd = [center, last](double x, double y) { return QPointF(x, y) + (center - QPointF(x, y)) * last; };
    const auto area = [unshortenedEnd, reach](const QRect& region) {
        const QRectF r(region);
        return r.united(boundsOfAffine(region, unshortenedEnd)).intersected(r.adjusted(-reach, -reach, reach, reach));
    };
    if (image.isInfinite()) return shadeImage(image, std::nullopt, area, shade);
    // Pixels whose streak reaches back into the image: the extent scaled up
    // about the centre, and no further than a streak reaches.
    const auto outward = [center, last](double x, double y) { return center + (QPointF(x, y) - center) / (1 - last); };
    const QRectF extent(image.extent());
    const QRectF grown =
        extent.united(boundsOfAffine(image.extent(), outward)).intersected(extent.adjusted(-reach, -reach, reach, reach));
    return shadeImage(image, grown.toAlignedRect(), area, shade);
}

int samplesFor(double length)
{
    return std::clamp(int(std::ceil(length)) + 1, 1, kMaxLineSamples);
}

}  // namespace

Image discBlurImage(const Image& image, double radius)
{
    if (image.isNull() || !(radius >= 0.5)) return image;
    const int r = int(std::lround(std::min(radius, double(kMaxDiscRadius))));
    if (image.isInfinite()) {
        return Image::infinite([image, r](const QRect& region) {
            const QRect wider = region.adjusted(-r, -r, r, r);
            return discBlurRaster(image.renderRegion(wider), r).copy(r, r, region.width(), region.height());
        });
    }
    const QRect grown = clampedRect(image.extent().adjusted(-r, -r, r, r));
    return Image::fromRaster(discBlurRaster(image.renderRegion(grown), r), grown.topLeft());
}

Image motionBlurImage(const Image& image, double radius, double angle)
{
    if (image.isNull() || !(radius >= 0.5) || !std::isfinite(angle)) return image;
    radius = std::min(radius, kMaxReach);
    const QPointF reach(radius * std::cos(angle), radius * std::sin(angle));
    // Rounding error must not widen a horizontal or vertical blur.
    const double ax = std::ceil(std::abs(reach.x()) - 1e-9), ay = std::ceil(std::abs(reach.y()) - 1e-9);
    const int samples = samplesFor(2 * radius);
    const auto area = [ax, ay](const QRect& region) { return QRectF(region).adjusted(-ax, -ay, ax, ay); };
    const auto shade = [reach, samples](const SourcePixels& pixels, double x, double y) {
        return averageAlong(pixels, QPointF(x, y) - reach, QPointF(x, y) + reach, samples);
    };
    if (image.isInfinite()) return shadeImage(image, std::nullopt, area, shade);
    return shadeImage(image, image.extent().adjusted(-int(ax), -int(ay), int(ax), int(ay)), area, shade);
}

Image zoomBlurImage(const Image& image, QPointF center, double fraction)
{
    if (image.isNull() || !(std::abs(fraction) > 1e-4) || !std::isfinite(center.x()) || !std::isfinite(center.y())) return image;
    // Streaks reaching the centre would spread an image without bound.
    fraction = std::clamp(fraction, -1.0, 0.9);
    // A streak is the pixel scaled about the centre by 1 … (1 − fraction).
    // Scales multiply, so in their logarithm three passes of n samples, each
    // n times coarser than the last, add up to n³ evenly spaced samples for
    // the cost of 3n: a long streak stays smooth without hundreds of samples.
    constexpr int n = kZoomSamplesPerPass;
    const double total = std::log(1 - fraction), points = double(n * n * n - 1);
    Image result = image;
    double unit = total / points;
    for (int pass = 0; pass < 3; ++pass, unit *= n) {
        std::vector<double> fractions;
        for (int i = 0; i < n; ++i) fractions.push_back(1 - std::exp(unit * i));
        // This pass's part of the whole streak, and of its longest reach.
        const double share = unit * (n - 1) / total;
        result = zoomPass(result, center, fractions, kMaxReach * share);
    }
    return result;
}

}  // namespace runtime
