#include "plist/Utf8.h"

#include <cstring>

namespace plist {

std::size_t firstInvalidUtf8(std::string_view bytes)
{
    const auto* s = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t n = bytes.size();
    std::size_t i = 0;
    while (i < n) {
        // Fast path over ASCII, eight bytes at a time.
        if (i + 8 <= n) {
            std::uint64_t chunk;
            std::memcpy(&chunk, s + i, 8);
            if ((chunk & 0x8080808080808080ULL) == 0) {
                i += 8;
                continue;
            }
        }
        const unsigned char c = s[i];
        if (c < 0x80) {
            ++i;
            continue;
        }
        std::size_t length;
        std::uint32_t codePoint;
        if ((c & 0xE0) == 0xC0) {
            length = 2;
            codePoint = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            length = 3;
            codePoint = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            length = 4;
            codePoint = c & 0x07;
        } else {
            return i;
        }
        if (i + length > n) return i;
        for (std::size_t k = 1; k < length; ++k) {
            if ((s[i + k] & 0xC0) != 0x80) return i;
            codePoint = (codePoint << 6) | (s[i + k] & 0x3F);
        }
        static constexpr std::uint32_t kSmallest[5] = {0, 0, 0x80, 0x800, 0x10000};
        if (codePoint < kSmallest[length] || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
            return i;
        i += length;
    }
    return std::string_view::npos;
}

bool appendUtf8(std::string& out, std::uint32_t cp)
{
    if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
    if (cp < 0x80) {
        out += char(cp);
    } else if (cp < 0x800) {
        out += char(0xC0 | (cp >> 6));
        out += char(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += char(0xE0 | (cp >> 12));
        out += char(0x80 | ((cp >> 6) & 0x3F));
        out += char(0x80 | (cp & 0x3F));
    } else {
        out += char(0xF0 | (cp >> 18));
        out += char(0x80 | ((cp >> 12) & 0x3F));
        out += char(0x80 | ((cp >> 6) & 0x3F));
        out += char(0x80 | (cp & 0x3F));
    }
    return true;
}

bool isAscii(std::string_view bytes)
{
    for (unsigned char c : bytes)
        if (c >= 0x80) return false;
    return true;
}

}  // namespace plist
