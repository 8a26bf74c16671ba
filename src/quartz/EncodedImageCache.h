#pragma once
// The TIFF bytes of images that were encoded or decoded lately, by
// QImage::cacheKey(): a key names one state of one image's pixels (writing
// to an image gives it a new key), so bytes found under it are still right.
// Thread-safe, bounded by the bytes it holds; the least recently used go
// first. Entries share their bytes with whoever else holds them.

#include <QByteArray>
#include <QtGlobal>

#include <list>
#include <mutex>
#include <unordered_map>

namespace quartz::tiff {

class EncodedImageCache {
public:
    static constexpr qsizetype kDefaultCapacity = qsizetype(512) << 20;

    static EncodedImageCache& shared();

    explicit EncodedImageCache(qsizetype capacity = kDefaultCapacity) : capacity_(capacity) {}

    // Empty when nothing is stored under `key`; a hit becomes the most recent.
    QByteArray find(qint64 key);
    // Replaces what `key` had. Bytes larger than the whole capacity are not kept.
    void insert(qint64 key, QByteArray bytes);

    void setCapacity(qsizetype bytes);
    void clear();

    struct Statistics {
        qsizetype bytes = 0;
        qsizetype entries = 0;
        quint64 hits = 0;
        quint64 misses = 0;
    };
    Statistics statistics() const;

private:
    struct Entry {
        qint64 key;
        QByteArray bytes;
    };
    void evictLocked();

    mutable std::mutex mutex_;
    std::list<Entry> recency_;  // most recent first
    std::unordered_map<qint64, std::list<Entry>::iterator> byKey_;
    qsizetype capacity_;
    qsizetype bytes_ = 0;
    quint64 hits_ = 0;
    quint64 misses_ = 0;
};

}  // namespace quartz::tiff
