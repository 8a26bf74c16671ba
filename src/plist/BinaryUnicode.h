#pragma once
// Text conversions for the binary property-list format, which stores strings
// as ASCII or UTF-16BE while plist::Value holds UTF-8. Private to the plist
// module. Each conversion measures first and then fills a string of the exact
// size, so no string is built twice.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace plist::binary {

inline bool isAscii(const unsigned char* p, std::size_t n)
{
    unsigned char any = 0;
    for (std::size_t i = 0; i < n; ++i) any |= p[i];
    return any < 0x80;
}

// Bytes 0x80-0xFF in an "ASCII" string are taken as Latin-1, which is what
// old writers meant by them; nothing is lost.
inline std::string latin1ToUtf8(const unsigned char* p, std::size_t n)
{
    std::size_t high = 0;
    for (std::size_t i = 0; i < n; ++i) high += p[i] >> 7;
    std::string out(n + high, '\0');
    char* o = out.data();
    for (std::size_t i = 0; i < n; ++i) {
        const unsigned char c = p[i];
        if (c < 0x80) {
            *o++ = static_cast<char>(c);
        } else {
            *o++ = static_cast<char>(0xC0 | (c >> 6));
            *o++ = static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

inline unsigned utf16At(const unsigned char* p, std::size_t i)
{
    return (unsigned(p[2 * i]) << 8) | p[2 * i + 1];
}

// Converts `units` UTF-16BE code units to UTF-8. An unpaired surrogate makes
// the text invalid: returns false with `badUnit` set to its index.
inline bool utf16BeToUtf8(const unsigned char* p, std::size_t units, std::string& out, std::size_t& badUnit)
{
    std::size_t length = 0;
    for (std::size_t i = 0; i < units; ++i) {
        const unsigned u = utf16At(p, i);
        if (u < 0x80) {
            length += 1;
        } else if (u < 0x800) {
            length += 2;
        } else if (u >= 0xD800 && u <= 0xDBFF) {
            if (i + 1 >= units || (utf16At(p, i + 1) & 0xFC00) != 0xDC00) {
                badUnit = i;
                return false;
            }
            length += 4;
            ++i;
        } else if (u >= 0xDC00 && u <= 0xDFFF) {
            badUnit = i;
            return false;
        } else {
            length += 3;
        }
    }
    out.assign(length, '\0');
    char* o = out.data();
    for (std::size_t i = 0; i < units; ++i) {
        std::uint32_t c = utf16At(p, i);
        if (c >= 0xD800 && c <= 0xDBFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (utf16At(p, i + 1) - 0xDC00);
            ++i;
        }
        if (c < 0x80) {
            *o++ = static_cast<char>(c);
        } else if (c < 0x800) {
            *o++ = static_cast<char>(0xC0 | (c >> 6));
            *o++ = static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            *o++ = static_cast<char>(0xE0 | (c >> 12));
            *o++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            *o++ = static_cast<char>(0x80 | (c & 0x3F));
        } else {
            *o++ = static_cast<char>(0xF0 | (c >> 18));
            *o++ = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            *o++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            *o++ = static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return true;
}

// Decodes one UTF-8 sequence at p[i], rejecting overlong forms, surrogates
// and code points above U+10FFFF. Returns the code point and advances i, or
// returns UINT32_MAX on bad input.
inline std::uint32_t decodeUtf8(const unsigned char* p, std::size_t n, std::size_t& i)
{
    constexpr std::uint32_t kBad = UINT32_MAX;
    const unsigned c = p[i];
    if (c < 0x80) {
        ++i;
        return c;
    }
    std::size_t len;
    std::uint32_t cp;
    std::uint32_t min;
    if ((c & 0xE0) == 0xC0) {
        len = 2, cp = c & 0x1F, min = 0x80;
    } else if ((c & 0xF0) == 0xE0) {
        len = 3, cp = c & 0x0F, min = 0x800;
    } else if ((c & 0xF8) == 0xF0) {
        len = 4, cp = c & 0x07, min = 0x10000;
    } else {
        return kBad;
    }
    if (n - i < len) return kBad;
    for (std::size_t k = 1; k < len; ++k) {
        const unsigned b = p[i + k];
        if ((b & 0xC0) != 0x80) return kBad;
        cp = (cp << 6) | (b & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return kBad;
    i += len;
    return cp;
}

// Number of UTF-16 code units of valid UTF-8 text, or SIZE_MAX when the
// text is not valid UTF-8.
inline std::size_t utf16Length(std::string_view utf8)
{
    const auto* p = reinterpret_cast<const unsigned char*>(utf8.data());
    std::size_t units = 0;
    for (std::size_t i = 0; i < utf8.size();) {
        const std::uint32_t cp = decodeUtf8(p, utf8.size(), i);
        if (cp == UINT32_MAX) return SIZE_MAX;
        units += cp >= 0x10000 ? 2 : 1;
    }
    return units;
}

// Writes valid UTF-8 text as UTF-16BE; returns the end of what it wrote.
inline unsigned char* writeUtf16Be(std::string_view utf8, unsigned char* out)
{
    const auto* p = reinterpret_cast<const unsigned char*>(utf8.data());
    for (std::size_t i = 0; i < utf8.size();) {
        std::uint32_t cp = decodeUtf8(p, utf8.size(), i);
        if (cp >= 0x10000) {
            cp -= 0x10000;
            const std::uint32_t high = 0xD800 + (cp >> 10);
            const std::uint32_t low = 0xDC00 + (cp & 0x3FF);
            *out++ = static_cast<unsigned char>(high >> 8);
            *out++ = static_cast<unsigned char>(high);
            *out++ = static_cast<unsigned char>(low >> 8);
            *out++ = static_cast<unsigned char>(low);
        } else {
            *out++ = static_cast<unsigned char>(cp >> 8);
            *out++ = static_cast<unsigned char>(cp);
        }
    }
    return out;
}

}  // namespace plist::binary
