// Layers cut to what they show: the same picture at the same place, without
// transparent margins, premultiplied for drawing.
#include "PsdTestBuilder.h"
#include "psd/LayerTrimming.h"
#include "psd/PSDLayerImporter.h"

#include <gtest/gtest.h>

using namespace psdtest;

namespace {

QImage straight(QSize size, QRect visible, QColor colour)
{
    QImage image(size, QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    for (int y = visible.top(); y <= visible.bottom(); ++y)
        for (int x = visible.left(); x <= visible.right(); ++x) image.setPixelColor(x, y, colour);
    return image;
}

// A 20x12 document: one full-canvas layer holding a box at (5, 3) of 6x4,
// and one layer with nothing visible at all.
Document boxDocument()
{
    Document d;
    d.width = 20;
    d.height = 12;
    Layer box;
    box.rect = QRect(0, 0, 20, 12);
    box.pascalName = "Box";
    const QRect inside(5, 3, 6, 4);
    for (int id : {0, 1, 2, -1})
        box.channels.push_back({id, plane(20, 12, [&](int x, int y) {
                                    if (!inside.contains(x, y)) return 0;
                                    return id == -1 ? 128 : 50 * (id + 1) + x;
                                })});
    d.layers.push_back(box);
    Layer clear;
    clear.rect = QRect(2, 2, 4, 4);
    clear.pascalName = "Clear";
    for (int id : {0, 1, 2, -1}) clear.channels.push_back({id, plane(4, 4, [](int, int) { return 0; })});
    d.layers.push_back(clear);
    for (int c = 0; c < 3; ++c) d.composite.push_back(plane(20, 12, [](int, int) { return 0; }));
    return d;
}

}  // namespace

TEST(LayerTrimming, VisibleBoundsFindEveryEdge)
{
    EXPECT_EQ(psd::visibleBounds(straight({9, 7}, QRect(2, 1, 3, 4), Qt::red)), QRect(2, 1, 3, 4));
    EXPECT_EQ(psd::visibleBounds(straight({9, 7}, QRect(0, 0, 9, 7), Qt::red)), QRect(0, 0, 9, 7));
    EXPECT_EQ(psd::visibleBounds(straight({9, 7}, QRect(8, 6, 1, 1), QColor(0, 0, 0, 1))), QRect(8, 6, 1, 1));
    EXPECT_TRUE(psd::visibleBounds(straight({9, 7}, QRect(), Qt::red)).isNull());
    // Colour under transparent pixels is not something to show.
    QImage hidden = straight({5, 5}, QRect(1, 1, 1, 1), Qt::red);
    hidden.setPixelColor(4, 4, QColor(255, 255, 255, 0));
    EXPECT_EQ(psd::visibleBounds(hidden), QRect(1, 1, 1, 1));
    // Two separate spots: the rectangle around both.
    QImage spots = straight({10, 10}, QRect(1, 7, 1, 1), Qt::red);
    spots.setPixelColor(8, 2, Qt::blue);
    EXPECT_EQ(psd::visibleBounds(spots), QRect(QPoint(1, 2), QPoint(8, 7)));
    EXPECT_EQ(psd::visibleBounds(spots.convertToFormat(QImage::Format_ARGB32_Premultiplied)), QRect(QPoint(1, 2), QPoint(8, 7)));
}

TEST(LayerTrimming, ImportedLayersShowTheSamePictureAtTheSamePlace)
{
    const QByteArray bytes = build(boxDocument());
    std::string error;
    for (bool flipped : {false, true}) {
        const auto importer = psd::PSDLayerImporter::fromData(bytes, flipped, &error);
        ASSERT_TRUE(importer) << error;
        ASSERT_EQ(importer->layerCount(), 2);
        const psd::PSDLayer& box = importer->layers()[1];  // topmost first: "Clear" is on top
        EXPECT_EQ(box.image().size(), QSize(6, 4));
        EXPECT_EQ(box.image().format(), QImage::Format_ARGB32_Premultiplied);
        // Unflipped: the lower-left corner in canvas coordinates (y up).
        EXPECT_EQ(box.origin(), flipped ? QPointF(5, 3) : QPointF(5, 12 - 7)) << flipped;
        const psd::PSDLayer& clear = importer->layers()[0];
        EXPECT_EQ(clear.image().size(), QSize(4, 4)) << "a layer showing nothing keeps its size";
        EXPECT_EQ(clear.origin(), flipped ? QPointF(2, 2) : QPointF(2, 12 - 6));
    }
    // Drawn together, the cut layers give the picture the uncut ones did.
    const auto importer = psd::PSDLayerImporter::fromData(bytes, false, &error);
    QImage expected(20, 12, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::transparent);
    for (int y = 3; y < 7; ++y)
        for (int x = 5; x < 11; ++x) expected.setPixelColor(x, y, QColor(50 + x, 100 + x, 150 + x, 128));
    const QImage combined = importer->combinedImageOfVisibleLayers();
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 20; ++x) {
            const QColor a = combined.pixelColor(x, y), b = expected.pixelColor(x, y);
            EXPECT_LE(std::abs(a.alpha() - b.alpha()), 1) << x << "," << y;
            EXPECT_LE(std::abs(a.red() - b.red()), 2) << x << "," << y;
        }
}
