// Writer for binary property lists ("bplist00").
//
// Two passes. The first numbers the objects depth-first (the root is object
// 0; a dictionary's keys come before its values), writing each equal string,
// number, date, data and uid once. Containers are not merged by equality, but
// one shared payload (the same Value copied into two places) is written once,
// so a value read from a file with shared objects writes back at its size.
// The second pass writes the objects with the smallest reference and offset
// widths that fit.

#include "plist/BinaryFormat.h"
#include "plist/BinaryIndexTable.h"
#include "plist/BinaryUnicode.h"
#include "plist/OutputBuffer.h"
#include "plist/PropertyList.h"

#include <algorithm>
#include <new>
#include <vector>

namespace plist {
namespace {

using namespace binary;

// Thrown inside the writer only; writeBinary turns it into an error string.
struct WriteError {
    std::string message;
};

[[noreturn]] void fail(std::string message)
{
    throw WriteError{std::move(message)};
}

std::string nestingError()
{
    return "containers nested deeper than " + std::to_string(kMaxNestingDepth) + " levels";
}

// Scalars are merged by kind and bit pattern: 1 and 1.0 stay apart, and so do
// 0.0 and -0.0.
struct ScalarKey {
    std::uint64_t bits;
    unsigned char kind;
    bool operator==(const ScalarKey&) const = default;
};


// An integer object of the smallest width: 1, 2, 4 bytes unsigned, else 8
// bytes signed.
unsigned char* writeUnsigned(unsigned char* p, std::uint64_t value)
{
    unsigned log2 = value <= 0xFF ? 0 : value <= 0xFFFF ? 1 : value <= 0xFFFFFFFF ? 2 : 3;
    *p++ = static_cast<unsigned char>((kInteger << 4) | log2);
    return writeBigEndian(p, value, 1u << log2);
}

unsigned char* writeMarker(unsigned char* p, Kind kind, std::uint64_t count)
{
    if (count < kCountFollows) {
        *p++ = static_cast<unsigned char>((kind << 4) | count);
        return p;
    }
    *p++ = static_cast<unsigned char>((kind << 4) | kCountFollows);
    return writeUnsigned(p, count);
}

std::uint64_t bitsOf(double d)
{
    std::uint64_t bits;
    std::memcpy(&bits, &d, sizeof bits);
    return bits;
}

class BinaryWriter {
public:
    std::string write(const Value& root)
    {
        std::fill(std::begin(smallIntegers_), std::end(smallIntegers_), kNone);
        int height = 0;
        add(root, 0, height);
        refSize_ = bytesNeeded(objects_.size() - 1);
        writeObjects();
        return out_.take();
    }

private:
    // Marker byte, a count integer and slack; an object never needs more
    // than this beyond its payload.
    static constexpr std::size_t kHeadroom = 32;

    enum ScalarKind : unsigned char { kBool, kSigned, kUnsigned, kDouble, kSingle, kDateKind, kUidKind };

    struct Object {
        const Value* value;       // null for a dictionary key
        const std::string* text;  // the text of a string or key
        std::uint32_t firstRef;   // containers: index of their first reference in refs_
        std::uint32_t count;      // containers: their element count
        int height;               // containers: levels of containers inside
        bool isArray;             // containers: array rather than dictionary
        bool open;                // a container whose children are being added

        bool isContainer() const { return height > 0; }  // a finished container counts itself
    };

    std::uint32_t push(const Value* value, const std::string* text)
    {
        if (objects_.size() >= UINT32_MAX) fail("too many objects for one property list");
        objects_.push_back(Object{value, text, 0, 0, 0, false, false});
        return static_cast<std::uint32_t>(objects_.size() - 1);
    }

