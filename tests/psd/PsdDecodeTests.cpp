// Decoding of built files: every compression at both depths, the large
// format, masks, groups, the merged image's transparency.
#include "PsdTestBuilder.h"
#include "psd/PsdDocument.h"

#include <gtest/gtest.h>

using namespace psdtest;

namespace {

std::optional<psd::Document> decodeBuilt(const Document& d, std::string* error)
{
    return psd::decode(build(d), error);
}

struct Variant {
    int version;
    int depth;
    Compression layers;
    Compression composite;
};

class CompressionVariants : public testing::TestWithParam<Variant> {};

// 16-bit samples whose high byte is the 8-bit value, so both depths decode alike.
std::vector<uint8_t> widen(const std::vector<uint8_t>& p)
{
    std::vector<uint8_t> out;
    for (uint8_t v : p) out.insert(out.end(), {v, v});
    return out;
}

TEST_P(CompressionVariants, DecodeToTheSamePixels)
{
    const Variant v = GetParam();
    Document d = smallRgbDocument();
    d.version = v.version;
    d.depth = v.depth;
    d.layerCompression = v.layers;
    d.compositeCompression = v.composite;
    if (v.depth == 16) {
        for (auto& c : d.layers[0].channels) c.samples = widen(c.samples);
        for (auto& p : d.composite) p = widen(p);
    }
    std::string error;
    const auto doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    ASSERT_EQ(doc->layers.size(), 1u);
    const QImage& image = doc->layers[0].image;
    ASSERT_EQ(image.size(), QSize(3, 2));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) {
            const uchar* p = image.constScanLine(y) + 4 * x;
            EXPECT_EQ(p[0], 80 + x * 10 + y);   // channel 0
            EXPECT_EQ(p[1], 120 + x * 10 + y);  // channel 1
            EXPECT_EQ(p[2], 160 + x * 10 + y);  // channel 2
            EXPECT_EQ(p[3], 40 + x * 10 + y);   // transparency
        }
    ASSERT_EQ(doc->composite.size(), QSize(4, 3));
    EXPECT_EQ(doc->composite.constScanLine(2)[4 * 3 + 1], 60 + 3 + 8);
    EXPECT_EQ(doc->composite.constScanLine(2)[4 * 3 + 3], 255);
}

INSTANTIATE_TEST_SUITE_P(
    AllCompressions, CompressionVariants,
    testing::Values(Variant{1, 8, Raw, Raw}, Variant{1, 8, Rle, Rle}, Variant{1, 8, Zip, Zip},
                    Variant{1, 8, ZipPredicted, ZipPredicted}, Variant{1, 16, Raw, Rle}, Variant{1, 16, Rle, Raw},
                    Variant{1, 16, Zip, Zip}, Variant{1, 16, ZipPredicted, ZipPredicted}, Variant{2, 8, Rle, Rle},
                    Variant{2, 16, Rle, Rle}, Variant{2, 8, ZipPredicted, Raw}));

TEST(PsdDecode, SixteenBitSamplesRoundToNearestEightBitValue)
{
    Document d = smallRgbDocument();
    d.depth = 16;
    d.layers.clear();
    const std::vector<uint8_t> samples = {0x00, 0x00, 0xff, 0xff, 0x80, 0x80, 0x7f, 0x7f};  // 0, 65535, 32896, 32639
    d.width = 4;
    d.height = 1;
    d.composite = {samples, samples, samples};
    std::string error;
    const auto doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    const uchar* row = doc->composite.constScanLine(0);
    EXPECT_EQ(row[0], 0);
    EXPECT_EQ(row[4], 255);
    EXPECT_EQ(row[8], 128);
    EXPECT_EQ(row[12], 127);
}

TEST(PsdDecode, FindsSixteenBitLayersInLr16Block)
{
    Document d = smallRgbDocument();
    d.depth = 16;
    d.layersInLr16 = true;
    for (auto& c : d.layers[0].channels) c.samples = widen(c.samples);
    for (auto& p : d.composite) p = widen(p);
    for (int version : {1, 2}) {
        d.version = version;
        std::string error;
        const auto doc = decodeBuilt(d, &error);
        ASSERT_TRUE(doc) << error;
        ASSERT_EQ(doc->layers.size(), 1u) << "version " << version;
        EXPECT_EQ(doc->layers[0].name, QStringLiteral("Small"));
        EXPECT_EQ(qAlpha(doc->layers[0].image.pixel(2, 1)), 40 + 20 + 1);
    }
}

TEST(PsdDecode, UserMaskScalesAlphaInsideItsRectAndUsesDefaultColourOutside)
{
    Document d = smallRgbDocument();
    Layer& l = d.layers[0];
    l.rect = QRect(0, 0, 3, 2);
    l.channels[3].samples = plane(3, 2, [](int, int) { return 200; });
    l.mask = Mask{QRect(1, 1, 2, 1), 255, 0};  // white outside, so only its own pixels matter
    l.channels.push_back({-2, {0, 128}});
    std::string error;
    auto doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    const QImage& image = doc->layers[0].image;
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 200);
    EXPECT_EQ(qAlpha(image.pixel(0, 1)), 200);
    EXPECT_EQ(qAlpha(image.pixel(1, 1)), 0);    // mask 0
    EXPECT_EQ(qAlpha(image.pixel(2, 1)), 100);  // 200 * 128 / 255
    EXPECT_EQ(qRed(image.pixel(1, 1)), 80 + 10 + 1) << "colour stays straight";

    d.layers[0].mask->flags = 0x02;  // disabled: ignored
    doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    EXPECT_EQ(qAlpha(doc->layers[0].image.pixel(1, 1)), 200);

    d.layers[0].mask = Mask{QRect(2, 0, 1, 1), 0, 0};  // black outside hides the rest
    d.layers[0].channels[4].samples = {255};
    doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    EXPECT_EQ(qAlpha(doc->layers[0].image.pixel(2, 0)), 200);
    EXPECT_EQ(qAlpha(doc->layers[0].image.pixel(1, 0)), 0);
    EXPECT_EQ(qAlpha(doc->layers[0].image.pixel(2, 1)), 0);
}

