#pragma once
// A dictionary key: immutable UTF-8 text held by reference count. A binary
// file stores each key once for all the dictionaries that use it, and the
// readers keep it that way, so a tree of many small dictionaries holds each
// key name once. Reads like a const std::string.

#include "plist/RefCounted.h"

#include <compare>
#include <iosfwd>
#include <string>
#include <string_view>

namespace plist {

class Key {
public:
    Key() noexcept = default;
    Key(const char* text) : Key(std::string_view(text)) {}
    Key(std::string_view text) : text_(text.empty() ? nullptr : new detail::Text(text)) {}
    Key(const std::string& text) : Key(std::string_view(text)) {}
    Key(std::string&& text) : text_(text.empty() ? nullptr : new detail::Text(std::move(text))) {}

    Key(const Key& other) noexcept : text_(other.text_)
    {
        if (text_) detail::retain(text_);
    }
    Key(Key&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
    Key& operator=(const Key& other) noexcept
    {
        Key copy(other);
        std::swap(text_, copy.text_);
        return *this;
    }
    Key& operator=(Key&& other) noexcept
    {
        Key taken(std::move(other));
        std::swap(text_, taken.text_);
        return *this;
    }
    ~Key()
    {
        if (text_ && detail::release(text_)) delete text_;
    }

    // A copy for the reader that made this key while no other thread can
    // reach it: counted without a locked instruction.
    Key copyUnpublished() const noexcept
    {
        Key copy;
        if (text_) detail::retainUnpublished(text_);
        copy.text_ = text_;
        return copy;
    }

    const std::string& str() const { return text_ ? text_->value : emptyText(); }
    std::string_view view() const { return str(); }
    operator const std::string&() const { return str(); }
    operator std::string_view() const { return str(); }

    const char* data() const { return str().data(); }
    const char* c_str() const { return str().c_str(); }
    std::size_t size() const { return str().size(); }
    bool empty() const { return !text_; }

    // Byte order, which for UTF-8 is code-point order.
    friend bool operator==(const Key& a, const Key& b) { return a.text_ == b.text_ || a.view() == b.view(); }
    friend bool operator==(const Key& a, std::string_view b) { return a.view() == b; }
    friend bool operator==(const Key& a, const std::string& b) { return a.view() == b; }
    friend bool operator==(const Key& a, const char* b) { return a.view() == b; }
    friend std::strong_ordering operator<=>(const Key& a, const Key& b) { return a.view() <=> b.view(); }
    friend std::strong_ordering operator<=>(const Key& a, std::string_view b) { return a.view() <=> b; }
    friend std::strong_ordering operator<=>(const Key& a, const std::string& b) { return a.view() <=> std::string_view(b); }
    friend std::strong_ordering operator<=>(const Key& a, const char* b) { return a.view() <=> std::string_view(b); }

private:
    friend class Value;
    static const std::string& emptyText();

    detail::Text* text_ = nullptr;  // null for the empty key
};

std::ostream& operator<<(std::ostream& out, const Key& key);

}  // namespace plist
