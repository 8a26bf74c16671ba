// Writing: the pixels become predicted rows and zlib streams (libdeflate)
// strip by strip on every core; libtiff then lays the finished strips and
// the directory out (TIFFWriteRawStrip), so the file is plain TIFF that any
// reader opens.

#include "quartz/StripThreads.h"
#include "quartz/TiffCodec.h"
#include "quartz/TiffMemoryIO.h"
#include "quartz/TiffPixelRows.h"

#include <libdeflate.h>

#include <cstring>
#include <mutex>

namespace quartz::tiff {

namespace {

using namespace detail;

// Measured on 3840x2160 layers (docs/decisions.md): libdeflate's level 6
// writes a twentieth less than level 4 for about a sixth more time, which
// keeps a Photoshop import's package within the Photoshop file's size;
// higher levels cost more than they save.
constexpr int kDeflateLevel = 6;
// Raw bytes a strip holds at most: small enough that fully transparent rows
// form whole strips (compressed once, shared), large enough that a strip's
// fresh start costs little in size.
constexpr qsizetype kStripBytes = qsizetype(128) << 10;

struct Layout {
    int width = 0;
    int height = 0;
    int samples = 0;  // 3: RGB, 4: RGBA with associated alpha
    qsizetype rowBytes = 0;
    int rowsPerStrip = 0;
    int strips = 0;

    int rowsIn(int strip) const { return std::min(rowsPerStrip, height - strip * rowsPerStrip); }
};

Layout layoutFor(const QImage& image, int samples)
{
    Layout l;
    l.width = image.width();
    l.height = image.height();
    l.samples = samples;
    l.rowBytes = qsizetype(l.width) * samples;
    l.rowsPerStrip = int(std::clamp<qsizetype>(kStripBytes / l.rowBytes, 1, l.height));
    l.strips = (l.height + l.rowsPerStrip - 1) / l.rowsPerStrip;
    return l;
}

// One thread's compressor and buffers, reused from strip to strip. Strips
// are whole zlib streams, as TIFF's Deflate compression has them.
class StripCompressor {
public:
    explicit StripCompressor(const Layout& layout)
        : compressor_(libdeflate_alloc_compressor(kDeflateLevel)),
          raw_(std::size_t(layout.rowBytes) * std::size_t(layout.rowsPerStrip))
    {
        if (compressor_) out_.resize(libdeflate_zlib_compress_bound(compressor_, raw_.size()));
    }
    ~StripCompressor()
    {
        if (compressor_) libdeflate_free_compressor(compressor_);
    }
    StripCompressor(const StripCompressor&) = delete;
    StripCompressor& operator=(const StripCompressor&) = delete;

    bool ok() const { return compressor_ != nullptr; }
    uint8_t* raw() { return raw_.data(); }

