// Images embedded in composition files: TIFF through the TIFF codec (any
// writer's layout), everything else through Qt's readers.
#include "runtime/Image.h"

#include "quartz/EncodedImageCache.h"
#include "quartz/TiffCodec.h"

#include <QBuffer>
#include <QFile>

#include <gtest/gtest.h>

using runtime::Image;

namespace {

QImage picture()
{
    QImage image(9, 5, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, qPremultiply(qRgba(x * 28, y * 50, 77, 40 + x * 20)));
    return image;
}

QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

}  // namespace

TEST(EncodedImage, TiffOfAnyWriterBecomesThePremultipliedRaster)
{
    const QImage expected = picture();
    for (const QByteArray& bytes : {quartz::tiff::encodeUncached(expected), encoded(expected, "TIFF")}) {
        QString error;
        const Image image = Image::fromEncodedData(bytes, &error);
        ASSERT_FALSE(image.isNull()) << error.toStdString();
        EXPECT_EQ(image.raster().format(), QImage::Format_ARGB32_Premultiplied);
        EXPECT_EQ(image.raster(), expected);
    }
    QFile tiled(QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/tiff/rgba8_zip_tiled.tif"));
    ASSERT_TRUE(tiled.open(QIODevice::ReadOnly));
    EXPECT_EQ(Image::fromEncodedData(tiled.readAll()).pixelSize(), QSize(37, 21));
}

TEST(EncodedImage, DecodingATiffKeepsItsBytesForTheNextSave)
{
    quartz::tiff::EncodedImageCache::shared().clear();
    const QByteArray bytes = encoded(picture(), "TIFF");
    const Image image = Image::fromEncodedData(bytes);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(quartz::tiff::encode(image.raster()).constData(), bytes.constData());
}

TEST(EncodedImage, OtherFormatsStillGoThroughQt)
{
    const Image png = Image::fromEncodedData(encoded(picture(), "PNG"));
    EXPECT_EQ(png.raster(), picture());
}

TEST(EncodedImage, DamagedTiffIsANullImageWithAReason)
{
    const QByteArray bytes = quartz::tiff::encodeUncached(picture());
    QString error;
    EXPECT_TRUE(Image::fromEncodedData(bytes.left(bytes.size() - 30), &error).isNull());
    EXPECT_FALSE(error.isEmpty());
}

TEST(EncodedImage, BytesOfAnImageStillHeldAreNotDecodedAgain)
{
    // A straight-alpha layer, encoded for a file that is then played at once.
    quartz::tiff::EncodedImageCache::shared().clear();
    const QImage layer = picture().convertToFormat(QImage::Format_RGBA8888);
    const QByteArray written = quartz::tiff::encode(layer);
    const QByteArray readBack(written.constData(), written.size());  // another copy, as from a file
    const Image image = Image::fromEncodedData(readBack);
    EXPECT_EQ(image.raster(), picture()) << "premultiplied, as decoding would give it";
    EXPECT_EQ(quartz::tiff::EncodedImageCache::shared().statistics().imageHits, 1u);

    QByteArray changed = readBack;
    changed[changed.size() - 1] = char(changed[changed.size() - 1] ^ 1);
    EXPECT_TRUE(quartz::tiff::sourceImage(changed).isNull()) << "other bytes are decoded";
}
