#pragma once
// Checks a GLSL program's sources without an OpenGL context (glslang), as
// desktop GLSL 1.20 where the source names no version, compatibility
// profile (the fixed-function built-ins are declared): what `qtz check`
// reports for a GLSL Shader patch on a machine without a display.

#include <QString>
#include <QStringList>

namespace runtime {

enum class ShaderStage { Vertex, Fragment };

// One line per error: "line 5: 'foo' : undeclared identifier"; empty when
// the source compiles.
QStringList glslErrors(const QString& source, ShaderStage stage);

}  // namespace runtime
