#include "plist/Base64.h"

#include <array>

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
    out.clear();
    out.reserve(text.size() / 4 * 3);
    std::uint32_t accumulator = 0;
    int bits = 0;
    int padding = 0;
    for (unsigned char c : text) {
        const int d = kDecode[c];
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
            out += char((accumulator >> bits) & 0xFF);
        }
    }
    return padding <= 2;
}

void appendBase64Lines(std::string& out, std::string_view bytes, std::string_view indent, std::size_t lineLength)
{
    const auto* s = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t column = 0;
    auto put = [&](char c) {
        if (column == 0) out.append(indent);
        out += c;
        if (++column == lineLength) {
            out += '\n';
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
    if (column != 0) out += '\n';
}

}  // namespace plist
