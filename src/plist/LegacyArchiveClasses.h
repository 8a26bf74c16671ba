#pragma once
// The archived classes this codec understands, each with the superclass it
// must be archived with. Anything else in a stream is refused, which also
// keeps class chains short.

#include "plist/LegacyArchiveNode.h"

#include <cstdint>
#include <string_view>

namespace plist::legacy::detail {

struct KnownClass {
    std::string_view name;
    std::string_view superclass;  // empty for the root class
    ObjectKind kind;              // Nil for classes never archived on their own (NSObject)
    bool isMutable;
    std::int32_t version;         // what new objects are written with
};

const KnownClass* findKnownClass(std::string_view name);
// The chain new objects of a known class are written with; null if unknown.
ClassChain standardChain(std::string_view name);

}  // namespace plist::legacy::detail
