// Blurs. Radii are in pixels, or a fraction of the input's width with
// normalised coordinates; each result grows by the blur's reach.

#include "runtime/patches/ImageBlurs.h"
#include "runtime/patches/ImageOps.h"
#include "runtime/patches/filters/FilterDefinition.h"

#include <cmath>

namespace runtime {

namespace {

Image gaussianBlur(const FilterInputs& in)
{
    return blurImage(in.image(), in.distance("inputRadius"));
}

Image boxBlur(const FilterInputs& in)
{
    const double radius = in.distance("inputRadius");
    return boxBlurImage(in.image(), std::isnan(radius) ? 0 : int(std::lround(std::clamp(radius, 0.0, 500.0))));
}

Image discBlur(const FilterInputs& in)
{
    return discBlurImage(in.image(), in.distance("inputRadius"));
}

// The camera moves along the angle (counter-clockwise from +x) by the
// radius either way.
Image motionBlur(const FilterInputs& in)
{
    return motionBlurImage(in.image(), in.distance("inputRadius"), in.angle("inputAngle"));
}

// Streaks toward the centre over amount % of each pixel's distance from it
// (at most 90 %; a negative amount streaks outward).
Image zoomBlur(const FilterInputs& in)
{
    return zoomBlurImage(in.image(), in.point("inputCenter"), in.number("inputAmount", -1e6, 1e6) / 100);
}

}  // namespace

const std::vector<FilterDefinition>& blurFilters()
{
    static const std::vector<FilterDefinition> all = {
        {"CIGaussianBlur", {imagePort(), numberPort("inputRadius", 10)}, gaussianBlur},
        {"CIBoxBlur", {imagePort(), numberPort("inputRadius", 10)}, boxBlur},
        {"CIDiscBlur", {imagePort(), numberPort("inputRadius", 8)}, discBlur},
        {"CIMotionBlur", {imagePort(), numberPort("inputRadius", 20), numberPort("inputAngle", 0)}, motionBlur},
        {"CIZoomBlur", {imagePort(), numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150), numberPort("inputAmount", 20)},
         zoomBlur},
    };
    return all;
}

}  // namespace runtime
