#include "plist/Value.h"

#include <limits>

namespace plist {

namespace {
const std::string kEmptyString;
const Array kEmptyArray;
const Dictionary kEmptyDictionary;
}  // namespace

const char* typeName(Type type)
{
    switch (type) {
    case Type::Null: return "null";
    case Type::Boolean: return "boolean";
    case Type::Integer: return "integer";
    case Type::Real: return "real";
    case Type::String: return "string";
    case Type::Data: return "data";
    case Type::Date: return "date";
    case Type::Array: return "array";
    case Type::Dictionary: return "dictionary";
    case Type::Uid: return "uid";
    }
    return "unknown";
}

Value::Value(unsigned long long u) : type_(Type::Integer)
{
    scalar_.unsignedInteger = u;
    flag_ = u > static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max());
}

Value::Value(std::string s) : type_(Type::String), payload_(std::make_shared<std::string>(std::move(s))) {}
Value::Value(Data d) : type_(Type::Data), payload_(std::make_shared<Data>(std::move(d))) {}
Value::Value(Array a) : type_(Type::Array), payload_(std::make_shared<Array>(std::move(a))) {}
Value::Value(Dictionary d) : type_(Type::Dictionary), payload_(std::make_shared<Dictionary>(std::move(d))) {}

Value Value::singleReal(float f)
{
    Value v(static_cast<double>(f));
    v.flag_ = true;
    return v;
}

Value Value::date(double secondsSince2001)
{
    Value v;
    v.type_ = Type::Date;
    v.scalar_.real = secondsSince2001;
    return v;
}

Value Value::uid(std::uint64_t uid)
{
    Value v;
    v.type_ = Type::Uid;
    v.scalar_.unsignedInteger = uid;
    return v;
}

bool Value::toBool() const
{
    switch (type_) {
    case Type::Boolean: return scalar_.boolean;
    case Type::Integer: return scalar_.integer != 0;
    case Type::Real: return scalar_.real != 0.0;
    default: return false;
    }
}

std::int64_t Value::toInt() const
{
    switch (type_) {
    case Type::Boolean: return scalar_.boolean ? 1 : 0;
    case Type::Integer: return scalar_.integer;
    case Type::Real: {
        const double d = scalar_.real;
        if (!(d == d)) return 0;
        if (d >= 9.2233720368547758e18) return std::numeric_limits<std::int64_t>::max();
        if (d <= -9.2233720368547758e18) return std::numeric_limits<std::int64_t>::min();
        return static_cast<std::int64_t>(d);
    }
    default: return 0;
    }
}

std::uint64_t Value::toUnsigned() const
{
    if (type_ == Type::Integer) return scalar_.unsignedInteger;
    const std::int64_t i = toInt();
    return i < 0 ? 0 : static_cast<std::uint64_t>(i);
}

double Value::toDouble() const
{
    switch (type_) {
    case Type::Boolean: return scalar_.boolean ? 1.0 : 0.0;
    case Type::Integer: return flag_ ? static_cast<double>(scalar_.unsignedInteger) : static_cast<double>(scalar_.integer);
    case Type::Real:
    case Type::Date: return scalar_.real;
    default: return 0.0;
    }
}

const std::string& Value::string() const
{
    return type_ == Type::String ? *payloadAs<std::string>() : kEmptyString;
}

const std::string& Value::dataBytes() const
{
    return type_ == Type::Data ? payloadAs<Data>()->bytes : kEmptyString;
}

const Array& Value::array() const
{
    return type_ == Type::Array ? *payloadAs<Array>() : kEmptyArray;
}

const Dictionary& Value::dictionary() const
{
    return type_ == Type::Dictionary ? *payloadAs<Dictionary>() : kEmptyDictionary;
}

template <class T> T& Value::detachedPayload()
{
    if (payload_.use_count() > 1) payload_ = std::make_shared<T>(*payloadAs<T>());
    return *static_cast<T*>(payload_.get());
}

Array& Value::mutableArray()
{
    if (type_ != Type::Array) *this = Value(Array{});
    return detachedPayload<Array>();
}

Dictionary& Value::mutableDictionary()
{
    if (type_ != Type::Dictionary) *this = Value(Dictionary{});
    return detachedPayload<Dictionary>();
}

const Value* Value::find(std::string_view key) const
{
    if (type_ != Type::Dictionary) return nullptr;
    const Dictionary& d = *payloadAs<Dictionary>();
    auto it = d.find(key);
    return it == d.end() ? nullptr : &it->second;
}

Value Value::value(std::string_view key) const
{
    const Value* v = find(key);
    return v ? *v : Value();
}

void Value::set(std::string_view key, Value v)
{
    Dictionary& d = mutableDictionary();
    auto it = d.find(key);
    if (it != d.end())
        it->second = std::move(v);
    else
        d.emplace(std::string(key), std::move(v));
}

bool Value::remove(std::string_view key)
{
    if (type_ != Type::Dictionary || !find(key)) return false;
    Dictionary& d = detachedPayload<Dictionary>();
    d.erase(d.find(key));
    return true;
}

std::size_t Value::size() const
{
    if (type_ == Type::Array) return payloadAs<Array>()->size();
    if (type_ == Type::Dictionary) return payloadAs<Dictionary>()->size();
    return 0;
}

Value Value::deepCopy() const
{
    switch (type_) {
    case Type::String: return Value(string());
    case Type::Data: return Value(Data{dataBytes()});
    case Type::Array: {
        Array copy;
        copy.reserve(size());
        for (const Value& v : array()) copy.push_back(v.deepCopy());
        return Value(std::move(copy));
    }
    case Type::Dictionary: {
        Dictionary copy;
        for (const auto& [k, v] : dictionary()) copy.emplace_hint(copy.end(), k, v.deepCopy());
        return Value(std::move(copy));
    }
    default: return *this;
    }
}

bool Value::operator==(const Value& other) const
{
    if (type_ != other.type_) return false;
    if (payload_ && payload_ == other.payload_) return true;
    switch (type_) {
    case Type::Null: return true;
    case Type::Boolean: return scalar_.boolean == other.scalar_.boolean;
    case Type::Integer: return flag_ == other.flag_ && scalar_.integer == other.scalar_.integer;
    case Type::Real:
    case Type::Date: return scalar_.real == other.scalar_.real || (scalar_.real != scalar_.real && other.scalar_.real != other.scalar_.real);
    case Type::Uid: return scalar_.unsignedInteger == other.scalar_.unsignedInteger;
    case Type::String: return string() == other.string();
    case Type::Data: return dataBytes() == other.dataBytes();
    case Type::Array: return array() == other.array();
    case Type::Dictionary: return dictionary() == other.dictionary();
    }
    return false;
}

}  // namespace plist
