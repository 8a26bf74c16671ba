#pragma once
// Rows between QImage formats and TIFF samples: 8-bit RGB or RGBA with
// associated alpha, horizontally differenced for the encoder; RGB(A) with
// any kind of alpha to premultiplied ARGB32 for the decoder.

#include <QImage>

#include <cstdint>

namespace quartz::tiff::detail {

// The QImage formats read without a conversion of the whole image first.
enum class SourceRows {
    Argb32Premultiplied,
    Argb32,
    Rgb32,
    Rgba8888Premultiplied,
    Rgba8888,
    Rgbx8888,
    Rgb888,
};

// Null when `format` has to be converted first (see encodableImage).
bool sourceRowsFor(QImage::Format format, SourceRows* rows);

// `image` itself when sourceRowsFor knows its format, otherwise converted to
// premultiplied ARGB32 (with alpha) or RGB32 (without).
QImage encodableImage(const QImage& image);

// True when every pixel is opaque: such an image is written without alpha.
bool isOpaque(const QImage& image, SourceRows rows);

// One row as `samples` (3 or 4) bytes a pixel, premultiplied, each byte the
// difference to the same sample of the pixel before (TIFF predictor 2).
void writePredictedRow(const uchar* source, SourceRows rows, int width, int samples, uint8_t* out);

enum class AlphaSamples { None, Associated, Unassociated };

// A TIFF row of 8-bit RGB samples (`samplesPerPixel` >= 3, the fourth being
// alpha as given, further samples ignored) into premultiplied ARGB32.
// Associated colour above its alpha is clamped, so the result is valid.
void readRgbRow(const uint8_t* samples, int samplesPerPixel, AlphaSamples alpha, int width, QRgb* out);

// libtiff's RGBA raster (red in the low byte) into premultiplied ARGB32, in place.
void abgrToArgbPremultiplied(uint32_t* pixels, qsizetype count);

}  // namespace quartz::tiff::detail
