// Reader for binary property lists ("bplist00").
//
// Every object is checked against the bytes that hold it before it is used:
// offsets must fall inside the object area (between the header and the
// offset table), counts must fit in the bytes left there, references must be
// below the object count. An object referenced more than once is parsed once
// and shared; a container met again while it is still being parsed is a
// cycle. Objects may not overlap (their bytes may not add up to more than the
// object area; keys are counted apart, as a string may be both a key and a
// value). Together these keep time and memory linear in the file size, and
// nesting (shared subtrees included) within kMaxNestingDepth. A key is read
// once however many dictionaries use it, and they all share its text.
//
// Strings: 0x5n bytes above 0x7F are read as Latin-1; UTF-16 text with an
// unpaired surrogate is an error (it has no UTF-8 form). Null (0x00) and fill
// (0x0F) markers both read as a null value.

#include "plist/BinaryFormat.h"
#include "plist/BinaryUnicode.h"
#include "plist/DictionaryBuilder.h"
#include "plist/PropertyList.h"

#include <algorithm>
#include <cstdio>
#include <new>
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
    // Per-object state: how often it is referenced as a value and as a key
    // (each saturating at 2), whether it is being parsed (a cycle if met
    // again), and whether it has a slot, whose index is in the bits above.
    static constexpr std::uint32_t kRefCountMask = 0x03;
    static constexpr unsigned kValueRefShift = 0;
    static constexpr unsigned kKeyRefShift = 2;
    static constexpr std::uint32_t kInProgress = 0x10;
    static constexpr std::uint32_t kHasSlot = 0x20;
    static constexpr unsigned kSlotShift = 6;
    static constexpr std::uint32_t kMaxSlots = UINT32_MAX >> kSlotShift;

    struct Span {
        std::uint64_t count;
        std::uint64_t start;  // first byte after the marker and count
    };
    // What is kept of an object met more than once: its value, if it is a
    // string, data or container referenced twice, and its text as a key.
    struct Slot {
        Value value;  // null until cached
        Key key;      // empty until read as a key (or when the key is "")
        int height = 0;  // container levels in the value, for the nesting limit
    };

    void readTrailer();
    void countReferences();
    std::uint64_t objectOffset(std::uint64_t ref, std::uint64_t refAt) const
    {
        if (ref >= objectCount_) badReference(ref, refAt);
        const std::uint64_t entryAt = tableOffset_ + ref * offsetSize_;
        const std::uint64_t at = readBigEndian(bytes_ + entryAt, offsetSize_);
        if (at < kHeaderSize || at >= tableOffset_) badOffset(ref, entryAt, at);
        return at;
    }
    [[noreturn]] void badReference(std::uint64_t ref, std::uint64_t refAt) const;
    [[noreturn]] void badOffset(std::uint64_t ref, std::uint64_t entryAt, std::uint64_t at) const;
    std::uint64_t readRef(std::uint64_t at) const { return readBigEndian(bytes_ + at, refSize_); }
    // A container's children lie all over the file: asking for their table
    // entries and state at once lets the waits for memory overlap.
    void prefetchObjects(std::uint64_t refAt, std::uint64_t count) const
    {
        for (std::uint64_t i = 0; i < count; ++i, refAt += refSize_) {
            const std::uint64_t ref = readRef(refAt);
            if (ref >= objectCount_) continue;
            __builtin_prefetch(bytes_ + tableOffset_ + ref * offsetSize_);
            __builtin_prefetch(&state_[ref]);
        }
    }
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
    Slot& slotOf(std::uint64_t ref, std::uint64_t at);
    Key key(std::uint64_t ref, std::uint64_t refAt);
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
    std::uint64_t keyBytes_ = 0;  // bytes of the key objects read so far
    std::vector<std::uint32_t> state_;
    std::vector<Slot> slots_;
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
// a value and as a key, so that only objects referenced twice or more are
// kept for sharing. Malformed objects are skipped here; they fail when
// reached.
void BinaryReader::countReferences()
{
    auto addRef = [this](std::uint64_t ref, unsigned shift) {
        if (ref < objectCount_ && ((state_[ref] >> shift) & kRefCountMask) < 2) state_[ref] += 1u << shift;
    };
    addRef(topObject_, kValueRefShift);
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
        std::uint64_t refAt = s.start;
        if (kind == kDictionary)
            for (std::uint64_t k = 0; k < s.count; ++k, refAt += refSize_) addRef(readRef(refAt), kKeyRefShift);
        for (std::uint64_t k = 0; k < s.count; ++k, refAt += refSize_) addRef(readRef(refAt), kValueRefShift);
    }
}

