#pragma once
// One-dimensional gradient noise: a smooth, repeatable curve in 0…1 from a
// seed and a position. Each whole position has a pseudo-random slope; the
// curve crosses 0.5 there and blends the two neighbouring slopes with a
// quintic fade, so it is continuous with continuous first and second
// derivatives.

#include <cmath>
#include <cstdint>

namespace runtime {

// A well-mixed 64-bit hash of (seed, lattice index).
inline std::uint64_t noiseHash(std::uint64_t seed, std::int64_t index)
{
    std::uint64_t x = seed * 0x9E3779B97F4A7C15ull + std::uint64_t(index) * 0xD1B54A32D192ED03ull;
    x ^= x >> 30;
    x *= 0xBF58476D1CE4E5B9ull;
    x ^= x >> 27;
    x *= 0x94D049BB133111EBull;
    x ^= x >> 31;
    return x;
}

// Slope in −1…1 at a lattice point.
inline double noiseSlope(std::uint64_t seed, std::int64_t index)
{
    return double(noiseHash(seed, index) >> 11) / double(1ull << 52) - 1.0;
}

inline double smoothNoise(std::uint64_t seed, double position)
{
    if (!std::isfinite(position)) return 0.5;
    // Far positions lose their fraction anyway; keep the index in range.
    position = std::fmod(position, 4.5e15);
    const double cell = std::floor(position);
    const double f = position - cell;
    const auto i = std::int64_t(cell);
    const double a = noiseSlope(seed, i) * f;
    const double b = noiseSlope(seed, i + 1) * (f - 1.0);
    const double fade = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
    // With slopes in −1…1 the blend never leaves ±0.5; the clamp only
    // guards against rounding.
    const double v = 0.5 + (a + (b - a) * fade);
    return v < 0 ? 0.0 : (v > 1 ? 1.0 : v);
}

}  // namespace runtime
