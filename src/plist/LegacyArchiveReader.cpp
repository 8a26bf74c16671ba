#include "plist/LegacyArchiveReader.h"

#include "plist/LegacyArchiveWire.h"

#include <bit>

namespace plist::legacy {

namespace detail {

namespace {

std::string hexByte(std::int8_t byte)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const auto b = static_cast<unsigned char>(byte);
    return std::string("0x") + kDigits[b >> 4] + kDigits[b & 15];
}

std::string quoted(std::string_view text)
{
    return '"' + std::string(text.substr(0, 80)) + (text.size() > 80 ? "...\"" : "\"");
}

}  // namespace

bool ArchiveReader::fail(std::size_t offset, const std::string& message)
{
    if (error_.empty()) error_ = message + " at offset " + std::to_string(offset);
    return false;
}

bool ArchiveReader::take(std::size_t count, const char*& bytes)
{
    if (count > remaining()) return fail(pos_, "unexpected end of data");
    bytes = in_.data() + pos_;
    pos_ += count;
    return true;
}

bool ArchiveReader::readHead(std::int8_t& head)
{
    const char* byte = nullptr;
    if (!take(1, byte)) return false;
    head = static_cast<std::int8_t>(*byte);
    return true;
}

bool ArchiveReader::readIntegerAfter(std::int8_t head, std::size_t headOffset, std::int64_t& value)
{
    const char* bytes = nullptr;
    switch (head) {
    case kTagInteger2:
        if (!take(2, bytes)) return false;
        value = static_cast<std::int16_t>(loadBits(bytes, 2, order_));
        return true;
    case kTagInteger4:
        if (!take(4, bytes)) return false;
        value = static_cast<std::int32_t>(loadBits(bytes, 4, order_));
        return true;
    case kTagReal:
    case kTagNew:
    case kTagNil:
    case kTagEnd:
        return fail(headOffset, "unexpected tag " + hexByte(head) + " where an integer belongs");
    default:
        value = head;
        return true;
    }
}

bool ArchiveReader::readInteger(std::int64_t& value)
{
    const std::size_t offset = pos_;
    std::int8_t head = 0;
    return readHead(head) && readIntegerAfter(head, offset, value);
}

bool ArchiveReader::readCount(std::int64_t& count, std::string_view what)
{
    const std::size_t offset = pos_;
    if (!readInteger(count)) return false;
    // Every element takes at least one byte, so a larger count is a lie that
    // would only make us reserve memory.
    if (count < 0 || static_cast<std::uint64_t>(count) > remaining())
        return fail(offset, std::string(what) + " " + std::to_string(count) + " does not fit the remaining " +
                                std::to_string(remaining()) + " bytes");
    return true;
}

bool ArchiveReader::readReal(TypeKind kind, double& value)
{
    const std::size_t offset = pos_;
    std::int8_t head = 0;
    if (!readHead(head)) return false;
    if (head != kTagReal) {
        // Integral values are written as integers.
        std::int64_t integer = 0;
        if (!readIntegerAfter(head, offset, integer)) return false;
        value = static_cast<double>(integer);
        return true;
    }
    const char* bytes = nullptr;
    if (kind == TypeKind::Float) {
        if (!take(4, bytes)) return false;
        value = std::bit_cast<float>(static_cast<std::uint32_t>(loadBits(bytes, 4, order_)));
    } else {
        if (!take(8, bytes)) return false;
        value = std::bit_cast<double>(loadBits(bytes, 8, order_));
    }
    return true;
}

bool ArchiveReader::readNumber(TypeKind kind, double& value)
{
    if (isRawByteKind(kind)) {
        const char* byte = nullptr;
        if (!take(1, byte)) return false;
        value = kind == TypeKind::Char ? static_cast<signed char>(*byte) : static_cast<unsigned char>(*byte);
        return true;
    }
    if (kind == TypeKind::Float || kind == TypeKind::Double) return readReal(kind, value);
    std::int64_t integer = 0;
    if (!readInteger(integer)) return false;
    // Unsigned values travel as the signed integer of the same width.
    switch (kind) {
    case TypeKind::Short: value = static_cast<std::int16_t>(integer); break;
    case TypeKind::UnsignedShort: value = static_cast<std::uint16_t>(integer); break;
    case TypeKind::UnsignedInt:
    case TypeKind::UnsignedLong:
    case TypeKind::UnsignedLongLong: value = static_cast<std::uint32_t>(integer); break;
    default: value = static_cast<double>(integer); break;
    }
    return true;
}

bool ArchiveReader::readUnsharedBytes(std::string& bytes)
{
    std::int64_t length = 0;
    if (!readCount(length, "string length")) return false;
    const char* data = nullptr;
    if (!take(static_cast<std::size_t>(length), data)) return false;
    bytes.assign(data, static_cast<std::size_t>(length));
    return true;
}

bool ArchiveReader::readTableReference(std::int8_t head, std::size_t offset, std::size_t& index)
{
    std::int64_t value = 0;
    if (!readIntegerAfter(head, offset, value)) return false;
    const std::int64_t slot = value - kReferenceBase;
    if (slot < 0 || static_cast<std::uint64_t>(slot) >= table_.size())
        return fail(offset, "reference " + std::to_string(slot) + " past the " + std::to_string(table_.size()) +
                                " objects read so far");
    index = static_cast<std::size_t>(slot);
    return true;
}

bool ArchiveReader::readSharedString(SharedText& text, std::size_t* index)
{
    const std::size_t offset = pos_;
    std::int8_t head = 0;
    if (!readHead(head)) return false;
    if (head == kTagNil) {
        text = nullptr;
        return true;
    }
    if (head == kTagNew) {
        std::string bytes;
        if (!readUnsharedBytes(bytes)) return false;
        text = std::make_shared<const std::string>(std::move(bytes));
        if (index) *index = shared_.size();
        shared_.push_back({text, nullptr, {}, false});
        return true;
    }
    std::int64_t value = 0;
    if (!readIntegerAfter(head, offset, value)) return false;
    const std::int64_t slot = value - kReferenceBase;
    if (slot < 0 || static_cast<std::uint64_t>(slot) >= shared_.size())
        return fail(offset, "shared string reference " + std::to_string(slot) + " past the " +
                                std::to_string(shared_.size()) + " strings read so far");
    text = shared_[static_cast<std::size_t>(slot)].text;
    if (index) *index = static_cast<std::size_t>(slot);
    return true;
}

bool ArchiveReader::readCString(SharedText& text)
{
    const std::size_t offset = pos_;
    std::int8_t head = 0;
    if (!readHead(head)) return false;
    if (head == kTagNil) {
        text = nullptr;
        return true;
    }
    if (head == kTagNew) {
        if (!readSharedString(text)) return false;
        if (!text) return fail(offset, "C string without text");
        table_.push_back({TableEntry::Kind::CString, nullptr, nullptr, text});
        return true;
    }
    std::size_t index = 0;
    if (!readTableReference(head, offset, index)) return false;
    if (table_[index].kind != TableEntry::Kind::CString)
        return fail(offset, "reference " + std::to_string(index) + " is not a C string");
    text = table_[index].text;
    return true;
}

bool ArchiveReader::readClassChain(ClassChain& chain)
{
    struct FreshClass {
        ArchivedClass archived;
        const KnownClass* known;
        std::size_t slot;
    };
    std::vector<FreshClass> fresh;  // at most the length of a known chain
    ClassChain tail;
    for (;;) {
        const std::size_t offset = pos_;
        std::int8_t head = 0;
        if (!readHead(head)) return false;
        if (head == kTagNil) {
            if (fresh.empty()) return fail(offset, "object without a class");
            if (!fresh.back().known->superclass.empty())
                return fail(offset, "class chain of " + fresh.back().archived.name + " ends before " +
                                        std::string(fresh.back().known->superclass));
            break;
        }
        if (head != kTagNew) {
            std::size_t index = 0;
            if (!readTableReference(head, offset, index)) return false;
            if (table_[index].kind != TableEntry::Kind::Class)
                return fail(offset, "reference " + std::to_string(index) + " is not a class");
            tail = table_[index].chain;
            if (!fresh.empty() && fresh.back().known->superclass != tail->front().name)
                return fail(offset, "unexpected superclass " + tail->front().name + " of " + fresh.back().archived.name);
            break;
        }
        const std::size_t nameOffset = pos_;
        SharedText name;
        if (!readSharedString(name)) return false;
        if (!name) return fail(nameOffset, "class without a name");
        const KnownClass* known = findKnownClass(*name);
        if (fresh.empty() && (!known || known->kind == ObjectKind::Nil))
            return fail(nameOffset, "unsupported archived class " + quoted(*name));
        if (!fresh.empty() && fresh.back().known->superclass != *name)
            return fail(nameOffset, "unexpected superclass " + quoted(*name) + " of " + fresh.back().archived.name);
        std::int64_t version = 0;
        const std::size_t versionOffset = pos_;
        if (!readInteger(version)) return false;
        if (version < INT32_MIN || version > INT32_MAX) return fail(versionOffset, "class version out of range");
        fresh.push_back({{*name, static_cast<std::int32_t>(version)}, known, table_.size()});
        table_.push_back({});
    }
    // Each new class's chain is itself followed by its superclass's chain.
    for (auto it = fresh.rbegin(); it != fresh.rend(); ++it) {
        auto full = std::make_shared<std::vector<ArchivedClass>>();
        full->push_back(it->archived);
        if (tail) full->insert(full->end(), tail->begin(), tail->end());
        tail = std::move(full);
        table_[it->slot] = {TableEntry::Kind::Class, nullptr, tail, nullptr};
    }
    chain = tail;
    return true;
}

bool ArchiveReader::readGroupLabel(GroupLabel& label)
{
    label.offset = pos_;
    std::size_t index = 0;
    if (!readSharedString(label.text, &index)) return false;
    if (!label.text) return fail(label.offset, "value group without a type encoding");
    SharedString& entry = shared_[index];
    if (!entry.parsed) {
        entry.parsed = true;
        if (auto parsed = parseTypeEncoding(*entry.text, &entry.typeError))
            entry.type = std::make_shared<const TypeEncoding>(std::move(*parsed));
    }
    if (!entry.type) return fail(label.offset, entry.typeError);
    label.type = entry.type;
    return true;
}

bool ArchiveReader::expectGroup(std::string_view expected, std::string_view owner)
{
    GroupLabel label;
    if (!readGroupLabel(label)) return false;
    if (*label.text != expected)
        return fail(label.offset, "expected a " + quoted(expected) + " group in " + std::string(owner) + ", found " +
                                      quoted(*label.text));
    return true;
}

bool ArchiveReader::readObject(Object& object)
{
    const std::size_t offset = pos_;
    std::int8_t head = 0;
    if (!readHead(head)) return false;
    if (head == kTagNil) {
        object = Object();
        return true;
    }
    if (head != kTagNew) {
        std::size_t index = 0;
        if (!readTableReference(head, offset, index)) return false;
        const TableEntry& entry = table_[index];
        if (entry.kind == TableEntry::Kind::Pending)
            return fail(offset, "reference to object " + std::to_string(index) + ", which is still being read");
        if (entry.kind != TableEntry::Kind::Object)
            return fail(offset, "reference " + std::to_string(index) + " is not an object");
        object = Object(entry.object);
        return true;
    }
    if (depth_ >= kMaxArchiveNesting)
        return fail(offset, "objects nested deeper than " + std::to_string(kMaxArchiveNesting));
    const std::size_t slot = table_.size();
    table_.push_back({});
    const std::size_t classOffset = pos_;
    auto node = std::make_shared<Node>();
    if (!readClassChain(node->chain)) return false;
    const KnownClass* known = findKnownClass(node->chain->front().name);
    if (!known || known->kind == ObjectKind::Nil)
        return fail(classOffset, "unsupported archived class " + quoted(node->chain->front().name));
    node->kind = known->kind;
    ++depth_;
    const bool bodyRead = readBody(*node, *known);
    --depth_;
    if (!bodyRead) return false;
    const std::size_t endOffset = pos_;
    if (!readHead(head)) return false;
    if (head != kTagEnd) return fail(endOffset, "expected the end of " + node->chain->front().name);
    table_[slot] = {TableEntry::Kind::Object, node, nullptr, nullptr};
    object = Object(std::move(node));
    return true;
}

bool ArchiveReader::readHeader(Archive& archive)
{
    const auto signature = in_.substr(std::min<std::size_t>(2, in_.size()), 11);
    const bool knownSignature = signature == kBigEndianSignature || signature == kLittleEndianSignature;
    if (in_.size() < kHeaderPrefixSize || in_[1] != 11 || !knownSignature)
        return fail(0, "not a typedstream archive (bad header)");
    if (static_cast<std::uint8_t>(in_[0]) != kStreamerVersion)
        return fail(0, "unsupported typedstream version " + std::to_string(static_cast<std::uint8_t>(in_[0])));
    order_ = signature == kBigEndianSignature ? ByteOrder::BigEndian : ByteOrder::LittleEndian;
    archive.order = order_;
    pos_ = kHeaderPrefixSize;
    std::int64_t systemVersion = 0;
    if (!readInteger(systemVersion)) return false;
    if (systemVersion < INT32_MIN || systemVersion > INT32_MAX)
        return fail(kHeaderPrefixSize, "system version out of range");
    archive.systemVersion = static_cast<std::int32_t>(systemVersion);
    return true;
}

bool ArchiveReader::readRoot(Object& root)
{
    // Archives hold one top-level group: the root object.
    if (pos_ == in_.size()) return fail(pos_, "archive without a root object");
    GroupLabel label;
    if (!readGroupLabel(label)) return false;
    if (*label.text != "@") return fail(label.offset, "unsupported top-level group " + quoted(*label.text));
    if (!readObject(root)) return false;
    if (pos_ != in_.size()) return fail(pos_, "unexpected data after the root object");
    return true;
}

std::optional<Archive> ArchiveReader::read(std::string* error)
{
    Archive archive;
    if (readHeader(archive) && readRoot(archive.root)) return archive;
    if (error) *error = error_;
    return std::nullopt;
}

}  // namespace detail

bool isArchive(std::string_view bytes)
{
    if (bytes.size() < detail::kHeaderPrefixSize || static_cast<std::uint8_t>(bytes[0]) != detail::kStreamerVersion ||
        bytes[1] != 11)
        return false;
    const auto signature = bytes.substr(2, 11);
    return signature == detail::kBigEndianSignature || signature == detail::kLittleEndianSignature;
}

std::optional<Archive> decode(std::string_view bytes, std::string* error)
{
    return detail::ArchiveReader(bytes).read(error);
}

}  // namespace plist::legacy
