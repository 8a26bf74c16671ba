#pragma once
// Small colour helpers shared by the filter families.

#include "runtime/Value.h"

#include <algorithm>

namespace runtime {

inline const Color kWhite{1, 1, 1, 1};
inline const Color kBlack{0, 0, 0, 1};

// Straight colours mixed: a at t = 0, b at t = 1 (t clamped).
inline Color mix(const Color& a, const Color& b, double t)
{
    t = std::clamp(t, 0.0, 1.0);
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t,
            a.alpha + (b.alpha - a.alpha) * t};
}

// Mixed as Core Image mixes pixels, premultiplied, so that a colour fading
// to transparent keeps its hue instead of darkening.
inline Color mixPremultiplied(const Color& a, const Color& b, double t)
{
    t = std::clamp(t, 0.0, 1.0);
    const double alpha = a.alpha + (b.alpha - a.alpha) * t;
    if (!(alpha > 0)) return Color::transparentBlack();
    const auto channel = [&](double ca, double cb) { return (ca * a.alpha + (cb * b.alpha - ca * a.alpha) * t) / alpha; };
    return {channel(a.red, b.red), channel(a.green, b.green), channel(a.blue, b.blue), alpha};
}

// Rec. 709 weights, as Core Image's colour filters use them.
inline double luminance(const Color& c)
{
    return 0.2126 * c.red + 0.7152 * c.green + 0.0722 * c.blue;
}

}  // namespace runtime
