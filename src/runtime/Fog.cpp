#include "runtime/Fog.h"

#include <algorithm>
#include <cmath>

namespace runtime {

double Fog::amount(double distance) const
{
    double visible = 1.0;  // OpenGL's fog factor: 1 clear, 0 all fog
    switch (mode) {
    case Mode::Linear:
        // A start at or beyond the end is a wall: all fog from the start on.
        visible = end > start ? (end - distance) / (end - start) : (distance < start ? 1.0 : 0.0);
        break;
    case Mode::Exponential: visible = std::exp(-std::max(0.0, density) * std::max(0.0, distance)); break;
    case Mode::ExponentialSquared: {
        const double x = std::max(0.0, density) * std::max(0.0, distance);
        visible = std::exp(-x * x);
        break;
    }
    }
    if (std::isnan(visible)) return 0.0;
    return 1.0 - std::clamp(visible, 0.0, 1.0);
}

Color Fog::apply(const Color& c, double distance) const
{
    const double f = amount(distance);
    return Color{c.red + (color.red - c.red) * f, c.green + (color.green - c.green) * f,
                 c.blue + (color.blue - c.blue) * f, c.alpha};
}

}  // namespace runtime
