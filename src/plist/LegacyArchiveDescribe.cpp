#include "plist/LegacyArchiveNode.h"

#include <charconv>
#include <cmath>

namespace plist::legacy {

namespace {

void appendNumber(std::string& out, double value)
{
    if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e15) {
        out += std::to_string(static_cast<long long>(value));
        return;
    }
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, result.ptr);
}

void appendNumbers(std::string& out, const std::vector<double>& numbers)
{
    out += '(';
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i) out += ", ";
        appendNumber(out, numbers[i]);
    }
    out += ')';
}

void appendQuoted(std::string& out, const std::string& text)
{
    out += '"';
    for (const char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        out += c;
    }
    out += '"';
}

void appendObject(std::string& out, const Object& object)
{
    switch (object.kind()) {
    case ObjectKind::Nil: out += "nil"; return;
    case ObjectKind::String: appendQuoted(out, object.toString()); return;
    case ObjectKind::Number: appendNumber(out, object.toDouble()); return;
    case ObjectKind::Value:
        if (!object.isPoint()) out += object.encoding();
        appendNumbers(out, object.components());
        return;
    case ObjectKind::Array:
        out += '[';
        for (std::size_t i = 0; i < object.elements().size(); ++i) {
            if (i) out += ", ";
            appendObject(out, object.elements()[i]);
        }
        out += ']';
        return;
    case ObjectKind::Dictionary:
        out += '{';
        for (std::size_t i = 0; i < object.entries().size(); ++i) {
            if (i) out += ", ";
            appendObject(out, object.entries()[i].first);
            out += ": ";
            appendObject(out, object.entries()[i].second);
        }
        out += '}';
        return;
    case ObjectKind::Color:
        out += "NSColor";
        if (object.colorKind() == ColorKind::Named) {
            out += '(' + object.colorCatalog() + '/' + object.colorName() + ')';
            return;
        }
        out += '[' + std::to_string(static_cast<int>(object.colorKind())) + ']';
        appendNumbers(out, object.components());
        return;
    case ObjectKind::Data: out += '<' + std::to_string(object.size()) + " bytes>"; return;
    case ObjectKind::Opaque:
        out += std::string(object.className()) + '<' + std::to_string(object.fieldGroups().size()) + " groups>";
        return;
    }
}

}  // namespace

std::string Object::describe() const
{
    std::string out;
    appendObject(out, *this);
    return out;
}

}  // namespace plist::legacy
