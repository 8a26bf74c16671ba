#include "plist/Base64.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace plist {

namespace {
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<signed char, 256> makeDecodeTable()
{
    std::array<signed char, 256> table{};
    for (auto& t : table) t = -1;
    for (int i = 0; i < 64; ++i) table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<signed char>(i);
    table[' '] = table['\t'] = table['\n'] = table['\r'] = -2;
    table['='] = -3;
    return table;
}
constexpr auto kDecode = makeDecodeTable();
}  // namespace

bool decodeBase64(std::string_view text, std::string& out)
{
    // Four characters make three bytes, so this is the most it can take.
    out.resize(text.size() / 4 * 3 + 3);
    auto* o = reinterpret_cast<unsigned char*>(out.data());
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const unsigned char* const end = p + text.size();
    std::uint32_t accumulator = 0;
    int bits = 0;
    int padding = 0;
    while (p != end) {
        // Whole groups of four alphabet characters between line breaks: the
        // bulk of any <data> element.
        if (bits == 0 && end - p >= 4) {
            const int a = kDecode[p[0]], b = kDecode[p[1]], c = kDecode[p[2]], d = kDecode[p[3]];
            if ((a | b | c | d) >= 0 && !padding) {
                const std::uint32_t v = std::uint32_t(a) << 18 | std::uint32_t(b) << 12 | std::uint32_t(c) << 6 | std::uint32_t(d);
                o[0] = static_cast<unsigned char>(v >> 16);
                o[1] = static_cast<unsigned char>(v >> 8);
                o[2] = static_cast<unsigned char>(v);
                o += 3;
                p += 4;
                continue;
            }
        }
        const int d = kDecode[*p++];
        if (d == -2) continue;
        if (d == -1) return false;
        if (d == -3) {
            ++padding;
            continue;
        }
        if (padding) return false;  // data after padding
        accumulator = (accumulator << 6) | std::uint32_t(d);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            *o++ = static_cast<unsigned char>((accumulator >> bits) & 0xFF);
        }
    }
    out.resize(std::size_t(o - reinterpret_cast<unsigned char*>(out.data())));
    return padding <= 2;
}

std::size_t base64LinesSize(std::size_t byteCount, std::size_t indentSize, std::size_t lineLength)
{
    const std::size_t encoded = (byteCount + 2) / 3 * 4;
    const std::size_t lines = (encoded + lineLength - 1) / lineLength;
    return encoded + lines * (indentSize + 1);
}

char* writeBase64Lines(char* out, std::string_view bytes, std::string_view indent, std::size_t lineLength)
{
    const auto* s = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t column = 0;
    auto put = [&](char c) {
        if (column == 0 && !indent.empty()) { // an empty view may have no data pointer
            std::memcpy(out, indent.data(), indent.size());
            out += indent.size();
        }
        *out++ = c;
        if (++column == lineLength) {
            *out++ = '\n';
            column = 0;
        }
    };
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const std::uint32_t v = (std::uint32_t(s[i]) << 16) | (std::uint32_t(s[i + 1]) << 8) | s[i + 2];
        put(kAlphabet[v >> 18]);
        put(kAlphabet[(v >> 12) & 63]);
        put(kAlphabet[(v >> 6) & 63]);
        put(kAlphabet[v & 63]);
    }
    const std::size_t rest = bytes.size() - i;
    if (rest) {
        std::uint32_t v = std::uint32_t(s[i]) << 16;
        if (rest == 2) v |= std::uint32_t(s[i + 1]) << 8;
        put(kAlphabet[v >> 18]);
        put(kAlphabet[(v >> 12) & 63]);
        put(rest == 2 ? kAlphabet[(v >> 6) & 63] : '=');
        put('=');
    }
    if (column != 0) *out++ = '\n';
    return out;
}

}  // namespace plist
