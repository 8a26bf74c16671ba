#include "quartz/TiffCodec.h"

#include "quartz/EncodedImageCache.h"
#include "quartz/QuartzComposition.h"

namespace quartz::tiff {

QByteArray encode(const QImage& image)
{
    if (image.isNull()) return {};
    EncodedImageCache& cache = EncodedImageCache::shared();
    if (QByteArray cached = cache.find(image.cacheKey()); !cached.isEmpty()) return cached;
    QString error;
    QByteArray bytes = encodeUncached(image, &error);
    if (bytes.isEmpty()) {
        qCWarning(lcQuartz).noquote() << "Unable to encode an image as TIFF:" << error;
        return {};
    }
    cache.insert(image.cacheKey(), bytes, image);
    return bytes;
}

namespace {
// Premultiplied ARGB32 is what decoding gives, so a source image of that
// format is the decoded image already.
QImage knownDecoding(QByteArrayView bytes)
{
    QImage known = EncodedImageCache::shared().findImage(bytes);
    return known.format() == QImage::Format_ARGB32_Premultiplied ? known : QImage();
}
}  // namespace

QImage decode(const QByteArray& bytes, QString* error)
{
    if (QImage known = knownDecoding(bytes); !known.isNull()) return known;
    QImage image = decodeUncached(bytes, error);
    if (image.isNull()) return image;
    // Raw data (QByteArray::fromRawData, capacity 0) may point into memory
    // its owner frees; the cache keeps a copy of that.
    const bool ownsBytes = bytes.capacity() > 0;
    EncodedImageCache::shared().insert(image.cacheKey(), ownsBytes ? bytes : QByteArray(bytes.constData(), bytes.size()),
                                       image);
    return image;
}

QImage decode(QByteArrayView bytes, QString* error)
{
    if (QImage known = knownDecoding(bytes); !known.isNull()) return known;
    QImage image = decodeUncached(bytes, error);
    if (!image.isNull()) EncodedImageCache::shared().insert(image.cacheKey(), bytes.toByteArray(), image);
    return image;
}

QImage sourceImage(QByteArrayView bytes)
{
    return EncodedImageCache::shared().findImage(bytes);
}

}  // namespace quartz::tiff
