// The layer PNG writer: what Qt's own PNG reader gets back is the image
// that went in, sample for sample, straight alpha included.
#include "psd/PngEncoder.h"

#include <QBuffer>
#include <QImageReader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

namespace {

QImage noiseImage(int width, int height, unsigned seed)
{
    std::mt19937 random(seed);
    QImage image(width, height, QImage::Format_RGBA8888);
    for (int y = 0; y < height; ++y) {
        uchar* row = image.scanLine(y);
        for (int i = 0; i < width * 4; ++i) row[i] = uchar(random());
    }
    return image;
}

QImage readBack(const QByteArray& png)
{
    QBuffer buffer;
    buffer.setData(png);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    return reader.read().convertToFormat(QImage::Format_RGBA8888);
}

QByteArray encode(const QImage& image)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    std::string error;
    EXPECT_TRUE(psd::writePng(image, buffer, &error)) << error;
    return buffer.data();
}

TEST(PngEncoder, QtReadsBackEverySample)
{
    QImage transparentColours(5, 3, QImage::Format_RGBA8888);
    transparentColours.fill(qRgba(200, 100, 50, 0));  // colour under zero alpha must survive
    QImage rowsAlike(300, 40, QImage::Format_RGBA8888);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 300; ++x) rowsAlike.setPixel(x, y, qRgba(x % 256, 7, y < 20 ? 0 : 255, x < 150 ? 0 : 255));
    const QImage images[] = {
        noiseImage(1, 1, 1),    noiseImage(1, 37, 2),  noiseImage(37, 1, 3), noiseImage(33, 17, 4),
        noiseImage(700, 300, 5),  // noise does not compress: several IDAT chunks
        transparentColours,     rowsAlike,
    };
    for (const QImage& image : images) {
        const QImage back = readBack(encode(image));
        ASSERT_EQ(back.size(), image.size());
        EXPECT_TRUE(back == image) << image.width() << "x" << image.height();
    }
}

TEST(PngEncoder, OtherFormatsAreConvertedFirst)
{
    QImage premultiplied(4, 2, QImage::Format_ARGB32_Premultiplied);
    premultiplied.fill(qRgba(100, 50, 0, 128));
    EXPECT_TRUE(readBack(encode(premultiplied)) == premultiplied.convertToFormat(QImage::Format_RGBA8888));
}

TEST(PngEncoder, SavingReplacesFilesAndReportsWhatCannotBeWritten)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("layer.png");
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write(QByteArray(100000, 'x'));
    old.close();
    const QImage image = noiseImage(20, 10, 6);
    std::string error;
    ASSERT_TRUE(psd::savePng(image, path, &error)) << error;
    EXPECT_TRUE(QImage(path).convertToFormat(QImage::Format_RGBA8888) == image);

    EXPECT_FALSE(psd::savePng(image, dir.filePath("missing/folder/layer.png"), &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(psd::savePng(QImage(), dir.filePath("null.png"), &error));
}

}  // namespace
