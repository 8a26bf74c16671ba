#pragma once
// Layout constants and byte helpers shared by the "bplist00" reader and
// writer. Private to the plist module.

#include <cstdint>
#include <cstring>

namespace plist::binary {

inline constexpr char kMagic[] = "bplist00";
inline constexpr std::size_t kHeaderSize = 8;
// Trailer: 6 unused bytes, offset entry size, object reference size, object
// count, top object, offset table offset (the last three 8 bytes each).
inline constexpr std::size_t kTrailerSize = 32;
inline constexpr std::size_t kTrailerOffsetSize = 6;
inline constexpr std::size_t kTrailerRefSize = 7;
inline constexpr std::size_t kTrailerObjectCount = 8;
inline constexpr std::size_t kTrailerTopObject = 16;
inline constexpr std::size_t kTrailerTableOffset = 24;

// High nibble of an object's marker byte.
enum Kind : unsigned char {
    kSimple = 0x0,  // 0x00 null, 0x08 false, 0x09 true, 0x0F fill
    kInteger = 0x1,
    kReal = 0x2,
    kDate = 0x3,    // only 0x33 is valid
    kData = 0x4,
    kAscii = 0x5,
    kUtf16 = 0x6,
    kUid = 0x8,
    kArray = 0xA,
    kOrderedSet = 0xB,
    kSet = 0xC,
    kDictionary = 0xD,
};
inline constexpr unsigned char kNull = 0x00;
inline constexpr unsigned char kFalse = 0x08;
inline constexpr unsigned char kTrue = 0x09;
inline constexpr unsigned char kFill = 0x0F;
inline constexpr unsigned char kDateMarker = 0x33;
// A low nibble of 0xF means the count follows as an integer object.
inline constexpr unsigned char kCountFollows = 0x0F;

inline std::uint64_t readBigEndian(const unsigned char* p, unsigned size)
{
    switch (size) {
    case 1: return p[0];
    case 2: return (std::uint64_t(p[0]) << 8) | p[1];
    case 3: return (std::uint64_t(p[0]) << 16) | (std::uint64_t(p[1]) << 8) | p[2];  // large files' refs and offsets
    case 4: {
        std::uint32_t v;
        std::memcpy(&v, p, 4);
        return __builtin_bswap32(v);
    }
    case 8: {
        std::uint64_t v;
        std::memcpy(&v, p, 8);
        return __builtin_bswap64(v);
    }
    default: {
        std::uint64_t v = 0;
        for (unsigned i = 0; i < size; ++i) v = (v << 8) | p[i];
        return v;
    }
    }
}

inline unsigned char* writeBigEndian(unsigned char* p, std::uint64_t value, unsigned size)
{
    for (unsigned i = size; i > 0; --i) {
        p[i - 1] = static_cast<unsigned char>(value);
        value >>= 8;
    }
    return p + size;
}

// Smallest byte count (1 to 8) that holds the value.
inline unsigned bytesNeeded(std::uint64_t value)
{
    unsigned n = 1;
    while (n < 8 && (value >> (8 * n)) != 0) ++n;
    return n;
}

}  // namespace plist::binary
