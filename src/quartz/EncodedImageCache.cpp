#include "quartz/EncodedImageCache.h"

#include <QHashFunctions>

#include <cstring>

namespace quartz::tiff {

namespace {
std::size_t contentHash(QByteArrayView bytes) { return std::size_t(qHash(bytes)); }
}  // namespace

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

QImage EncodedImageCache::findImage(QByteArrayView bytes)
{
    const std::size_t hash = contentHash(bytes);
    std::lock_guard lock(mutex_);
    const auto [first, last] = byHash_.equal_range(hash);
    for (auto it = first; it != last; ++it) {
        const Entry& entry = *it->second;
        if (entry.image.isNull() || entry.image.isDetached() || entry.bytes.size() != bytes.size()
            || std::memcmp(entry.bytes.constData(), bytes.data(), std::size_t(bytes.size())) != 0)
            continue;
        ++imageHits_;
        recency_.splice(recency_.begin(), recency_, it->second);
        return entry.image;
    }
    return {};
}

void EncodedImageCache::insert(qint64 key, QByteArray bytes, const QImage& image)
{
    const std::size_t hash = contentHash(bytes);
    std::lock_guard lock(mutex_);
    if (const auto it = byKey_.find(key); it != byKey_.end()) eraseLocked(it->second);
    if (bytes.isEmpty() || bytes.size() > capacity_) return;
    const bool keepImage = !image.isNull() && image.sizeInBytes() <= imageCapacity_;
    bytes_ += bytes.size();
    if (keepImage) imageBytes_ += image.sizeInBytes();
    recency_.push_front(Entry{key, std::move(bytes), hash, keepImage ? image : QImage()});
    byKey_.emplace(key, recency_.begin());
    byHash_.emplace(hash, recency_.begin());
    evictLocked();
}

void EncodedImageCache::setCapacity(qsizetype bytes, qsizetype imageBytes)
{
    std::lock_guard lock(mutex_);
    capacity_ = bytes;
    imageCapacity_ = imageBytes;
    evictLocked();
}

void EncodedImageCache::clear()
{
    std::lock_guard lock(mutex_);
    recency_.clear();
    byKey_.clear();
    byHash_.clear();
    bytes_ = imageBytes_ = 0;
    hits_ = misses_ = imageHits_ = 0;
}

EncodedImageCache::Statistics EncodedImageCache::statistics() const
{
    std::lock_guard lock(mutex_);
    return {bytes_, imageBytes_, qsizetype(byKey_.size()), hits_, misses_, imageHits_};
}

void EncodedImageCache::eraseLocked(Position entry)
{
    bytes_ -= entry->bytes.size();
    imageBytes_ -= entry->image.sizeInBytes();
    byKey_.erase(entry->key);
    const auto [first, last] = byHash_.equal_range(entry->hash);
    for (auto it = first; it != last; ++it)
        if (it->second == entry) {
            byHash_.erase(it);
            break;
        }
    recency_.erase(entry);
}

void EncodedImageCache::evictLocked()
{
    while (bytes_ > capacity_ && !recency_.empty()) eraseLocked(std::prev(recency_.end()));
    // An image nobody else holds any more is of no use to find again; its
    // pixels are freed now rather than at the bound.
    for (Entry& entry : recency_)
        if (!entry.image.isNull() && entry.image.isDetached()) {
            imageBytes_ -= entry.image.sizeInBytes();
            entry.image = QImage();
        }
    // Past the image bound the oldest entries keep their bytes only.
    for (auto it = recency_.rbegin(); imageBytes_ > imageCapacity_ && it != recency_.rend(); ++it) {
        imageBytes_ -= it->image.sizeInBytes();
        it->image = QImage();
    }
}

}  // namespace quartz::tiff
