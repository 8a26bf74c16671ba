#include "runtime/RepeatedDrawCache.h"

#include <algorithm>

namespace runtime {

namespace {
qint64 area(const QSize& size)
{
    return qint64(size.width()) * size.height();
}
}  // namespace

const RepeatedDrawCache::Picture* RepeatedDrawCache::find(const Key& key)
{
    for (Entry& entry : entries_) {
        if (entry.key == key) {
            entry.lastUse = ++clock_;
            return &entry.picture;
        }
    }
    return nullptr;
}

bool RepeatedDrawCache::seenBefore(const Key& key) const
{
    const auto end = remembered_.begin() + std::ptrdiff_t(std::min(rememberedCount_, remembered_.size()));
    return std::find(remembered_.begin(), end, key) != end;
}

void RepeatedDrawCache::remember(const Key& key)
{
    if (seenBefore(key)) return;
    remembered_[rememberedCount_++ % remembered_.size()] = key;
}

bool RepeatedDrawCache::fits(const QRect& bounds) const
{
    return !bounds.isEmpty() && area(bounds.size()) <= pixelBudget_;
}

const RepeatedDrawCache::Picture* RepeatedDrawCache::store(const Key& key, Picture picture)
{
    // Least recently used pictures go first; a still scene stops storing
    // once its layers are in.
    while (!entries_.empty() &&
           (entries_.size() >= kMaxEntries || pixelsKept_ + area(picture.pixels.size()) > pixelBudget_)) {
        auto oldest = std::min_element(entries_.begin(), entries_.end(),
                                       [](const Entry& a, const Entry& b) { return a.lastUse < b.lastUse; });
        pixelsKept_ -= area(oldest->picture.pixels.size());
        entries_.erase(oldest);
    }
    if (entries_.capacity() == 0) entries_.reserve(kMaxEntries);
    pixelsKept_ += area(picture.pixels.size());
    entries_.push_back(Entry{key, std::move(picture), ++clock_});
    return &entries_.back().picture;
}

}  // namespace runtime
