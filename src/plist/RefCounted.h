#pragma once
// The reference count at the head of every heap payload of a plist::Value
// (string, data, array, dictionary) and of every dictionary key. Intrusive,
// so a payload is one allocation and a Value holds one pointer. The count is
// atomic because copies of one tree may be taken on several threads.

#include <atomic>
#include <cstddef>
#include <string>
#include <utility>

namespace plist::detail {

struct RefCounted {
    std::atomic<std::size_t> refs{1};
};

inline void retain(RefCounted* p)
{
    p->refs.fetch_add(1, std::memory_order_relaxed);
}

// True when the caller held the last reference and must destroy the object.
inline bool release(RefCounted* p)
{
    // A sole owner cannot race with anyone taking a copy, so it skips the
    // locked decrement; most payloads of a tree read from a file die this way.
    if (p->refs.load(std::memory_order_acquire) == 1) return true;
    return p->refs.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

// For a reader whose new objects no other thread can reach yet: counts the
// reference without a locked instruction.
inline void retainUnpublished(RefCounted* p)
{
    p->refs.store(p->refs.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

inline bool isShared(const RefCounted* p)
{
    return p->refs.load(std::memory_order_acquire) > 1;
}

template <class T> struct Counted : RefCounted {
    template <class... Args> explicit Counted(Args&&... args) : value(std::forward<Args>(args)...) {}
    T value;
};

// Text of a string value or of a key; a key and a string value may share one.
using Text = Counted<std::string>;

}  // namespace plist::detail
