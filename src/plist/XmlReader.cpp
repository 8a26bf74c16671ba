// XML property-list reader: a small hand-written parser for the plist DTD.
// A general XML parser would be several times slower on large files and
// would still need the plist-specific checks below.
//
// Element text is looked at in place (copied only when an entity, CDATA or a
// CR needs resolving), and a container's children are collected on a stack
// shared by all levels, so each array and dictionary is allocated once at
// its final size.

#include "plist/Base64.h"
#include "plist/DateConversion.h"
#include "plist/DictionaryBuilder.h"
#include "plist/KeyInterner.h"
#include "plist/PropertyList.h"
#include "plist/Utf8.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cctype>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace plist {

namespace {

struct ParseError {
    std::size_t offset;
    std::string message;
};

class XmlParser {
public:
    explicit XmlParser(std::string_view text) : begin_(text.data()), p_(text.data()), end_(text.data() + text.size()) {}

    Value parseDocument()
    {
        if (end_ - p_ >= 3 && std::memcmp(p_, "\xEF\xBB\xBF", 3) == 0) p_ += 3;
        skipMisc();
        if (!startsWith("<")) fail("expected an XML element");
        std::string_view name;
        bool selfClosing = false;
        const char* tagStart = p_;
        readStartTag(name, selfClosing);
        Value root;
        if (name == "plist") {
            if (selfClosing) fail("empty <plist> element");
            skipMisc();
            if (startsWith("</")) fail("<plist> holds no value");
            root = parseValue(1);
            skipMisc();
            expectEndTag("plist");
        } else {
            p_ = tagStart;
            root = parseValue(1);
        }
        skipMisc();
        if (p_ != end_) fail("unexpected content after the property list");
        return root;
    }

    std::size_t lineOf(std::size_t offset) const
    {
        return 1 + static_cast<std::size_t>(std::count(begin_, begin_ + offset, '\n'));
    }

private:
    [[noreturn]] void fail(std::string message) const { throw ParseError{std::size_t(p_ - begin_), std::move(message)}; }

    bool startsWith(std::string_view s) const
    {
        return std::size_t(end_ - p_) >= s.size() && std::memcmp(p_, s.data(), s.size()) == 0;
    }

    static bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

    void skipSpace()
    {
        while (p_ != end_ && isSpace(*p_)) ++p_;
    }

    void skipPast(std::string_view terminator, const char* what)
    {
        const char* found = std::search(p_, end_, terminator.begin(), terminator.end());
        if (found == end_) fail(std::string("unterminated ") + what);
        p_ = found + terminator.size();
    }

    // Whitespace, comments, processing instructions and the DOCTYPE.
    void skipMisc()
    {
        for (;;) {
            skipSpace();
            if (startsWith("<!--")) {
                skipPast("-->", "comment");
            } else if (startsWith("<?")) {
                skipPast("?>", "processing instruction");
            } else if (startsWith("<!DOCTYPE")) {
                skipDoctype();
            } else {
                return;
            }
        }
    }

    void skipDoctype()
    {
        int bracketDepth = 0;
        for (p_ += 9; p_ != end_; ++p_) {
            if (*p_ == '[') ++bracketDepth;
            else if (*p_ == ']') --bracketDepth;
            else if (*p_ == '>' && bracketDepth <= 0) {
                ++p_;
                return;
            }
        }
        fail("unterminated DOCTYPE");
    }

    // Reads "<name attr=...>" or "<name .../>", leaving p_ after the '>'.
    void readStartTag(std::string_view& name, bool& selfClosing)
    {
        ++p_;  // '<'
        const char* nameStart = p_;
        while (p_ != end_ && !isSpace(*p_) && *p_ != '>' && *p_ != '/') ++p_;
        name = std::string_view(nameStart, std::size_t(p_ - nameStart));
        if (name.empty()) fail("malformed tag");
        char quote = 0;
        for (; p_ != end_; ++p_) {
            const char c = *p_;
            if (quote) {
                if (c == quote) quote = 0;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '>') {
                selfClosing = p_[-1] == '/';
                ++p_;
                return;
            }
        }
        fail("unterminated tag <" + std::string(name) + ">");
    }

    void expectEndTag(std::string_view name)
    {
        if (!startsWith("</")) fail("expected </" + std::string(name) + ">");
        p_ += 2;
        if (!startsWith(name)) fail("expected </" + std::string(name) + ">");
        p_ += name.size();
        skipSpace();
        if (p_ == end_ || *p_ != '>') fail("expected </" + std::string(name) + ">");
        ++p_;
    }

