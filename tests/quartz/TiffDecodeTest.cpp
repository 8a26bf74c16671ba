// Reading TIFF files other programs wrote (tests/fixtures/tiff, made by
// make_fixtures.sh with libtiff-tools and ImageMagick) and every orientation.
#include "TiffTestSupport.h"

#include "quartz/TiffCodec.h"

#include <QFile>

using namespace tifftest;
namespace codec = quartz::tiff;

namespace {

QByteArray fixture(const QString& name)
{
    QFile file(kFixtures + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QImage png(const QString& name) { return QImage(kFixtures + name, "PNG"); }

struct Fixture {
    const char* file;
    const char* expected;  // PNG beside the fixtures
    int tolerance;
};

void PrintTo(const Fixture& f, std::ostream* os) { *os << f.file; }

class TiffFixture : public testing::TestWithParam<Fixture> {};

TEST_P(TiffFixture, ReadsWhatTheWriterMeant)
{
    const Fixture& f = GetParam();
    const QByteArray bytes = fixture(QString::fromLatin1(f.file));
    ASSERT_FALSE(bytes.isEmpty()) << f.file;
    const QImage expected = png(QString::fromLatin1(f.expected));
    ASSERT_FALSE(expected.isNull()) << f.expected;
    QString error;
    const QImage image = codec::decodeUncached(bytes, &error);
    ASSERT_FALSE(image.isNull()) << error.toStdString();
    EXPECT_EQ(image.format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(firstDifference(image, expected, f.tolerance), "");
}

INSTANTIATE_TEST_SUITE_P(
    OtherWriters, TiffFixture,
    testing::Values(Fixture{"rgba8_none.tif", "rgba.png", 0}, Fixture{"rgba8_lzw.tif", "rgba.png", 0},
                    Fixture{"rgba8_zip.tif", "rgba.png", 0}, Fixture{"rgba8_packbits.tif", "rgba.png", 0},
                    Fixture{"rgba8_packbits_bigendian.tif", "rgba.png", 0}, Fixture{"rgba8_zip_tiled.tif", "rgba.png", 0},
                    Fixture{"rgba8_lzw_planar.tif", "rgba.png", 0}, Fixture{"rgba16_lzw.tif", "rgba.png", 0},
                    // ImageMagick premultiplies with a rounding of its own.
                    Fixture{"rgba8_zip_associated.tif", "rgba.png", 1}, Fixture{"rgb8_lzw_predictor.tif", "rgb.png", 0},
                    Fixture{"rgb8_zip_predictor_strips.tif", "rgb.png", 0},
                    Fixture{"gray8_zip.tif", "expected/gray8_zip.png", 0},
                    // A 16-bit colour map, scaled to 8 bits by shifting or by rounding.
                    Fixture{"palette8_lzw.tif", "expected/palette8_lzw.png", 1},
                    // Two JPEG decoders and their YCbCr conversions.
                    Fixture{"rgb8_jpeg.tif", "expected/rgb8_jpeg.png", 6},
                    Fixture{"rgba8_zip_orientation2.tif", "expected/rgba8_zip_orientation2.png", 0},
                    Fixture{"rgba8_zip_orientation3.tif", "expected/rgba8_zip_orientation3.png", 0},
                    Fixture{"rgba8_zip_orientation4.tif", "expected/rgba8_zip_orientation4.png", 0},
                    Fixture{"rgba8_zip_orientation5.tif", "expected/rgba8_zip_orientation5.png", 0},
                    Fixture{"rgba8_zip_orientation6.tif", "expected/rgba8_zip_orientation6.png", 0},
                    Fixture{"rgba8_zip_orientation7.tif", "expected/rgba8_zip_orientation7.png", 0},
                    Fixture{"rgba8_zip_orientation8.tif", "expected/rgba8_zip_orientation8.png", 0}),
    [](const testing::TestParamInfo<Fixture>& info) {
        std::string name = info.param.file;
        return name.substr(0, name.find('.'));
    });

// Every orientation through both reading paths: the strip reader (8-bit RGB
// in strips) and libtiff's RGBA reader (here: 16 bits a sample).
TEST(TiffDecode, OrientationsTurnTheStoredRowsAsTheTagSays)
{
    const QImage stored = gradientWithNoise(7, 4, true);
    for (const bool sixteenBits : {false, true}) {
        for (uint16_t orientation = 1; orientation <= 8; ++orientation) {
            QTemporaryFile file;
            ASSERT_TRUE(file.open());
            TIFF* out = TIFFOpen(file.fileName().toLocal8Bit().constData(), "w");
            ASSERT_TRUE(out);
            const uint16_t alpha = EXTRASAMPLE_ASSOCALPHA;
            TIFFSetField(out, TIFFTAG_IMAGEWIDTH, uint32_t(stored.width()));
            TIFFSetField(out, TIFFTAG_IMAGELENGTH, uint32_t(stored.height()));
            TIFFSetField(out, TIFFTAG_BITSPERSAMPLE, uint16_t(sixteenBits ? 16 : 8));
            TIFFSetField(out, TIFFTAG_SAMPLESPERPIXEL, uint16_t(4));
            TIFFSetField(out, TIFFTAG_EXTRASAMPLES, uint16_t(1), &alpha);
            TIFFSetField(out, TIFFTAG_PHOTOMETRIC, uint16_t(PHOTOMETRIC_RGB));
            TIFFSetField(out, TIFFTAG_PLANARCONFIG, uint16_t(PLANARCONFIG_CONTIG));
            TIFFSetField(out, TIFFTAG_ORIENTATION, orientation);
            TIFFSetField(out, TIFFTAG_ROWSPERSTRIP, uint32_t(1));
            for (int y = 0; y < stored.height(); ++y) {
                std::vector<uint16_t> row16;
                std::vector<uint8_t> row8;
                for (int x = 0; x < stored.width(); ++x) {
                    const QRgb p = stored.pixel(x, y);
                    for (int c : {qRed(p), qGreen(p), qBlue(p), qAlpha(p)}) {
                        row8.push_back(uint8_t(c));
                        row16.push_back(uint16_t(c * 257));
                    }
                }
                void* row = sixteenBits ? static_cast<void*>(row16.data()) : static_cast<void*>(row8.data());
                ASSERT_EQ(TIFFWriteScanline(out, row, uint32_t(y), 0), 1);
            }
            TIFFClose(out);

            // TIFF 6.0: the first stored row is the visual top (1-4) or a
            // visual side (5-8); the first stored column the other edge.
            const bool transposed = orientation >= 5;
            const int w = transposed ? stored.height() : stored.width();
            const int h = transposed ? stored.width() : stored.height();
            QImage expected(w, h, QImage::Format_ARGB32_Premultiplied);
            for (int r = 0; r < stored.height(); ++r)
                for (int c = 0; c < stored.width(); ++c) {
                    const int R = stored.height(), C = stored.width();
                    int x = c, y = r;
                    switch (orientation) {
                    case 2: x = C - 1 - c; break;
                    case 3: x = C - 1 - c, y = R - 1 - r; break;
                    case 4: y = R - 1 - r; break;
                    case 5: x = r, y = c; break;
                    case 6: x = R - 1 - r, y = c; break;
                    case 7: x = R - 1 - r, y = C - 1 - c; break;
                    case 8: x = r, y = C - 1 - c; break;
                    }
                    expected.setPixel(x, y, stored.pixel(c, r));
                }
            QFile read(file.fileName());
            ASSERT_TRUE(read.open(QIODevice::ReadOnly));
            QString error;
            const QImage image = codec::decodeUncached(read.readAll(), &error);
            EXPECT_EQ(firstDifference(image, expected), "")
                << "orientation " << orientation << (sixteenBits ? ", 16 bits " : ", 8 bits ") << error.toStdString();
        }
    }
}

TEST(TiffDecode, AssociatedColourAboveItsAlphaIsClamped)
{
    // Premultiplied values larger than their alpha are not valid pixels.
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    TIFF* out = TIFFOpen(file.fileName().toLocal8Bit().constData(), "w");
    ASSERT_TRUE(out);
    const uint16_t alpha = EXTRASAMPLE_ASSOCALPHA;
    TIFFSetField(out, TIFFTAG_IMAGEWIDTH, uint32_t(2));
    TIFFSetField(out, TIFFTAG_IMAGELENGTH, uint32_t(1));
    TIFFSetField(out, TIFFTAG_BITSPERSAMPLE, uint16_t(8));
    TIFFSetField(out, TIFFTAG_SAMPLESPERPIXEL, uint16_t(4));
    TIFFSetField(out, TIFFTAG_EXTRASAMPLES, uint16_t(1), &alpha);
    TIFFSetField(out, TIFFTAG_PHOTOMETRIC, uint16_t(PHOTOMETRIC_RGB));
    uint8_t row[] = {200, 10, 90, 100, 5, 6, 7, 0};
    TIFFWriteScanline(out, row, 0, 0);
    TIFFClose(out);
    QFile read(file.fileName());
    ASSERT_TRUE(read.open(QIODevice::ReadOnly));
    const QImage image = codec::decodeUncached(read.readAll());
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.pixel(0, 0), qRgba(100, 10, 90, 100));
    EXPECT_EQ(image.pixel(1, 0), qRgba(0, 0, 0, 0));
}

TEST(TiffDecode, ReadsTheFirstImageOfAFileWithSeveral)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    TIFF* out = TIFFOpen(file.fileName().toLocal8Bit().constData(), "w");
    ASSERT_TRUE(out);
    for (int page = 0; page < 2; ++page) {
        TIFFSetField(out, TIFFTAG_IMAGEWIDTH, uint32_t(3 + page));
        TIFFSetField(out, TIFFTAG_IMAGELENGTH, uint32_t(1));
        TIFFSetField(out, TIFFTAG_BITSPERSAMPLE, uint16_t(8));
        TIFFSetField(out, TIFFTAG_SAMPLESPERPIXEL, uint16_t(3));
        TIFFSetField(out, TIFFTAG_PHOTOMETRIC, uint16_t(PHOTOMETRIC_RGB));
        uint8_t row[12] = {uint8_t(page * 100)};
        TIFFWriteScanline(out, row, 0, 0);
        TIFFWriteDirectory(out);
    }
    TIFFClose(out);
    QFile read(file.fileName());
    ASSERT_TRUE(read.open(QIODevice::ReadOnly));
    const QImage image = codec::decodeUncached(read.readAll());
    EXPECT_EQ(image.size(), QSize(3, 1));
    EXPECT_EQ(image.pixel(0, 0), qRgb(0, 0, 0));
}

}  // namespace
