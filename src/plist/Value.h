#pragma once
// A property-list value: null, boolean, integer, real, string, data, date,
// array, dictionary or UID. Values have value semantics; containers, strings
// and data are shared between copies and detached on the first write, so
// copying a large tree is cheap and a shared object in a binary file is held
// once in memory.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace plist {

class Value;
using Array = std::vector<Value>;
// Keys compare as UTF-8 bytes, which is code-point order: dictionaries are
// written with their keys sorted, as the platform's own writer does.
using Dictionary = std::map<std::string, Value, std::less<>>;

// Raw bytes of a <data> element. A distinct type so that it is never
// confused with a string.
struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
};

enum class Type : std::uint8_t { Null, Boolean, Integer, Real, String, Data, Date, Array, Dictionary, Uid };

const char* typeName(Type type);

class Value {
public:
    Value() = default;  // null
    Value(std::nullptr_t) {}
    Value(bool b) : type_(Type::Boolean) { scalar_.boolean = b; }
    Value(int i) : type_(Type::Integer) { scalar_.integer = i; }
    Value(unsigned i) : type_(Type::Integer) { scalar_.integer = i; }
    Value(long i) : type_(Type::Integer) { scalar_.integer = i; }
    Value(long long i) : type_(Type::Integer) { scalar_.integer = i; }
    Value(unsigned long i) : Value(static_cast<unsigned long long>(i)) {}
    Value(unsigned long long u);
    Value(double d) : type_(Type::Real) { scalar_.real = d; }
    Value(const char* s) : Value(std::string(s)) {}
    Value(std::string_view s) : Value(std::string(s)) {}
    Value(std::string s);
    Value(Data d);
    Value(Array a);
    Value(Dictionary d);

    static Value singleReal(float f);
    static Value date(double secondsSince2001);
    static Value uid(std::uint64_t uid);
    static Value data(std::string bytes) { return Value(Data{std::move(bytes)}); }
    static Value emptyArray() { return Value(Array{}); }
    static Value emptyDictionary() { return Value(Dictionary{}); }

    Type type() const { return type_; }
    bool isNull() const { return type_ == Type::Null; }
    bool isBoolean() const { return type_ == Type::Boolean; }
    bool isInteger() const { return type_ == Type::Integer; }
    bool isReal() const { return type_ == Type::Real; }
    bool isNumber() const { return isInteger() || isReal(); }
    bool isString() const { return type_ == Type::String; }
    bool isData() const { return type_ == Type::Data; }
    bool isDate() const { return type_ == Type::Date; }
    bool isArray() const { return type_ == Type::Array; }
    bool isDictionary() const { return type_ == Type::Dictionary; }
    bool isUid() const { return type_ == Type::Uid; }

    // Scalars. Reading the wrong type gives the neutral value (false, 0, "").
    bool toBool() const;
    std::int64_t toInt() const;            // reals are truncated
    std::uint64_t toUnsigned() const;
    double toDouble() const;               // integers and dates convert
    bool isUnsignedInteger() const { return type_ == Type::Integer && flag_; }  // above INT64_MAX
    bool isSinglePrecision() const { return type_ == Type::Real && flag_; }
    double dateValue() const { return type_ == Type::Date ? scalar_.real : 0.0; }
    std::uint64_t uidValue() const { return type_ == Type::Uid ? scalar_.unsignedInteger : 0; }

    const std::string& string() const;     // "" unless a string
    const std::string& dataBytes() const;  // empty unless data

    // Containers. The const accessors give an empty container for other types.
    const Array& array() const;
    const Dictionary& dictionary() const;
    // Detaches a shared container and returns it for writing; a value of any
    // other type first becomes an empty container of the asked kind.
    Array& mutableArray();
    Dictionary& mutableDictionary();

    // Dictionary helpers.
    const Value* find(std::string_view key) const;
    Value value(std::string_view key) const;  // null when absent
    bool contains(std::string_view key) const { return find(key) != nullptr; }
    void set(std::string_view key, Value v);
    bool remove(std::string_view key);

    std::size_t size() const;  // element count of a container, else 0

    // A copy that shares nothing with this value, at any depth.
    Value deepCopy() const;

    // Deep equality. Numbers compare by value within their type; the
    // single/double width of a real does not take part.
    bool operator==(const Value& other) const;
    bool operator!=(const Value& other) const { return !(*this == other); }

    // Identity of a shared payload (string, data, array, dictionary), used by
    // the binary writer and by tests of sharing; null for scalars.
    const void* payloadIdentity() const { return payload_.get(); }

private:
    template <class T> const T* payloadAs() const { return static_cast<const T*>(payload_.get()); }
    template <class T> T& detachedPayload();

    Type type_ = Type::Null;
    bool flag_ = false;  // Integer: unsigned above INT64_MAX. Real: single precision.
    union Scalar {
        bool boolean;
        std::int64_t integer;
        std::uint64_t unsignedInteger;
        double real;
    } scalar_{};
    std::shared_ptr<void> payload_;
};

}  // namespace plist
