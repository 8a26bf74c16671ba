#include "quartz/EncodedImageCache.h"

namespace quartz::tiff {

EncodedImageCache& EncodedImageCache::shared()
{
    static EncodedImageCache cache;
    return cache;
}

QByteArray EncodedImageCache::find(qint64 key)
{
    std::lock_guard lock(mutex_);
    const auto it = byKey_.find(key);
    if (it == byKey_.end()) {
        ++misses_;
        return {};
    }
    ++hits_;
    recency_.splice(recency_.begin(), recency_, it->second);
    return it->second->bytes;
}

void EncodedImageCache::insert(qint64 key, QByteArray bytes)
{
    std::lock_guard lock(mutex_);
    if (const auto it = byKey_.find(key); it != byKey_.end()) {
        bytes_ -= it->second->bytes.size();
        recency_.erase(it->second);
        byKey_.erase(it);
    }
    if (bytes.isEmpty() || bytes.size() > capacity_) return;
    bytes_ += bytes.size();
    recency_.push_front(Entry{key, std::move(bytes)});
    byKey_.emplace(key, recency_.begin());
    evictLocked();
}

void EncodedImageCache::setCapacity(qsizetype bytes)
{
    std::lock_guard lock(mutex_);
    capacity_ = bytes;
    evictLocked();
}

void EncodedImageCache::clear()
{
    std::lock_guard lock(mutex_);
    recency_.clear();
    byKey_.clear();
    bytes_ = 0;
    hits_ = misses_ = 0;
}

EncodedImageCache::Statistics EncodedImageCache::statistics() const
{
    std::lock_guard lock(mutex_);
    return {bytes_, qsizetype(byKey_.size()), hits_, misses_};
}

void EncodedImageCache::evictLocked()
{
    while (bytes_ > capacity_ && !recency_.empty()) {
        bytes_ -= recency_.back().bytes.size();
        byKey_.erase(recency_.back().key);
        recency_.pop_back();
    }
}

}  // namespace quartz::tiff
