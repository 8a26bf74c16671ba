#pragma once
// Callbacks waiting for one value of one object to change (a layer's
// "visible" switch), each added with a token by which it is removed again.
//
// The list belongs to the object it sits in, not to the value: a copy of
// the object is a different object to whoever watches the original, so it
// starts with no observers, and assigning into an object keeps that
// object's own observers. Moving an object (a vector growing) takes its
// observers along, since it is still the same thing being watched.

#include <functional>
#include <utility>
#include <vector>

namespace psd {

template <typename T>
class ValueObservers {
public:
    using Callback = std::function<void(const T& newValue)>;

    ValueObservers() = default;
    ValueObservers(const ValueObservers&) {}
    ValueObservers& operator=(const ValueObservers&) { return *this; }
    ValueObservers(ValueObservers&&) noexcept = default;
    ValueObservers& operator=(ValueObservers&&) noexcept = default;

    // Answers the token for remove(); never 0, so 0 can mean "not observing".
    int add(Callback callback)
    {
        const int token = nextToken_++;
        entries_.emplace_back(token, std::move(callback));
        return token;
    }

    // An unknown or already removed token is ignored.
    void remove(int token)
    {
        std::erase_if(entries_, [token](const auto& entry) { return entry.first == token; });
    }

    // Works on a snapshot, so a callback may add or remove observers
    // (itself included) without upsetting the walk.
    void notify(const T& newValue) const
    {
        const auto snapshot = entries_;
        for (const auto& entry : snapshot) entry.second(newValue);
    }

    int count() const { return int(entries_.size()); }

private:
    std::vector<std::pair<int, Callback>> entries_;
    int nextToken_ = 1;
};

}  // namespace psd
