#pragma once
// Drawing state and the textured quad that the OpenGL target's quads, its
// image copies and its meshes share.

#include "runtime/Backend.h"

#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>

#include <array>

namespace runtime {

// A colour channel for OpenGL: NaN as 0, clamped to 0…1.
float unitChannel(double v);

// Blending for premultiplied colour and, when asked, depth testing that lets
// equal depths through (coplanar layers draw in order).
void applyBlendAndDepth(QOpenGLFunctions& gl, BlendMode blend, bool depthTest);

struct Fog;

// The fog uniforms of the quad and mesh programs; null turns fog off.
void setFogUniforms(QOpenGLShaderProgram& program, const Fog* fog);

struct QuadVertex {
    float x, y, z, s, t;
};

// Four corners as a triangle fan through the program's "position" and
// "texCoord" attributes.
void drawCorners(QOpenGLShaderProgram& program, QOpenGLFunctions& gl, const std::array<QuadVertex, 4>& corners);

}  // namespace runtime
