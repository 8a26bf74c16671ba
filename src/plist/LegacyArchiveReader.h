#pragma once
// Reads a typedstream: the stream primitives (tagged integers, shared
// strings, the object table) here and in LegacyArchiveReader.cpp, the class
// bodies in LegacyArchiveBodyReader.cpp. Internal to the plist library.

#include "plist/LegacyArchive.h"
#include "plist/LegacyArchiveClasses.h"
#include "plist/LegacyArchiveNode.h"
#include "plist/LegacyArchiveTypeEncoding.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plist::legacy::detail {

class ArchiveReader {
public:
    explicit ArchiveReader(std::string_view bytes) : in_(bytes) {}
    std::optional<Archive> read(std::string* error);

private:
    // Objects, classes and C strings share one table, numbered in order of
    // first appearance. An object takes its slot before its class is read.
    struct TableEntry {
        enum class Kind : std::uint8_t { Pending, Object, Class, CString };
        Kind kind = Kind::Pending;
        std::shared_ptr<Node> object;
        ClassChain chain;  // the class followed by its superclasses
        SharedText text;
    };
    struct SharedString {
        SharedText text;
        // Parsed on first use as a group label; shared so that a label stays
        // valid while nested objects grow the table.
        std::shared_ptr<const TypeEncoding> type;
        std::string typeError;
        bool parsed = false;
    };
    struct GroupLabel {
        std::shared_ptr<const TypeEncoding> type;
        SharedText text;
        std::size_t offset = 0;
    };

    bool readHeader(Archive& archive);
    bool readRoot(Object& root);
    bool fail(std::size_t offset, const std::string& message);
    std::size_t remaining() const { return in_.size() - pos_; }
    bool take(std::size_t count, const char*& bytes);
    bool readHead(std::int8_t& head);
    bool readIntegerAfter(std::int8_t head, std::size_t headOffset, std::int64_t& value);
    bool readInteger(std::int64_t& value);
    bool readCount(std::int64_t& count, std::string_view what);
    bool readReal(TypeKind kind, double& value);
    bool readNumber(TypeKind kind, double& value);
    bool readUnsharedBytes(std::string& bytes);
    bool readSharedString(SharedText& text, std::size_t* index = nullptr);
    bool readCString(SharedText& text);
    bool readClassChain(ClassChain& chain);
    bool readGroupLabel(GroupLabel& label);
    bool expectGroup(std::string_view expected, std::string_view owner);
    bool readObject(Object& object);
    bool readTableReference(std::int8_t head, std::size_t offset, std::size_t& index);

    // Class bodies.
    bool readBody(Node& node, const KnownClass& known);
    bool readStringBody(Node& node);
    bool readArrayBody(Node& node);
    bool readDictionaryBody(Node& node);
    bool readValueBody(Node& node, bool isNumber);
    bool readColorBody(Node& node);
    bool readDataBody(Node& node);
    bool readOpaqueBody(Node& node);
    bool readNumbers(const TypeEncoding& type, std::vector<double>& numbers);
    bool readFields(const TypeEncoding& type, std::vector<Field>& fields);

    std::string_view in_;
    std::size_t pos_ = 0;
    ByteOrder order_ = ByteOrder::BigEndian;
    std::vector<SharedString> shared_;
    std::vector<TableEntry> table_;
    int depth_ = 0;
    std::string error_;
};

}  // namespace plist::legacy::detail
