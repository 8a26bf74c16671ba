// Writes a typedstream the way the archiver does, so that a decoded archive
// comes back byte for byte: strings shared by content, objects by identity,
// integral reals as integers, the shortest integer form.

#include "plist/LegacyArchive.h"
#include "plist/LegacyArchiveClasses.h"
#include "plist/LegacyArchiveNode.h"
#include "plist/LegacyArchiveTypeEncoding.h"
#include "plist/LegacyArchiveWire.h"

#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <unordered_map>

namespace plist::legacy {

namespace {

using namespace detail;

bool isWrittenAsInteger(double value)
{
    return value == std::trunc(value) && value >= std::numeric_limits<std::int32_t>::min() &&
           value <= std::numeric_limits<std::int32_t>::max() && !(value == 0 && std::signbit(value));
}

class ArchiveWriter {
public:
    explicit ArchiveWriter(ByteOrder order) : order_(order) {}

    std::string write(const Archive& archive)
    {
        out_ += static_cast<char>(kStreamerVersion);
        writeUnshared(order_ == ByteOrder::BigEndian ? kBigEndianSignature : kLittleEndianSignature);
        writeInteger(archive.systemVersion);
        writeSharedString("@");
        writeObject(archive.root);
        return std::move(out_);
    }

private:
    void writeByte(std::uint8_t byte) { out_ += static_cast<char>(byte); }
    void writeTag(std::int8_t tag) { writeByte(static_cast<std::uint8_t>(tag)); }

    void writeInteger(std::int64_t value)
    {
        if (value >= kSmallestLiteral && value <= 127) {
            writeByte(static_cast<std::uint8_t>(value));
        } else if (value >= std::numeric_limits<std::int16_t>::min() && value <= std::numeric_limits<std::int16_t>::max()) {
            writeTag(kTagInteger2);
            storeBits(out_, static_cast<std::uint16_t>(value), 2, order_);
        } else {
            writeTag(kTagInteger4);
            storeBits(out_, static_cast<std::uint32_t>(value), 4, order_);
        }
    }

    void writeReference(std::size_t index) { writeInteger(static_cast<std::int64_t>(index) + kReferenceBase); }

    void writeUnshared(std::string_view bytes)
    {
        writeInteger(static_cast<std::int64_t>(bytes.size()));
        out_ += bytes;
    }

    void writeSharedString(std::string_view text)
    {
        const auto it = sharedStrings_.find(text);
        if (it != sharedStrings_.end()) return writeReference(it->second);
        writeTag(kTagNew);
        writeUnshared(text);
        sharedStrings_.emplace(std::string(text), sharedStrings_.size());
    }

    void writeCString(std::string_view text)
    {
        const auto it = cStrings_.find(text);
        if (it != cStrings_.end()) return writeReference(it->second);
        writeTag(kTagNew);
        writeSharedString(text);
        cStrings_.emplace(std::string(text), objectCount_++);
    }

    void writeNumber(TypeKind kind, double value)
    {
        value = normalizeNumber(kind, value);  // field values may come from anywhere
        switch (kind) {
        case TypeKind::Char: return writeByte(static_cast<std::uint8_t>(static_cast<std::int8_t>(value)));
        case TypeKind::UnsignedChar:
        case TypeKind::Bool: return writeByte(static_cast<std::uint8_t>(value));
        case TypeKind::UnsignedShort: return writeInteger(static_cast<std::int16_t>(static_cast<std::uint16_t>(value)));
        case TypeKind::UnsignedInt:
        case TypeKind::UnsignedLong:
        case TypeKind::UnsignedLongLong:
            return writeInteger(static_cast<std::int32_t>(static_cast<std::uint32_t>(value)));
        case TypeKind::Float:
        case TypeKind::Double:
            if (isWrittenAsInteger(value)) return writeInteger(static_cast<std::int64_t>(value));
            writeTag(kTagReal);
            if (kind == TypeKind::Float)
                return storeBits(out_, std::bit_cast<std::uint32_t>(static_cast<float>(value)), 4, order_);
            return storeBits(out_, std::bit_cast<std::uint64_t>(value), 8, order_);
        default: return writeInteger(static_cast<std::int64_t>(value));
        }
    }

    const TypeEncoding* parsed(const std::string& encoding)
    {
        auto it = encodings_.find(encoding);
        if (it == encodings_.end()) it = encodings_.emplace(encoding, parseTypeEncoding(encoding, nullptr)).first;
        return it->second ? &*it->second : nullptr;
    }

    // Values of a numbers-only encoding; missing components are written as 0.
    void writeNumbers(const std::string& encoding, const std::vector<double>& numbers)
    {
        writeSharedString(encoding);
        const TypeEncoding* type = parsed(encoding);
        if (!type) return;
        std::size_t index = 0;
        auto next = [&] { return index < numbers.size() ? numbers[index++] : 0.0; };
        auto visit = [&](const TypeNode& leaf) {
            if (leaf.kind != TypeKind::ByteArray) {
                writeNumber(leaf.kind, next());
                return true;
            }
            for (std::uint32_t i = 0; i < leaf.count; ++i) writeNumber(leaf.members.front().kind, next());
            return true;
        };
        forEachLeaf(*type, visit);
    }

