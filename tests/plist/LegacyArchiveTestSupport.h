#pragma once
// Helpers for the legacy archive tests: typedstream bytes written the way
// format notes show them, hex bytes and "quoted" text.

#include "plist/LegacyArchive.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <string_view>

namespace plist::legacy::test {

// "04 0B \"typedstream\" 81 03 E8" -> the bytes.
inline std::string wireBytes(std::string_view notation)
{
    std::string out;
    for (std::size_t i = 0; i < notation.size();) {
        const char c = notation[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            ++i;
        } else if (c == '"') {
            const std::size_t close = notation.find('"', i + 1);
            out += notation.substr(i + 1, close - i - 1);
            i = close + 1;
        } else {
            out += static_cast<char>(std::stoi(std::string(notation.substr(i, 2)), nullptr, 16));
            i += 2;
        }
    }
    return out;
}

inline Archive decodeOk(std::string_view bytes)
{
    std::string error;
    auto archive = decode(bytes, &error);
    EXPECT_TRUE(archive.has_value()) << error;
    return archive.value_or(Archive{});
}

inline std::string decodeError(std::string_view bytes)
{
    std::string error;
    auto archive = decode(bytes, &error);
    EXPECT_FALSE(archive.has_value()) << "accepted: " << (archive ? archive->root.describe() : "");
    EXPECT_FALSE(error.empty());
    return error;
}

}  // namespace plist::legacy::test
