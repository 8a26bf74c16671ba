#pragma once
// A property-list value: null, boolean, integer, real, string, data, date,
// array, dictionary or UID. Values have value semantics; containers, strings
// and data are shared between copies and detached on the first write, so
// copying a large tree is cheap and a shared object in a binary file is held
// once in memory.
//
// A Value is two words: a scalar or a pointer to a reference-counted payload,
// and the type. Empty strings, data and containers have no payload at all.

#include "plist/Dictionary.h"
#include "plist/Key.h"
#include "plist/RefCounted.h"

#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace plist {

class Value;
using Array = std::vector<Value>;

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
    Value() noexcept {}  // null
    Value(std::nullptr_t) noexcept {}
    Value(bool b) noexcept : type_(Type::Boolean) { storage_.boolean = b; }
    Value(int i) noexcept : type_(Type::Integer) { storage_.integer = i; }
    Value(unsigned i) noexcept : type_(Type::Integer) { storage_.integer = i; }
    Value(long i) noexcept : type_(Type::Integer) { storage_.integer = i; }
    Value(long long i) noexcept : type_(Type::Integer) { storage_.integer = i; }
    Value(unsigned long i) noexcept : Value(static_cast<unsigned long long>(i)) {}
    Value(unsigned long long u) noexcept;
    Value(double d) noexcept : type_(Type::Real) { storage_.real = d; }
    Value(const char* s) : Value(std::string_view(s)) {}
    Value(std::string_view s);
    Value(std::string s);
    Value(const Key& key) noexcept;  // a string sharing the key's text
    Value(Data d);
    Value(Array a);
    Value(Dictionary d) noexcept;

    Value(const Value& other) noexcept : type_(other.type_), flag_(other.flag_) { copyStorage(other); }
    Value(Value&& other) noexcept : type_(other.type_), flag_(other.flag_) { takeStorage(other); }
    Value& operator=(const Value& other) noexcept
    {
        Value copy(other);  // first, since `other` may live inside this value
        return *this = std::move(copy);
    }
    Value& operator=(Value&& other) noexcept
    {
        if (this == &other) return *this;
        Value old(std::move(*this));  // released last: `other` may live inside it
        type_ = other.type_;
        flag_ = other.flag_;
        takeStorage(other);
        return *this;
    }
    ~Value()
    {
        if (ownsPayload()) releasePayload();
    }

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
    double dateValue() const { return type_ == Type::Date ? storage_.real : 0.0; }
    std::uint64_t uidValue() const { return type_ == Type::Uid ? storage_.unsignedInteger : 0; }

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

    // A copy that shares nothing with this value, at any depth (dictionary
    // keys, which cannot change, excepted).
    Value deepCopy() const;

    // Deep equality. Numbers compare by value within their type; the
    // single/double width of a real does not take part.
    bool operator==(const Value& other) const;
    bool operator!=(const Value& other) const { return !(*this == other); }

    // Identity of a shared payload (string, data, array, dictionary), used by
    // the binary writer and by tests of sharing; null for scalars. Empty
    // payloads of one type share one identity.
    const void* payloadIdentity() const;
    // True when this value alone holds its payload, so that the payload
    // appears once in any tree that holds this value. False for scalars and
    // empty payloads.
    bool payloadHasOneOwner() const;

private:
    // String, Data, Array and Dictionary hold a payload (or null when empty).
    static constexpr unsigned kPayloadTypes = 1u << unsigned(Type::String) | 1u << unsigned(Type::Data) |
                                              1u << unsigned(Type::Array) | 1u << unsigned(Type::Dictionary);
    bool ownsPayload() const { return (kPayloadTypes >> unsigned(type_)) & 1u; }

    void copyStorage(const Value& other) noexcept
    {
        if (type_ == Type::Dictionary) {
            new (&storage_.dictionary) Dictionary(other.storage_.dictionary);
            return;
        }
        storage_.bits = other.storage_.bits;
        if (ownsPayload() && storage_.shared) detail::retain(storage_.shared);
    }
    // Takes the other value's storage and leaves it null.
    void takeStorage(Value& other) noexcept
    {
        if (type_ == Type::Dictionary) {
            new (&storage_.dictionary) Dictionary(std::move(other.storage_.dictionary));
            other.storage_.dictionary.~Dictionary();
        } else {
            storage_.bits = other.storage_.bits;
        }
        other.type_ = Type::Null;
        other.flag_ = false;
    }
    void releasePayload() noexcept;
    template <class T> const T* payloadAs() const
    {
        const auto* counted = static_cast<const detail::Counted<T>*>(storage_.shared);
        return counted ? &counted->value : nullptr;
    }

    union Storage {
        Storage() noexcept : bits(0) {}
        ~Storage() {}
        bool boolean;
        std::int64_t integer;
        std::uint64_t unsignedInteger;
        std::uint64_t bits;  // copies scalars and the payload pointer alike
        double real;
        detail::RefCounted* shared;  // String, Data, Array
        Dictionary dictionary;
    } storage_;
    Type type_ = Type::Null;
    bool flag_ = false;  // Integer: unsigned above INT64_MAX. Real: single precision.
};

struct DictionaryEntry {
    Key first;
    Value second;
};

inline void Dictionary::appendUnordered(Key&& key, Value&& value)
{
    if (block_ && block_->size < block_->capacity && !detail::isShared(block_)) {
        new (block_->entries() + block_->size) DictionaryEntry{std::move(key), std::move(value)};
        ++block_->size;
    } else {
        insertAt(size(), std::move(key), std::move(value));
    }
}

inline Dictionary::const_iterator Dictionary::end() const
{
    return block_ ? block_->entries() + block_->size : nullptr;
}

inline Dictionary::iterator Dictionary::end()
{
    detach();
    return block_ ? block_->entries() + block_->size : nullptr;
}

}  // namespace plist
