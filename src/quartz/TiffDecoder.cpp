// Reading: the common layout (8-bit RGB or RGBA in strips, any compression)
// is decompressed by libtiff strip by strip on every core, one handle per
// thread over the same bytes; everything else goes through libtiff's RGBA
// interface, which knows palettes, grey, 16 bits, tiles, YCbCr and JPEG.

#include "quartz/StripThreads.h"
#include "quartz/TiffCodec.h"
#include "quartz/TiffMemoryIO.h"
#include "quartz/TiffPixelRows.h"

#include <QTransform>

#include <climits>
#include <mutex>

namespace quartz::tiff {

namespace {

using namespace detail;

struct Failure {
    QString message;
    bool set(const QString& text)
    {
        if (message.isEmpty()) message = text;
        return false;
    }
};

// Strips of 8-bit RGB(A) samples, the form our encoder and most programs
// write, with the kind of alpha the fourth sample carries.
bool isPlainRgb(TIFF* tif, AlphaSamples* alpha)
{
    uint16_t bits = 1, samples = 1, photometric = 0, planar = PLANARCONFIG_CONTIG, format = SAMPLEFORMAT_UINT,
             compression = COMPRESSION_NONE;
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetFieldDefaulted(tif, TIFFTAG_PLANARCONFIG, &planar);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLEFORMAT, &format);
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &compression);
    if (TIFFIsTiled(tif) || !TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &photometric)) return false;
    if (bits != 8 || samples < 3 || photometric != PHOTOMETRIC_RGB || planar != PLANARCONFIG_CONTIG
        || format != SAMPLEFORMAT_UINT)
        return false;
    // JPEG strips may hold YCbCr whatever the photometric says; the RGBA path knows.
    if (compression == COMPRESSION_JPEG || compression == COMPRESSION_OJPEG || !TIFFIsCODECConfigured(compression))
        return false;
    uint16_t extraCount = 0;
    uint16_t* extra = nullptr;
    TIFFGetFieldDefaulted(tif, TIFFTAG_EXTRASAMPLES, &extraCount, &extra);
    // As libtiff's RGBA reader: a fourth sample of no stated meaning is
    // associated alpha, and so is an undeclared one in a four-sample file.
    if (samples == 3) *alpha = AlphaSamples::None;
    else if (extraCount > 0 && extra)
        *alpha = extra[0] == EXTRASAMPLE_UNASSALPHA ? AlphaSamples::Unassociated : AlphaSamples::Associated;
    else *alpha = samples == 4 ? AlphaSamples::Associated : AlphaSamples::None;
    return true;
}

