#include "plist/LegacyArchiveTypeEncoding.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace plist::legacy::detail {

namespace {

constexpr std::string_view kNumberTypes = "cCBsSiIlLqQfd";

std::size_t saturatingAdd(std::size_t a, std::size_t b)
{
    return a > std::numeric_limits<std::size_t>::max() - b ? std::numeric_limits<std::size_t>::max() : a + b;
}

std::size_t saturatingMultiply(std::size_t a, std::size_t b)
{
    if (a != 0 && b > std::numeric_limits<std::size_t>::max() / a) return std::numeric_limits<std::size_t>::max();
    return a * b;
}

class EncodingParser {
public:
    EncodingParser(std::string_view text, std::string* error) : text_(text), error_(error) {}

    std::optional<TypeEncoding> parse()
    {
        TypeEncoding result;
        result.numbersOnly = true;
        if (text_.empty()) {
            fail("empty type encoding");
            return std::nullopt;
        }
        while (pos_ < text_.size()) {
            TypeNode node;
            std::size_t numbers = 0;
            bool numbersOnly = true;
            if (!parseType(node, 0, numbers, numbersOnly)) return std::nullopt;
            result.types.push_back(std::move(node));
            result.numberCount = saturatingAdd(result.numberCount, numbers);
            result.numbersOnly = result.numbersOnly && numbersOnly;
        }
        if (!result.numbersOnly) result.numberCount = 0;
        return result;
    }

private:
    bool fail(std::string_view message)
    {
        if (error_) *error_ = std::string(message) + " in type encoding \"" + std::string(text_) + "\"";
        return false;
    }

    bool parseType(TypeNode& node, int depth, std::size_t& numbers, bool& numbersOnly)
    {
        if (depth > kMaxTypeNesting) return fail("nesting too deep");
        if (pos_ >= text_.size()) return fail("unexpected end");
        const char c = text_[pos_++];
        if (auto number = numberKindFor(c)) {
            node.kind = *number;
            numbers = 1;
            return true;
        }
        numbersOnly = false;
        switch (c) {
        case '@': node.kind = TypeKind::Object; return true;
        case '*': node.kind = TypeKind::CString; return true;
        case '+': node.kind = TypeKind::Bytes; return true;
        case '%':
        case ':': node.kind = TypeKind::SharedString; return true;
        case '[': return parseArray(node, depth, numbers, numbersOnly);
        case '{': return parseStruct(node, depth, numbers, numbersOnly);
        default:
            return fail(std::string("unsupported type '") + c + "'");
        }
    }

    bool parseArray(TypeNode& node, int depth, std::size_t& numbers, bool& numbersOnly)
    {
        std::uint64_t count = 0;
        const std::size_t digitsStart = pos_;
        while (pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '9') {
            count = count * 10 + static_cast<std::uint64_t>(text_[pos_++] - '0');
            if (count > std::numeric_limits<std::uint32_t>::max()) return fail("array too long");
        }
        if (pos_ == digitsStart) return fail("array without a length");
        node.count = static_cast<std::uint32_t>(count);
        TypeNode element;
        std::size_t elementNumbers = 0;
        bool elementNumbersOnly = true;
        if (!parseType(element, depth + 1, elementNumbers, elementNumbersOnly)) return false;
        if (pos_ >= text_.size() || text_[pos_] != ']') return fail("unterminated array");
        ++pos_;
        numbers = saturatingMultiply(node.count, elementNumbers);
        numbersOnly = elementNumbersOnly;
        // Chars are raw bytes on the wire; an opaque object keeps them as one block.
        const bool bytes = element.kind == TypeKind::Char || element.kind == TypeKind::UnsignedChar;
        node.kind = bytes ? TypeKind::ByteArray : TypeKind::Array;
        node.members.push_back(std::move(element));
        return true;
    }

    bool parseStruct(TypeNode& node, int depth, std::size_t& numbers, bool& numbersOnly)
    {
        node.kind = TypeKind::Struct;
        while (pos_ < text_.size() && text_[pos_] != '=') {
            if (text_[pos_] == '}' || text_[pos_] == '{') return fail("struct without members");
            ++pos_;
        }
        if (pos_ >= text_.size()) return fail("unterminated struct");
        ++pos_;  // '='
        numbers = 0;
        numbersOnly = true;
        while (pos_ < text_.size() && text_[pos_] != '}') {
            TypeNode member;
            std::size_t memberNumbers = 0;
            bool memberNumbersOnly = true;
            if (!parseType(member, depth + 1, memberNumbers, memberNumbersOnly)) return false;
            numbers = saturatingAdd(numbers, memberNumbers);
            numbersOnly = numbersOnly && memberNumbersOnly;
            node.members.push_back(std::move(member));
        }
        if (pos_ >= text_.size()) return fail("unterminated struct");
        ++pos_;  // '}'
        // An empty struct would let "[4000000000{x=}]" loop without reading a byte.
        if (node.members.empty()) return fail("struct without members");
        return true;
    }

    std::string_view text_;
    std::string* error_;
    std::size_t pos_ = 0;
};

}  // namespace

std::optional<TypeEncoding> parseTypeEncoding(std::string_view encoding, std::string* error)
{
    return EncodingParser(encoding, error).parse();
}

std::string byteArrayEncoding(std::size_t length)
{
    // Appended piece by piece: GCC 12 warns falsely (-Wrestrict) about
    // "literal" + std::string at -O3.
    std::string encoding = "[";
    encoding += std::to_string(length);
    encoding += "c]";
    return encoding;
}

std::optional<TypeKind> numberKindFor(char objcType)
{
    const auto index = kNumberTypes.find(objcType);
    if (objcType == '\0' || index == std::string_view::npos) return std::nullopt;
    return static_cast<TypeKind>(index);
}

char objcTypeFor(TypeKind numberKind)
{
    return isNumberKind(numberKind) ? kNumberTypes[static_cast<std::size_t>(numberKind)] : '\0';
}

double normalizeNumber(TypeKind kind, double value)
{
    if (kind == TypeKind::Double) return value;
    if (kind == TypeKind::Float) return static_cast<double>(static_cast<float>(value));
    if (std::isnan(value)) return 0.0;
    // The stream holds at most 32-bit integers, whatever the declared width.
    double low = std::numeric_limits<std::int32_t>::min();
    double high = std::numeric_limits<std::int32_t>::max();
    switch (kind) {
    case TypeKind::Char: low = -128; high = 127; break;
    case TypeKind::UnsignedChar: low = 0; high = 255; break;
    case TypeKind::Bool: low = 0; high = 255; break;
    case TypeKind::Short: low = -32768; high = 32767; break;
    case TypeKind::UnsignedShort: low = 0; high = 65535; break;
    case TypeKind::UnsignedInt:
    case TypeKind::UnsignedLong:
    case TypeKind::UnsignedLongLong: low = 0; high = std::numeric_limits<std::uint32_t>::max(); break;
    default: break;
    }
    return std::clamp(std::trunc(value), low, high);
}

}  // namespace plist::legacy::detail
