#pragma once
// Assembles binary property lists byte by byte for tests, including broken
// ones: objects are given as raw bytes, and every trailer field can be
// overridden.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace plist::test {

class BinaryPlistBuilder {
public:
    explicit BinaryPlistBuilder(unsigned refSize = 1, unsigned offsetSize = 1) : refSize_(refSize), offsetSize_(offsetSize) {}

    // Adds an object's bytes and returns its reference.
    std::uint64_t add(std::string bytes)
    {
        objects_.push_back(std::move(bytes));
        return objects_.size() - 1;
    }

    static std::string bigEndian(std::uint64_t value, unsigned size)
    {
        std::string out(size, '\0');
        for (unsigned i = size; i > 0; --i, value >>= 8) out[i - 1] = static_cast<char>(value & 0xFF);
        return out;
    }

    // Marker with an inline count, or 0xF and a 1-, 2- or 8-byte count integer.
    static std::string marker(unsigned kind, std::uint64_t count)
    {
        if (count < 15) return std::string(1, static_cast<char>((kind << 4) | count));
        if (count <= 0xFF) return std::string(1, static_cast<char>((kind << 4) | 0xF)) + "\x10" + bigEndian(count, 1);
        if (count <= 0xFFFF) return std::string(1, static_cast<char>((kind << 4) | 0xF)) + "\x11" + bigEndian(count, 2);
        return std::string(1, static_cast<char>((kind << 4) | 0xF)) + "\x13" + bigEndian(count, 8);
    }

    static std::string ascii(const std::string& text) { return marker(0x5, text.size()) + text; }

    static std::string utf16(const std::u16string& text)
    {
        std::string out = marker(0x6, text.size());
        for (char16_t c : text) out += bigEndian(c, 2);
        return out;
    }

    std::string refs(const std::vector<std::uint64_t>& refs) const
    {
        std::string out;
        for (std::uint64_t r : refs) out += bigEndian(r, refSize_);
        return out;
    }

    std::string array(const std::vector<std::uint64_t>& items) const { return marker(0xA, items.size()) + refs(items); }

    std::string dictionary(const std::vector<std::uint64_t>& keys, const std::vector<std::uint64_t>& values) const
    {
        return marker(0xD, keys.size()) + refs(keys) + refs(values);
    }

    std::optional<std::uint64_t> objectCount;
    std::optional<std::uint64_t> topObject;
    std::optional<std::uint64_t> tableOffset;
    std::optional<unsigned> trailerRefSize;
    std::optional<unsigned> trailerOffsetSize;
    // Replaces the offset of one object in the table.
    std::optional<std::pair<std::uint64_t, std::uint64_t>> offsetOverride;

    std::string build() const
    {
        std::string out = "bplist00";
        std::vector<std::uint64_t> offsets;
        for (const std::string& object : objects_) {
            offsets.push_back(out.size());
            out += object;
        }
        if (offsetOverride) offsets.at(offsetOverride->first) = offsetOverride->second;
        const std::uint64_t table = out.size();
        for (std::uint64_t offset : offsets) out += bigEndian(offset, offsetSize_);
        out += std::string(6, '\0');
        out += static_cast<char>(trailerOffsetSize.value_or(offsetSize_));
        out += static_cast<char>(trailerRefSize.value_or(refSize_));
        out += bigEndian(objectCount.value_or(objects_.size()), 8);
        out += bigEndian(topObject.value_or(0), 8);
        out += bigEndian(tableOffset.value_or(table), 8);
        return out;
    }

    // Where the object with this reference starts in build()'s output.
    std::uint64_t offsetOf(std::uint64_t ref) const
    {
        std::uint64_t at = 8;
        for (std::uint64_t i = 0; i < ref; ++i) at += objects_[i].size();
        return at;
    }

private:
    unsigned refSize_;
    unsigned offsetSize_;
    std::vector<std::string> objects_;
};

}  // namespace plist::test
