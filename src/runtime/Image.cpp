#include "runtime/Image.h"

#include "quartz/TiffCodec.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>

#include <atomic>

namespace runtime {

namespace {
// Large enough to cover any destination, small enough that arithmetic on it
// never overflows an int.
constexpr int kInfiniteHalfExtent = 1 << 24;
}  // namespace

Image Image::fromRaster(QImage pixels, QPoint origin)
{
    if (pixels.isNull()) return {};
    if (pixels.format() != QImage::Format_ARGB32_Premultiplied)
        pixels = pixels.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    Image image;
    image.data_ = std::make_shared<const Data>(Data{std::move(pixels), origin, {}});
    return image;
}

Image Image::fromEncodedData(const QByteArray& bytes, QString* error)
{
    // Composition files hold TIFF; ours reads every layout and gives the
    // raster in the form kept here, and the bytes are remembered for a save.
    // A file played right after it was written (the thumbnail) holds images
    // the editor still has: those are taken as they are, not decoded.
    if (quartz::tiff::isTiff(bytes)) {
        if (QImage known = quartz::tiff::sourceImage(bytes); !known.isNull()) return fromRaster(std::move(known));
        return fromRaster(quartz::tiff::decode(bytes, error));
    }
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    // A hostile header must not make us allocate gigabytes.
    reader.setAllocationLimit(512);
    QImage decoded = reader.read();
    if (decoded.isNull()) {
        if (error) *error = reader.errorString();
        return {};
    }
    return fromRaster(std::move(decoded));
}

Image Image::infinite(Generator generator)
{
    if (!generator) return {};
    Image image;
    static std::atomic<qint64> nextSerial{1};
    image.data_ = std::make_shared<const Data>(Data{{}, {}, std::move(generator), nextSerial++});
    return image;
}

QRect Image::extent() const
{
    if (isNull()) return {};
    if (isInfinite())
        return QRect(-kInfiniteHalfExtent, -kInfiniteHalfExtent, 2 * kInfiniteHalfExtent, 2 * kInfiniteHalfExtent);
    return imageSpaceRect(data_->raster, data_->origin);
}

const QImage& Image::raster() const
{
    static const QImage none;
    return data_ && !data_->generator ? data_->raster : none;
}

QImage Image::renderRegion(const QRect& region) const
{
    if (region.isEmpty()) return {};
    if (isInfinite()) {
        QImage out = data_->generator(region);
        if (out.size() == region.size() && out.format() == QImage::Format_ARGB32_Premultiplied) return out;
        if (out.isNull()) {
            out = QImage(region.size(), QImage::Format_ARGB32_Premultiplied);
            out.fill(Qt::transparent);
            return out;
        }
        return out.convertToFormat(QImage::Format_ARGB32_Premultiplied).scaled(region.size());
    }
    const QRect own = extent();
    if (region == own) return data_->raster;
    QImage out(region.size(), QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::transparent);
    if (isNull() || !own.intersects(region)) return out;
    // Image space is y up, rasters are top-down: the top row of a rectangle
    // r is at r.y() + r.height() - 1 in image space.
    QPainter painter(&out);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    const int dx = own.x() - region.x();
    const int dy = (region.y() + region.height()) - (own.y() + own.height());
    painter.drawImage(QPoint(dx, dy), data_->raster);
    return out;
}

qint64 Image::cacheKey() const
{
    if (isNull()) return 0;
    if (isInfinite()) return -data_->serial;  // negative: never a QImage key
    return data_->raster.cacheKey();
}

QRect imageSpaceRect(const QImage& raster, QPoint origin)
{
    return QRect(origin, raster.size());
}

}  // namespace runtime
