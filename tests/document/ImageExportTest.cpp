// Images in saved packages: compressed TIFF in the export and the store,
// encoded once, and written again as they were read after a reopen.
#include "../support/ComponentFiles.h"

#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/VideoResolution.h"
#include "plist/PropertyList.h"
#include "quartz/EncodedImageCache.h"
#include "quartz/TiffCodec.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using document::CompositionDocument;
using quartz::tiff::EncodedImageCache;

namespace {

QImage gradient(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x)
            row[x] = qPremultiply(qRgba(x * 255 / width, y * 255 / height, 128, std::min(255, 64 + x / 4)));
    }
    return image;
}

// Every TIFF among the data values of a property-list file, in file order.
void collectTiffs(const plist::Value& value, std::vector<QByteArray>& out)
{
    if (value.isData()) {
        const std::string& bytes = value.dataBytes();
        if (quartz::tiff::isTiff(QByteArrayView(bytes.data(), qsizetype(bytes.size()))))
            out.emplace_back(bytes.data(), qsizetype(bytes.size()));
    } else if (value.isArray()) {
        for (const plist::Value& item : value.array()) collectTiffs(item, out);
    } else if (value.isDictionary()) {
        for (const auto& [key, item] : value.dictionary()) collectTiffs(item, out);
    }
}

std::vector<QByteArray> exportedTiffs(const QString& package)
{
    std::vector<QByteArray> tiffs;
    const auto file = plist::readFile(QDir(package).filePath(QStringLiteral("Composition.qtz")).toStdString());
    if (file) collectTiffs(*file, tiffs);
    return tiffs;
}

class ImageExportTest : public ::testing::Test {
protected:
    ImageExportTest()
        : document(CompositionDocument::emptyDocumentWithResolution(model::VideoResolution::defaultVideoResolution()))
    {
        EncodedImageCache::shared().clear();
    }
    ~ImageExportTest() override { EncodedImageCache::shared().clear(); }

    void addImage(const QImage& image)
    {
        const QString file = testfiles::writeImageComposition(QDir(dir.path()), QStringLiteral("Image.qtz"));
        ASSERT_TRUE(document->composition()->addComponenWithQuartzCompositionFile(file, {{QStringLiteral("Image"), image}}));
    }

    QString package() const { return dir.filePath(QStringLiteral("Template.composition")); }

    QTemporaryDir dir;
    std::unique_ptr<CompositionDocument> document;
};

}  // namespace

TEST_F(ImageExportTest, AnExportedHdImageIsFarSmallerThanItsPixels)
{
    const QImage image = gradient(1920, 1080);
    addImage(image);
    QString error;
    ASSERT_TRUE(document->saveAs(package(), &error)) << error.toStdString();

    const std::vector<QByteArray> tiffs = exportedTiffs(package());
    ASSERT_FALSE(tiffs.empty());
    EXPECT_EQ(QImage::fromData(tiffs.front(), "TIFF").convertToFormat(QImage::Format_ARGB32_Premultiplied), image);
    const qint64 raw = image.sizeInBytes();
    EXPECT_LT(QFileInfo(QDir(package()).filePath(QStringLiteral("Composition.qtz"))).size(), raw / 4);
    EXPECT_LT(QFileInfo(QDir(package()).filePath(QStringLiteral("data.xml"))).size(), raw / 4);
}

TEST_F(ImageExportTest, OneSaveEncodesEachImageOnce)
{
    addImage(gradient(640, 360));
    ASSERT_TRUE(document->saveAs(package(), nullptr));
    // The store, the export and the preview export all wrote the image.
    const auto stats = EncodedImageCache::shared().statistics();
    EXPECT_EQ(stats.misses, 1u);
    EXPECT_GE(stats.hits, 2u);
}

TEST_F(ImageExportTest, AReopenedDocumentExportsTheSameImageBytesWithoutEncoding)
{
    addImage(gradient(640, 360));
    ASSERT_TRUE(document->saveAs(package(), nullptr));
    const std::vector<QByteArray> before = exportedTiffs(package());
    ASSERT_FALSE(before.empty());

    // A fresh process as far as images go: nothing is remembered.
    EncodedImageCache::shared().clear();
    QString error;
    auto reopened = CompositionDocument::open(package(), &error);
    ASSERT_TRUE(reopened) << error.toStdString();
    ASSERT_TRUE(reopened->saveAs(dir.filePath(QStringLiteral("Again.composition")), &error)) << error.toStdString();

    EXPECT_EQ(exportedTiffs(dir.filePath(QStringLiteral("Again.composition"))), before);
    EXPECT_EQ(EncodedImageCache::shared().statistics().misses, 0u) << "every image was written as it was read";
}
