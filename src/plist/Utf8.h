#pragma once
// UTF-8 helpers shared by the property-list readers and writers.

#include <cstdint>
#include <string>
#include <string_view>

namespace plist {

// Offset of the first byte that is not part of well-formed UTF-8 (overlong
// forms, surrogates and code points above U+10FFFF are not), or npos.
std::size_t firstInvalidUtf8(std::string_view bytes);

// Appends a code point; false for surrogates and values above U+10FFFF.
bool appendUtf8(std::string& out, std::uint32_t codePoint);

bool isAscii(std::string_view bytes);

}  // namespace plist