TEST(PsdDecode, GroupsGiveNestedPathsAndHideTheirContents)
{
    auto layer = [](const char* name, int section, uint8_t flags = 0) {
        Layer l;
        l.pascalName = name;
        l.section = section;
        l.flags = flags;
        return l;
    };
    Document d = smallRgbDocument();
    const Layer pixels = d.layers[0];
    d.layers = {layer("</Outer>", 3), layer("</Inner>", 3), pixels, layer("Inner", 2, 0x02), pixels,
                layer("Outer", 1), pixels};
    d.layers[2].pascalName = "deep";
    d.layers[4].pascalName = "shallow";
    d.layers[6].pascalName = "top";
    std::string error;
    const auto doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    ASSERT_EQ(doc->layers.size(), 3u) << "folder and divider records are not layers";
    EXPECT_EQ(doc->layers[0].name, QStringLiteral("top"));
    EXPECT_TRUE(doc->layers[0].groupPath.isEmpty());
    EXPECT_EQ(doc->layers[1].name, QStringLiteral("shallow"));
    EXPECT_EQ(doc->layers[1].groupPath, QStringList{"Outer"});
    EXPECT_TRUE(doc->layers[1].shownInDocument());
    EXPECT_EQ(doc->layers[2].name, QStringLiteral("deep"));
    EXPECT_EQ(doc->layers[2].groupPath, (QStringList{"Outer", "Inner"}));
    EXPECT_TRUE(doc->layers[2].visible);
    EXPECT_TRUE(doc->layers[2].hiddenByGroup);
    EXPECT_EQ(qRed(doc->layers[2].image.pixel(0, 0)), 80);
}

TEST(PsdDecode, NamesRecordsAndFlags)
{
    Document d = smallRgbDocument();
    d.layers[0].pascalName = QByteArray("Caf\xe9");  // not UTF-8: a legacy code page
    d.layers[0].opacity = 51;
    d.layers[0].clipping = 1;
    d.layers[0].flags = 0x02 | 0x08;
    std::string error;
    auto doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    EXPECT_EQ(doc->layers[0].name, QStringLiteral("Café"));
    EXPECT_DOUBLE_EQ(doc->layers[0].opacity, 0.2);
    EXPECT_TRUE(doc->layers[0].clipping);
    EXPECT_FALSE(doc->layers[0].visible);
    EXPECT_EQ(doc->layers[0].blendMode, QByteArray("norm"));

    d.layers[0].unicodeName = QStringLiteral("Ωmega ✓");
    d.layers[0].flags = 0;
    doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    EXPECT_EQ(doc->layers[0].name, QStringLiteral("Ωmega ✓")) << "the Unicode name wins";
    EXPECT_TRUE(doc->layers[0].visible);
}

TEST(PsdDecode, MergedTransparencyFollowsTheLayerCountSign)
{
    Document d = smallRgbDocument();
    d.channels = 4;
    d.composite.push_back(plane(4, 3, [](int x, int) { return x * 50; }));
    std::string error;
    auto doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    EXPECT_EQ(qAlpha(doc->composite.pixel(1, 0)), 255) << "a spare channel is not transparency";

    d.negativeLayerCount = true;
    doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    EXPECT_EQ(qAlpha(doc->composite.pixel(1, 0)), 50);

    d.layers.clear();  // flattened files keep transparency in the fourth channel
    doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    EXPECT_TRUE(doc->layers.empty());
    EXPECT_EQ(qAlpha(doc->composite.pixel(3, 2)), 150);
}

TEST(PsdDecode, GrayscaleFillsAllThreeColourChannels)
{
    Document d = smallRgbDocument();
    d.mode = 1;
    d.channels = 1;
    d.layers[0].channels = {{0, plane(3, 2, [](int x, int) { return 10 + x; })}};
    d.composite = {plane(4, 3, [](int x, int y) { return x * 3 + y; })};
    std::string error;
    const auto doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    EXPECT_EQ(doc->colorMode, psd::ColorMode::Grayscale);
    EXPECT_EQ(doc->layers[0].image.pixel(2, 1), qRgba(12, 12, 12, 255));
    EXPECT_EQ(doc->composite.pixel(3, 2), qRgba(11, 11, 11, 255));
}

TEST(PsdDecode, EmptyLayersHaveNoImageAndOptionsSkipPixels)
{
    Document d = smallRgbDocument();
    Layer empty;
    empty.pascalName = "Adjustment";
    d.layers.push_back(empty);
    std::string error;
    auto doc = decodeBuilt(d, &error);
    ASSERT_TRUE(doc) << error;
    ASSERT_EQ(doc->layers.size(), 2u);
    EXPECT_TRUE(doc->layers[0].image.isNull());
    EXPECT_TRUE(doc->layers[0].bounds.isEmpty());

    psd::DecodeOptions records;
    records.layerPixels = false;
    records.composite = false;
    doc = psd::decode(build(d), &error, records);
    ASSERT_TRUE(doc) << error;
    EXPECT_TRUE(doc->layers[1].image.isNull());
    EXPECT_EQ(doc->layers[1].bounds, QRect(1, 1, 3, 2));
    EXPECT_TRUE(doc->composite.isNull());
}

}  // namespace
