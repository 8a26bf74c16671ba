#pragma once
// The fog a Fog patch lays over the meshes and sprites inside it: the fog
// colour mixed into each surface by its distance from the eye, as OpenGL's
// fixed-function fog does it (linear between a start and an end, or
// exponential).

#include "runtime/Value.h"

#include <cstdint>

namespace runtime {

struct Fog {
    enum class Mode : std::uint8_t { Linear, Exponential, ExponentialSquared };
    Mode mode = Mode::Linear;
    Color color{0.5, 0.5, 0.5, 1};
    double density = 0.5;  // exponential modes
    double start = 1.0;    // linear mode: no fog nearer than this (units from the eye)
    double end = 4.0;      // linear mode: all fog from here on

    // How much of the fog colour a point `distance` units from the eye
    // takes: 0 none … 1 all. NaN parameters give no fog.
    double amount(double distance) const;
    // The surface colour `c` (straight alpha, kept) fogged at `distance`.
    Color apply(const Color& c, double distance) const;
};

}  // namespace runtime
