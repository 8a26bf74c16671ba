#include "quartz/TiffPixelRows.h"

#include <algorithm>
#include <cstring>

namespace quartz::tiff::detail {

namespace {

// Qt's own rounding (qPremultiply), so a straight image written here reads
// back exactly as QImage would have premultiplied it.
inline uint8_t premultiply(uint32_t c, uint32_t a)
{
    const uint32_t t = c * a;
    return uint8_t((t + (t >> 8) + 0x80) >> 8);
}

struct Pixel {
    uint8_t r, g, b, a;
};

template <SourceRows Rows> inline Pixel pixelAt(const uchar* row, int x)
{
    if constexpr (Rows == SourceRows::Argb32Premultiplied || Rows == SourceRows::Argb32 || Rows == SourceRows::Rgb32) {
        const QRgb p = reinterpret_cast<const QRgb*>(row)[x];
        const uint8_t a = Rows == SourceRows::Rgb32 ? 255 : uint8_t(qAlpha(p));
        if constexpr (Rows == SourceRows::Argb32)
            return {premultiply(qRed(p), a), premultiply(qGreen(p), a), premultiply(qBlue(p), a), a};
        return {uint8_t(qRed(p)), uint8_t(qGreen(p)), uint8_t(qBlue(p)), a};
    } else if constexpr (Rows == SourceRows::Rgb888) {
        const uchar* p = row + 3 * x;
        return {p[0], p[1], p[2], 255};
    } else {
        const uchar* p = row + 4 * x;
        const uint8_t a = Rows == SourceRows::Rgbx8888 ? 255 : p[3];
        if constexpr (Rows == SourceRows::Rgba8888) return {premultiply(p[0], a), premultiply(p[1], a), premultiply(p[2], a), a};
        return {p[0], p[1], p[2], a};
    }
}

template <SourceRows Rows, int Samples> void predictedRow(const uchar* source, int width, uint8_t* out)
{
    Pixel previous{0, 0, 0, 0};
    for (int x = 0; x < width; ++x, out += Samples) {
        const Pixel p = pixelAt<Rows>(source, x);
        out[0] = uint8_t(p.r - previous.r);
        out[1] = uint8_t(p.g - previous.g);
        out[2] = uint8_t(p.b - previous.b);
        if constexpr (Samples == 4) out[3] = uint8_t(p.a - previous.a);
        previous = p;
    }
}

// The fast form of the same, one pixel a 32-bit word: samples in file order
// (red in the low byte on a little-endian machine), the difference to the
// pixel before taken bytewise without carries between the samples.
template <SourceRows Rows> inline uint32_t rgbaWord(const uchar* row, int x)
{
    uint32_t p;
    std::memcpy(&p, row + 4 * x, 4);
    if constexpr (Rows == SourceRows::Argb32Premultiplied || Rows == SourceRows::Argb32 || Rows == SourceRows::Rgb32)
        p = (p & 0xff00ff00u) | ((p >> 16) & 0xffu) | ((p & 0xffu) << 16);  // 0xAARRGGBB to bytes R, G, B, A
    if constexpr (Rows == SourceRows::Rgb32 || Rows == SourceRows::Rgbx8888) p |= 0xff000000u;
    if constexpr (Rows == SourceRows::Argb32 || Rows == SourceRows::Rgba8888) {
        const uint32_t a = p >> 24;
        if (a == 255) return p;
        if (a == 0) return 0;
        // qPremultiply's arithmetic: red and blue together, then green.
        uint32_t rb = (p & 0x00ff00ffu) * a;
        rb = ((rb + ((rb >> 8) & 0x00ff00ffu) + 0x00800080u) >> 8) & 0x00ff00ffu;
        uint32_t g = ((p >> 8) & 0xffu) * a;
        g = (g + ((g >> 8) & 0xffu) + 0x80u) & 0xff00u;
        return rb | g | (a << 24);
    }
    return p;
}

inline uint32_t bytewiseDifference(uint32_t a, uint32_t b)
{
    return ((a | 0x80808080u) - (b & 0x7f7f7f7fu)) ^ ((a ^ ~b) & 0x80808080u);
}

template <SourceRows Rows> void predictedRow(const uchar* source, int width, int samples, uint8_t* out)
{
    if constexpr (Rows != SourceRows::Rgb888 && Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
        uint32_t previous = 0;
        if (samples == 4) {
            for (int x = 0; x < width; ++x) {
                const uint32_t p = rgbaWord<Rows>(source, x);
                const uint32_t d = bytewiseDifference(p, previous);
                std::memcpy(out + 4 * x, &d, 4);
                previous = p;
            }
            return;
        }
        // Three bytes a pixel: each pixel stores four and the next one
        // overwrites the fourth; the last stores its three alone.
        for (int x = 0; x < width; ++x) {
            const uint32_t p = rgbaWord<Rows>(source, x);
            const uint32_t d = bytewiseDifference(p, previous);
            std::memcpy(out + 3 * x, &d, x + 1 < width ? 4 : 3);
            previous = p;
        }
    } else if (samples == 4) {
        predictedRow<Rows, 4>(source, width, out);
    } else {
        predictedRow<Rows, 3>(source, width, out);
    }
}

template <SourceRows Rows> bool rowIsOpaque(const uchar* row, int width)
{
    for (int x = 0; x < width; ++x)
        if (pixelAt<Rows>(row, x).a != 255) return false;
    return true;
}

}  // namespace

bool sourceRowsFor(QImage::Format format, SourceRows* rows)
{
    switch (format) {
    case QImage::Format_ARGB32_Premultiplied: *rows = SourceRows::Argb32Premultiplied; return true;
    case QImage::Format_ARGB32: *rows = SourceRows::Argb32; return true;
    case QImage::Format_RGB32: *rows = SourceRows::Rgb32; return true;
    case QImage::Format_RGBA8888_Premultiplied: *rows = SourceRows::Rgba8888Premultiplied; return true;
    case QImage::Format_RGBA8888: *rows = SourceRows::Rgba8888; return true;
    case QImage::Format_RGBX8888: *rows = SourceRows::Rgbx8888; return true;
    case QImage::Format_RGB888: *rows = SourceRows::Rgb888; return true;
    default: return false;
    }
}

QImage encodableImage(const QImage& image)
{
    SourceRows rows;
    if (sourceRowsFor(image.format(), &rows)) return image;
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}

bool isOpaque(const QImage& image, SourceRows rows)
{
    auto all = [&](auto test) {
        for (int y = 0; y < image.height(); ++y)
            if (!test(image.constScanLine(y), image.width())) return false;
        return true;
    };
    switch (rows) {
    case SourceRows::Rgb32:
    case SourceRows::Rgbx8888:
    case SourceRows::Rgb888: return true;
    case SourceRows::Argb32Premultiplied: return all(rowIsOpaque<SourceRows::Argb32Premultiplied>);
    case SourceRows::Argb32: return all(rowIsOpaque<SourceRows::Argb32>);
    case SourceRows::Rgba8888Premultiplied: return all(rowIsOpaque<SourceRows::Rgba8888Premultiplied>);
    case SourceRows::Rgba8888: return all(rowIsOpaque<SourceRows::Rgba8888>);
    }
    return false;
}

void writePredictedRow(const uchar* source, SourceRows rows, int width, int samples, uint8_t* out)
{
    switch (rows) {
    case SourceRows::Argb32Premultiplied: predictedRow<SourceRows::Argb32Premultiplied>(source, width, samples, out); return;
    case SourceRows::Argb32: predictedRow<SourceRows::Argb32>(source, width, samples, out); return;
    case SourceRows::Rgb32: predictedRow<SourceRows::Rgb32>(source, width, samples, out); return;
    case SourceRows::Rgba8888Premultiplied: predictedRow<SourceRows::Rgba8888Premultiplied>(source, width, samples, out); return;
    case SourceRows::Rgba8888: predictedRow<SourceRows::Rgba8888>(source, width, samples, out); return;
    case SourceRows::Rgbx8888: predictedRow<SourceRows::Rgbx8888>(source, width, samples, out); return;
    case SourceRows::Rgb888: predictedRow<SourceRows::Rgb888>(source, width, samples, out); return;
    }
}

void readRgbRow(const uint8_t* samples, int samplesPerPixel, AlphaSamples alpha, int width, QRgb* out)
{
    const int stride = samplesPerPixel;
    switch (alpha) {
    case AlphaSamples::None:
        for (int x = 0; x < width; ++x, samples += stride) out[x] = qRgb(samples[0], samples[1], samples[2]);
        return;
    case AlphaSamples::Associated:
        for (int x = 0; x < width; ++x, samples += stride) {
            // Transparent and opaque pixels, most of a picture, need no clamping.
            const uint8_t a = samples[3];
            if (a == 0) out[x] = 0;
            else if (a == 255) out[x] = qRgb(samples[0], samples[1], samples[2]);
            else out[x] = qRgba(std::min(samples[0], a), std::min(samples[1], a), std::min(samples[2], a), a);
        }
        return;
    case AlphaSamples::Unassociated:
        for (int x = 0; x < width; ++x, samples += stride) {
            const uint8_t a = samples[3];
            if (a == 0) out[x] = 0;
            else if (a == 255) out[x] = qRgb(samples[0], samples[1], samples[2]);
            else out[x] = qRgba(premultiply(samples[0], a), premultiply(samples[1], a), premultiply(samples[2], a), a);
        }
        return;
    }
}

void abgrToArgbPremultiplied(uint32_t* pixels, qsizetype count)
{
    for (qsizetype i = 0; i < count; ++i) {
        const uint32_t p = pixels[i];
        const uint32_t a = p >> 24;
        const uint32_t r = std::min(p & 0xff, a), g = std::min((p >> 8) & 0xff, a), b = std::min((p >> 16) & 0xff, a);
        pixels[i] = (a << 24) | (r << 16) | (g << 8) | b;
    }
}

}  // namespace quartz::tiff::detail