    // Moves p_ to the next '<', '&' or CR (or the end), eight bytes at a time.
    void skipPlainText()
    {
        constexpr std::uint64_t kOnes = 0x0101010101010101ull;
        constexpr std::uint64_t kHighs = 0x8080808080808080ull;
        auto hasByte = [](std::uint64_t chunk, unsigned char byte) {
            const std::uint64_t x = chunk ^ (kOnes * byte);
            return (x - kOnes) & ~x & kHighs;
        };
        while (std::endian::native == std::endian::little && end_ - p_ >= 8) {
            std::uint64_t chunk;
            std::memcpy(&chunk, p_, 8);
            const std::uint64_t found = hasByte(chunk, '<') | hasByte(chunk, '&') | hasByte(chunk, '\r');
            if (found) {
                // The lowest flagged byte is a true match (borrows only run upwards).
                p_ += std::countr_zero(found) / 8;
                return;
            }
            p_ += 8;
        }
        while (p_ != end_ && *p_ != '<' && *p_ != '&' && *p_ != '\r') ++p_;
    }

    // Character data up to the element's end tag, with entities and CDATA
    // sections resolved and line ends normalised as XML requires. A view of
    // the input when there was nothing to resolve, else of a scratch string
    // that the next call reuses.
    std::string_view readText(std::string_view element)
    {
        const char* runStart = p_;
        skipPlainText();
        if (p_ != end_ && *p_ == '<' && !startsWith("<![CDATA[") && !startsWith("<!--")) {
            std::string_view text(runStart, std::size_t(p_ - runStart));  // the common case: plain text
            expectEndTag(element);
            return text;
        }
        std::string& text = scratch_;
        text.assign(runStart, std::size_t(p_ - runStart));
        for (;;) {
            if (p_ == end_) fail("unterminated <" + std::string(element) + ">");
            const char c = *p_;
            if (c == '&') {
                appendEntity(text);
            } else if (c == '\r') {
                text += '\n';
                ++p_;
                if (p_ != end_ && *p_ == '\n') ++p_;
            } else if (startsWith("<![CDATA[")) {
                p_ += 9;
                const char* start = p_;
                skipPast("]]>", "CDATA section");
                text.append(start, std::size_t(p_ - 3 - start));
            } else if (startsWith("<!--")) {
                skipPast("-->", "comment");
            } else if (c == '<') {
                expectEndTag(element);
                return text;
            } else {
                const char* start = p_;
                skipPlainText();
                text.append(start, std::size_t(p_ - start));
            }
        }
    }

