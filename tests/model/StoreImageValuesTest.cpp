// Image values in the store: TIFF now, PNG in stores written before, and
// the bytes a store was read with are what it is saved with again.
#include "ModelFixture.h"

#include "model/StoreFile.h"
#include "model/StoreValueCodec.h"
#include "quartz/EncodedImageCache.h"
#include "quartz/TiffCodec.h"

#include <QBuffer>
#include <QFile>
#include <QImage>

using namespace model;

namespace {

// The picture in tests/fixtures/store/png_images.xml: straight alpha, with
// colour under a transparent pixel.
QImage goldenPicture()
{
    QImage image(6, 4, QImage::Format_ARGB32);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) image.setPixel(x, y, qRgba(40 * x, 60 * y, 200 - 20 * x, std::min(255, x * 40 + y * 60)));
    return image;
}

QImage translucentPicture()
{
    QImage image(33, 17, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, qPremultiply(qRgba(x * 7, y * 15, 90, (x * y * 3) & 0xff)));
    return image;
}

QByteArray written(const QVariant& value)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    storecodec::writeValue(xml, value);
    return bytes;
}

struct Reading {
    bool ok = false;
    QVariant value;
    QString error;
};

Reading read(const QByteArray& element)
{
    QXmlStreamReader xml(element);
    Reading r;
    if (xml.readNextStartElement()) r.ok = storecodec::readValue(xml, r.value, r.error);
    return r;
}

QByteArray elementText(const QByteArray& element)
{
    const qsizetype start = element.indexOf('>') + 1;
    return element.mid(start, element.lastIndexOf('<') - start);
}

}  // namespace

TEST(StoreImageValues, ImagesAreWrittenAsTiffAndReadBackExactly)
{
    const QImage image = translucentPicture();
    const QByteArray element = written(image);
    EXPECT_TRUE(element.startsWith("<value type=\"tiff\">SUkqA")) << "base64 of \"II*\\0\": " << element.left(40).toStdString();
    const QByteArray tiff = QByteArray::fromBase64(elementText(element));
    EXPECT_EQ(QImage::fromData(tiff, "TIFF").convertToFormat(QImage::Format_ARGB32_Premultiplied), image)
        << "any TIFF reader opens what the store holds";
    const Reading back = read(element);
    ASSERT_TRUE(back.ok) << back.error.toStdString();
    ASSERT_EQ(back.value.metaType().id(), QMetaType::QImage);
    EXPECT_EQ(back.value.value<QImage>(), image);
}

TEST(StoreImageValues, AStoreIsSavedWithTheImageBytesItWasReadWith)
{
    // Bytes of another writer: encoding the image anew would give others.
    const QImage image = translucentPicture();
    QByteArray foreign;
    QBuffer buffer(&foreign);
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(image.save(&buffer, "TIFF"));
    ASSERT_NE(foreign, quartz::tiff::encodeUncached(image));
    const QByteArray element = "<value type=\"tiff\">" + foreign.toBase64() + "</value>";
    const Reading first = read(element);
    ASSERT_TRUE(first.ok) << first.error.toStdString();
    EXPECT_EQ(written(first.value), element);
}

TEST(StoreImageValues, DamagedTiffValuesAreErrorsWithTheLine)
{
    const QByteArray tiff = quartz::tiff::encodeUncached(translucentPicture());
    const QByteArray truncated = "<store>\n<value type=\"tiff\">" + tiff.left(tiff.size() / 2).toBase64() + "</value></store>";
    QXmlStreamReader xml(truncated);
    ASSERT_TRUE(xml.readNextStartElement());
    ASSERT_TRUE(xml.readNextStartElement());
    QVariant value;
    QString error;
    EXPECT_FALSE(storecodec::readValue(xml, value, error));
    EXPECT_TRUE(error.startsWith(QLatin1String("line 2: an image that is not readable TIFF data"))) << error.toStdString();
    EXPECT_FALSE(read("<v type=\"tiff\">iVBORw0KGgo=</v>").ok) << "PNG bytes are no TIFF";
}

TEST(StoreImageValues, AnEmptyTiffValueIsANullImage)
{
    const Reading r = read("<v type=\"tiff\"></v>");
    ASSERT_TRUE(r.ok) << r.error.toStdString();
    EXPECT_TRUE(r.value.value<QImage>().isNull());
}

class StoreImageFiles : public ModelFixture {};

TEST_F(StoreImageFiles, StoresWithPngImagesStillOpenAndAreSavedAsTiff)
{
    QFile file(QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/store/png_images.xml"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray old = file.readAll();
    ASSERT_TRUE(old.contains("type=\"image\">iVBOR")) << "the fixture keeps PNG values";
    const LoadedStore loaded = StoreFile::read(old);
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    const QImage expected = goldenPicture();
    // PNG is straight alpha: read as before, exactly, colour under zero alpha included.
    EXPECT_EQ(loaded.composition->backgroundImage().convertToFormat(QImage::Format_ARGB32), expected);
    const QuartzComponent* logo = loaded.composition->componentArray().at(0);
    EXPECT_EQ(logo->attributeForKey(QStringLiteral("Image"))->currentValue().value<QImage>().convertToFormat(QImage::Format_ARGB32),
              expected);

    const QByteArray saved = StoreFile::write(*loaded.store);
    EXPECT_FALSE(saved.contains("type=\"image\"")) << "images are written as TIFF from now on";
    EXPECT_EQ(saved.count("type=\"tiff\">SUkq"), 2);
    const LoadedStore again = StoreFile::read(saved);
    ASSERT_TRUE(again) << again.error.toStdString();
    EXPECT_EQ(again.composition->backgroundImage(), expected.convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

TEST_F(StoreImageFiles, SavingAReadStoreAgainEncodesNothing)
{
    composition->setBackgroundImage(translucentPicture());
    addAttribute(addComponent(QStringLiteral("Logo")), QStringLiteral("Image"), kTypeImage, translucentPicture());
    const QByteArray first = StoreFile::write(store);

    quartz::tiff::EncodedImageCache::shared().clear();
    const LoadedStore loaded = StoreFile::read(first);
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    const QByteArray second = StoreFile::write(*loaded.store);
    EXPECT_EQ(second, first);
    const auto cache = quartz::tiff::EncodedImageCache::shared().statistics();
    EXPECT_EQ(cache.misses, 0u) << "every image came from the bytes it was read with";
    EXPECT_EQ(cache.hits, 2u);
}
