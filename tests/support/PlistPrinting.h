#pragma once
// Readable plist values in GoogleTest failure messages.

#include "plist/ValueDescription.h"

#include <ostream>

namespace plist {
inline void PrintTo(const Value& value, std::ostream* os) { *os << describe(value, 600); }
}  // namespace plist