    std::uint32_t addString(const std::string& text, const Value* value)
    {
        // A few dozen key and class names make up most of the strings of a
        // composition; a small cache of recent ones stays in the processor's
        // cache where the table, holding every distinct string, does not.
        const std::uint64_t hash = hashText(text);
        RecentText& recent = recentTexts_[hash & (kRecentTexts - 1)];
        if (recent.index != kNone && recent.hash == hash && sameKey(recent.text, text)) return recent.index;
        std::uint32_t& index = strings_.findOrAdd(text, hash);
        if (index == strings_.kEmpty) {
            index = push(value, &text);
            estimate_ += 8 + text.size();
        }
        recent = RecentText{hash, text, index};
        return index;
    }

    // Booleans and small counts fill most of a composition's ports; they skip
    // the table.
    std::uint32_t addSmallScalar(const Value& value, std::uint32_t& known)
    {
        if (known == kNone) {
            known = push(&value, nullptr);
            estimate_ += 2;
        }
        return known;
    }

    std::uint32_t addScalar(const Value& value, ScalarKey key)
    {
        std::uint32_t& index = scalars_.findOrAdd(key, mixBits(key.bits ^ mixBits(key.kind)));
        if (index == scalars_.kEmpty) {
            index = push(&value, nullptr);
            estimate_ += 12;
        }
        return index;
    }

    std::uint32_t add(const Value& value, int depth, int& height)
    {
        height = 0;
        switch (value.type()) {
        case Type::Null: fail("null cannot be written in a binary property list");
        case Type::Boolean: return addSmallScalar(value, booleans_[value.toBool() ? 1 : 0]);
        case Type::Integer:
            if (!value.isUnsignedInteger() && value.toInt() >= 0 && value.toInt() < kSmallIntegers)
                return addSmallScalar(value, smallIntegers_[value.toInt()]);
            return addScalar(value, {value.toUnsigned(), static_cast<unsigned char>(value.isUnsignedInteger() ? kUnsigned : kSigned)});
        case Type::Real:
            return addScalar(value, {bitsOf(value.toDouble()), static_cast<unsigned char>(value.isSinglePrecision() ? kSingle : kDouble)});
        case Type::Date: return addScalar(value, {bitsOf(value.dateValue()), kDateKind});
        case Type::Uid: return addScalar(value, {value.uidValue(), kUidKind});
        case Type::String: return addString(value.string(), &value);
        case Type::Data: {
            const std::string& bytes = value.dataBytes();
            std::uint32_t& index = data_.findOrAdd(bytes, hashText(bytes));
            if (index == data_.kEmpty) {
                index = push(&value, nullptr);
                estimate_ += 8 + bytes.size();
            }
            return index;
        }
        case Type::Array:
        case Type::Dictionary: return addContainer(value, depth, height);
        }
        fail("unknown value type");
    }

    std::uint32_t addContainer(const Value& value, int depth, int& height)
    {
        // A payload with one owner appears nowhere else in the tree (nor can
        // it contain itself), so only shared ones are looked up.
        std::uint32_t* known = nullptr;
        if (!value.payloadHasOneOwner()) {
            const void* identity = value.payloadIdentity();
            known = &containers_.findOrAdd(identity, mixBits(reinterpret_cast<std::uintptr_t>(identity)));
            if (*known != containers_.kEmpty) {
                const Object& seen = objects_[*known];
                if (seen.open) fail("a container contains itself");
                height = seen.height;
                if (depth + height > kMaxNestingDepth) fail(nestingError());
                return *known;
            }
        }
        if (depth >= kMaxNestingDepth) fail(nestingError());
        const std::uint32_t index = push(&value, nullptr);
        if (known) *known = index;  // before the children, which may grow the table
        objects_[index].open = true;

        const bool isArray = value.isArray();
        const std::size_t count = isArray ? value.array().size() : value.dictionary().size();
        const std::size_t refCount = isArray ? count : 2 * count;
        const std::size_t firstRef = refs_.size();
        if (firstRef + refCount > UINT32_MAX) fail("too many references for one property list");
        objects_[index].firstRef = static_cast<std::uint32_t>(firstRef);
        objects_[index].count = static_cast<std::uint32_t>(count);
        objects_[index].isArray = isArray;
        refs_.resize(firstRef + refCount);
        estimate_ += 8 + refCount * 2;

        int childHeight = 0;
        std::size_t slot = firstRef;
        // The children's texts and payloads lie elsewhere in memory: asking
        // for all of them at once lets the waits overlap.
        if (isArray) {
            for (const Value& item : value.array()) __builtin_prefetch(item.payloadIdentity());
            for (const Value& item : value.array()) {
                refs_[slot++] = add(item, depth + 1, childHeight);
                height = std::max(height, childHeight);
            }
        } else {
            const Dictionary& entries = value.dictionary();
            for (const auto& entry : entries) {
                __builtin_prefetch(&entry.first.str());
                __builtin_prefetch(entry.second.payloadIdentity());
            }
            for (const auto& entry : entries) refs_[slot++] = addString(entry.first, nullptr);
            for (const auto& entry : entries) {
                refs_[slot++] = add(entry.second, depth + 1, childHeight);
                height = std::max(height, childHeight);
            }
        }
        ++height;
        objects_[index].open = false;
        objects_[index].height = height;
        return index;
    }

