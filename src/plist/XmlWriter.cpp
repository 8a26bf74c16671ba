// XML property-list writer, in the layout the platform's own writer uses:
// tab indentation, keys sorted, empty containers as <dict/> and <array/>.

#include "plist/Base64.h"
#include "plist/DateConversion.h"
#include "plist/OutputBuffer.h"
#include "plist/PropertyList.h"

#include <charconv>
#include <cmath>

namespace plist {

namespace {

// Data larger than this is written without indentation.
constexpr std::size_t kUnindentedDataBytes = 64 * 1024;


using namespace std::string_view_literals;

struct WriteError {
    std::string message;
};

class XmlWriter {
public:
    explicit XmlWriter(OutputBuffer& out) : out_(out) {}

    void write(const Value& v, int depth)
    {
        if (depth > kMaxNestingDepth) throw WriteError{"nesting deeper than " + std::to_string(kMaxNestingDepth) + " levels"};
        indent(depth);
        switch (v.type()) {
        case Type::Null: throw WriteError{"a null value cannot be written as XML"};
        case Type::Boolean: out_ += v.toBool() ? "<true/>\n" : "<false/>\n"; break;
        case Type::Integer: {
            out_ += "<integer>";
            appendInteger(v);
            out_ += "</integer>\n";
            break;
        }
        case Type::Real:
            out_ += "<real>";
            appendReal(v);
            out_ += "</real>\n";
            break;
        case Type::String:
            out_ += "<string>";
            appendEscaped(v.string());
            out_ += "</string>\n";
            break;
        case Type::Data:
            out_ += "<data>\n";
            // Lines of a large blob (a picture) are not indented: deep in a
            // composition the tabs would add a fifth to its size. Readers
            // take any white space inside data.
            appendBase64(v.dataBytes(), v.dataBytes().size() > kUnindentedDataBytes ? std::string_view() : tabs(depth));
            indent(depth);
            out_ += "</data>\n";
            break;
        case Type::Date:
            out_ += "<date>";
            out_ += formatIso8601(v.dateValue());
            out_ += "</date>\n";
            break;
        case Type::Uid:
            out_ += "<dict>\n";
            indent(depth + 1);
            out_ += "<key>CF$UID</key>\n";
            indent(depth + 1);
            out_ += "<integer>";
            out_ += std::to_string(v.uidValue());
            out_ += "</integer>\n";
            indent(depth);
            out_ += "</dict>\n";
            break;
        case Type::Array:
            if (v.array().empty()) {
                out_ += "<array/>\n";
                break;
            }
            out_ += "<array>\n";
            for (const Value& element : v.array()) __builtin_prefetch(element.payloadIdentity());
            for (const Value& element : v.array()) write(element, depth + 1);
            indent(depth);
            out_ += "</array>\n";
            break;
        case Type::Dictionary:
            if (v.dictionary().empty()) {
                out_ += "<dict/>\n";
                break;
            }
            out_ += "<dict>\n";
            // The entries' texts and payloads lie elsewhere in memory: asking
            // for all of them at once lets the waits overlap.
            for (const auto& [key, value] : v.dictionary()) {
                __builtin_prefetch(&key.str());
                __builtin_prefetch(value.payloadIdentity());
            }
            for (const auto& [key, value] : v.dictionary()) {
                indent(depth + 1);
                out_ += "<key>";
                appendEscaped(key);
                out_ += "</key>\n";
                write(value, depth + 1);
            }
            indent(depth);
            out_ += "</dict>\n";
            break;
        }
    }

private:
    std::string_view tabs(int depth)
    {
        if (int(tabs_.size()) < depth) tabs_.resize(std::size_t(depth) * 2, '\t');
        return std::string_view(tabs_).substr(0, std::size_t(depth));
    }

    void indent(int depth) { out_.append(tabs(depth)); }

    void appendBase64(std::string_view bytes, std::string_view indent)
    {
        char* p = out_.reserve(base64LinesSize(bytes.size(), indent.size()));
        out_.commit(writeBase64Lines(p, bytes, indent));
    }

    void appendInteger(const Value& v)
    {
        char buffer[32];
        auto result = v.isUnsignedInteger() ? std::to_chars(buffer, buffer + sizeof buffer, v.toUnsigned())
                                            : std::to_chars(buffer, buffer + sizeof buffer, v.toInt());
        out_.append(std::string_view(buffer, std::size_t(result.ptr - buffer)));
    }

    void appendReal(const Value& v)
    {
        const double d = v.toDouble();
        if (std::isnan(d)) {
            out_ += "nan";
            return;
        }
        if (std::isinf(d)) {
            out_ += d > 0 ? "+infinity" : "-infinity";
            return;
        }
        // The shortest text that reads back to exactly the same double. A
        // single-precision value is printed through its double value too, so
        // a reader gets the very number the file held (0.1f is
        // "0.10000000149011612"), as the platform's writer does.
        char buffer[64];
        auto result = std::to_chars(buffer, buffer + sizeof buffer, d);
        out_.append(std::string_view(buffer, std::size_t(result.ptr - buffer)));
    }

    void appendEscaped(std::string_view s)
    {
        std::size_t runStart = 0;
        for (std::size_t i = 0; i < s.size(); ++i) {
            const char* replacement = nullptr;
            switch (s[i]) {
            case '&': replacement = "&amp;"; break;
            case '<': replacement = "&lt;"; break;
            case '>': replacement = "&gt;"; break;
            case '\r': replacement = "&#13;"; break;  // a raw CR would read back as LF
            default: continue;
            }
            out_.append(s.substr(runStart, i - runStart));
            out_ += replacement;
            runStart = i + 1;
        }
        out_.append(s.substr(runStart));
    }

    OutputBuffer& out_;
    std::string tabs_;
};

}  // namespace

std::optional<std::string> writeXml(const Value& root, std::string* error)
{
    OutputBuffer out;
    out.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n"sv);
    try {
        XmlWriter(out).write(root, 0);
    } catch (const WriteError& e) {
        if (error) *error = e.message;
        return std::nullopt;
    }
    out.append("</plist>\n"sv);
    return out.take();
}

}  // namespace plist
