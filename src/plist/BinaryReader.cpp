// Reader for binary property lists ("bplist00").
//
// Every object is checked against the bytes that hold it before it is used:
// offsets must fall inside the object area (between the header and the
// offset table), counts must fit in the bytes left there, references must be
// below the object count. An object referenced more than once is parsed once
// and shared; a container met again while it is still being parsed is a
// cycle. Objects may not overlap (their bytes may not add up to more than the
// object area), and copied dictionary keys have a budget, since a key cannot
// be shared. Together these keep time and memory linear in the file size,
// and nesting (shared subtrees included) within kMaxNestingDepth.
//
// Strings: 0x5n bytes above 0x7F are read as Latin-1; UTF-16 text with an
// unpaired surrogate is an error (it has no UTF-8 form). Null (0x00) and fill
// (0x0F) markers both read as a null value.

#include "plist/BinaryFormat.h"
#include "plist/BinaryUnicode.h"
#include "plist/PropertyList.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <unordered_map>
#include <vector>

namespace plist {
namespace {

using namespace binary;

// Thrown inside the reader only; readBinary turns it into an error string.
struct ReadError {
    std::uint64_t offset;
    std::string message;
};

[[noreturn]] void fail(std::uint64_t offset, std::string message)
{
    throw ReadError{offset, std::move(message)};
}

std::string hex(unsigned value)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "0x%02X", value);
    return buffer;
}

const char* kindName(unsigned char marker)
{
    switch (marker >> 4) {
    case kSimple: return marker == kFalse || marker == kTrue ? "boolean" : "null";
    case kInteger: return "integer";
    case kReal: return "real";
    case kDate: return "date";
    case kData: return "data";
    case kAscii:
    case kUtf16: return "string";
    case kUid: return "uid";
    case kArray: return "array";
    case kOrderedSet:
    case kSet: return "set";
    case kDictionary: return "dictionary";
    default: return "unknown object";
    }
}

