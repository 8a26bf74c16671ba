// Compositing and blending: `inputImage` is the source, drawn onto
// `inputBackgroundImage` (the destination). Extents follow Porter–Duff: a
// result is as large as the area where it can have pixels.

#include "runtime/patches/ImageCombine.h"
#include "runtime/patches/ImageOps.h"
#include "runtime/patches/filters/FilterDefinition.h"

#include <algorithm>

namespace runtime {

namespace {

Image sourceOver(const FilterInputs& in)
{
    return composeImages(in.image(), in.image("inputBackgroundImage"), QPainter::CompositionMode_SourceOver);
}

Image multiply(const FilterInputs& in)
{
    return composeImages(in.image(), in.image("inputBackgroundImage"), QPainter::CompositionMode_Multiply);
}

Image addition(const FilterInputs& in)
{
    return composeImages(in.image(), in.image("inputBackgroundImage"), QPainter::CompositionMode_Plus);
}

// The source where the destination has pixels.
Image sourceIn(const FilterInputs& in)
{
    const Image source = in.image(), destination = in.image("inputBackgroundImage");
    if (source.isNull() || destination.isNull()) return {};
    return combineImages({source, destination}, intersectedExtent({source, destination}),
                         [](const PixelColor* p) { return p[0] * p[1].alpha; });
}

// The source over the destination, only where the destination has pixels.
Image sourceAtop(const FilterInputs& in)
{
    const Image source = in.image(), destination = in.image("inputBackgroundImage");
    if (source.isNull()) return destination;
    return combineImages({source, destination}, extentOf(destination),
                         [](const PixelColor* p) { return p[0] * p[1].alpha + p[1] * (1 - p[0].alpha); });
}

// The source where the destination has no pixels.
Image sourceOut(const FilterInputs& in)
{
    const Image source = in.image(), destination = in.image("inputBackgroundImage");
    if (destination.isNull()) return source;
    return combineImages({source, destination}, extentOf(source), [](const PixelColor* p) { return p[0] * (1 - p[1].alpha); });
}

// 1 − (1 − s)(1 − d) on every channel: never darker than either input.
Image screen(const FilterInputs& in)
{
    const Image source = in.image(), destination = in.image("inputBackgroundImage");
    if (source.isNull()) return destination;
    if (destination.isNull()) return source;
    return combineImages({source, destination}, unitedExtent({source, destination}), [](const PixelColor* p) {
        const PixelColor& s = p[0];
        const PixelColor& d = p[1];
        return PixelColor{s.red + d.red - s.red * d.red, s.green + d.green - s.green * d.green, s.blue + d.blue - s.blue * d.blue,
                          s.alpha + d.alpha - s.alpha * d.alpha};
    });
}

// The mask's luminance picks between the background (0) and the image (1).
Image blendWithMask(const FilterInputs& in)
{
    const Image image = in.image(), background = in.image("inputBackgroundImage"), mask = in.image("inputMaskImage");
    if (mask.isNull()) return background;
    const std::optional<QRect> shown = intersectedExtent({image, mask});
    const std::optional<QRect> backgroundExtent = extentOf(background);
    const std::optional<QRect> extent =
        shown && backgroundExtent ? std::optional<QRect>(shown->united(*backgroundExtent)) : std::nullopt;
    return combineImages({image, background, mask}, image.isNull() ? backgroundExtent : extent,
                         [](const PixelColor* p) { return mixPixels(p[1], p[0], std::clamp(p[2].luminance(), 0.0f, 1.0f)); });
}

// A cross-fade from the image (time 0) to the target (time 1).
Image dissolveTransition(const FilterInputs& in)
{
    const Image image = in.image(), target = in.image("inputTargetImage");
    if (image.isNull() && target.isNull()) return {};
    const float t = float(in.number("inputTime", 0, 1));
    return combineImages({image, target}, unitedExtent({image, target}), [t](const PixelColor* p) { return mixPixels(p[0], p[1], t); });
}

std::vector<FilterPort> sourceAndBackground()
{
    return {imagePort(), imagePort("inputBackgroundImage")};
}

}  // namespace

const std::vector<FilterDefinition>& compositingFilters()
{
    static const std::vector<FilterDefinition> all = {
        {"CISourceOverCompositing", sourceAndBackground(), sourceOver},
        {"CIMultiplyCompositing", sourceAndBackground(), multiply},
        {"CIAdditionCompositing", sourceAndBackground(), addition},
        {"CISourceInCompositing", sourceAndBackground(), sourceIn},
        {"CISourceAtopCompositing", sourceAndBackground(), sourceAtop},
        {"CISourceOutCompositing", sourceAndBackground(), sourceOut},
        {"CIScreenBlendMode", sourceAndBackground(), screen},
        {"CIBlendWithMask", {imagePort(), imagePort("inputBackgroundImage"), imagePort("inputMaskImage")}, blendWithMask},
        {"CIDissolveTransition", {imagePort(), imagePort("inputTargetImage"), numberPort("inputTime", 0)}, dissolveTransition},
    };
    return all;
}

}  // namespace runtime