bool readPlainStrips(QByteArrayView bytes, TiffHandle& first, AlphaSamples alpha, QImage& image, Failure& failure)
{
    TIFF* tif = first.tiff();
    const int width = image.width();
    const int height = image.height();
    uint16_t samples = 3;
    uint32_t rowsPerStrip = 0;
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetFieldDefaulted(tif, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    const int rows = int(std::clamp<uint32_t>(rowsPerStrip, 1, uint32_t(height)));
    const int strips = (height + rows - 1) / rows;
    const tmsize_t scanline = TIFFScanlineSize(tif);
    if (scanline != tmsize_t(width) * samples) return failure.set(QStringLiteral("unexpected TIFF row size"));
    if (TIFFNumberOfStrips(tif) < uint32_t(strips)) return failure.set(QStringLiteral("the TIFF file lacks strips"));

    StripCounter counter(strips);
    std::mutex failureMutex;
    runOnThreads(threadsFor(qint64(width) * height * 4, strips), [&](int thread) {
        TiffHandle own;
        TiffHandle& handle = thread == 0 ? first : own;
        auto fail = [&](const QString& fallback) {
            counter.fail();
            std::lock_guard lock(failureMutex);
            failure.set(handle.error(fallback));
        };
        if (thread != 0 && !own.openForReading(bytes)) return fail(QStringLiteral("cannot open the TIFF file again"));
        std::vector<uint8_t> buffer(std::size_t(scanline) * std::size_t(rows));
        for (int strip; (strip = counter.next()) >= 0;) {
            const int y0 = strip * rows;
            const int count = std::min(rows, height - y0);
            const tmsize_t wanted = scanline * count;
            if (TIFFReadEncodedStrip(handle.tiff(), uint32_t(strip), buffer.data(), wanted) < wanted)
                return fail(QStringLiteral("cannot read strip %1").arg(strip));
            for (int r = 0; r < count; ++r)
                readRgbRow(buffer.data() + std::size_t(r) * std::size_t(scanline), samples, alpha, width,
                           reinterpret_cast<QRgb*>(image.scanLine(y0 + r)));
        }
    });
    return !counter.failed();
}

bool readThroughRgba(TiffHandle& handle, uint16_t orientation, QImage& image, Failure& failure)
{
    TIFF* tif = handle.tiff();
    char message[1024] = {};
    if (!TIFFRGBAImageOK(tif, message)) return failure.set(handle.error(QString::fromLocal8Bit(message)));
    // Asked for the file's own orientation, libtiff leaves the rows as stored;
    // oriented() below turns them, transposed orientations included.
    auto* raster = reinterpret_cast<uint32_t*>(image.bits());
    if (!TIFFReadRGBAImageOriented(tif, uint32_t(image.width()), uint32_t(image.height()), raster, orientation, 1))
        return failure.set(handle.error(QStringLiteral("cannot read the TIFF pixels")));
    abgrToArgbPremultiplied(raster, qsizetype(image.width()) * image.height());
    return true;
}

QImage rotatedClockwise(const QImage& image) { return image.transformed(QTransform().rotate(90)); }

// The stored rows turned as the Orientation tag says (TIFF 6.0: which
// visual side the first row and the first column hold).
QImage oriented(const QImage& stored, uint16_t orientation)
{
    switch (orientation) {
    case ORIENTATION_TOPRIGHT: return stored.mirrored(true, false);
    case ORIENTATION_BOTRIGHT: return stored.mirrored(true, true);
    case ORIENTATION_BOTLEFT: return stored.mirrored(false, true);
    case ORIENTATION_LEFTTOP: return rotatedClockwise(stored).mirrored(true, false);
    case ORIENTATION_RIGHTTOP: return rotatedClockwise(stored);
    case ORIENTATION_RIGHTBOT: return rotatedClockwise(stored).mirrored(false, true);
    case ORIENTATION_LEFTBOT: return rotatedClockwise(stored).mirrored(true, true);
    default: return stored;
    }
}

}  // namespace

bool isTiff(QByteArrayView bytes)
{
    return bytes.size() >= 4
        && (bytes.first(4) == QByteArrayView("II*\0", 4) || bytes.first(4) == QByteArrayView("MM\0*", 4));
}

QImage decodeUncached(QByteArrayView bytes, QString* error)
{
    Failure failure;
    auto fail = [&](const QString& message) {
        failure.set(message);
        if (error) *error = failure.message;
        return QImage();
    };
    if (!isTiff(bytes)) return fail(QStringLiteral("not TIFF data"));
    TiffHandle handle;
    if (!handle.openForReading(bytes)) return fail(handle.error(QStringLiteral("cannot read the TIFF header")));
    uint32_t width = 0, height = 0;
    TIFFGetField(handle.tiff(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(handle.tiff(), TIFFTAG_IMAGELENGTH, &height);
    if (width == 0 || height == 0) return fail(QStringLiteral("a TIFF image without a size"));
    if (width > uint32_t(INT_MAX / 4) || height > uint32_t(INT_MAX) || qint64(width) * height * 4 > kMaxAllocationBytes)
        return fail(QStringLiteral("a %1x%2 TIFF image is too large to decode").arg(width).arg(height));
    uint16_t orientation = ORIENTATION_TOPLEFT;
    TIFFGetFieldDefaulted(handle.tiff(), TIFFTAG_ORIENTATION, &orientation);

    QImage stored(int(width), int(height), QImage::Format_ARGB32_Premultiplied);
    if (stored.isNull() || stored.bytesPerLine() != qsizetype(width) * 4)
        return fail(QStringLiteral("cannot allocate a %1x%2 image").arg(width).arg(height));
    AlphaSamples alpha = AlphaSamples::None;
    const bool read = isPlainRgb(handle.tiff(), &alpha) ? readPlainStrips(bytes, handle, alpha, stored, failure)
                                                        : readThroughRgba(handle, orientation, stored, failure);
    if (!read) return fail(failure.message);
    QImage image = oriented(stored, orientation);
    if (image.format() != QImage::Format_ARGB32_Premultiplied) image.convertTo(QImage::Format_ARGB32_Premultiplied);
    return image;
}

}  // namespace quartz::tiff
