// What the encoder writes: plain Deflate TIFF with the horizontal predictor
// that libtiff and Qt's reader both read back pixel for pixel.
#include "TiffTestSupport.h"

#include "quartz/TiffCodec.h"

using namespace tifftest;
namespace codec = quartz::tiff;

namespace {

struct Picture {
    const char* name;
    QImage image;
};

void PrintTo(const Picture& p, std::ostream* os) { *os << p.name; }

std::vector<Picture> pictures()
{
    QImage onePixel(1, 1, QImage::Format_ARGB32_Premultiplied);
    onePixel.fill(qRgba(40, 20, 10, 128));
    QImage opaque = gradientWithNoise(64, 40, false);
    QImage translucent = gradientWithNoise(61, 33, true);
    // Every premultiplied value under every alpha of one row, kept exactly.
    QImage allAlphas(256, 33, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < allAlphas.height(); ++y)
        for (int a = 0; a < 256; ++a) {
            const int c = std::min(a, y * 8);
            allAlphas.setPixel(a, y, qRgba(c, a - c / 2, c / 3, a));
        }
    return {{"one_pixel", onePixel},          {"opaque", opaque},           {"translucent_odd_width", translucent},
            {"every_alpha", allAlphas},       {"odd_width_3", gradientWithNoise(3, 5, true)},
            {"tall_1x300", gradientWithNoise(1, 300, true)}};
}

class TiffEncodeRoundTrip : public testing::TestWithParam<Picture> {};

TEST_P(TiffEncodeRoundTrip, LibtiffReadsThePixelsBack)
{
    const QImage& image = GetParam().image;
    QString error;
    const QByteArray bytes = codec::encodeUncached(image, &error);
    ASSERT_FALSE(bytes.isEmpty()) << error.toStdString();
    LibtiffFile file(bytes);
    ASSERT_TRUE(file.tiff());
    EXPECT_EQ(firstDifference(file.rgbaImage(), image), "");
}

TEST_P(TiffEncodeRoundTrip, QtReadsThePixelsBack)
{
    const QImage& image = GetParam().image;
    const QImage read = QImage::fromData(codec::encodeUncached(image), "TIFF");
    ASSERT_FALSE(read.isNull());
    EXPECT_EQ(firstDifference(read, image), "");
}

TEST_P(TiffEncodeRoundTrip, OurReaderReadsThePixelsBack)
{
    const QImage& image = GetParam().image;
    QString error;
    const QImage read = codec::decodeUncached(codec::encodeUncached(image), &error);
    ASSERT_FALSE(read.isNull()) << error.toStdString();
    EXPECT_EQ(read.format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(firstDifference(read, image), "");
}

INSTANTIATE_TEST_SUITE_P(Pictures, TiffEncodeRoundTrip, testing::ValuesIn(pictures()),
                         [](const testing::TestParamInfo<Picture>& info) { return std::string(info.param.name); });

TEST(TiffEncode, A4kLayerOnSeveralThreadsReadsBackExactly)
{
    const QImage layer = gradientWithNoise(3840, 2160, true);
    const QByteArray bytes = codec::encodeUncached(layer);
    LibtiffFile file(bytes);
    ASSERT_TRUE(file.tiff());
    EXPECT_GT(TIFFNumberOfStrips(file.tiff()), 1u) << "strips are what the threads share out";
    EXPECT_EQ(firstDifference(file.rgbaImage(), layer), "");
    EXPECT_EQ(firstDifference(QImage::fromData(bytes, "TIFF"), layer), "");
    EXPECT_EQ(firstDifference(codec::decodeUncached(bytes), layer), "");
    EXPECT_LT(bytes.size(), layer.sizeInBytes() / 3);
}

TEST(TiffEncode, WritesDeflateWithThePredictorAndAssociatedAlpha)
{
    LibtiffFile file(codec::encodeUncached(gradientWithNoise(300, 200, true)));
    ASSERT_TRUE(file.tiff());
    EXPECT_EQ(file.field<uint16_t>(TIFFTAG_COMPRESSION), COMPRESSION_ADOBE_DEFLATE);
    EXPECT_EQ(file.field<uint16_t>(TIFFTAG_PREDICTOR), PREDICTOR_HORIZONTAL);
    EXPECT_EQ(file.field<uint16_t>(TIFFTAG_PHOTOMETRIC), PHOTOMETRIC_RGB);
    EXPECT_EQ(file.field<uint16_t>(TIFFTAG_BITSPERSAMPLE), 8);
    EXPECT_EQ(file.field<uint16_t>(TIFFTAG_SAMPLESPERPIXEL), 4);
    EXPECT_EQ(file.field<uint16_t>(TIFFTAG_PLANARCONFIG), PLANARCONFIG_CONTIG);
    uint16_t count = 0;
    uint16_t* kinds = nullptr;
    ASSERT_TRUE(TIFFGetField(file.tiff(), TIFFTAG_EXTRASAMPLES, &count, &kinds));
    ASSERT_EQ(count, 1);
    EXPECT_EQ(kinds[0], EXTRASAMPLE_ASSOCALPHA);
    EXPECT_FALSE(TIFFIsTiled(file.tiff()));
}

TEST(TiffEncode, OpaqueImagesAreWrittenWithoutAlpha)
{
    QImage opaqueWithAlphaChannel = gradientWithNoise(50, 20, false).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    ASSERT_TRUE(opaqueWithAlphaChannel.hasAlphaChannel());
    LibtiffFile file(codec::encodeUncached(opaqueWithAlphaChannel));
    ASSERT_TRUE(file.tiff());
    EXPECT_EQ(file.field<uint16_t>(TIFFTAG_SAMPLESPERPIXEL), 3);
    EXPECT_EQ(firstDifference(file.rgbaImage(), opaqueWithAlphaChannel), "");

    QImage oneTranslucentPixel = opaqueWithAlphaChannel;
    oneTranslucentPixel.setPixel(49, 19, qRgba(0, 0, 0, 254));
    LibtiffFile withAlpha(codec::encodeUncached(oneTranslucentPixel));
    EXPECT_EQ(withAlpha.field<uint16_t>(TIFFTAG_SAMPLESPERPIXEL), 4) << "the last pixel alone needs alpha";
}

// Straight-alpha and other formats are written premultiplied, as QImage
// itself premultiplies them; opaque and 8-bit formats lose nothing.
TEST(TiffEncode, EveryImageFormatBecomesWhatQImageWouldPremultiply)
{
    const QImage source = gradientWithNoise(45, 17, true);
    const QImage straight = source.convertToFormat(QImage::Format_ARGB32);
    const QImage opaque = gradientWithNoise(45, 17, false);
    const QImage::Format formats[] = {QImage::Format_ARGB32,          QImage::Format_RGBA8888,
                                      QImage::Format_RGBA8888_Premultiplied, QImage::Format_RGBA64,
                                      QImage::Format_ARGB4444_Premultiplied, QImage::Format_Indexed8};
    for (QImage::Format format : formats) {
        const QImage image = straight.convertToFormat(format);
        const QImage read = codec::decodeUncached(codec::encodeUncached(image));
        EXPECT_EQ(firstDifference(read, image.convertToFormat(QImage::Format_ARGB32_Premultiplied)), "") << "format " << format;
    }
    const QImage::Format opaqueFormats[] = {QImage::Format_RGB32, QImage::Format_RGB888, QImage::Format_RGBX8888,
                                            QImage::Format_Grayscale8, QImage::Format_RGB16, QImage::Format_BGR888};
    for (QImage::Format format : opaqueFormats) {
        const QImage image = opaque.convertToFormat(format);
        LibtiffFile file(codec::encodeUncached(image));
        EXPECT_EQ(file.field<uint16_t>(TIFFTAG_SAMPLESPERPIXEL), 3) << "format " << format;
        EXPECT_EQ(firstDifference(file.rgbaImage(), image.convertToFormat(QImage::Format_ARGB32_Premultiplied)), "")
            << "format " << format;
    }
}

TEST(TiffEncode, StripsAreSharedOutLikeLibtiffExpects)
{
    // A height that is no multiple of the strip height leaves a short last strip.
    const QImage image = gradientWithNoise(1000, 123, true);
    LibtiffFile file(codec::encodeUncached(image));
    ASSERT_TRUE(file.tiff());
    const uint32_t rowsPerStrip = file.field<uint32_t>(TIFFTAG_ROWSPERSTRIP);
    ASSERT_GT(rowsPerStrip, 0u);
    EXPECT_EQ(TIFFNumberOfStrips(file.tiff()), (123 + rowsPerStrip - 1) / rowsPerStrip);
    std::vector<uint8_t> strip(std::size_t(TIFFStripSize(file.tiff())));
    for (uint32_t s = 0; s < TIFFNumberOfStrips(file.tiff()); ++s)
        EXPECT_GT(TIFFReadEncodedStrip(file.tiff(), s, strip.data(), tmsize_t(strip.size())), 0) << "strip " << s;
}

TEST(TiffEncode, LargeTransparentAreasCostAlmostNothing)
{
    QImage mostlyEmpty(2000, 600, QImage::Format_ARGB32_Premultiplied);
    mostlyEmpty.fill(Qt::transparent);
    for (int x = 0; x < 2000; ++x) mostlyEmpty.setPixel(x, 599, qRgba(x & 0xff, 0, 0, 255));
    const QByteArray bytes = codec::encodeUncached(mostlyEmpty);
    LibtiffFile file(bytes);
    ASSERT_TRUE(file.tiff());
    EXPECT_EQ(firstDifference(file.rgbaImage(), mostlyEmpty), "");
    EXPECT_LT(bytes.size(), 40000) << "4.8 MB of transparency compresses to almost nothing";
}

TEST(TiffEncode, ANullImageHasNoBytes)
{
    QString error;
    EXPECT_TRUE(codec::encodeUncached(QImage(), &error).isEmpty());
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(codec::encode(QImage()).isEmpty());
}

TEST(TiffEncode, RecognisesBothByteOrders)
{
    EXPECT_TRUE(codec::isTiff(QByteArrayView("II*\0rest", 8)));
    EXPECT_TRUE(codec::isTiff(QByteArrayView("MM\0*rest", 8)));
    EXPECT_FALSE(codec::isTiff(QByteArrayView("\x89PNG\r\n", 6)));
    EXPECT_FALSE(codec::isTiff(QByteArrayView("II*", 3)));
    EXPECT_FALSE(codec::isTiff(QByteArrayView()));
}

}  // namespace