    void writeObjects()
    {
        std::vector<std::uint64_t> offsets;
        offsets.reserve(objects_.size());
        unsigned char* p = out_.reserveBytes(kHeaderSize + estimate_);
        std::memcpy(p, kMagic, kHeaderSize);
        out_.commit(p + kHeaderSize);
        // The objects lie all over the tree; fetching a few ahead hides most
        // of the wait for memory.
        constexpr std::size_t kAhead = 8;
        for (std::size_t i = 0; i < objects_.size(); ++i) {
            if (i + kAhead < objects_.size()) {
                const Object& next = objects_[i + kAhead];
                __builtin_prefetch(next.text ? static_cast<const void*>(next.text) : next.value);
            }
            offsets.push_back(out_.size());
            writeObject(objects_[i]);
        }

        const std::uint64_t tableOffset = out_.size();
        const unsigned offsetSize = bytesNeeded(offsets.back());
        p = out_.reserveBytes(offsets.size() * offsetSize + kTrailerSize);
        for (std::uint64_t offset : offsets) p = writeBigEndian(p, offset, offsetSize);
        std::memset(p, 0, kTrailerOffsetSize);
        p += kTrailerOffsetSize;
        *p++ = static_cast<unsigned char>(offsetSize);
        *p++ = static_cast<unsigned char>(refSize_);
        p = writeBigEndian(p, offsets.size(), 8);
        p = writeBigEndian(p, 0, 8);  // the root is object 0
        p = writeBigEndian(p, tableOffset, 8);
        out_.commit(p);
    }

    void writeObject(const Object& object)
    {
        if (object.text) {
            writeString(*object.text);
            return;
        }
        if (object.isContainer()) {
            writeContainer(object);
            return;
        }
        const Value& value = *object.value;
        if (value.isData()) {
            const std::string& bytes = value.dataBytes();
            unsigned char* p = out_.reserveBytes(kHeadroom + bytes.size());
            p = writeMarker(p, kData, bytes.size());
            std::memcpy(p, bytes.data(), bytes.size());
            out_.commit(p + bytes.size());
            return;
        }
        unsigned char* p = out_.reserveBytes(kHeadroom);
        switch (value.type()) {
        case Type::Boolean: *p++ = value.toBool() ? kTrue : kFalse; break;
        case Type::Integer:
            if (value.isUnsignedInteger()) {
                // Above INT64_MAX: a 16-byte integer whose high half is zero.
                *p++ = (kInteger << 4) | 4;
                p = writeBigEndian(p, 0, 8);
                p = writeBigEndian(p, value.toUnsigned(), 8);
            } else if (value.toInt() < 0) {
                *p++ = (kInteger << 4) | 3;
                p = writeBigEndian(p, static_cast<std::uint64_t>(value.toInt()), 8);
            } else {
                p = writeUnsigned(p, static_cast<std::uint64_t>(value.toInt()));
            }
            break;
        case Type::Real:
            if (value.isSinglePrecision()) {
                const float f = static_cast<float>(value.toDouble());
                std::uint32_t bits;
                std::memcpy(&bits, &f, sizeof bits);
                *p++ = (kReal << 4) | 2;
                p = writeBigEndian(p, bits, 4);
            } else {
                *p++ = (kReal << 4) | 3;
                p = writeBigEndian(p, bitsOf(value.toDouble()), 8);
            }
            break;
        case Type::Date:
            *p++ = kDateMarker;
            p = writeBigEndian(p, bitsOf(value.dateValue()), 8);
            break;
        case Type::Uid: {
            const std::uint64_t uid = value.uidValue();
            const unsigned width = uid <= 0xFF ? 1 : uid <= 0xFFFF ? 2 : uid <= 0xFFFFFFFF ? 4 : 8;
            *p++ = static_cast<unsigned char>((kUid << 4) | (width - 1));
            p = writeBigEndian(p, uid, width);
            break;
        }
        default: fail(std::string("cannot write a ") + typeName(value.type()));
        }
        out_.commit(p);
    }

