// Glows, sharpening and stylised looks built on a blurred copy or on cells
// of the input. Each keeps the input's extent.

#include "runtime/patches/ImageCombine.h"
#include "runtime/patches/ImageOps.h"
#include "runtime/patches/ImageSampling.h"
#include "runtime/patches/filters/FilterDefinition.h"

#include <cmath>
#include <cstdint>

namespace runtime {

namespace {

// Radii stop at 100 pixels: beyond that a blur costs seconds a frame and
// shows nothing more.
constexpr double kMaxRadius = 100;

double radius(const FilterInputs& in)
{
    const double r = in.distance("inputRadius");
    return std::isnan(r) ? 0 : std::min(r, kMaxRadius);
}

enum class Edges { Transparent, Extended };

// Pixels of the image and of its Gaussian blur, combined. With extended
// edges the blur sees the edge pixels repeated rather than transparency.
Image withBlurred(const Image& image, double sigma, Edges edges, const PixelCombiner& combine)
{
    if (image.isNull()) return {};
    const Image blurred = edges == Edges::Extended && sigma > 0
                              ? blurImage(clampedToExtent(image, int(std::ceil(3 * sigma)) + 1), sigma)
                              : blurImage(image, sigma);
    return combineImages({image, blurred}, extentOf(image), combine);
}

// The blur added to the image: bright areas spill a soft glow.
Image bloom(const FilterInputs& in)
{
    const float intensity = float(in.number("inputIntensity", -10, 10));
    return withBlurred(in.image(), radius(in), Edges::Transparent, [intensity](const PixelColor* p) { return p[0] + p[1] * intensity; });
}

// The image darkened by its blur: highlights next to dark areas dull, flat
// areas keep their colour.
Image gloom(const FilterInputs& in)
{
    const float intensity = float(in.number("inputIntensity", -10, 10));
    return withBlurred(in.image(), radius(in), Edges::Transparent, [intensity](const PixelColor* p) {
        const PixelColor& blur = p[1];
        const float a = blur.alpha > 0 ? 1 / blur.alpha : 0;
        const auto dull = [&](float c, float b) { return c * (1 - intensity + intensity * b * a); };
        return PixelColor{dull(p[0].red, blur.red), dull(p[0].green, blur.green), dull(p[0].blue, blur.blue), p[0].alpha};
    });
}

// The luminance's difference from its blur, added to every channel alike,
// so edges sharpen without colour fringes.
Image sharpenLuminance(const FilterInputs& in)
{
    const float sharpness = float(in.number("inputSharpness", -100, 100));
    return withBlurred(in.image(), radius(in), Edges::Extended, [sharpness](const PixelColor* p) {
        const float detail = sharpness * (p[0].luminance() - p[1].luminance());
        return PixelColor{p[0].red + detail, p[0].green + detail, p[0].blue + detail, p[0].alpha};
    });
}

Image unsharpMask(const FilterInputs& in)
{
    const float intensity = float(in.number("inputIntensity", -100, 100));
    return withBlurred(in.image(), radius(in), Edges::Extended,
                       [intensity](const PixelColor* p) { return p[0] + (p[0] - p[1]) * intensity; });
}

// Height 0 at the mask's edge, rising over about the radius to 1 inside,
// rounded like a bevel; opaque grey. A blur of the mask stands in for the
// distance to its edge.
Image heightFieldFromMask(const FilterInputs& in)
{
    const Image mask = in.image();
    if (mask.isNull()) return {};
    return combineImages({blurImage(mask, radius(in) / 2)}, extentOf(mask), [](const PixelColor* p) {
        const float h = std::clamp(2 * p[0].luminance() - 1, 0.0f, 1.0f);
        const float rounded = std::sqrt(1 - (1 - h) * (1 - h));
        return PixelColor{rounded, rounded, rounded, 1};
    });
}

// A point in [0, 1)² for a grid cell; the same cell always gives the same.
QPointF jitter(std::int64_t i, std::int64_t j)
{
    std::uint64_t h = std::uint64_t(i) * 0x9E3779B97F4A7C15ull ^ std::uint64_t(j) * 0xC2B2AE3D27D4EB4Full;
    h ^= h >> 31;
    h *= 0xBF58476D1CE4E5B9ull;
    h ^= h >> 29;
    return {double(h & 0xFFFF) / 65536.0, double((h >> 16) & 0xFFFF) / 65536.0};
}

// Cells around seeds jittered on a grid of the radius, from the centre;
// each cell takes the colour under its seed.
Image crystallize(const FilterInputs& in)
{
    const Image image = in.image();
    const double cell = std::max(radius(in), 1.0);
    const QPointF c = in.point("inputCenter");
    const auto area = [cell](const QRect& region) { return QRectF(region).adjusted(-2 * cell, -2 * cell, 2 * cell, 2 * cell); };
    const auto shade = [cell, c](const SourcePixels& pixels, double x, double y) {
        const double gx = (x - c.x()) / cell, gy = (y - c.y()) / cell;
        const auto i0 = std::int64_t(std::floor(gx)), j0 = std::int64_t(std::floor(gy));
        QPointF best;
        double bestDistance = 1e300;
        for (std::int64_t j = j0 - 1; j <= j0 + 1; ++j)
            for (std::int64_t i = i0 - 1; i <= i0 + 1; ++i) {
                const QPointF seed = QPointF(double(i), double(j)) + jitter(i, j);
                const double d = (seed.x() - gx) * (seed.x() - gx) + (seed.y() - gy) * (seed.y() - gy);
                if (d < bestDistance) {
                    bestDistance = d;
                    best = seed;
                }
            }
        return pixels.nearest(c.x() + best.x() * cell, c.y() + best.y() * cell);
    };
    return shadeImage(image, extentOf(image), area, shade);
}

}  // namespace

const std::vector<FilterDefinition>& stylizeFilters()
{
    static const std::vector<FilterDefinition> all = {
        {"CIBloom", {imagePort(), numberPort("inputRadius", 10), numberPort("inputIntensity", 0.5)}, bloom},
        {"CIGloom", {imagePort(), numberPort("inputRadius", 10), numberPort("inputIntensity", 0.5)}, gloom},
        {"CISharpenLuminance", {imagePort(), numberPort("inputSharpness", 0.4), numberPort("inputRadius", 1.69)}, sharpenLuminance},
        {"CIUnsharpMask", {imagePort(), numberPort("inputRadius", 2.5), numberPort("inputIntensity", 0.5)}, unsharpMask},
        {"CIHeightFieldFromMask", {imagePort(), numberPort("inputRadius", 10)}, heightFieldFromMask},
        {"CICrystallize", {imagePort(), numberPort("inputRadius", 20), numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150)},
         crystallize},
    };
    return all;
}

}  // namespace runtime
