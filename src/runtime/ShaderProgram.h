#pragma once
// A GLSL program from a composition (the GLSL Shader patch): its two
// sources and the values of the uniforms they declare, as the OpenGL
// backend binds them for the draws inside the patch.

#include "runtime/Image.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

namespace runtime {

enum class UniformKind : std::uint8_t { Float, Vec2, Vec3, Vec4, Int, Bool, Sampler };

struct ShaderUniform {
    QByteArray name;
    UniformKind kind = UniformKind::Float;
    std::array<float, 4> value{};  // numbers, ints and bools as floats
    Image image;                   // samplers; null binds no texture
};

struct ShaderProgram {
    // Identifies the sources: backends keep one compiled program per key.
    std::uint64_t key = 0;
    QString vertexSource;
    QString fragmentSource;
    std::vector<ShaderUniform> uniforms;
};

}  // namespace runtime
