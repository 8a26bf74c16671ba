#include "plist/ValueDescription.h"

#include <charconv>

namespace plist {

namespace {

void append(std::string& out, const Value& v, std::size_t maxLength)
{
    if (out.size() > maxLength) return;
    switch (v.type()) {
    case Type::Null: out += "null"; break;
    case Type::Boolean: out += v.toBool() ? "true" : "false"; break;
    case Type::Integer: out += v.isUnsignedInteger() ? std::to_string(v.toUnsigned()) : std::to_string(v.toInt()); break;
    case Type::Real: {
        char buffer[64];
        auto r = std::to_chars(buffer, buffer + sizeof buffer, v.toDouble());
        out.append(buffer, r.ptr);
        if (v.isSinglePrecision()) out += "f";
        break;
    }
    // Appended piece by piece: GCC 12 warns falsely (-Wrestrict) about
    // "literal" + std::string at -O3.
    case Type::String: out.append(1, '"').append(v.string()).append(1, '"'); break;
    case Type::Data: out.append("<").append(std::to_string(v.dataBytes().size())).append(" bytes>"); break;
    case Type::Date: out.append("date(").append(std::to_string(v.dateValue())).append(")"); break;
    case Type::Uid: out.append("uid(").append(std::to_string(v.uidValue())).append(")"); break;
    case Type::Array: {
        out += '[';
        bool first = true;
        for (const Value& e : v.array()) {
            if (!first) out += ", ";
            first = false;
            append(out, e, maxLength);
        }
        out += ']';
        break;
    }
    case Type::Dictionary: {
        out += '{';
        bool first = true;
        for (const auto& [k, e] : v.dictionary()) {
            if (!first) out += ", ";
            first = false;
            out += '"';
            out += k;
            out += "\": ";
            append(out, e, maxLength);
        }
        out += '}';
        break;
    }
    }
}

std::string difference(const Value& a, const Value& b, const std::string& path)
{
    if (a.type() != b.type()) return path + " (" + typeName(a.type()) + " vs " + typeName(b.type()) + ")";
    if (a.isArray()) {
        if (a.size() != b.size()) return path + " (" + std::to_string(a.size()) + " vs " + std::to_string(b.size()) + " elements)";
        for (std::size_t i = 0; i < a.size(); ++i) {
            std::string d = difference(a.array()[i], b.array()[i], path + "[" + std::to_string(i) + "]");
            if (!d.empty()) return d;
        }
        return {};
    }
    if (a.isDictionary()) {
        for (const auto& [k, e] : a.dictionary()) {
            const Value* other = b.find(k);
            if (!other) return path + "." + k.str() + " (missing on the right)";
            std::string d = difference(e, *other, path + "." + k.str());
            if (!d.empty()) return d;
        }
        for (const auto& [k, e] : b.dictionary())
            if (!a.find(k)) return path + "." + k.str() + " (missing on the left)";
        return {};
    }
    return a == b ? std::string() : path + " (" + describe(a, 80) + " vs " + describe(b, 80) + ")";
}

}  // namespace

std::string describe(const Value& value, std::size_t maxLength)
{
    std::string out;
    append(out, value, maxLength);
    if (out.size() > maxLength) {
        out.resize(maxLength);
        out += "...";
    }
    return out;
}

std::string firstDifference(const Value& a, const Value& b)
{
    std::string d = difference(a, b, "");
    if (!d.empty() && d[0] == '.') d.erase(0, 1);
    return d.empty() && !(a == b) ? std::string("(root)") : d;
}

}  // namespace plist