    bool compress(std::size_t size, QByteArray* result)
    {
        const std::size_t written = libdeflate_zlib_compress(compressor_, raw_.data(), size, out_.data(), out_.size());
        if (written == 0) return false;
        *result = QByteArray(reinterpret_cast<const char*>(out_.data()), qsizetype(written));
        return true;
    }

private:
    libdeflate_compressor* compressor_;
    std::vector<uint8_t> raw_;
    std::vector<uint8_t> out_;
};

// Transparent areas give strips of transparent rows only; every full one of
// them compresses to the same stream, made once.
class ZeroStrips {
public:
    bool take(StripCompressor& compressor, std::size_t size, QByteArray* result)
    {
        std::lock_guard lock(mutex_);
        if (bytes_.isEmpty() && !compressor.compress(size, &bytes_)) return false;
        *result = bytes_;
        return true;
    }

private:
    std::mutex mutex_;
    QByteArray bytes_;
};

bool allZero(const uint8_t* bytes, std::size_t size)
{
    return size == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

bool compressStrips(const QImage& image, SourceRows rows, const Layout& layout, std::vector<QByteArray>& strips)
{
    strips.assign(std::size_t(layout.strips), {});
    StripCounter counter(layout.strips);
    ZeroStrips zeroStrips;
    const qint64 rawBytes = qint64(layout.rowBytes) * layout.height;
    runOnThreads(threadsFor(rawBytes, layout.strips), [&](int) {
        StripCompressor compressor(layout);
        if (!compressor.ok()) return counter.fail();
        for (int strip; (strip = counter.next()) >= 0;) {
            const int first = strip * layout.rowsPerStrip;
            const int count = layout.rowsIn(strip);
            int transparentRows = 0;
            for (int r = 0; r < count; ++r) {
                uint8_t* out = compressor.raw() + std::size_t(r) * std::size_t(layout.rowBytes);
                const uchar* source = image.constScanLine(first + r);
                // Four samples come from four-byte pixels: a transparent row is
                // zero in memory and zero once predicted.
                if (layout.samples == 4 && allZero(source, std::size_t(layout.rowBytes))) {
                    std::memset(out, 0, std::size_t(layout.rowBytes));
                    ++transparentRows;
                } else {
                    writePredictedRow(source, rows, layout.width, layout.samples, out);
                }
            }
            const std::size_t size = std::size_t(count) * std::size_t(layout.rowBytes);
            QByteArray& out = strips[std::size_t(strip)];
            const bool shared = count == layout.rowsPerStrip && transparentRows == count;
            if (!(shared ? zeroStrips.take(compressor, size, &out) : compressor.compress(size, &out))) return counter.fail();
        }
    });
    return !counter.failed();
}

QByteArray writeFile(const Layout& layout, const std::vector<QByteArray>& strips, QString* error)
{
    qsizetype total = 1024 + qsizetype(strips.size()) * 8;
    for (const QByteArray& s : strips) total += s.size();
    TiffHandle handle;
    auto fail = [&](const QString& fallback) {
        if (error) *error = handle.error(fallback);
        return QByteArray();
    };
    if (!handle.openForWriting(total)) return fail(QStringLiteral("cannot start a TIFF file"));
    TIFF* tif = handle.tiff();
    const uint16_t associatedAlpha = EXTRASAMPLE_ASSOCALPHA;
    const bool tagsSet = TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(layout.width))
        && TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(layout.height))
        && TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, uint16_t(8))
        && TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, uint16_t(layout.samples))
        && TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, uint16_t(PHOTOMETRIC_RGB))
        && TIFFSetField(tif, TIFFTAG_PLANARCONFIG, uint16_t(PLANARCONFIG_CONTIG))
        && TIFFSetField(tif, TIFFTAG_ORIENTATION, uint16_t(ORIENTATION_TOPLEFT))
        && TIFFSetField(tif, TIFFTAG_COMPRESSION, uint16_t(COMPRESSION_ADOBE_DEFLATE))
        && TIFFSetField(tif, TIFFTAG_PREDICTOR, uint16_t(PREDICTOR_HORIZONTAL))
        && TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, uint32_t(layout.rowsPerStrip))
        && (layout.samples == 3 || TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, uint16_t(1), &associatedAlpha));
    if (!tagsSet) return fail(QStringLiteral("cannot describe the image to libtiff"));
    for (std::size_t i = 0; i < strips.size(); ++i) {
        // libtiff only copies from the buffer; its prototype predates const.
        void* data = const_cast<char*>(strips[i].constData());
        if (TIFFWriteRawStrip(tif, uint32_t(i), data, tmsize_t(strips[i].size())) < 0)
            return fail(QStringLiteral("cannot write strip %1").arg(i));
    }
    QByteArray bytes = handle.finish();
    if (bytes.isEmpty()) return fail(QStringLiteral("cannot finish the TIFF file"));
    return bytes;
}

}  // namespace

QByteArray encodeUncached(const QImage& original, QString* error)
{
    if (original.isNull()) {
        if (error) *error = QStringLiteral("a null image has no TIFF form");
        return {};
    }
    const QImage image = encodableImage(original);
    SourceRows rows;
    if (image.isNull() || !sourceRowsFor(image.format(), &rows)) {
        if (error) *error = QStringLiteral("cannot convert the image for TIFF");
        return {};
    }
    const Layout layout = layoutFor(image, isOpaque(image, rows) ? 3 : 4);
    std::vector<QByteArray> strips;
    if (!compressStrips(image, rows, layout, strips)) {
        if (error) *error = QStringLiteral("cannot compress the image");
        return {};
    }
    return writeFile(layout, strips, error);
}

}  // namespace quartz::tiff
