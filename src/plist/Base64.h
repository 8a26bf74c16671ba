#pragma once
// Base64 as used by <data> elements: decoding skips white space, encoding
// wraps lines and indents them to the element's depth.

#include <string>
#include <string_view>

namespace plist {

bool decodeBase64(std::string_view text, std::string& out);
// Encoding in lines of `lineLength` characters, each after `indent` and
// ending in a newline: the size it takes, then the writing, which returns
// the end of what it wrote.
constexpr std::size_t kBase64LineLength = 68;
std::size_t base64LinesSize(std::size_t byteCount, std::size_t indentSize, std::size_t lineLength = kBase64LineLength);
char* writeBase64Lines(char* out, std::string_view bytes, std::string_view indent, std::size_t lineLength = kBase64LineLength);

}  // namespace plist
