#pragma once
// Objective-C type encodings as they label the value groups of a legacy
// archive: "@", "i", "ffff", "{CGPoint=dd}", "[26446c]". Parsed once per
// distinct string into a small tree that the reader and writer walk.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plist::legacy::detail {

enum class TypeKind : std::uint8_t {
    // Numbers, in the order of their type characters "cCBsSiIlLqQfd".
    Char, UnsignedChar, Bool, Short, UnsignedShort, Int, UnsignedInt, Long, UnsignedLong, LongLong,
    UnsignedLongLong, Float, Double,
    Object,         // @
    CString,        // *  (a shared string held in the object table)
    Bytes,          // +  (length and bytes, not shared)
    SharedString,   // % and : (selectors are archived as shared strings)
    ByteArray,      // [Nc] / [NC]: N raw bytes
    Array,          // [N type]: N values of the element type
    Struct,         // {name=members}
};

struct TypeNode {
    TypeKind kind = TypeKind::Int;
    std::uint32_t count = 0;         // ByteArray and Array
    std::vector<TypeNode> members;   // Struct members, or the (Byte)Array element
};

struct TypeEncoding {
    std::vector<TypeNode> types;  // a group may hold several, as in "ffff"
    bool numbersOnly = false;     // every leaf is a number
    std::size_t numberCount = 0;  // leaves when numbersOnly, saturating
};

// Nesting of structs and arrays beyond this is refused.
inline constexpr int kMaxTypeNesting = 64;

std::optional<TypeEncoding> parseTypeEncoding(std::string_view encoding, std::string* error);

constexpr bool isNumberKind(TypeKind kind) { return kind <= TypeKind::Double; }
// Kinds archived as one raw byte rather than a tagged integer.
constexpr bool isRawByteKind(TypeKind kind)
{
    return kind == TypeKind::Char || kind == TypeKind::UnsignedChar || kind == TypeKind::Bool;
}
// The group label of a data object's bytes: "[Nc]".
std::string byteArrayEncoding(std::size_t length);
std::optional<TypeKind> numberKindFor(char objcType);
char objcTypeFor(TypeKind numberKind);
// The value as the type holds it: truncated and clamped for integers,
// rounded to single precision for floats.
double normalizeNumber(TypeKind numberKind, double value);

// Calls visit(leaf) for every leaf in order, repeating array elements; a
// ByteArray is one leaf. Stops at the first visit that returns false.
template <class Visit>
bool forEachLeaf(const TypeNode& node, Visit& visit)
{
    if (node.kind == TypeKind::Struct) {
        for (const TypeNode& member : node.members)
            if (!forEachLeaf(member, visit)) return false;
        return true;
    }
    if (node.kind == TypeKind::Array) {
        for (std::uint32_t i = 0; i < node.count; ++i)
            if (!forEachLeaf(node.members.front(), visit)) return false;
        return true;
    }
    return visit(node);
}

template <class Visit>
bool forEachLeaf(const TypeEncoding& encoding, Visit& visit)
{
    for (const TypeNode& node : encoding.types)
        if (!forEachLeaf(node, visit)) return false;
    return true;
}

}  // namespace plist::legacy::detail