void BinaryReader::badReference(std::uint64_t ref, std::uint64_t refAt) const
{
    fail(refAt, "object reference " + std::to_string(ref) + " is past the object count " + std::to_string(objectCount_));
}

void BinaryReader::badOffset(std::uint64_t ref, std::uint64_t entryAt, std::uint64_t at) const
{
    fail(entryAt, "object " + std::to_string(ref) + " starts at offset " + std::to_string(at) +
                      ", outside the object area 8-" + std::to_string(tableOffset_));
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

BinaryReader::Slot& BinaryReader::slotOf(std::uint64_t ref, std::uint64_t at)
{
    std::uint32_t& state = state_[ref];
    if (!(state & kHasSlot)) {
        if (slots_.size() >= kMaxSlots) fail(at, "more than " + std::to_string(kMaxSlots) + " objects are used more than once");
        state |= kHasSlot | static_cast<std::uint32_t>(slots_.size()) << kSlotShift;
        slots_.emplace_back();
    }
    return slots_[state >> kSlotShift];
}

Value BinaryReader::object(std::uint64_t ref, std::uint64_t refAt, int depth, int& height)
{
    const std::uint64_t at = objectOffset(ref, refAt);
    const std::uint32_t state = state_[ref];
    if (state & kInProgress) fail(refAt, "reference cycle: object " + std::to_string(ref) + " contains itself");
    if (state & kHasSlot) {
        const Slot& slot = slots_[state >> kSlotShift];
        if (!slot.value.isNull()) {
            height = slot.height;
            if (depth + height > kMaxNestingDepth)
                fail(refAt, "containers nested deeper than " + std::to_string(kMaxNestingDepth) + " levels");
            return slot.value;
        }
    }
    Value value = parse(ref, at, depth, height);
    // Scalars carry no payload to share; re-reading them costs nothing.
    if (((state >> kValueRefShift) & kRefCountMask) >= 2 && value.payloadIdentity()) {
        Slot& slot = slotOf(ref, at);
        slot.value = value;
        slot.height = height;
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

Key BinaryReader::key(std::uint64_t ref, std::uint64_t refAt)
{
    if (ref < objectCount_) {
        const std::uint32_t state = state_[ref];
        if (state & kHasSlot) {
            const Key& known = slots_[state >> kSlotShift].key;
            if (!known.empty()) return known.copyUnpublished();
        }
    }
    const std::uint64_t at = objectOffset(ref, refAt);
    const unsigned char marker = bytes_[at];
    const unsigned kind = marker >> 4;
    if (kind != kAscii && kind != kUtf16)
        fail(at, std::string("dictionary key must be a string, found ") + kindName(marker));
    std::uint64_t encodedSize = 0;
    Key name(text(at, marker, encodedSize));
    // Table entries pointing into one long string could otherwise make any
    // number of keys out of it.
    keyBytes_ += encodedSize;
    if (keyBytes_ > objectArea()) fail(at, "objects overlap: the keys' bytes add up to more than the object area");
    // Every dictionary that uses this key shares its text, so a long key
    // named by many dictionaries costs its length once.
    if (((state_[ref] >> kKeyRefShift) & kRefCountMask) >= 2) slotOf(ref, at).key = name.copyUnpublished();
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
    prefetchObjects(s.start, s.count);
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
    if (s.count > UINT32_MAX) fail(at, "dictionary count " + std::to_string(s.count) + " is too large");
    state_[ref] |= kInProgress;
    DictionaryBuilder entries(s.count);
    prefetchObjects(s.start, 2 * s.count);
    int childHeight = 0;
    std::uint64_t keyAt = s.start;
    std::uint64_t valueAt = s.start + s.count * refSize_;
    for (std::uint64_t i = 0; i < s.count; ++i, keyAt += refSize_, valueAt += refSize_) {
        Key name = key(readRef(keyAt), keyAt);
        Value value = object(readRef(valueAt), valueAt, depth + 1, childHeight);
        height = std::max(height, childHeight);
        entries.append(std::move(name), std::move(value));
    }
    ++height;
    state_[ref] &= ~kInProgress;
    // Sorted once at the end; of a repeated key the last value wins.
    return Value(entries.finish());
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
