#include "plist/Value.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>

namespace plist {

using detail::DictionaryBlock;

static_assert(sizeof(DictionaryBlock) % alignof(DictionaryEntry) == 0, "entries follow the header unpadded");

namespace {

DictionaryBlock* allocateBlock(std::size_t capacity)
{
    if (capacity > UINT32_MAX) throw std::length_error("dictionary too large");
    void* memory = ::operator new(sizeof(DictionaryBlock) + capacity * sizeof(DictionaryEntry));
    auto* block = new (memory) DictionaryBlock;
    block->capacity = static_cast<std::uint32_t>(capacity);
    return block;
}

bool keyLess(const DictionaryEntry& a, const DictionaryEntry& b)
{
    return a.first < b.first;
}

}  // namespace

Dictionary::Dictionary(std::initializer_list<DictionaryEntry> entries)
{
    reserve(entries.size());
    for (const DictionaryEntry& entry : entries) appendUnordered(Key(entry.first), Value(entry.second));
    restoreOrder();
}

void Dictionary::destroy(DictionaryBlock* block)
{
    std::destroy_n(block->entries(), block->size);
    block->~DictionaryBlock();
    ::operator delete(block);
}

void Dictionary::detachShared()
{
    DictionaryBlock* copy = allocateBlock(block_->size);
    std::uninitialized_copy_n(block_->entries(), block_->size, copy->entries());
    copy->size = block_->size;
    if (detail::release(block_)) destroy(block_);  // the other owner let go meanwhile
    block_ = copy;
}

// Moves the entries into a block of the given capacity; the block must be
// this dictionary's own.
void Dictionary::reallocate(std::size_t capacity)
{
    DictionaryBlock* grown = allocateBlock(capacity);
    if (block_) {
        std::uninitialized_move_n(block_->entries(), block_->size, grown->entries());
        grown->size = block_->size;
        destroy(block_);
    }
    block_ = grown;
}

void Dictionary::reserve(std::size_t capacity)
{
    detach();
    if (capacity > (block_ ? block_->capacity : 0)) reallocate(capacity);
}

std::size_t Dictionary::lowerBound(std::string_view key) const
{
    const DictionaryEntry* entries = begin();
    std::size_t low = 0, high = size();
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (entries[middle].first < key)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

Dictionary::const_iterator Dictionary::find(std::string_view key) const
{
    const std::size_t i = lowerBound(key);
    return i < size() && begin()[i].first == key ? begin() + i : end();
}

Dictionary::iterator Dictionary::find(std::string_view key)
{
    const std::size_t i = lowerBound(key);
    if (i >= size() || std::as_const(*this).begin()[i].first != key) return end();
    return begin() + i;
}

Dictionary::iterator Dictionary::insertAt(std::size_t index, Key&& key, Value&& value)
{
    detach();
    const std::size_t n = size();
    if (n == (block_ ? block_->capacity : 0)) reallocate(std::max<std::size_t>(4, 2 * n));
    DictionaryEntry* entries = block_->entries();
    if (index == n) {
        new (entries + n) DictionaryEntry{std::move(key), std::move(value)};
    } else {
        new (entries + n) DictionaryEntry(std::move(entries[n - 1]));
        std::move_backward(entries + index, entries + n - 1, entries + n);
        entries[index] = DictionaryEntry{std::move(key), std::move(value)};
    }
    ++block_->size;
    return entries + index;
}

Value& Dictionary::operator[](std::string_view key)
{
    const std::size_t i = lowerBound(key);
    if (i < size() && std::as_const(*this).begin()[i].first == key) return begin()[i].second;
    return insertAt(i, Key(key), Value())->second;
}

std::pair<Dictionary::iterator, bool> Dictionary::emplace(Key key, Value value)
{
    const std::size_t i = lowerBound(key);
    if (i < size() && std::as_const(*this).begin()[i].first == key) return {begin() + i, false};
    return {insertAt(i, std::move(key), std::move(value)), true};
}

std::pair<Dictionary::iterator, bool> Dictionary::insert_or_assign(std::string_view key, Value value)
{
    const std::size_t i = lowerBound(key);
    if (i < size() && std::as_const(*this).begin()[i].first == key) {
        iterator entry = begin() + i;
        entry->second = std::move(value);
        return {entry, false};
    }
    return {insertAt(i, Key(key), std::move(value)), true};
}

Dictionary::iterator Dictionary::erase(const_iterator position)
{
    const std::size_t index = static_cast<std::size_t>(position - std::as_const(*this).begin());
    DictionaryEntry* entries = begin();
    const std::size_t n = size();
    std::move(entries + index + 1, entries + n, entries + index);
    std::destroy_at(entries + n - 1);
    --block_->size;
    return entries + index;
}

std::size_t Dictionary::erase(std::string_view key)
{
    const const_iterator entry = std::as_const(*this).find(key);
    if (entry == std::as_const(*this).end()) return 0;
    erase(entry);
    return 1;
}

void Dictionary::restoreOrder()
{
    const std::size_t n = size();
    if (n < 2) return;
    DictionaryEntry* entries = block_->entries();
    std::size_t sorted = 1;
    while (sorted < n && entries[sorted - 1].first < entries[sorted].first) ++sorted;
    if (sorted == n) return;

    std::stable_sort(entries, entries + n, keyLess);
    // Of equal keys, now adjacent in their original order, the last wins.
    std::size_t kept = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 1 < n && !(entries[i].first < entries[i + 1].first)) continue;
        if (kept != i) entries[kept] = std::move(entries[i]);
        ++kept;
    }
    std::destroy(entries + kept, entries + n);
    block_->size = static_cast<std::uint32_t>(kept);
}

bool Dictionary::operator==(const Dictionary& other) const
{
    if (block_ == other.block_) return true;
    if (size() != other.size()) return false;
    return std::equal(begin(), end(), other.begin(), [](const DictionaryEntry& a, const DictionaryEntry& b) {
        return a.first == b.first && a.second == b.second;
    });
}

}  // namespace plist
