// Colour adjustments: each output pixel depends on the same input pixel
// only; they work on straight colours and keep the extent.

#include "runtime/patches/ImageOps.h"
#include "runtime/patches/filters/ColorMath.h"
#include "runtime/patches/filters/FilterDefinition.h"

#include <cmath>
#include <numbers>

namespace runtime {

namespace {

Image colorInvert(const FilterInputs& in)
{
    return mapColors(in.image(), [](const Color& c) { return Color{1 - c.red, 1 - c.green, 1 - c.blue, c.alpha}; });
}

Image colorMonochrome(const FilterInputs& in)
{
    const Color tint = in.color("inputColor");
    const double intensity = in.number("inputIntensity");
    return mapColors(in.image(), [=](const Color& c) {
        const double l = 0.2126 * c.red + 0.7152 * c.green + 0.0722 * c.blue;
        const Color mono{l * tint.red, l * tint.green, l * tint.blue, c.alpha};
        return mix(c, mono, intensity);
    });
}

Image exposureAdjust(const FilterInputs& in)
{
    const double gain = std::pow(2.0, in.number("inputEV"));
    return mapColors(in.image(), [=](const Color& c) { return Color{c.red * gain, c.green * gain, c.blue * gain, c.alpha}; });
}

// A rotation of the colour cube about its grey diagonal: a positive angle
// turns red toward green, as hue increases.
Image hueAdjust(const FilterInputs& in)
{
    const double a = in.angle("inputAngle");
    const double cosine = std::cos(a), k = (1 - cosine) / 3, s = std::sin(a) / std::numbers::sqrt3;
    const double same = cosine + k, next = k + s, previous = k - s;
    return mapColors(in.image(), [=](const Color& c) {
        return Color{same * c.red + previous * c.green + next * c.blue, next * c.red + same * c.green + previous * c.blue,
                     previous * c.red + next * c.green + same * c.blue, c.alpha};
    });
}

// The classic sepia matrix, mixed with the original by the intensity.
Image sepiaTone(const FilterInputs& in)
{
    const double intensity = in.number("inputIntensity");
    return mapColors(in.image(), [=](const Color& c) {
        const auto tone = [&](double r, double g, double b) { return std::min(1.0, r * c.red + g * c.green + b * c.blue); };
        const Color sepia{tone(0.393, 0.769, 0.189), tone(0.349, 0.686, 0.168), tone(0.272, 0.534, 0.131), c.alpha};
        return mix(c, sepia, intensity);
    });
}

Image gammaAdjust(const FilterInputs& in)
{
    const double power = in.number("inputPower");
    return mapColors(in.image(), [=](const Color& c) {
        return Color{std::pow(c.red, power), std::pow(c.green, power), std::pow(c.blue, power), c.alpha};
    });
}

// Saturation mixes with the grey of the same luminance, then brightness is
// added and contrast scales about mid-grey.
Image colorControls(const FilterInputs& in)
{
    const double saturation = in.number("inputSaturation"), brightness = in.number("inputBrightness");
    const double contrast = in.number("inputContrast");
    return mapColors(in.image(), [=](const Color& c) {
        const double grey = luminance(c);
        const auto adjust = [&](double v) { return ((grey + (v - grey) * saturation + brightness) - 0.5) * contrast + 0.5; };
        return Color{adjust(c.red), adjust(c.green), adjust(c.blue), c.alpha};
    });
}

// Luminance picks a colour between the two.
Image falseColor(const FilterInputs& in)
{
    const Color dark = in.color("inputColor0"), light = in.color("inputColor1");
    return mapColors(in.image(), [=](const Color& c) {
        Color out = mix(dark, light, luminance(c));
        out.alpha *= c.alpha;
        return out;
    });
}

// The vectors of a colour matrix, as Quartz Composer splits them.
const char* const kMatrixKeys[5][4] = {
    {"inputRVector_X", "inputRVector_Y", "inputRVector_Z", "inputRVector_W"},
    {"inputGVector_X", "inputGVector_Y", "inputGVector_Z", "inputGVector_W"},
    {"inputBVector_X", "inputBVector_Y", "inputBVector_Z", "inputBVector_W"},
    {"inputAVector_X", "inputAVector_Y", "inputAVector_Z", "inputAVector_W"},
    {"inputBiasVector_X", "inputBiasVector_Y", "inputBiasVector_Z", "inputBiasVector_W"},
};

// Each output channel is a dot product of the input with its vector, plus
// the bias.
Image colorMatrix(const FilterInputs& in)
{
    double m[5][4];
    for (int v = 0; v < 5; ++v)
        for (int i = 0; i < 4; ++i) m[v][i] = in.number(kMatrixKeys[v][i]);
    return mapColors(in.image(), [m](const Color& c) {
        const auto channel = [&](int v) { return m[v][0] * c.red + m[v][1] * c.green + m[v][2] * c.blue + m[v][3] * c.alpha + m[4][v]; };
        return Color{channel(0), channel(1), channel(2), channel(3)};
    });
}

std::vector<FilterPort> matrixPorts()
{
    std::vector<FilterPort> ports{imagePort()};
    // The identity: each vector picks its own channel; no bias.
    for (int v = 0; v < 5; ++v)
        for (int i = 0; i < 4; ++i) ports.push_back(numberPort(kMatrixKeys[v][i], v == i ? 1 : 0));
    return ports;
}

}  // namespace

const std::vector<FilterDefinition>& colorFilters()
{
    static const std::vector<FilterDefinition> all = {
        {"CIColorInvert", {imagePort()}, colorInvert},
        {"CIColorMonochrome", {imagePort(), colorPort("inputColor", {0.6, 0.45, 0.3, 1}), numberPort("inputIntensity", 1)}, colorMonochrome},
        {"CIExposureAdjust", {imagePort(), numberPort("inputEV", 0.5)}, exposureAdjust},
        {"CIHueAdjust", {imagePort(), numberPort("inputAngle", 0)}, hueAdjust},
        {"CISepiaTone", {imagePort(), numberPort("inputIntensity", 1)}, sepiaTone},
        {"CIGammaAdjust", {imagePort(), numberPort("inputPower", 1)}, gammaAdjust},
        {"CIColorControls",
         {imagePort(), numberPort("inputSaturation", 1), numberPort("inputBrightness", 0), numberPort("inputContrast", 1)},
         colorControls},
        {"CIFalseColor", {imagePort(), colorPort("inputColor0", {0.3, 0, 0, 1}), colorPort("inputColor1", {1, 0.9, 0.8, 1})}, falseColor},
        {"CIColorMatrix", matrixPorts(), colorMatrix},
    };
    return all;
}

}  // namespace runtime
