#pragma once
// An image value as it travels between patches. Copies share the pixels (an
// image is never modified after it is made), so passing one from port to port
// costs a reference count.
//
// Images live in "image space" as Core Image has it: pixel units, origin at
// the lower left, y up. A finite image is a premultiplied ARGB32 raster whose
// lower-left pixel sits at `origin`; an infinite image (a generator such as a
// constant colour or a gradient) renders any requested region on demand.

#include <QImage>
#include <QMetaType>
#include <QRect>

#include <functional>
#include <memory>

namespace runtime {

class Image {
public:
    // Renders `region` (image space) into a raster of the region's size.
    using Generator = std::function<QImage(const QRect& region)>;

    Image() = default;
    static Image fromRaster(QImage pixels, QPoint origin = {});
    // PNG, JPEG, TIFF, ... as stored in files. Null on undecodable data.
    static Image fromEncodedData(const QByteArray& bytes, QString* error = nullptr);
    static Image infinite(Generator generator);

    bool isNull() const { return !data_; }
    bool isInfinite() const { return data_ && data_->generator; }
    QSize pixelSize() const { return isNull() || isInfinite() ? QSize() : data_->raster.size(); }
    QRect extent() const;          // image space; empty for null, huge for infinite images
    const QImage& raster() const;  // premultiplied ARGB32, top row first; null for infinite images
    QPoint origin() const { return data_ ? data_->origin : QPoint(); }

    // The pixels of any region of image space, transparent where the image
    // has none. The result has exactly the region's size.
    QImage renderRegion(const QRect& region) const;

    // Identity, not content: two images are equal when they share pixels.
    bool operator==(const Image& other) const { return data_ == other.data_; }
    bool operator!=(const Image& other) const { return data_ != other.data_; }

    // QImage::cacheKey of the raster, or a key of the generator; for caches.
    qint64 cacheKey() const;

private:
    struct Data {
        QImage raster;
        QPoint origin;
        Generator generator;
        qint64 serial = 0;  // cache key of generated images
    };
    std::shared_ptr<const Data> data_;
};

// Converts top-down raster rows to the image-space rectangle they cover.
QRect imageSpaceRect(const QImage& raster, QPoint origin);

}  // namespace runtime

Q_DECLARE_METATYPE(runtime::Image)
