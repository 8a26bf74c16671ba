// XML property-list reader: a small hand-written parser for the plist DTD.
// A general XML parser would be several times slower on large files and
// would still need the plist-specific checks below.

#include "plist/Base64.h"
#include "plist/DateConversion.h"
#include "plist/PropertyList.h"
#include "plist/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cctype>
#include <cstring>
#include <limits>
#include <string>

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

    // Character data up to the element's end tag, with entities and CDATA
    // sections resolved and line ends normalised as XML requires.
    std::string readText(std::string_view element)
    {
        const char* runStart = p_;
        while (p_ != end_ && *p_ != '<' && *p_ != '&' && *p_ != '\r') ++p_;
        if (p_ != end_ && *p_ == '<' && !startsWith("<![CDATA[") && !startsWith("<!--")) {
            std::string text(runStart, std::size_t(p_ - runStart));  // the common case: plain text
            expectEndTag(element);
            return text;
        }
        std::string text(runStart, std::size_t(p_ - runStart));
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
                while (p_ != end_ && *p_ != '<' && *p_ != '&' && *p_ != '\r') ++p_;
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

    std::string_view trimmed(const std::string& s)
    {
        std::string_view v(s);
        while (!v.empty() && isSpace(v.front())) v.remove_prefix(1);
        while (!v.empty() && isSpace(v.back())) v.remove_suffix(1);
        return v;
    }

    Value parseInteger(const std::string& text)
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
        if (v.empty() || ec != std::errc() || ptr != v.data() + v.size()) fail("invalid integer \"" + text + "\"");
        if (!negative) return Value(static_cast<unsigned long long>(magnitude));
        if (magnitude > std::uint64_t(1) << 63) fail("integer out of range \"" + text + "\"");
        return Value(static_cast<long long>(0 - magnitude));
    }

    Value parseReal(const std::string& text)
    {
        std::string_view v = trimmed(text);
        std::string lower(v);
        std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return char(std::tolower(c)); });
        if (lower == "nan") return Value(std::numeric_limits<double>::quiet_NaN());
        if (lower == "+infinity" || lower == "infinity" || lower == "inf" || lower == "+inf")
            return Value(std::numeric_limits<double>::infinity());
        if (lower == "-infinity" || lower == "-inf") return Value(-std::numeric_limits<double>::infinity());
        if (!v.empty() && v[0] == '+') v.remove_prefix(1);
        double d = 0;
        auto [ptr, ec] = std::from_chars(v.data(), v.data() + v.size(), d);
        if (v.empty() || ptr != v.data() + v.size() || (ec != std::errc() && ec != std::errc::result_out_of_range))
            fail("invalid real \"" + text + "\"");
        return Value(d);
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
        if (name == "integer") return parseInteger(selfClosing ? std::string() : readText("integer"));
        if (name == "real") return parseReal(selfClosing ? std::string() : readText("real"));
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
            const std::string text = selfClosing ? std::string() : readText("date");
            double seconds = 0;
            if (!parseIso8601(trimmed(text), seconds)) fail("invalid date \"" + text + "\"");
            return Value::date(seconds);
        }
        if (name == "key") fail("<key> outside a dictionary");
        fail("unknown tag <" + std::string(name) + ">");
    }

    Value parseDictionary(int depth)
    {
        Dictionary dictionary;
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
            std::string key = selfClosing ? std::string() : readText("key");
            Value value = parseValue(depth + 1);
            auto it = dictionary.lower_bound(key);
            if (it != dictionary.end() && it->first == key)
                it->second = std::move(value);  // a repeated key: the last one wins
            else
                dictionary.emplace_hint(it, std::move(key), std::move(value));
        }
        // The platform writes keyed-archive UIDs as {"CF$UID": n}.
        if (dictionary.size() == 1) {
            auto it = dictionary.find("CF$UID");
            if (it != dictionary.end() && it->second.isInteger()) return Value::uid(it->second.toUnsigned());
        }
        return Value(std::move(dictionary));
    }

    Value parseArray(int depth)
    {
        Array array;
        for (;;) {
            skipMisc();
            if (startsWith("</")) {
                expectEndTag("array");
                return Value(std::move(array));
            }
            array.push_back(parseValue(depth + 1));
        }
    }

    const char* begin_;
    const char* p_;
    const char* end_;
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
