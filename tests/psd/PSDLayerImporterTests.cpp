// The import's layer list: canvas-coordinate origins, visibility and the
// combined image of the visible layers.
#include "PsdTestBuilder.h"
#include "psd/PSDLayerImporter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace psdtest;

namespace {

const QString kLayered = QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/psd/agpsd_rgb8_rle.psd");

const psd::PSDLayer* find(const psd::PSDLayerImporter& importer, const QString& name)
{
    for (const psd::PSDLayer& layer : importer.layers())
        if (layer.name() == name) return &layer;
    return nullptr;
}

TEST(PSDLayerImporter, MissingPathsFoldersAndEmptyDataGiveNoImporter)
{
    std::string error;
    EXPECT_FALSE(psd::PSDLayerImporter::fromPath(QStringLiteral("/nonexistent/file.psd"), false, &error));
    EXPECT_NE(error.find("does not exist"), std::string::npos);
    EXPECT_FALSE(psd::PSDLayerImporter::fromPath(QDir::tempPath(), false, &error));
    EXPECT_NE(error.find("is a folder"), std::string::npos);
    EXPECT_FALSE(psd::PSDLayerImporter::fromData(QByteArray(), false, &error));
    EXPECT_FALSE(psd::PSDLayerImporter::fromData(QByteArray("8BPS"), false, &error));
}

// The file is read through a mapping; what the importer keeps must not
// depend on it once the file is closed and gone.
TEST(PSDLayerImporter, LayersFromAFileOutliveItAndMatchThoseFromItsBytes)
{
    QTemporaryDir dir;
    const QString copy = dir.filePath("copy.psd");
    ASSERT_TRUE(QFile::copy(kLayered, copy));
    std::string error;
    const auto fromFile = psd::PSDLayerImporter::fromPath(copy, false, &error);
    ASSERT_TRUE(fromFile) << error;
    ASSERT_TRUE(QFile::remove(copy));

    QFile original(kLayered);
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    const auto fromBytes = psd::PSDLayerImporter::fromData(original.readAll(), false, &error);
    ASSERT_TRUE(fromBytes) << error;
    ASSERT_EQ(fromFile->layerCount(), fromBytes->layerCount());
    for (int i = 0; i < fromFile->layerCount(); ++i)
        EXPECT_TRUE(fromFile->layers()[size_t(i)].image() == fromBytes->layers()[size_t(i)].image()) << i;
    EXPECT_TRUE(fromFile->mergedImage() == fromBytes->mergedImage());

    QFile empty(dir.filePath("empty.psd"));
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    empty.close();
    EXPECT_FALSE(psd::PSDLayerImporter::fromPath(empty.fileName(), false, &error));
    EXPECT_EQ(error, "no data");
}

TEST(PSDLayerImporter, OriginsAreLowerLeftInCanvasCoordinatesUnlessFlipped)
{
    std::string error;
    const auto canvas = psd::PSDLayerImporter::fromPath(kLayered, false, &error);
    ASSERT_TRUE(canvas) << error;
    EXPECT_EQ(canvas->PSDImageSize(), QSizeF(24, 16));
    EXPECT_EQ(canvas->filename(), QStringLiteral("agpsd_rgb8_rle"));
    EXPECT_EQ(canvas->path(), kLayered);
    const psd::PSDLayer* halfRed = find(*canvas, QStringLiteral("Half red"));
    ASSERT_TRUE(halfRed);
    // Bounds (-4, -3) to (6, 5) in the file; the canvas counts y up from the bottom edge.
    EXPECT_EQ(halfRed->origin(), QPointF(-4, 16 - 5));
    EXPECT_NEAR(halfRed->opacity(), 0.4, 0.003);
    const psd::PSDLayer* unicode = find(*canvas, QStringLiteral("Ünïcødé ✓ 日本"));
    ASSERT_TRUE(unicode);
    EXPECT_EQ(unicode->origin(), QPointF(18, 16 - 18));

    const auto flipped = psd::PSDLayerImporter::fromPath(kLayered, true, &error);
    ASSERT_TRUE(flipped) << error;
    EXPECT_EQ(find(*flipped, QStringLiteral("Half red"))->origin(), QPointF(-4, -3));
}

TEST(PSDLayerImporter, VisibilityCountsHiddenLayersAndHiddenGroups)
{
    auto importer = psd::PSDLayerImporter::fromPath(kLayered, false);
    ASSERT_TRUE(importer);
    EXPECT_EQ(importer->layerCount(), 8);
    EXPECT_FALSE(importer->allLayersVisible());
    EXPECT_FALSE(find(*importer, QStringLiteral("Hidden"))->visible());
    EXPECT_FALSE(find(*importer, QStringLiteral("In hidden group"))->visible());
    EXPECT_TRUE(find(*importer, QStringLiteral("Clipped"))->visible());
    for (psd::PSDLayer& layer : importer->layers()) layer.setVisible(true);
    EXPECT_TRUE(importer->allLayersVisible());

    const auto flat = psd::PSDLayerImporter::fromPath(QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/psd/im_gray8_rle.psd"), false);
    ASSERT_TRUE(flat);
    EXPECT_TRUE(flat->allLayersVisible());
}

TEST(PSDLayerImporter, CombinedImageDrawsVisibleLayersBottomToTopWithOpacity)
{
    Document d;
    d.width = 4;
    d.height = 3;
    Layer bottom;
    bottom.rect = QRect(0, 0, 4, 3);
    for (int id : {0, 1, 2}) bottom.channels.push_back({id, plane(4, 3, [&](int, int) { return id == 0 ? 255 : 0; })});
    Layer top;  // blue, half opacity, on the file's top row
    top.rect = QRect(1, 0, 2, 1);
    top.opacity = 128;
    for (int id : {0, 1, 2}) top.channels.push_back({id, plane(2, 1, [&](int, int) { return id == 2 ? 255 : 0; })});
    Layer hidden = top;  // green, hidden, over everything
    hidden.rect = QRect(0, 0, 4, 3);
    hidden.flags = 0x02;
    hidden.channels.clear();
    for (int id : {0, 1, 2}) hidden.channels.push_back({id, plane(4, 3, [&](int, int) { return id == 1 ? 255 : 0; })});
    d.layers = {bottom, top, hidden};
    d.composite = {plane(4, 3, [](int, int) { return 0; }), plane(4, 3, [](int, int) { return 0; }),
                   plane(4, 3, [](int, int) { return 0; })};

    for (bool flippedCoordinates : {false, true}) {
        std::string error;
        const auto importer = psd::PSDLayerImporter::fromData(build(d), flippedCoordinates, &error);
        ASSERT_TRUE(importer) << error;
        const QImage combined = importer->combinedImageOfVisibleLayers();
        ASSERT_EQ(combined.size(), QSize(4, 3));
        const QRgb blended = combined.pixel(1, 0);
        EXPECT_NEAR(qRed(blended), 127, 2) << "flipped " << flippedCoordinates;
        EXPECT_NEAR(qBlue(blended), 128, 2);
        EXPECT_EQ(qGreen(blended), 0) << "the hidden layer is skipped";
        EXPECT_EQ(combined.pixel(1, 2), qRgb(255, 0, 0)) << "the top layer stays on the top row";
        EXPECT_EQ(combined.pixel(0, 0), qRgb(255, 0, 0));
    }
}

TEST(PSDLayerImporter, NoLayersGiveAnEmptyCombinedImageOfTheDocumentSize)
{
    Document d = smallRgbDocument();
    d.layers.clear();
    const auto importer = psd::PSDLayerImporter::fromData(build(d), false);
    ASSERT_TRUE(importer);
    EXPECT_EQ(importer->layerCount(), 0);
    EXPECT_TRUE(importer->allLayersVisible());
    const QImage combined = importer->combinedImageOfVisibleLayers();
    EXPECT_EQ(combined.size(), QSize(4, 3));
    EXPECT_EQ(qAlpha(combined.pixel(2, 1)), 0);
    EXPECT_EQ(importer->mergedImage().size(), QSize(4, 3));
}

TEST(PSDLayerImporter, DescriptionsListTheLayers)
{
    const auto importer = psd::PSDLayerImporter::fromPath(kLayered, false);
    ASSERT_TRUE(importer);
    const QString text = importer->description();
    EXPECT_TRUE(text.contains(QStringLiteral("layer count: 8, layers:\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("name: Half red, origin: {-4, 11}, opacity: 0.40 is visible: Yes")));
    EXPECT_TRUE(text.contains(QStringLiteral("name: Hidden, origin: {2, 2}, opacity: 1.00 is visible: No")));
}

}  // namespace
