#include "plist/Value.h"

#include <limits>

namespace plist {

namespace {
const std::string kEmptyString;
const Data kEmptyData;
const Array kEmptyArray;
constinit const Dictionary kEmptyDictionary;

using StringPayload = detail::Text;
using DataPayload = detail::Counted<Data>;
using ArrayPayload = detail::Counted<Array>;

// Returns the payload for writing, copying it first if another value shares it.
template <class T> T& detached(detail::RefCounted*& shared)
{
    auto* payload = static_cast<detail::Counted<T>*>(shared);
    if (!payload) {
        payload = new detail::Counted<T>();
        shared = payload;
    } else if (detail::isShared(payload)) {
        auto* copy = new detail::Counted<T>(payload->value);
        if (detail::release(payload)) delete payload;  // the other owner let go meanwhile
        payload = copy;
        shared = payload;
    }
    return payload->value;
}
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

Value::Value(unsigned long long u) noexcept : type_(Type::Integer)
{
    storage_.unsignedInteger = u;
    flag_ = u > static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max());
}

Value::Value(std::string_view s) : type_(Type::String)
{
    storage_.shared = s.empty() ? nullptr : new StringPayload(s);
}

Value::Value(std::string s) : type_(Type::String)
{
    storage_.shared = s.empty() ? nullptr : new StringPayload(std::move(s));
}

Value::Value(const Key& key) noexcept : type_(Type::String)
{
    storage_.shared = key.text_;
    if (key.text_) detail::retain(key.text_);
}

Value::Value(Data d) : type_(Type::Data)
{
    storage_.shared = d.bytes.empty() ? nullptr : new DataPayload(std::move(d));
}

Value::Value(Array a) : type_(Type::Array)
{
    storage_.shared = a.empty() ? nullptr : new ArrayPayload(std::move(a));
}

Value::Value(Dictionary d) noexcept : type_(Type::Dictionary)
{
    new (&storage_.dictionary) Dictionary(std::move(d));
}

void Value::releasePayload() noexcept
{
    if (type_ == Type::Dictionary) {
        storage_.dictionary.~Dictionary();
        return;
    }
    detail::RefCounted* shared = storage_.shared;
    if (!shared || !detail::release(shared)) return;
    switch (type_) {
    case Type::String: delete static_cast<StringPayload*>(shared); break;
    case Type::Data: delete static_cast<DataPayload*>(shared); break;
    case Type::Array: delete static_cast<ArrayPayload*>(shared); break;
    default: break;
    }
}

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
    v.storage_.real = secondsSince2001;
    return v;
}

Value Value::uid(std::uint64_t uid)
{
    Value v;
    v.type_ = Type::Uid;
    v.storage_.unsignedInteger = uid;
    return v;
}

bool Value::toBool() const
{
    switch (type_) {
    case Type::Boolean: return storage_.boolean;
    case Type::Integer: return storage_.integer != 0;
    case Type::Real: return storage_.real != 0.0;
    default: return false;
    }
}