    void appendEntity(std::string& out)
    {
        const char* semicolon = static_cast<const char*>(std::memchr(p_, ';', std::min<std::size_t>(std::size_t(end_ - p_), 16)));
        if (!semicolon) fail("malformed entity reference");
        std::string_view entity(p_ + 1, std::size_t(semicolon - p_ - 1));
        if (entity == "amp") out += '&';
        else if (entity == "lt") out += '<';
        else if (entity == "gt") out += '>';
        else if (entity == "quot") out += '"';
        else if (entity == "apos") out += '\'';
        else if (entity.size() > 1 && entity[0] == '#') {
            const bool hex = entity[1] == 'x' || entity[1] == 'X';
            std::string_view digits = entity.substr(hex ? 2 : 1);
            std::uint32_t codePoint = 0;
            auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), codePoint, hex ? 16 : 10);
            if (digits.empty() || ec != std::errc() || ptr != digits.data() + digits.size() || !appendUtf8(out, codePoint))
                fail("invalid character reference &" + std::string(entity) + ";");
        } else {
            fail("unknown entity &" + std::string(entity) + ";");
        }
        p_ = semicolon + 1;
    }

    static std::string_view trimmed(std::string_view v)
    {
        while (!v.empty() && isSpace(v.front())) v.remove_prefix(1);
        while (!v.empty() && isSpace(v.back())) v.remove_suffix(1);
        return v;
    }

    Value parseInteger(std::string_view text)
    {
        std::string_view v = trimmed(text);
        bool negative = false;
        if (!v.empty() && (v[0] == '-' || v[0] == '+')) {
            negative = v[0] == '-';
            v.remove_prefix(1);
        }
        int base = 10;
        if (v.size() > 2 && v[0] == '0' && (v[1] == 'x' || v[1] == 'X')) {
            base = 16;
            v.remove_prefix(2);
        }
        std::uint64_t magnitude = 0;
        auto [ptr, ec] = std::from_chars(v.data(), v.data() + v.size(), magnitude, base);
        if (v.empty() || ec != std::errc() || ptr != v.data() + v.size()) fail("invalid integer \"" + std::string(text) + "\"");
        if (!negative) return Value(static_cast<unsigned long long>(magnitude));
        if (magnitude > std::uint64_t(1) << 63) fail("integer out of range \"" + std::string(text) + "\"");
        return Value(static_cast<long long>(0 - magnitude));
    }

    Value parseReal(std::string_view text)
    {
        std::string_view v = trimmed(text);
        if (!v.empty() && v[0] == '+') v.remove_prefix(1);
        double d = 0;
        auto [ptr, ec] = std::from_chars(v.data(), v.data() + v.size(), d);
        if (!v.empty() && ptr == v.data() + v.size() && (ec == std::errc() || ec == std::errc::result_out_of_range))
            return Value(d);
        // The special values in any case; from_chars knows most spellings,
        // this catches the rest.
        std::string lower(trimmed(text));
        std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return char(std::tolower(c)); });
        if (lower == "nan") return Value(std::numeric_limits<double>::quiet_NaN());
        if (lower == "+infinity" || lower == "infinity" || lower == "inf" || lower == "+inf")
            return Value(std::numeric_limits<double>::infinity());
        if (lower == "-infinity" || lower == "-inf") return Value(-std::numeric_limits<double>::infinity());
        fail("invalid real \"" + std::string(text) + "\"");
    }

    void expectEmptyElement(std::string_view name, bool selfClosing)
    {
        if (selfClosing) return;
        skipSpace();
        expectEndTag(name);
    }

    Value parseValue(int depth)
    {
        if (depth > kMaxNestingDepth) fail("nesting deeper than " + std::to_string(kMaxNestingDepth) + " levels");
        skipMisc();
        if (p_ == end_ || *p_ != '<' || startsWith("</")) fail("expected a value element");
        std::string_view name;
        bool selfClosing = false;
        readStartTag(name, selfClosing);

        if (name == "dict") return selfClosing ? Value::emptyDictionary() : parseDictionary(depth);
        if (name == "array") return selfClosing ? Value::emptyArray() : parseArray(depth);
        if (name == "string") return selfClosing ? Value(std::string()) : Value(readText("string"));
        if (name == "integer") return parseInteger(selfClosing ? std::string_view() : readText("integer"));
        if (name == "real") return parseReal(selfClosing ? std::string_view() : readText("real"));
        if (name == "true" || name == "false") {
            expectEmptyElement(name, selfClosing);
            return Value(name == "true");
        }
        if (name == "data") {
            std::string bytes;
            if (!selfClosing && !decodeBase64(readText("data"), bytes)) fail("invalid base64 in <data>");
            return Value::data(std::move(bytes));
        }
        if (name == "date") {
            const std::string_view text = selfClosing ? std::string_view() : readText("date");
            double seconds = 0;
            if (!parseIso8601(trimmed(text), seconds)) fail("invalid date \"" + std::string(text) + "\"");
            return Value::date(seconds);
        }
        if (name == "key") fail("<key> outside a dictionary");
        fail("unknown tag <" + std::string(name) + ">");
    }

    Value parseDictionary(int depth)
    {
        const std::size_t first = entries_.size();
        for (;;) {
            skipMisc();
            if (startsWith("</")) {
                expectEndTag("dict");
                break;
            }
            if (!startsWith("<key")) fail("expected <key> in a dictionary");
            std::string_view name;
            bool selfClosing = false;
            readStartTag(name, selfClosing);
            if (name != "key") fail("expected <key> in a dictionary");
            Key key = selfClosing ? Key() : keys_.intern(readText("key"));
            Value value = parseValue(depth + 1);
            entries_.push_back(DictionaryEntry{std::move(key), std::move(value)});
        }
        // Of a repeated key the last value wins.
        DictionaryBuilder builder(entries_.size() - first);
        for (std::size_t i = first; i < entries_.size(); ++i)
            builder.append(std::move(entries_[i].first), std::move(entries_[i].second));
        entries_.erase(entries_.begin() + std::ptrdiff_t(first), entries_.end());
        Dictionary dictionary = builder.finish();
        // The platform writes keyed-archive UIDs as {"CF$UID": n}.
        if (dictionary.size() == 1) {
            const DictionaryEntry& only = *std::as_const(dictionary).begin();
            if (only.first == "CF$UID" && only.second.isInteger()) return Value::uid(only.second.toUnsigned());
        }
        return Value(std::move(dictionary));
    }

    Value parseArray(int depth)
    {
        const std::size_t first = elements_.size();
        for (;;) {
            skipMisc();
            if (startsWith("</")) {
                expectEndTag("array");
                break;
            }
            Value element = parseValue(depth + 1);
            elements_.push_back(std::move(element));
        }
        const auto begin = elements_.begin() + std::ptrdiff_t(first);
        Array array(std::make_move_iterator(begin), std::make_move_iterator(elements_.end()));
        elements_.erase(begin, elements_.end());
        return Value(std::move(array));
    }

    const char* begin_;
    const char* p_;
    const char* end_;
    std::string scratch_;                   // text that needed resolving
    KeyInterner keys_;
    std::vector<DictionaryEntry> entries_;  // of the dictionaries being read, innermost last
    Array elements_;                        // of the arrays being read, innermost last
};

}  // namespace

std::optional<Value> readXml(std::string_view bytes, std::string* error)
{
    XmlParser parser(bytes);
    const std::size_t invalid = firstInvalidUtf8(bytes);
    if (invalid != std::string_view::npos) {
        if (error) *error = "line " + std::to_string(parser.lineOf(invalid)) + ": invalid UTF-8";
        return std::nullopt;
    }
    try {
        return parser.parseDocument();
    } catch (const ParseError& e) {
        if (error) *error = "line " + std::to_string(parser.lineOf(std::min(e.offset, bytes.size()))) + ": " + e.message;
        return std::nullopt;
    } catch (const std::bad_alloc&) {
        if (error) *error = "out of memory";
        return std::nullopt;
    }
}

}  // namespace plist
