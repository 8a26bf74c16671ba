#pragma once
// The TIFF bytes of images that were encoded or decoded lately, by
// QImage::cacheKey(): a key names one state of one image's pixels (writing
// to an image gives it a new key), so bytes found under it are still right.
// Thread-safe, bounded by the bytes it holds; the least recently used go
// first. Entries share their bytes with whoever else holds them.
//
// The way back is kept too: bytes that are an entry's, wherever they were
// copied to (a composition file played right after it was written), lead
// to the entry's image without decoding, while the image is still held.
// An image is only held while somebody else holds it too (a document's
// value); and since that pins its pixels, there is a bound of its own, past
// which the least recently used entries let go of their image and keep the
// bytes.

#include <QByteArray>
#include <QByteArrayView>
#include <QImage>
#include <QtGlobal>

#include <list>
#include <mutex>
#include <unordered_map>

namespace quartz::tiff {

class EncodedImageCache {
public:
    static constexpr qsizetype kDefaultCapacity = qsizetype(512) << 20;
    static constexpr qsizetype kDefaultImageCapacity = qsizetype(1) << 30;

    static EncodedImageCache& shared();

    explicit EncodedImageCache(qsizetype capacity = kDefaultCapacity, qsizetype imageCapacity = kDefaultImageCapacity)
        : capacity_(capacity), imageCapacity_(imageCapacity)
    {
    }

    // Empty when nothing is stored under `key`; a hit becomes the most recent.
    QByteArray find(qint64 key);
    // The image whose bytes these are (compared whole), or null.
    QImage findImage(QByteArrayView bytes);
    // Replaces what `key` had. Bytes larger than the whole capacity are not
    // kept; `image` (the one `key` names) is kept while the image bound allows.
    void insert(qint64 key, QByteArray bytes, const QImage& image = QImage());

    void setCapacity(qsizetype bytes, qsizetype imageBytes = kDefaultImageCapacity);
    void clear();

    struct Statistics {
        qsizetype bytes = 0;
        qsizetype imageBytes = 0;
        qsizetype entries = 0;
        quint64 hits = 0;
        quint64 misses = 0;
        quint64 imageHits = 0;
    };
    Statistics statistics() const;

private:
    struct Entry {
        qint64 key;
        QByteArray bytes;
        std::size_t hash;
        QImage image;
    };
    using Position = std::list<Entry>::iterator;
    void eraseLocked(Position entry);
    void evictLocked();

    mutable std::mutex mutex_;
    std::list<Entry> recency_;  // most recent first
    std::unordered_map<qint64, Position> byKey_;
    std::unordered_multimap<std::size_t, Position> byHash_;
    qsizetype capacity_;
    qsizetype imageCapacity_;
    qsizetype bytes_ = 0;
    qsizetype imageBytes_ = 0;
    quint64 hits_ = 0;
    quint64 misses_ = 0;
    quint64 imageHits_ = 0;
};

}  // namespace quartz::tiff
