#pragma once
// TIFF, the form images take inside composition files, in the store and on
// the clipboard. Written as 8-bit RGB or RGBA with associated (premultiplied)
// alpha, Deflate with the horizontal predictor, its strips compressed on all
// cores; read with libtiff from memory, whatever layout another program chose.
//
// Encoding goes through a process-wide cache keyed by QImage::cacheKey(), so
// an image is compressed once however often it is saved, exported or copied,
// and decoding registers the bytes it read for the image it made: a document
// opened and saved again writes what it read.

#include <QByteArray>
#include <QByteArrayView>
#include <QImage>
#include <QString>

namespace quartz::tiff {

// "II*\0" or "MM\0*": little- or big-endian classic TIFF.
bool isTiff(QByteArrayView bytes);

// The TIFF bytes of `image`, from the cache when this image (or a copy that
// shares its pixels) was encoded or decoded before. Empty for a null image.
QByteArray encode(const QImage& image);

// Always compresses; nothing is looked up or remembered.
QByteArray encodeUncached(const QImage& image, QString* error = nullptr);

// The first image of a TIFF file as premultiplied ARGB32, the runtime's and
// the raster painter's own format, so the pixels are never converted again.
// Null with a message in `error` for data libtiff cannot read; never aborts
// or prints. The result is registered in the cache with these bytes (shared
// when `bytes` owns its data, copied when it is raw data). Bytes the cache
// knows as the encoding of a premultiplied ARGB32 image give that image.
QImage decode(const QByteArray& bytes, QString* error = nullptr);
QImage decode(QByteArrayView bytes, QString* error = nullptr);

// The image these bytes are the encoding of, without decoding anything, when
// the cache still holds it: the image encode() was given, or the one decode()
// made from equal bytes. Its format is the image's own (a straight-alpha
// image stays straight; premultiplied, its pixels are what decode() gives).
// Null otherwise.
QImage sourceImage(QByteArrayView bytes);

// As decode, without touching the cache.
QImage decodeUncached(QByteArrayView bytes, QString* error = nullptr);

}  // namespace quartz::tiff