    void writeFields(const FieldGroup& group)
    {
        const std::string& encoding = group.encoding ? *group.encoding : std::string();
        writeSharedString(encoding);
        const TypeEncoding* type = parsed(encoding);
        if (!type) return;
        std::size_t index = 0;
        auto visit = [&](const TypeNode& leaf) {
            if (index >= group.values.size()) return false;
            const Field& field = group.values[index++];
            switch (leaf.kind) {
            case TypeKind::Object: writeObject(field.object); break;
            case TypeKind::CString:
                if (field.text) writeCString(*field.text);
                else writeTag(kTagNil);
                break;
            case TypeKind::SharedString:
                if (field.text) writeSharedString(*field.text);
                else writeTag(kTagNil);
                break;
            case TypeKind::Bytes: writeUnshared(field.text ? std::string_view(*field.text) : std::string_view()); break;
            case TypeKind::ByteArray: {
                // Exactly the declared length, whatever the field holds.
                const std::string_view bytes = field.text ? std::string_view(*field.text) : std::string_view();
                out_ += bytes.substr(0, leaf.count);
                out_.append(leaf.count - std::min<std::size_t>(leaf.count, bytes.size()), '\0');
                break;
            }
            default: writeNumber(leaf.kind, field.number); break;
            }
            return true;
        };
        forEachLeaf(*type, visit);
    }

    void writeClassChain(const std::vector<ArchivedClass>& chain)
    {
        for (const ArchivedClass& archived : chain) {
            const auto it = classes_.find(archived.name);
            if (it != classes_.end()) return writeReference(it->second);
            writeTag(kTagNew);
            writeSharedString(archived.name);
            writeInteger(archived.version);
            classes_.emplace(archived.name, objectCount_++);
        }
        writeTag(kTagNil);
    }

    void writeObject(const Object& object)
    {
        const Node* node = object.node();
        if (!node) return writeTag(kTagNil);
        const auto known = objects_.find(node);
        if (known != objects_.end()) return writeReference(known->second);
        writeTag(kTagNew);
        objects_.emplace(node, objectCount_++);
        writeClassChain(object.classChain());
        writeBody(*node);
        writeTag(kTagEnd);
    }

    void writeBody(const Node& node)
    {
        switch (node.kind) {
        case ObjectKind::String:
            writeSharedString("+");
            return writeUnshared(node.text);
        case ObjectKind::Array:
            writeSharedString("i");
            writeInteger(static_cast<std::int64_t>(node.elements.size()));
            for (const Object& element : node.elements) {
                writeSharedString("@");
                writeObject(element);
            }
            return;
        case ObjectKind::Dictionary:
            writeSharedString("i");
            writeInteger(static_cast<std::int64_t>(node.entries.size()));
            for (const auto& [key, value] : node.entries) {
                writeSharedString("@");
                writeObject(key);
                writeSharedString("@");
                writeObject(value);
            }
            return;
        case ObjectKind::Number:
        case ObjectKind::Value: {
            const std::string encoding = node.encoding ? *node.encoding : std::string();
            writeSharedString("*");
            writeCString(encoding);
            return writeNumbers(encoding, node.components);
        }
        case ObjectKind::Color: return writeColorBody(node);
        case ObjectKind::Data:
            writeSharedString("i");
            writeInteger(static_cast<std::int64_t>(node.text.size()));
            writeSharedString(byteArrayEncoding(node.text.size()));
            out_ += node.text;
            return;
        case ObjectKind::Opaque:
            for (const FieldGroup& group : node.groups) writeFields(group);
            return;
        case ObjectKind::Nil: return;
        }
    }

    void writeColorBody(const Node& node)
    {
        writeSharedString("c");
        writeByte(static_cast<std::uint8_t>(node.colorKind));
        if (node.colorKind == ColorKind::Named) {
            writeSharedString(std::string(node.elements.size(), '@'));
            for (const Object& element : node.elements) writeObject(element);
            return;
        }
        const std::size_t count = node.colorKind <= ColorKind::DeviceRgba ? 4
                                  : node.colorKind <= ColorKind::DeviceWhite ? 2
                                                                             : 5;
        writeNumbers(std::string(count, 'f'), node.components);
    }

    ByteOrder order_;
    std::string out_;
    std::size_t objectCount_ = 0;  // objects, classes and C strings share one numbering
    std::map<std::string, std::size_t, std::less<>> sharedStrings_;
    std::map<std::string, std::size_t, std::less<>> cStrings_;
    std::map<std::string, std::size_t, std::less<>> classes_;
    std::unordered_map<const Node*, std::size_t> objects_;
    std::map<std::string, std::optional<TypeEncoding>, std::less<>> encodings_;
};

}  // namespace

std::string encode(const Archive& archive)
{
    return ArchiveWriter(archive.order).write(archive);
}

std::string encodeNew(const Object& root)
{
    return encode(Archive{ByteOrder::LittleEndian, 1000, root});
}

std::string encodeColor(double red, double green, double blue, double alpha)
{
    return encodeNew(Object::color(red, green, blue, alpha));
}

}  // namespace plist::legacy
