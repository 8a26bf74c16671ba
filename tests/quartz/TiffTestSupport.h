#pragma once
// Pictures and independent readers for the TIFF codec tests.

#include <QImage>
#include <QTemporaryFile>

#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace tifftest {

inline const QString kFixtures = QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/tiff/");

// Gradients with a band of noise and, with alpha, soft translucent edges
// and a transparent border: the content of imported Photoshop layers.
inline QImage gradientWithNoise(int width, int height, bool alpha)
{
    QImage image(width, height, alpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    uint32_t seed = 12345;
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            seed = seed * 1103515245u + 12345u;
            const bool noisy = y * 8 < height;
            const int r = noisy ? int(seed >> 24) : (x * 255) / std::max(1, width - 1);
            const int g = noisy ? int((seed >> 16) & 0xff) : (y * 255) / std::max(1, height - 1);
            const int b = (x + y) & 0xff;
            const int a = alpha ? std::clamp(std::min({x, width - 1 - x, y, height - 1 - y}) * 3, 0, 255) : 255;
            row[x] = qPremultiply(qRgba(r, g, b, a));
        }
    }
    return image;
}

// Where two premultiplied ARGB32 images differ, or "" when they do not.
inline std::string firstDifference(const QImage& actual, const QImage& expected, int tolerance = 0)
{
    if (actual.size() != expected.size())
        return "size " + std::to_string(actual.width()) + "x" + std::to_string(actual.height()) + ", expected "
            + std::to_string(expected.width()) + "x" + std::to_string(expected.height());
    const QImage a = actual.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage e = expected.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < e.height(); ++y) {
        const auto* ra = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        const auto* re = reinterpret_cast<const QRgb*>(e.constScanLine(y));
        for (int x = 0; x < e.width(); ++x) {
            const QRgb p = ra[x], q = re[x];
            const int d = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q)),
                                    std::abs(qAlpha(p) - qAlpha(q))});
            if (d > tolerance) {
                char text[160];
                std::snprintf(text, sizeof text, "pixel (%d, %d): #%08x, expected #%08x", x, y, p, q);
                return text;
            }
        }
    }
    return {};
}

// An open libtiff handle on a copy of `bytes` in a temporary file: the
// reader used here is libtiff's own file reader, not the codec's memory one.
class LibtiffFile {
public:
    explicit LibtiffFile(const QByteArray& bytes)
    {
        if (!file_.open()) return;
        file_.write(bytes);
        file_.flush();
        tiff_ = TIFFOpen(file_.fileName().toLocal8Bit().constData(), "r");
    }
    ~LibtiffFile()
    {
        if (tiff_) TIFFClose(tiff_);
    }
    TIFF* tiff() const { return tiff_; }

    template <class T> T field(ttag_t tag, T fallback = T()) const
    {
        T value = fallback;
        return tiff_ && TIFFGetField(tiff_, tag, &value) ? value : fallback;
    }

    // TIFFReadRGBAImage's pixels as premultiplied ARGB32; null on failure.
    QImage rgbaImage() const
    {
        uint32_t w = 0, h = 0;
        if (!tiff_ || !TIFFGetField(tiff_, TIFFTAG_IMAGEWIDTH, &w) || !TIFFGetField(tiff_, TIFFTAG_IMAGELENGTH, &h)) return {};
        std::vector<uint32_t> raster(std::size_t(w) * h);
        if (!TIFFReadRGBAImageOriented(tiff_, w, h, raster.data(), ORIENTATION_TOPLEFT, 1)) return {};
        QImage image(int(w), int(h), QImage::Format_ARGB32_Premultiplied);
        for (uint32_t y = 0; y < h; ++y) {
            auto* row = reinterpret_cast<QRgb*>(image.scanLine(int(y)));
            for (uint32_t x = 0; x < w; ++x) {
                const uint32_t p = raster[std::size_t(y) * w + x];
                row[x] = qRgba(int(TIFFGetR(p)), int(TIFFGetG(p)), int(TIFFGetB(p)), int(TIFFGetA(p)));
            }
        }
        return image;
    }

private:
    QTemporaryFile file_;
    TIFF* tiff_ = nullptr;
};

}  // namespace tifftest
