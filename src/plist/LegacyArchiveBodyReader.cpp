// The fields each supported class archives after its class chain.

#include "plist/LegacyArchiveReader.h"

#include "plist/LegacyArchiveWire.h"

namespace plist::legacy::detail {

namespace {

// Colour kinds 1 to 5 and the group holding their components.
std::string_view colorComponentEncoding(std::int64_t kind)
{
    switch (kind) {
    case 1:
    case 2: return "ffff";
    case 3:
    case 4: return "ff";
    case 5: return "fffff";
    default: return {};
    }
}

}  // namespace

bool ArchiveReader::readBody(Node& node, const KnownClass& known)
{
    switch (known.kind) {
    case ObjectKind::String: return readStringBody(node);
    case ObjectKind::Array: return readArrayBody(node);
    case ObjectKind::Dictionary: return readDictionaryBody(node);
    case ObjectKind::Number: return readValueBody(node, true);
    case ObjectKind::Value: return readValueBody(node, false);
    case ObjectKind::Color: return readColorBody(node);
    case ObjectKind::Data: return readDataBody(node);
    case ObjectKind::Opaque: return readOpaqueBody(node);
    case ObjectKind::Nil: break;
    }
    return fail(pos_, "unsupported archived class " + std::string(known.name));
}

bool ArchiveReader::readStringBody(Node& node)
{
    return expectGroup("+", node.chain->front().name) && readUnsharedBytes(node.text);
}

bool ArchiveReader::readArrayBody(Node& node)
{
    std::int64_t count = 0;
    if (!expectGroup("i", node.chain->front().name) || !readCount(count, "element count")) return false;
    node.elements.resize(static_cast<std::size_t>(count));
    for (Object& element : node.elements)
        if (!expectGroup("@", node.chain->front().name) || !readObject(element)) return false;
    return true;
}

bool ArchiveReader::readDictionaryBody(Node& node)
{
    std::int64_t count = 0;
    if (!expectGroup("i", node.chain->front().name) || !readCount(count, "entry count")) return false;
    node.entries.resize(static_cast<std::size_t>(count));
    for (Entry& entry : node.entries) {
        if (!expectGroup("@", node.chain->front().name) || !readObject(entry.first)) return false;
        if (!expectGroup("@", node.chain->front().name) || !readObject(entry.second)) return false;
    }
    return true;
}

bool ArchiveReader::readValueBody(Node& node, bool isNumber)
{
    const std::string& owner = node.chain->front().name;
    if (!expectGroup("*", owner)) return false;
    const std::size_t encodingOffset = pos_;
    if (!readCString(node.encoding)) return false;
    if (!node.encoding) return fail(encodingOffset, owner + " without a type encoding");
    GroupLabel label;
    if (!readGroupLabel(label)) return false;
    if (*label.text != *node.encoding)
        return fail(label.offset, owner + " values labelled \"" + *label.text + "\" for encoding \"" +
                                      *node.encoding + "\"");
    const bool scalar = label.type->types.size() == 1 && isNumberKind(label.type->types.front().kind);
    if (!label.type->numbersOnly || (isNumber && !scalar))
        return fail(label.offset, "unsupported " + owner + " encoding \"" + *node.encoding + "\"");
    if (label.type->numberCount > remaining())
        return fail(label.offset, "encoding \"" + *node.encoding + "\" needs more values than the data holds");
    return readNumbers(*label.type, node.components);
}

bool ArchiveReader::readColorBody(Node& node)
{
    if (!expectGroup("c", "NSColor")) return false;
    const std::size_t kindOffset = pos_;
    double kind = 0;
    if (!readNumber(TypeKind::Char, kind)) return false;
    if (kind < 1 || kind > 6) return fail(kindOffset, "unsupported NSColor kind " + std::to_string(int(kind)));
    node.colorKind = static_cast<ColorKind>(kind);
    GroupLabel label;
    if (!readGroupLabel(label)) return false;
    if (node.colorKind != ColorKind::Named) {
        const std::string_view expected = colorComponentEncoding(static_cast<std::int64_t>(kind));
        if (*label.text != expected)
            return fail(label.offset, "expected a \"" + std::string(expected) + "\" group in NSColor, found \"" +
                                          *label.text + "\"");
        return readNumbers(*label.type, node.components);
    }
    // Catalog name, colour name and the colour they stood for.
    if (*label.text != "@" && *label.text != "@@" && *label.text != "@@@")
        return fail(label.offset, "expected catalog and colour names in NSColor, found \"" + *label.text + "\"");
    node.elements.resize(label.text->size());
    for (Object& element : node.elements)
        if (!readObject(element)) return false;
    return true;
}

bool ArchiveReader::readDataBody(Node& node)
{
    const std::string& owner = node.chain->front().name;
    std::int64_t length = 0;
    if (!expectGroup("i", owner) || !readCount(length, "data length")) return false;
    if (!expectGroup(byteArrayEncoding(static_cast<std::size_t>(length)), owner)) return false;
    const char* bytes = nullptr;
    if (!take(static_cast<std::size_t>(length), bytes)) return false;
    node.text.assign(bytes, static_cast<std::size_t>(length));
    return true;
}

bool ArchiveReader::readOpaqueBody(Node& node)
{
    // Groups up to the end tag, each labelled with its own type encoding.
    while (pos_ < in_.size() && static_cast<std::int8_t>(in_[pos_]) != kTagEnd) {
        GroupLabel label;
        if (!readGroupLabel(label)) return false;
        FieldGroup group{label.text, {}};
        if (!readFields(*label.type, group.values)) return false;
        node.groups.push_back(std::move(group));
    }
    return true;
}

bool ArchiveReader::readNumbers(const TypeEncoding& type, std::vector<double>& numbers)
{
    auto visit = [&](const TypeNode& leaf) {
        if (leaf.kind == TypeKind::ByteArray) {
            const char* bytes = nullptr;
            if (!take(leaf.count, bytes)) return false;
            const bool isSigned = leaf.members.front().kind == TypeKind::Char;
            for (std::uint32_t i = 0; i < leaf.count; ++i)
                numbers.push_back(isSigned ? static_cast<signed char>(bytes[i]) : static_cast<unsigned char>(bytes[i]));
            return true;
        }
        double number = 0;
        if (!readNumber(leaf.kind, number)) return false;
        numbers.push_back(number);
        return true;
    };
    return forEachLeaf(type, visit);
}

bool ArchiveReader::readFields(const TypeEncoding& type, std::vector<Field>& fields)
{
    auto visit = [&](const TypeNode& leaf) {
        Field field;
        bool ok = true;
        switch (leaf.kind) {
        case TypeKind::Object:
            field.kind = Field::Kind::Object;
            ok = readObject(field.object);
            break;
        case TypeKind::CString:
            field.kind = Field::Kind::Text;
            ok = readCString(field.text);
            break;
        case TypeKind::SharedString:
            field.kind = Field::Kind::Text;
            ok = readSharedString(field.text);
            break;
        case TypeKind::Bytes:
        case TypeKind::ByteArray: {
            field.kind = Field::Kind::Text;
            std::string bytes;
            const char* raw = nullptr;
            ok = leaf.kind == TypeKind::Bytes ? readUnsharedBytes(bytes) : take(leaf.count, raw);
            if (raw) bytes.assign(raw, leaf.count);
            field.text = std::make_shared<const std::string>(std::move(bytes));
            break;
        }
        default:
            ok = readNumber(leaf.kind, field.number);
            break;
        }
        if (ok) fields.push_back(std::move(field));
        return ok;
    };
    return forEachLeaf(type, visit);
}

}  // namespace plist::legacy::detail
