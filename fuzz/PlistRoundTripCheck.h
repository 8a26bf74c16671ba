#pragma once
// Shared by the property-list fuzz targets: whatever a reader accepts must
// write in both formats and read back as the same value. A mismatch aborts,
// so libFuzzer keeps the input as a crash.
//
// Differences the XML format itself imposes are allowed: dates keep whole
// seconds (years 1 to 9999), reals lose the single-precision mark (and keep
// float precision only), UIDs and {"CF$UID": n} dictionaries are one form.

#include "plist/PropertyList.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace fuzz {

using plist::Type;
using plist::Value;

[[noreturn]] inline void mismatch(const char* what, const std::string& detail = {})
{
    std::fprintf(stderr, "plist round trip: %s %s\n", what, detail.c_str());
    std::abort();
}

// Node count with shared subtrees counted at every use (what an XML writer
// produces), stopping once it passes `limit`.
inline std::uint64_t expandedSize(const Value& value, std::map<const void*, std::uint64_t>& memo, std::uint64_t limit)
{
    if (!value.isArray() && !value.isDictionary()) return 1;
    auto known = memo.find(value.payloadIdentity());
    if (known != memo.end()) return known->second;
    std::uint64_t total = 1;
    for (const Value& item : value.array()) {
        total += expandedSize(item, memo, limit);
        if (total > limit) break;
    }
    for (const auto& entry : value.dictionary()) {
        total += 1 + expandedSize(entry.second, memo, limit);
        if (total > limit) break;
    }
    memo.emplace(value.payloadIdentity(), total);
    return total;
}

// Whether any value in the tree satisfies `test`; shared subtrees once.
template <class Test> bool anyValue(const Value& value, Test test, std::set<const void*>& seen)
{
    if (test(value)) return true;
    if (!value.isArray() && !value.isDictionary()) return false;
    if (!seen.insert(value.payloadIdentity()).second) return false;
    for (const Value& item : value.array())
        if (anyValue(item, test, seen)) return true;
    for (const auto& entry : value.dictionary())
        if (anyValue(entry.second, test, seen)) return true;
    return false;
}

// A short printable form of a scalar, for mismatch reports.
inline std::string describe(const Value& value)
{
    char buffer[64];
    switch (value.type()) {
    case Type::Integer:
        std::snprintf(buffer, sizeof buffer, value.isUnsignedInteger() ? "%llu" : "%lld",
                      static_cast<long long>(value.toInt()));
        return buffer;
    case Type::Real:
    case Type::Date:
        std::snprintf(buffer, sizeof buffer, "%s %.17g", plist::typeName(value.type()), value.toDouble());
        return buffer;
    case Type::String:
    case Type::Data: {
        std::string out = value.isString() ? "\"" : "<";
        for (unsigned char c : value.isString() ? value.string() : value.dataBytes()) {
            if (c >= 0x20 && c < 0x7F && c != '\\') {
                out += static_cast<char>(c);
            } else {
                std::snprintf(buffer, sizeof buffer, "\\x%02X", c);
                out += buffer;
            }
        }
        return out + (value.isString() ? "\"" : ">");
    }
    default: return plist::typeName(value.type());
    }
}

// Deep equality that compares a pair of shared payloads once, so a file of
// nested shared arrays cannot make the check exponential. With `viaXml`,
// `back` went through XML and may differ from `original` as the format
// requires.
class Comparer {
public:
    explicit Comparer(bool viaXml) : viaXml_(viaXml) {}

    // Where the values differ, once same() returned false.
    const std::string& difference() const { return difference_; }

    bool same(const Value& original, const Value& back)
    {
        if (sameAt(original, back)) return true;
        if (difference_.empty()) difference_ = ": " + describe(original) + " became " + describe(back);
        return false;
    }

private:
    bool sameAt(const Value& original, const Value& back)
    {
        if (viaXml_) {
            if (original.isUid()) return back == original || back == Value(plist::Dictionary{{"CF$UID", Value(original.uidValue())}});
            // ...and such a dictionary reads back as a UID.
            const Value* uid = original.size() == 1 ? original.find("CF$UID") : nullptr;
            if (uid && uid->isInteger() && back.isUid()) return back.uidValue() == uid->toUnsigned();
            if (original.isDate()) {
                // Whole seconds, counted from 1970 as the XML writer does.
                const double unix = std::floor(original.dateValue() + 978307200.0);
                return back.isDate() && back.dateValue() == unix - 978307200.0;
            }
            if (original.isReal() && original.isSinglePrecision()) {
                const float a = static_cast<float>(original.toDouble()), b = static_cast<float>(back.toDouble());
                return back.isReal() && (a == b || (a != a && b != b));
            }
        }
        if (original.type() != back.type()) return false;
        if (!original.isArray() && !original.isDictionary()) return original == back;
        if (original.size() != back.size()) return false;
        if (!proven_.emplace(original.payloadIdentity(), back.payloadIdentity()).second) return true;
        if (original.isArray()) {
            for (std::size_t i = 0; i < original.size(); ++i) {
                if (!same(original.array()[i], back.array()[i])) {
                    difference_ = "/" + std::to_string(i) + difference_;
                    return false;
                }
            }
            return true;
        }
        auto b = back.dictionary().begin();
        for (const auto& [key, value] : original.dictionary()) {
            if (key != b->first) {
                difference_ = "/" + describe(Value(key)) + " (key became " + describe(Value(b->first)) + ")";
                return false;
            }
            if (!same(value, b->second)) {
                difference_ = "/" + describe(Value(key)) + difference_;
                return false;
            }
            ++b;
        }
        return true;
    }

    bool viaXml_;
    // Pairs already compared (or being compared: a pair met again inside
    // itself cannot differ in a way the outer comparison will not find).
    std::set<std::pair<const void*, const void*>> proven_;
    std::string difference_;
};

inline void checkRoundTrips(const Value& value)
{
    std::set<const void*> seen;
    if (anyValue(value, [](const Value& v) { return v.isNull(); }, seen)) {
        std::string error;
        if (plist::writeBinary(value, &error) || error.empty()) mismatch("null was written or failed silently");
        return;  // neither format can hold null
    }

    std::string error;
    auto binary = plist::writeBinary(value, &error);
    if (!binary) mismatch("writeBinary failed:", error);
    auto back = plist::readBinary(*binary, &error);
    if (!back) mismatch("readBinary failed on written output:", error);
    Comparer binaryCheck(false);
    if (!binaryCheck.same(value, *back)) mismatch("binary round trip changed the value at", binaryCheck.difference());

    // XML repeats shared subtrees; skip values that would expand hugely.
    std::map<const void*, std::uint64_t> memo;
    if (expandedSize(value, memo, 100000) > 100000) return;
    // Dates outside years 1-9999 have no XML form.
    seen.clear();
    if (anyValue(value, [](const Value& v) {
            return v.isDate() && !(v.dateValue() >= -63113904000.0 && v.dateValue() < 252423993600.0);
        }, seen))
        return;
    auto xml = plist::writeXml(value, &error);
    if (!xml) mismatch("writeXml failed:", error);
    auto xmlBack = plist::readXml(*xml, &error);
    if (!xmlBack) mismatch("readXml failed on written XML:", error);
    Comparer xmlCheck(true);
    if (!xmlCheck.same(value, *xmlBack)) mismatch("XML round trip changed the value at", xmlCheck.difference());
}

}  // namespace fuzz
