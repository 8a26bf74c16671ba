#pragma once
// One pixel's premultiplied colour in floating point, 0…1, for filters that
// add, scale and mix pixels before storing them back as ARGB32.

#include <QRgb>

#include <algorithm>
#include <cmath>

namespace runtime {

struct PixelColor {
    float red = 0, green = 0, blue = 0, alpha = 0;

    static PixelColor fromPixel(QRgb p) { return {qRed(p) / 255.0f, qGreen(p) / 255.0f, qBlue(p) / 255.0f, qAlpha(p) / 255.0f}; }
    // Stored premultiplied: alpha in 0…1, each colour channel in 0…alpha.
    QRgb toPixel() const
    {
        const auto clamped = [](float v, float high) { return std::isnan(v) ? 0.0f : std::clamp(v, 0.0f, high); };
        const float a = clamped(alpha, 1.0f);
        const auto byte = [](float v) { return int(std::lround(v * 255.0f)); };
        return qRgba(byte(clamped(red, a)), byte(clamped(green, a)), byte(clamped(blue, a)), byte(a));
    }
    float luminance() const { return 0.2126f * red + 0.7152f * green + 0.0722f * blue; }

    PixelColor operator+(const PixelColor& o) const { return {red + o.red, green + o.green, blue + o.blue, alpha + o.alpha}; }
    PixelColor operator-(const PixelColor& o) const { return {red - o.red, green - o.green, blue - o.blue, alpha - o.alpha}; }
    PixelColor operator*(float s) const { return {red * s, green * s, blue * s, alpha * s}; }
    PixelColor& operator+=(const PixelColor& o) { return *this = *this + o; }
};

// a at t = 0, b at t = 1.
inline PixelColor mixPixels(const PixelColor& a, const PixelColor& b, float t)
{
    return a + (b - a) * t;
}

}  // namespace runtime
