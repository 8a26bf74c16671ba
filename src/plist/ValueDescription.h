#pragma once
// A short human-readable rendering of a value, for logs and test failures.

#include "plist/Value.h"

#include <string>

namespace plist {

std::string describe(const Value& value, std::size_t maxLength = 2000);

// The first place where two trees differ, as a path such as
// "rootPatch.state.nodes[3].key", or "" when they are equal.
std::string firstDifference(const Value& a, const Value& b);

}  // namespace plist
