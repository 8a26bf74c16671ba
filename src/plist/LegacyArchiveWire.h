#pragma once
// Byte-level constants of the typedstream format shared by the reader and
// the writer.

#include "plist/LegacyArchive.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace plist::legacy::detail {

// Signed tag bytes; any other byte is a literal integer from -110 to 127.
inline constexpr std::int8_t kTagInteger2 = -127;  // 0x81: int16 follows
inline constexpr std::int8_t kTagInteger4 = -126;  // 0x82: int32 follows
inline constexpr std::int8_t kTagReal = -125;      // 0x83: IEEE float or double follows
inline constexpr std::int8_t kTagNew = -124;       // 0x84: a new object, class or string follows
inline constexpr std::int8_t kTagNil = -123;       // 0x85
inline constexpr std::int8_t kTagEnd = -122;       // 0x86: end of an object's fields
inline constexpr std::int64_t kSmallestLiteral = -110;
// Table references are written as integers counted from -110 (0x92 = first).
inline constexpr std::int64_t kReferenceBase = -110;

inline constexpr std::uint8_t kStreamerVersion = 4;
inline constexpr std::string_view kBigEndianSignature = "typedstream";
inline constexpr std::string_view kLittleEndianSignature = "streamtyped";
inline constexpr std::size_t kHeaderPrefixSize = 2 + 11;  // version, signature length, signature

inline std::uint64_t loadBits(const char* bytes, int size, ByteOrder order)
{
    std::uint64_t bits = 0;
    for (int i = 0; i < size; ++i) {
        const int index = order == ByteOrder::BigEndian ? i : size - 1 - i;
        bits = (bits << 8) | static_cast<unsigned char>(bytes[index]);
    }
    return bits;
}

inline void storeBits(std::string& out, std::uint64_t bits, int size, ByteOrder order)
{
    for (int i = 0; i < size; ++i) {
        const int shift = order == ByteOrder::BigEndian ? 8 * (size - 1 - i) : 8 * i;
        out += static_cast<char>((bits >> shift) & 0xFF);
    }
}

}  // namespace plist::legacy::detail