float floatFromBits(std::uint32_t bits)
{
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

double doubleFromBits(std::uint64_t bits)
{
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
}

class BinaryReader {
public:
    explicit BinaryReader(std::string_view bytes)
        : bytes_(reinterpret_cast<const unsigned char*>(bytes.data())), size_(bytes.size())
    {
    }

    Value read()
    {
        readTrailer();
        countReferences();
        int height = 0;
        return object(topObject_, size_ - kTrailerSize + kTrailerTopObject, 0, height);
    }

private:
    // Per-object state: how often it is referenced (saturating at 2), whether
    // it is being parsed (a cycle if met again) and whether it is cached.
    static constexpr unsigned char kRefCountMask = 0x03;
    static constexpr unsigned char kInProgress = 0x04;
    static constexpr unsigned char kCached = 0x08;

    // Copied dictionary key bytes may reach this multiple of the file size.
    static constexpr std::uint64_t kKeyExpansion = 64;

    struct Span {
        std::uint64_t count;
        std::uint64_t start;  // first byte after the marker and count
    };
    struct Shared {
        Value value;
        int height;  // container levels in the value, for the nesting limit
    };

    void readTrailer();
    void countReferences();
    std::uint64_t objectOffset(std::uint64_t ref, std::uint64_t refAt) const;
    std::uint64_t readRef(std::uint64_t at) const { return readBigEndian(bytes_ + at, refSize_); }
    enum class SpanProblem { None, CountTruncated, CountNotInteger, CountTooWide, TooLarge };
    SpanProblem measure(std::uint64_t at, unsigned char marker, std::uint64_t elementSize, Span& s) const;
    Span span(std::uint64_t at, unsigned char marker, std::uint64_t elementSize) const;
    std::uint64_t objectArea() const { return tableOffset_ - kHeaderSize; }
    void consume(std::uint64_t at, std::uint64_t bytes);
    // `depth` counts the containers around the object; `height` returns the
    // container levels inside it.
    Value object(std::uint64_t ref, std::uint64_t refAt, int depth, int& height);
    Value parse(std::uint64_t ref, std::uint64_t at, int depth, int& height);
    Value integer(std::uint64_t at, unsigned char marker) const;
    Value real(std::uint64_t at, unsigned char marker) const;
    Value uid(std::uint64_t at, unsigned char marker) const;
    // Sets `encodedSize` to the bytes the string takes in the file.
    std::string text(std::uint64_t at, unsigned char marker, std::uint64_t& encodedSize) const;
    std::string key(std::uint64_t ref, std::uint64_t refAt);
    Value array(std::uint64_t ref, std::uint64_t at, unsigned char marker, int depth, int& height);
    Value dictionary(std::uint64_t ref, std::uint64_t at, unsigned char marker, int depth, int& height);

    const unsigned char* bytes_;
    std::uint64_t size_;
    unsigned offsetSize_ = 0;
    unsigned refSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t topObject_ = 0;
    std::uint64_t tableOffset_ = 0;  // also the end of the object area
    std::uint64_t consumed_ = 0;  // bytes of the payload objects parsed so far
    std::uint64_t keyBytes_ = 0;
    std::vector<unsigned char> state_;
    std::unordered_map<std::uint64_t, Shared> shared_;
};

void BinaryReader::readTrailer()
{
    if (size_ < kHeaderSize || std::memcmp(bytes_, "bplist", 6) != 0)
        fail(0, "not a binary property list (no \"bplist\" header)");
    if (std::memcmp(bytes_, kMagic, kHeaderSize) != 0)
        fail(6, "unsupported binary property list version \"" +
                    std::string(reinterpret_cast<const char*>(bytes_) + 6, 2) + "\"");
    if (size_ < kHeaderSize + 1 + 1 + kTrailerSize)
        fail(size_, "file is truncated: " + std::to_string(size_) + " bytes cannot hold an object, offset table and trailer");

    const std::uint64_t t = size_ - kTrailerSize;
    const unsigned char* trailer = bytes_ + t;
    offsetSize_ = trailer[kTrailerOffsetSize];
    refSize_ = trailer[kTrailerRefSize];
    objectCount_ = readBigEndian(trailer + kTrailerObjectCount, 8);
    topObject_ = readBigEndian(trailer + kTrailerTopObject, 8);
    tableOffset_ = readBigEndian(trailer + kTrailerTableOffset, 8);

    if (offsetSize_ < 1 || offsetSize_ > 8)
        fail(t + kTrailerOffsetSize, "offset table entry size " + std::to_string(offsetSize_) + " is not 1 to 8");
    if (refSize_ < 1 || refSize_ > 8)
        fail(t + kTrailerRefSize, "object reference size " + std::to_string(refSize_) + " is not 1 to 8");
    if (objectCount_ == 0) fail(t + kTrailerObjectCount, "object count is 0");
    if (topObject_ >= objectCount_)
        fail(t + kTrailerTopObject, "top object " + std::to_string(topObject_) + " is past the object count " +
                                        std::to_string(objectCount_));
    if (tableOffset_ <= kHeaderSize || tableOffset_ > t)
        fail(t + kTrailerTableOffset, "offset table offset " + std::to_string(tableOffset_) +
                                          " is outside the area between header and trailer");
    if (objectCount_ > (t - tableOffset_) / offsetSize_)
        fail(t + kTrailerObjectCount, "object count " + std::to_string(objectCount_) + " needs an offset table larger than the " +
                                          std::to_string(t - tableOffset_) + " bytes before the trailer");
    state_.assign(objectCount_, 0);
}

// One pass over the containers counts how often each object is referenced as
// a value, so that only objects referenced twice or more are kept for
// sharing. Malformed objects are skipped here; they fail when reached.
void BinaryReader::countReferences()
{
    auto addRef = [this](std::uint64_t ref) {
        if (ref < objectCount_ && (state_[ref] & kRefCountMask) < 2) ++state_[ref];
    };
    addRef(topObject_);
    std::uint64_t containerBytes = 0;
    for (std::uint64_t i = 0; i < objectCount_; ++i) {
        const std::uint64_t at = readBigEndian(bytes_ + tableOffset_ + i * offsetSize_, offsetSize_);
        if (at < kHeaderSize || at >= tableOffset_) continue;
        const unsigned char marker = bytes_[at];
        const unsigned kind = marker >> 4;
        if (kind != kArray && kind != kOrderedSet && kind != kSet && kind != kDictionary) continue;
        Span s;
        if (measure(at, marker, kind == kDictionary ? 2 * refSize_ : refSize_, s) != SpanProblem::None) continue;
        // Overlapping containers would make this pass (and the parse) quadratic.
        containerBytes += s.count * (kind == kDictionary ? 2 : 1) * refSize_;
        if (containerBytes > objectArea())
            fail(at, "objects overlap: the containers' references add up to more than the object area");
        std::uint64_t refAt = s.start + (kind == kDictionary ? s.count * refSize_ : 0);
        for (std::uint64_t k = 0; k < s.count; ++k, refAt += refSize_) addRef(readRef(refAt));
    }
}

std::uint64_t BinaryReader::objectOffset(std::uint64_t ref, std::uint64_t refAt) const
{
    if (ref >= objectCount_)
        fail(refAt, "object reference " + std::to_string(ref) + " is past the object count " + std::to_string(objectCount_));
    const std::uint64_t entryAt = tableOffset_ + ref * offsetSize_;
    const std::uint64_t at = readBigEndian(bytes_ + entryAt, offsetSize_);
    if (at < kHeaderSize || at >= tableOffset_)
        fail(entryAt, "object " + std::to_string(ref) + " starts at offset " + std::to_string(at) +
                          ", outside the object area 8-" + std::to_string(tableOffset_));
    return at;
}

BinaryReader::SpanProblem BinaryReader::measure(std::uint64_t at, unsigned char marker, std::uint64_t elementSize, Span& s) const
{
    s = Span{static_cast<std::uint64_t>(marker & 0x0F), at + 1};
    if (s.count == kCountFollows) {
        const std::uint64_t countAt = at + 1;
        if (countAt >= tableOffset_) return SpanProblem::CountTruncated;
        const unsigned char countMarker = bytes_[countAt];
        if ((countMarker >> 4) != kInteger) return SpanProblem::CountNotInteger;
        if ((countMarker & 0x0F) > 3) return SpanProblem::CountTooWide;
        const unsigned width = 1u << (countMarker & 0x0F);
        if (tableOffset_ - (countAt + 1) < width) return SpanProblem::CountTruncated;
        s.count = readBigEndian(bytes_ + countAt + 1, width);
        s.start = countAt + 1 + width;
    }
    return s.count > (tableOffset_ - s.start) / elementSize ? SpanProblem::TooLarge : SpanProblem::None;
}

// The element count of a data, string or container object (inline in the
// marker, or as an integer object after it), checked against the bytes left
// before the offset table.
BinaryReader::Span BinaryReader::span(std::uint64_t at, unsigned char marker, std::uint64_t elementSize) const
{
    Span s;
    const SpanProblem problem = measure(at, marker, elementSize, s);
    if (problem == SpanProblem::None) return s;
    const std::string kind = kindName(marker);
    switch (problem) {
    case SpanProblem::CountTruncated: fail(at + 1, "count of " + kind + " is truncated");
    case SpanProblem::CountNotInteger: fail(at + 1, "count of " + kind + " is not an integer");
    case SpanProblem::CountTooWide: fail(at + 1, "count of " + kind + " is wider than 8 bytes");
    case SpanProblem::None:
    case SpanProblem::TooLarge: break;
    }
    fail(at, kind + " count " + std::to_string(s.count) + " needs more than the " + std::to_string(tableOffset_ - s.start) +
                 " bytes left before the offset table");
}

void BinaryReader::consume(std::uint64_t at, std::uint64_t bytes)
{
    consumed_ += bytes;
    if (consumed_ > objectArea()) fail(at, "objects overlap: their bytes add up to more than the object area");
}

Value BinaryReader::object(std::uint64_t ref, std::uint64_t refAt, int depth, int& height)
{
    const std::uint64_t at = objectOffset(ref, refAt);
    const unsigned char state = state_[ref];
    if (state & kInProgress) fail(refAt, "reference cycle: object " + std::to_string(ref) + " contains itself");
    if (state & kCached) {
        const Shared& shared = shared_.find(ref)->second;
        height = shared.height;
        if (depth + height > kMaxNestingDepth)
            fail(refAt, "containers nested deeper than " + std::to_string(kMaxNestingDepth) + " levels");
        return shared.value;
    }
    Value value = parse(ref, at, depth, height);
    // Scalars carry no payload to share; re-reading them costs nothing.
    if ((state & kRefCountMask) >= 2 && value.payloadIdentity()) {
        shared_.emplace(ref, Shared{value, height});
        state_[ref] |= kCached;
    }
    return value;
}

Value BinaryReader::parse(std::uint64_t ref, std::uint64_t at, int depth, int& height)
{
    height = 0;
    const unsigned char marker = bytes_[at];
    switch (marker >> 4) {
    case kSimple:
        if (marker == kFalse) return Value(false);
        if (marker == kTrue) return Value(true);
        if (marker == kNull || marker == kFill) return Value();
        break;
    case kInteger: return integer(at, marker);
    case kReal: return real(at, marker);
    case kDate:
        if (marker != kDateMarker) break;
        if (tableOffset_ - at < 9) fail(at, "date is truncated");
        return Value::date(doubleFromBits(readBigEndian(bytes_ + at + 1, 8)));
    case kData: {
        const Span s = span(at, marker, 1);
        consume(at, s.start - at + s.count);
        return Value::data(std::string(reinterpret_cast<const char*>(bytes_ + s.start), s.count));
    }
    case kAscii:
    case kUtf16: {
        std::uint64_t encodedSize = 0;
        std::string s = text(at, marker, encodedSize);
        consume(at, encodedSize);
        return Value(std::move(s));
    }
    case kUid: return uid(at, marker);
    case kArray:
    case kOrderedSet:
    case kSet: return array(ref, at, marker, depth, height);
    case kDictionary: return dictionary(ref, at, marker, depth, height);
    default: break;
    }
    fail(at, "unknown object marker " + hex(marker));
}

Value BinaryReader::integer(std::uint64_t at, unsigned char marker) const
{
    const unsigned low = marker & 0x0F;
    if (low > 4) fail(at, "integer of " + std::to_string(1u << low) + " bytes is not supported");
    const unsigned width = 1u << low;
    if (tableOffset_ - at - 1 < width) fail(at, "integer is truncated");
    const unsigned char* p = bytes_ + at + 1;
    if (width < 8) return Value(static_cast<long long>(readBigEndian(p, width)));  // 1, 2, 4 bytes: unsigned
    if (width == 8) return Value(static_cast<long long>(readBigEndian(p, 8)));     // 8 bytes: signed
    // 16 bytes: a signed 128-bit number; only the 64-bit range is kept.
    const std::uint64_t high = readBigEndian(p, 8);
    const std::uint64_t low64 = readBigEndian(p + 8, 8);
    if (high == 0) return Value(static_cast<unsigned long long>(low64));
    if (high == ~std::uint64_t(0) && (low64 >> 63)) return Value(static_cast<long long>(low64));
    fail(at, "integer does not fit in 64 bits");
}

Value BinaryReader::real(std::uint64_t at, unsigned char marker) const
{
    const unsigned low = marker & 0x0F;
    if (low != 2 && low != 3) fail(at, "real of " + std::to_string(1u << low) + " bytes is not supported");
    const unsigned width = 1u << low;
    if (tableOffset_ - at - 1 < width) fail(at, "real is truncated");
    const std::uint64_t bits = readBigEndian(bytes_ + at + 1, width);
    if (width == 4) return Value::singleReal(floatFromBits(static_cast<std::uint32_t>(bits)));
    return Value(doubleFromBits(bits));
}

Value BinaryReader::uid(std::uint64_t at, unsigned char marker) const
{
    const unsigned width = (marker & 0x0F) + 1u;
    if (width > 8) fail(at, "uid of " + std::to_string(width) + " bytes does not fit in 64 bits");
    if (tableOffset_ - at - 1 < width) fail(at, "uid is truncated");
    return Value::uid(readBigEndian(bytes_ + at + 1, width));
}

std::string BinaryReader::text(std::uint64_t at, unsigned char marker, std::uint64_t& encodedSize) const
{
    if ((marker >> 4) == kAscii) {
        const Span s = span(at, marker, 1);
        encodedSize = s.start - at + s.count;
        const unsigned char* p = bytes_ + s.start;
        if (isAscii(p, s.count)) return std::string(reinterpret_cast<const char*>(p), s.count);
        return latin1ToUtf8(p, s.count);
    }
    const Span s = span(at, marker, 2);
    encodedSize = s.start - at + 2 * s.count;
    std::string out;
    std::size_t badUnit = 0;
    if (!utf16BeToUtf8(bytes_ + s.start, s.count, out, badUnit))
        fail(s.start + 2 * badUnit, "string has an unpaired UTF-16 surrogate " + hex(utf16At(bytes_ + s.start, badUnit)));
    return out;
}

std::string BinaryReader::key(std::uint64_t ref, std::uint64_t refAt)
{
    const std::uint64_t at = objectOffset(ref, refAt);
    const unsigned char marker = bytes_[at];
    const unsigned kind = marker >> 4;
    if (kind != kAscii && kind != kUtf16)
        fail(at, std::string("dictionary key must be a string, found ") + kindName(marker));
    std::uint64_t encodedSize = 0;
    std::string name = text(at, marker, encodedSize);
    // A key is copied into every dictionary that uses it; a long key used by
    // many dictionaries must not turn a small file into gigabytes.
    keyBytes_ += name.size();
    if (keyBytes_ > kKeyExpansion * size_ + (1u << 20))
        fail(at, "dictionary keys copied from this file add up to more than " + std::to_string(kKeyExpansion) +
                     " times its size");
    return name;
}

Value BinaryReader::array(std::uint64_t ref, std::uint64_t at, unsigned char marker, int depth, int& height)
{
    if (depth >= kMaxNestingDepth) fail(at, "containers nested deeper than " + std::to_string(kMaxNestingDepth) + " levels");
    const Span s = span(at, marker, refSize_);
    consume(at, s.start - at + s.count * refSize_);
    state_[ref] |= kInProgress;
    Array items;
    items.reserve(s.count);
    int childHeight = 0;
    std::uint64_t refAt = s.start;
    for (std::uint64_t i = 0; i < s.count; ++i, refAt += refSize_) {
        items.push_back(object(readRef(refAt), refAt, depth + 1, childHeight));
        height = std::max(height, childHeight);
    }
    ++height;
    state_[ref] &= ~kInProgress;
    return Value(std::move(items));
}

Value BinaryReader::dictionary(std::uint64_t ref, std::uint64_t at, unsigned char marker, int depth, int& height)
{
    if (depth >= kMaxNestingDepth) fail(at, "containers nested deeper than " + std::to_string(kMaxNestingDepth) + " levels");
    const Span s = span(at, marker, 2 * std::uint64_t(refSize_));
    consume(at, s.start - at + 2 * s.count * refSize_);
    state_[ref] |= kInProgress;
    Dictionary entries;
    int childHeight = 0;
    std::uint64_t keyAt = s.start;
    std::uint64_t valueAt = s.start + s.count * refSize_;
    for (std::uint64_t i = 0; i < s.count; ++i, keyAt += refSize_, valueAt += refSize_) {
        std::string name = key(readRef(keyAt), keyAt);
        Value value = object(readRef(valueAt), valueAt, depth + 1, childHeight);
        height = std::max(height, childHeight);
        // Writers sort keys, so appending at the end is the common case; a
        // key out of order is searched for, and a later duplicate wins.
        if (entries.empty() || entries.rbegin()->first < name)
            entries.emplace_hint(entries.end(), std::move(name), std::move(value));
        else
            entries.insert_or_assign(std::move(name), std::move(value));
    }
    ++height;
    state_[ref] &= ~kInProgress;
    return Value(std::move(entries));
}

}  // namespace

std::optional<Value> readBinary(std::string_view bytes, std::string* error)
{
    try {
        BinaryReader reader(bytes);
        return reader.read();
    } catch (const ReadError& e) {
        if (error) *error = "offset " + std::to_string(e.offset) + ": " + e.message;
    } catch (const std::bad_alloc&) {
        if (error) *error = "out of memory reading a binary property list of " + std::to_string(bytes.size()) + " bytes";
    }
    return std::nullopt;
}

}  // namespace plist
