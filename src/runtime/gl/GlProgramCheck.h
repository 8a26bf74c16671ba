#pragma once
// What the OpenGL driver says about a composition's GLSL programs, for
// `qtz check` on a machine where a context can be made (glslang's check
// without a context is in the composition's problems already).

#include "runtime/Composition.h"

#include <QStringList>

#include <optional>

namespace runtime {

// One line per program the driver does not compile or link ("Patch_1/
// GLSLShader_1: the OpenGL driver does not compile the fragment shader:
// 0:3(17): error: …"); nullopt when no context can be made here.
std::optional<QStringList> programProblemsFromDriver(const Composition& composition);

}  // namespace runtime
