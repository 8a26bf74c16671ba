#pragma once
// The uniforms a GLSL program from a file declares, read from its sources
// (no compiler needed): they become the GLSL Shader patch's input ports.

#include "runtime/ShaderProgram.h"

#include <QString>

#include <vector>

namespace runtime {

struct UniformDeclaration {
    QString name;
    UniformKind kind = UniformKind::Float;
};

// Uniforms of the types a port can carry (float, vec2–4, int, bool,
// sampler2D), in order of first declaration across the sources, each name
// once. Arrays, matrices and other types are left out; so are names
// starting with "gl_" (built-ins).
std::vector<UniformDeclaration> declaredUniforms(const QStringList& sources);

// The source without comments (each replaced by a blank, so line numbers
// hold).
QString withoutComments(const QString& source);

}  // namespace runtime
