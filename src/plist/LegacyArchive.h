#pragma once
// The legacy (NSArchiver, "typedstream") archive format that Quartz
// Composer files use inside data values: node "userInfo" dictionaries,
// published-port userInfo, timeline track colours, template images.
//
// decode() followed by encode() gives back the same bytes. Reading never
// throws: bad input gives no value and an error that names the byte offset.

#include "plist/LegacyArchiveObject.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace plist::legacy {

enum class ByteOrder : std::uint8_t { BigEndian, LittleEndian };  // "typedstream" / "streamtyped"

struct Archive {
    ByteOrder order = ByteOrder::LittleEndian;
    std::int32_t systemVersion = 1000;  // from the header; 1000 in every file seen
    Object root;
};

// Limits that keep a hostile stream from exhausting the stack.
inline constexpr int kMaxArchiveNesting = 512;

// True when the bytes start with a typedstream header of either byte order.
bool isArchive(std::string_view bytes);

std::optional<Archive> decode(std::string_view bytes, std::string* error = nullptr);
std::string encode(const Archive& archive);

// New data as Quartz Composer 4 writes it: little-endian, system version
// 1000. The shapes (NSMutableDictionary, {CGPoint=dd}, ...) are those the
// Object constructors make.
std::string encodeNew(const Object& root);
// A timeline track colour: calibrated RGBA NSColor.
std::string encodeColor(double red, double green, double blue, double alpha = 1.0);

}  // namespace plist::legacy
