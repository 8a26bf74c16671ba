#include "runtime/patches/Easing.h"

#include <cmath>
#include <numbers>

namespace runtime {

namespace {

double easeIn(int family, double p)
{
    switch (family) {
    case 0: return p * p;
    case 1: return p * p * p;
    case 2: return p <= 0 ? 0.0 : std::pow(2.0, 10.0 * (p - 1.0));
    case 3: return 1.0 - std::cos(p * std::numbers::pi / 2.0);
    default: return p;
    }
}

}  // namespace

double ease(int curve, double p)
{
    if (curve <= 0 || curve > 12) return p;
    const int family = (curve - 1) / 3;
    switch ((curve - 1) % 3) {
    case 0: return easeIn(family, p);
    case 1: return 1.0 - easeIn(family, 1.0 - p);
    default: return p < 0.5 ? easeIn(family, 2 * p) / 2 : 1.0 - easeIn(family, 2 * (1 - p)) / 2;
    }
}

QStringList easingNames()
{
    return {"Linear",          "Quadratic In",  "Quadratic Out",       "Quadratic In Out",
            "Cubic In",        "Cubic Out",     "Cubic In Out",        "Exponential In",
            "Exponential Out", "Exponential In Out", "Sinusoidal In", "Sinusoidal Out",
            "Sinusoidal In Out"};
}

}  // namespace runtime
