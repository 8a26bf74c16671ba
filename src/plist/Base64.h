#pragma once
// Base64 as used by <data> elements: decoding skips white space, encoding
// wraps lines and indents them to the element's depth.

#include <string>
#include <string_view>

namespace plist {

bool decodeBase64(std::string_view text, std::string& out);
void appendBase64Lines(std::string& out, std::string_view bytes, std::string_view indent, std::size_t lineLength = 68);

}  // namespace plist
