// Cutting the teapot's Bézier patches into triangles. Newell's data does
// not orient every patch the same way, so each patch is turned to face
// outwards by a rule per part (see outwardsAt).

#include "runtime/TeapotData.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace runtime::teapot {

namespace {

using Patch = std::array<QVector3D, 16>;

Patch controlPoints(int patch)
{
    Patch points;
    for (int k = 0; k < 16; ++k) {
        const float* p = kControlPoints[kPatches[patch][k] - 1];
        points[std::size_t(k)] = QVector3D(p[0], p[1], p[2]);
    }
    return points;
}

std::array<float, 4> bernstein(float t)
{
    const float s = 1 - t;
    return {s * s * s, 3 * t * s * s, 3 * t * t * s, t * t * t};
}

std::array<float, 4> bernsteinSlope(float t)
{
    const float s = 1 - t;
    return {-3 * s * s, 3 * s * s - 6 * t * s, 6 * t * s - 3 * t * t, 3 * t * t};
}

// Rows of the patch run along v, columns along u.
QVector3D point(const Patch& p, float u, float v, bool slopeU = false, bool slopeV = false)
{
    const auto bu = slopeU ? bernsteinSlope(u) : bernstein(u);
    const auto bv = slopeV ? bernsteinSlope(v) : bernstein(v);
    QVector3D sum;
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column) sum += p[row * 4 + column] * (bv[row] * bu[column]);
    return sum;
}

// The surface normal by the two tangents; where a row of control points
// collapses into one (the lid's knob, the bottom's centre) a tangent
// vanishes, and the normal is taken a little way into the patch.
QVector3D normal(const Patch& p, float u, float v)
{
    for (int attempt = 0; attempt < 4; ++attempt) {
        const QVector3D n = QVector3D::crossProduct(point(p, u, v, true, false), point(p, u, v, false, true));
        if (n.lengthSquared() > 1e-10f) return n.normalized();
        u = u + (0.5f - u) * 0.01f;
        v = v + (0.5f - v) * 0.01f;
    }
    return {};
}

// Which way is out at `position` (data coordinates, z up): away from the
// body's axis for the rim, body and lid, sideways (±y) for the handle and
// spout (tubes split along y = 0), down for the bottom.
QVector3D outwardsAt(int patch, const QVector3D& position)
{
    if (patch >= 12 && patch < 20) return QVector3D(0, position.y(), 0);
    if (patch >= 28) return QVector3D(0, 0, -1);
    return QVector3D(position.x(), position.y(), 0);
}

// Data coordinates to units: y up, centred in height, scaled to 1 wide.
QVector3D toUnits(const QVector3D& p)
{
    return QVector3D(p.x(), p.z() - kHeight / 2, -p.y()) / kWidth;
}

QVector3D toUnitsDirection(const QVector3D& n)
{
    return QVector3D(n.x(), n.z(), -n.y());
}

}  // namespace

std::vector<MeshVertex> tessellate(int steps)
{
    steps = std::clamp(steps, 1, 64);
    std::vector<MeshVertex> vertices;
    vertices.reserve(std::size_t(kPatchCount) * std::size_t(steps * steps) * 6);
    std::vector<MeshVertex> grid(std::size_t((steps + 1) * (steps + 1)));
    for (int patch = 0; patch < kPatchCount; ++patch) {
        const Patch p = controlPoints(patch);
        const QVector3D centre = point(p, 0.5f, 0.5f);
        const bool flip = QVector3D::dotProduct(normal(p, 0.5f, 0.5f), outwardsAt(patch, centre)) < 0;
        const double centreAngle = std::atan2(double(centre.y()), double(centre.x()));
        for (int j = 0; j <= steps; ++j)
            for (int i = 0; i <= steps; ++i) {
                const float u = float(i) / float(steps), v = float(j) / float(steps);
                const QVector3D position = point(p, u, v);
                QVector3D n = normal(p, u, v);
                if (flip) n = -n;
                // Around the axis, on the same turn as the patch's centre
                // (no seam inside a patch); the lid at the top row.
                double angle = std::atan2(double(position.y()), double(position.x()));
                if (angle - centreAngle > std::numbers::pi) angle -= 2 * std::numbers::pi;
                if (centreAngle - angle > std::numbers::pi) angle += 2 * std::numbers::pi;
                const float s = float(0.5 + angle / (2 * std::numbers::pi));
                const float t = 1.0f - position.z() / kHeight;
                grid[std::size_t(j * (steps + 1) + i)] = MeshVertex{toUnits(position), toUnitsDirection(n), QVector2D(s, t)};
            }
        for (int j = 0; j < steps; ++j)
            for (int i = 0; i < steps; ++i) {
                const auto at = [&](int di, int dj) { return grid[std::size_t((j + dj) * (steps + 1) + i + di)]; };
                // Counter-clockwise about the u × v normal; reversed where
                // that normal points in.
                const MeshVertex a = at(0, 0), b = at(1, 0), c = at(1, 1), d = at(0, 1);
                if (flip) vertices.insert(vertices.end(), {a, c, b, a, d, c});
                else vertices.insert(vertices.end(), {a, b, c, a, c, d});
            }
    }
    return vertices;
}

}  // namespace runtime::teapot
