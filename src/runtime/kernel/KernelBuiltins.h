#pragma once
// The kernel language's built-in functions: GLSL's common and geometric
// functions and Core Image's sampler functions.

#include "runtime/kernel/KernelExpressions.h"

namespace runtime::kernel {

// The node of a call to the built-in `name`. Null when there is no such
// built-in; throws a message (QString) when there is one but the arguments
// do not fit it.
ExprPtr makeBuiltinCall(const QString& name, std::vector<ExprPtr>& args);

// Lanes that an arithmetic combination of `a` and `b` has: vectors of
// different sizes do not combine. Throws a message when they cannot.
Type combinedType(Type a, Type b);

}  // namespace runtime::kernel