    void writeString(const std::string& text)
    {
        const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
        if (isAscii(bytes, text.size())) {
            unsigned char* p = out_.reserveBytes(kHeadroom + text.size());
            p = writeMarker(p, kAscii, text.size());
            std::memcpy(p, bytes, text.size());
            out_.commit(p + text.size());
            return;
        }
        const std::size_t units = utf16Length(text);
        if (units == SIZE_MAX) fail("a string is not valid UTF-8 and cannot be stored as UTF-16");
        unsigned char* p = out_.reserveBytes(kHeadroom + 2 * units);
        p = writeMarker(p, kUtf16, units);
        out_.commit(writeUtf16Be(text, p));
    }

    void writeContainer(const Object& object)
    {
        const std::size_t refCount = object.isArray ? object.count : 2 * std::size_t(object.count);
        unsigned char* p = out_.reserveBytes(kHeadroom + refCount * refSize_);
        p = writeMarker(p, object.isArray ? kArray : kDictionary, object.count);
        const std::uint32_t* ref = refs_.data() + object.firstRef;
        const std::uint32_t* end = ref + refCount;
        switch (refSize_) {
        case 1:
            for (; ref != end; ++ref) *p++ = static_cast<unsigned char>(*ref);
            break;
        case 2:
            for (; ref != end; ++ref) {
                p[0] = static_cast<unsigned char>(*ref >> 8);
                p[1] = static_cast<unsigned char>(*ref);
                p += 2;
            }
            break;
        default:
            for (; ref != end; ++ref) p = writeBigEndian(p, *ref, refSize_);
            break;
        }
        out_.commit(p);
    }

    static constexpr std::uint32_t kNone = UINT32_MAX;
    static constexpr int kSmallIntegers = 256;

    static constexpr std::size_t kRecentTexts = 1024;
    struct RecentText {
        std::uint64_t hash = 0;
        std::string_view text;
        std::uint32_t index = kNone;
    };

    std::vector<RecentText> recentTexts_ = std::vector<RecentText>(kRecentTexts);
    std::uint32_t booleans_[2] = {kNone, kNone};
    std::uint32_t smallIntegers_[kSmallIntegers];
    std::vector<Object> objects_;
    std::vector<std::uint32_t> refs_;
    IndexTable<std::string_view> strings_;
    IndexTable<std::string_view> data_;
    IndexTable<ScalarKey> scalars_;
    IndexTable<const void*> containers_;
    std::size_t estimate_ = 0;  // likely output size (ASCII text, 2-byte refs), to allocate once
    unsigned refSize_ = 1;
    OutputBuffer out_;
};

}  // namespace

std::optional<std::string> writeBinary(const Value& root, std::string* error)
{
    try {
        BinaryWriter writer;
        return writer.write(root);
    } catch (const WriteError& e) {
        if (error) *error = e.message;
    } catch (const std::bad_alloc&) {
        if (error) *error = "out of memory writing a binary property list";
    }
    return std::nullopt;
}

}  // namespace plist
