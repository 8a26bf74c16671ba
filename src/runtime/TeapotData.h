#pragma once
// Newell's teapot as Bézier patches (TeapotData.cpp) and its tessellation
// into a mesh (TeapotMesh.cpp).

#include "runtime/Backend.h"

#include <cstdint>
#include <vector>

namespace runtime::teapot {

inline constexpr int kControlPointCount = 306;
inline constexpr int kPatchCount = 32;
extern const float kControlPoints[kControlPointCount][3];
// Rows of four control points (numbered from 1); patches 1–12 are the rim
// and body, 13–16 the handle, 17–20 the spout, 21–28 the lid, 29–32 the
// bottom.
extern const std::uint16_t kPatches[kPatchCount][16];

// The teapot in units: y up, the spout towards +x, the body's axis on the
// y axis, centred in height, 1 unit from the spout's tip to the handle's
// back. Every patch is cut into `steps` × `steps` quads (clamped to
// 1…64), two counter-clockwise triangles each seen from outside, with
// normals from the surface and texture coordinates wrapped once around the
// body's axis (top row at the lid).
std::vector<MeshVertex> tessellate(int steps);

// The teapot's extent before scaling, for callers that place it.
inline constexpr float kWidth = 6.525f;   // spout tip (3.525) to handle back (−3)
inline constexpr float kHeight = 3.15f;

}  // namespace runtime::teapot