std::int64_t Value::toInt() const
{
    switch (type_) {
    case Type::Boolean: return storage_.boolean ? 1 : 0;
    case Type::Integer: return storage_.integer;
    case Type::Real: {
        const double d = storage_.real;
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
    if (type_ == Type::Integer) return storage_.unsignedInteger;
    const std::int64_t i = toInt();
    return i < 0 ? 0 : static_cast<std::uint64_t>(i);
}

double Value::toDouble() const
{
    switch (type_) {
    case Type::Boolean: return storage_.boolean ? 1.0 : 0.0;
    case Type::Integer: return flag_ ? static_cast<double>(storage_.unsignedInteger) : static_cast<double>(storage_.integer);
    case Type::Real:
    case Type::Date: return storage_.real;
    default: return 0.0;
    }
}

const std::string& Value::string() const
{
    const std::string* text = type_ == Type::String ? payloadAs<std::string>() : nullptr;
    return text ? *text : kEmptyString;
}

const std::string& Value::dataBytes() const
{
    const Data* data = type_ == Type::Data ? payloadAs<Data>() : nullptr;
    return data ? data->bytes : kEmptyString;
}

const Array& Value::array() const
{
    const Array* array = type_ == Type::Array ? payloadAs<Array>() : nullptr;
    return array ? *array : kEmptyArray;
}

const Dictionary& Value::dictionary() const
{
    if (type_ != Type::Dictionary || !storage_.dictionary.block_) return kEmptyDictionary;
    return storage_.dictionary.block_->self;
}

Array& Value::mutableArray()
{
    if (type_ != Type::Array) *this = Value(Array{});
    return detached<Array>(storage_.shared);
}

Dictionary& Value::mutableDictionary()
{
    if (type_ != Type::Dictionary) *this = Value(Dictionary{});
    storage_.dictionary.detach();
    return storage_.dictionary;
}

const Value* Value::find(std::string_view key) const
{
    if (type_ != Type::Dictionary) return nullptr;
    const Dictionary& d = storage_.dictionary;
    const DictionaryEntry* entry = d.find(key);
    return entry == d.end() ? nullptr : &entry->second;
}

Value Value::value(std::string_view key) const
{
    const Value* v = find(key);
    return v ? *v : Value();
}

void Value::set(std::string_view key, Value v)
{
    mutableDictionary().insert_or_assign(key, std::move(v));
}

bool Value::remove(std::string_view key)
{
    if (!find(key)) return false;
    storage_.dictionary.erase(key);
    return true;
}

std::size_t Value::size() const
{
    if (type_ == Type::Array) return array().size();
    if (type_ == Type::Dictionary) return storage_.dictionary.size();
    return 0;
}

const void* Value::payloadIdentity() const
{
    switch (type_) {
    case Type::String: return storage_.shared ? storage_.shared : static_cast<const void*>(&kEmptyString);
    case Type::Data: return storage_.shared ? storage_.shared : static_cast<const void*>(&kEmptyData);
    case Type::Array: return storage_.shared ? storage_.shared : static_cast<const void*>(&kEmptyArray);
    case Type::Dictionary: {
        const void* block = storage_.dictionary.block_;
        return block ? block : static_cast<const void*>(&kEmptyDictionary);
    }
    default: return nullptr;
    }
}

bool Value::payloadHasOneOwner() const
{
    if (type_ == Type::Dictionary) {
        const detail::DictionaryBlock* block = storage_.dictionary.block_;
        return block && !detail::isShared(block);
    }
    return ownsPayload() && storage_.shared && !detail::isShared(storage_.shared);
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
        // Already in order: appending keeps it, and keys are immutable, so
        // sharing them shares nothing that can change.
        Dictionary copy;
        copy.reserve(size());
        for (const auto& [k, v] : storage_.dictionary) copy.appendUnordered(Key(k), v.deepCopy());
        return Value(std::move(copy));
    }
    default: return *this;
    }
}

bool Value::operator==(const Value& other) const
{
    if (type_ != other.type_) return false;
    switch (type_) {
    case Type::Null: return true;
    case Type::Boolean: return storage_.boolean == other.storage_.boolean;
    case Type::Integer: return flag_ == other.flag_ && storage_.integer == other.storage_.integer;
    case Type::Real:
    case Type::Date:
        return storage_.real == other.storage_.real || (storage_.real != storage_.real && other.storage_.real != other.storage_.real);
    case Type::Uid: return storage_.unsignedInteger == other.storage_.unsignedInteger;
    case Type::String: return storage_.shared == other.storage_.shared || string() == other.string();
    case Type::Data: return storage_.shared == other.storage_.shared || dataBytes() == other.dataBytes();
    case Type::Array: return storage_.shared == other.storage_.shared || array() == other.array();
    case Type::Dictionary: return storage_.dictionary == other.storage_.dictionary;
    }
    return false;
}

}  // namespace plist
