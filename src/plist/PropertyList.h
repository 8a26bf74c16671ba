#pragma once
// Reading and writing property lists in the XML (version 1.0) and binary
// ("bplist00") formats. Readers never throw: bad input gives no value and an
// error message that says what is wrong and where (a line for XML, a byte
// offset for binary).

#include "plist/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace plist {

enum class Format { Xml, Binary };

// Limits that keep a hostile file from exhausting the stack or memory.
inline constexpr int kMaxNestingDepth = 512;

std::optional<Value> readXml(std::string_view bytes, std::string* error = nullptr);
std::optional<Value> readBinary(std::string_view bytes, std::string* error = nullptr);
// Detects the format from the first bytes ("bplist00" or XML).
std::optional<Value> read(std::string_view bytes, std::string* error = nullptr, Format* format = nullptr);
std::optional<Value> readFile(const std::string& path, std::string* error = nullptr, Format* format = nullptr);

// Writers fail only on values the format cannot hold (null; UIDs in XML are
// written as {"CF$UID": n} dictionaries as the platform does).
std::optional<std::string> writeXml(const Value& root, std::string* error = nullptr);
std::optional<std::string> writeBinary(const Value& root, std::string* error = nullptr);
std::optional<std::string> write(const Value& root, Format format, std::string* error = nullptr);

}  // namespace plist
