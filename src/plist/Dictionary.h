#pragma once
// A property-list dictionary: its entries in one flat block, sorted by key
// bytes (code-point order, the order every writer emits), found by binary
// search. Reading builds far more dictionaries than editing changes, and a
// flat block is one allocation per dictionary where a tree map needs one per
// entry.
//
// Copies share the block and the first write detaches it (copy on write),
// which is how a plist::Value can lend out its dictionary by reference.
// Non-const begin(), find() and operator[] count as writes. As with a
// vector, inserting or erasing moves the entries: a reference to an entry
// does not survive an insertion into the same dictionary.
//
// The entry type and the inline parts that need a complete Value are in
// Value.h; include that, not this file.

#include "plist/Key.h"
#include "plist/RefCounted.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace plist {

class Value;
struct DictionaryEntry;

namespace detail {
struct DictionaryBlock;
}  // namespace detail

class Dictionary {
public:
    using key_type = Key;
    using mapped_type = Value;
    using value_type = DictionaryEntry;
    using size_type = std::size_t;
    using iterator = DictionaryEntry*;
    using const_iterator = const DictionaryEntry*;

    constexpr Dictionary() noexcept = default;
    // A repeated key keeps its last value.
    Dictionary(std::initializer_list<DictionaryEntry> entries);
    Dictionary(const Dictionary& other) noexcept;
    Dictionary(Dictionary&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    Dictionary& operator=(const Dictionary& other) noexcept
    {
        Dictionary copy(other);
        std::swap(block_, copy.block_);
        return *this;
    }
    Dictionary& operator=(Dictionary&& other) noexcept
    {
        Dictionary taken(std::move(other));
        std::swap(block_, taken.block_);
        return *this;
    }
    ~Dictionary();

    std::size_t size() const;
    bool empty() const { return size() == 0; }

    const_iterator begin() const;
    const_iterator end() const;
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    iterator begin();
    iterator end();

    const_iterator find(std::string_view key) const;
    iterator find(std::string_view key);
    bool contains(std::string_view key) const { return find(key) != end(); }
    std::size_t count(std::string_view key) const { return contains(key) ? 1 : 0; }

    // Inserts a null value when the key is absent.
    Value& operator[](std::string_view key);
    // Inserts unless the key is present; the bool tells whether it did.
    std::pair<iterator, bool> emplace(Key key, Value value);
    // Inserts, or replaces the value of a present key.
    std::pair<iterator, bool> insert_or_assign(std::string_view key, Value value);
    std::size_t erase(std::string_view key);
    iterator erase(const_iterator position);
    void clear() { *this = Dictionary(); }
    void reserve(std::size_t capacity);

    bool operator==(const Dictionary& other) const;

private:
    friend class Value;
    friend class DictionaryBuilder;
    friend struct detail::DictionaryBlock;

    static void destroy(detail::DictionaryBlock* block);
    // Makes the block this dictionary's own before a write.
    void detach();
    void detachShared();
    void reallocate(std::size_t capacity);
    std::size_t lowerBound(std::string_view key) const;
    iterator insertAt(std::size_t index, Key&& key, Value&& value);
    // Appends without keeping the order; restoreOrder() sorts afterwards.
    void appendUnordered(Key&& key, Value&& value);
    void restoreOrder();

    detail::DictionaryBlock* block_ = nullptr;  // null while empty
};

namespace detail {
// Header of a dictionary's allocation; `capacity` entries follow it.
struct DictionaryBlock : RefCounted {
    DictionaryBlock() noexcept { self.block_ = this; }
    ~DictionaryBlock() { self.block_ = nullptr; }

    std::uint32_t size = 0;
    std::uint32_t capacity = 0;
    // A handle on this block that holds no reference of its own. A Value
    // lends this one out rather than its own handle, so a reference taken
    // from a temporary copy of a Value (`for (auto& e : v.value(k).dictionary())`)
    // stays good for as long as the tree it came from holds the block.
    Dictionary self;

    DictionaryEntry* entries() { return reinterpret_cast<DictionaryEntry*>(this + 1); }
    const DictionaryEntry* entries() const { return reinterpret_cast<const DictionaryEntry*>(this + 1); }
};
}  // namespace detail

inline Dictionary::Dictionary(const Dictionary& other) noexcept : block_(other.block_)
{
    if (block_) detail::retain(block_);
}

inline Dictionary::~Dictionary()
{
    if (block_ && detail::release(block_)) destroy(block_);
}

inline std::size_t Dictionary::size() const
{
    return block_ ? block_->size : 0;
}

inline Dictionary::const_iterator Dictionary::begin() const
{
    return block_ ? block_->entries() : nullptr;
}

inline Dictionary::iterator Dictionary::begin()
{
    detach();
    return block_ ? block_->entries() : nullptr;
}

inline void Dictionary::detach()
{
    if (block_ && detail::isShared(block_)) detachShared();
}

}  // namespace plist
