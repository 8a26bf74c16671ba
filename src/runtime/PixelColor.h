#pragma once
// One pixel's premultiplied colour in floating point, 0…1, for filters that
// add, scale and mix pixels before storing them back as ARGB32.

#include <QRgb>

#include <algorithm>
#include <cmath>

namespace runtime {

struct PixelColor {
    float red = 0, green = 0, blue = 0, alpha = 0;

    // One step of an 8-bit channel; multiplying by it is much cheaper than
    // dividing by 255 in the inner loops of filters.
    static constexpr float kStep = 1.0f / 255.0f;

    static PixelColor fromPixel(QRgb p) { return {qRed(p) * kStep, qGreen(p) * kStep, qBlue(p) * kStep, qAlpha(p) * kStep}; }
    // Stored premultiplied: alpha in 0…1, each colour channel in 0…alpha.
    QRgb toPixel() const
    {
        const auto clamped = [](float v, float high) { return std::isnan(v) ? 0.0f : std::clamp(v, 0.0f, high); };
        const float a = clamped(alpha, 1.0f);
        const auto byte = [](float v) { return int(v * 255.0f + 0.5f); };  // v is in 0…1 here
        return qRgba(byte(clamped(red, a)), byte(clamped(green, a)), byte(clamped(blue, a)), byte(a));
    }
    float luminance() const { return 0.2126f * red + 0.7152f * green + 0.0722f * blue; }

    PixelColor operator+(const PixelColor& o) const { return {red + o.red, green + o.green, blue + o.blue, alpha + o.alpha}; }
    PixelColor operator-(const PixelColor& o) const { return {red - o.red, green - o.green, blue - o.blue, alpha - o.alpha}; }
    PixelColor operator*(float s) const { return {red * s, green * s, blue * s, alpha * s}; }
    PixelColor& operator+=(const PixelColor& o) { return *this = *this + o; }
};

// The bilinear mix of four pixels, two of one row and the two below or
// above them: `tx` from left to right, `ty` from the first row to the second.
inline PixelColor bilinearPixel(QRgb firstLeft, QRgb firstRight, QRgb secondLeft, QRgb secondRight, float tx, float ty)
{
    const float a = (1 - tx) * (1 - ty) * PixelColor::kStep, b = tx * (1 - ty) * PixelColor::kStep,
                c = (1 - tx) * ty * PixelColor::kStep, d = tx * ty * PixelColor::kStep;
    const auto channel = [&](int shift) {
        return float((firstLeft >> shift) & 0xff) * a + float((firstRight >> shift) & 0xff) * b +
               float((secondLeft >> shift) & 0xff) * c + float((secondRight >> shift) & 0xff) * d;
    };
    return {channel(16), channel(8), channel(0), channel(24)};
}

// a at t = 0, b at t = 1.
inline PixelColor mixPixels(const PixelColor& a, const PixelColor& b, float t)
{
    return a + (b - a) * t;
}

}  // namespace runtime
