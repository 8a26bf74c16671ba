// Damaged and hostile files: each must give a clear error, never a crash,
// a hang or an allocation the file's bytes could not justify.
#include "PsdTestBuilder.h"
#include "psd/PsdDocument.h"

#include <gtest/gtest.h>

#include <random>

using namespace psdtest;

namespace {

std::string errorFor(const QByteArray& bytes)
{
    std::string error;
    const auto doc = psd::decode(bytes, &error);
    EXPECT_FALSE(doc) << "decoded although it should not";
    EXPECT_FALSE(error.empty());
    return error;
}

void put32(QByteArray& b, qsizetype at, uint32_t v)
{
    for (int i = 0; i < 4; ++i) b[at + i] = char(v >> (24 - 8 * i));
}

void put16(QByteArray& b, qsizetype at, uint16_t v)
{
    b[at] = char(v >> 8);
    b[at + 1] = char(v);
}

// Header 26 bytes, two empty sections of 4, then the layer section length.
constexpr qsizetype kLayerSectionLength = 34;
constexpr qsizetype kLayerCount = kLayerSectionLength + 8;  // after section and layer info lengths (PSD)
constexpr qsizetype kFirstRecord = kLayerCount + 2;

TEST(PsdMalformed, EveryTruncationFailsCleanly)
{
    for (Compression c : {Raw, Rle, Zip, ZipPredicted}) {
        for (int version : {1, 2}) {
            Document d = smallRgbDocument();
            d.version = version;
            d.layerCompression = c;
            d.compositeCompression = c == ZipPredicted ? Rle : c;
            const QByteArray whole = build(d);
            ASSERT_TRUE(psd::decode(whole)) << "the intact file must decode";
            // A ZIP composite cut inside its zlib trailer (checksum, end code) has lost no pixels.
            const qsizetype end = d.compositeCompression == Zip ? whole.size() - 6 : whole.size();
            for (qsizetype n = 0; n < end; ++n) {
                std::string error;
                EXPECT_FALSE(psd::decode(whole.left(n), &error)) << "prefix " << n << " of " << whole.size();
                EXPECT_FALSE(error.empty());
            }
        }
    }
}

TEST(PsdMalformed, UnsupportedColourModesAndDepthsAreNamed)
{
    const std::pair<int, const char*> modes[] = {{0, "Bitmap"},       {2, "Indexed"}, {4, "CMYK"},
                                                 {7, "Multichannel"}, {8, "Duotone"}, {9, "Lab"}};
    for (const auto& [mode, name] : modes) {
        Document d = smallRgbDocument();
        d.mode = mode;
        EXPECT_EQ(errorFor(build(d)), std::string("unsupported colour mode ") + name);
    }
    Document d = smallRgbDocument();
    d.layers.clear();  // the header is refused before any pixels are looked at
    d.composite.clear();
    d.depth = 32;
    EXPECT_NE(errorFor(build(d)).find("unsupported bit depth 32"), std::string::npos);
    d.depth = 1;
    EXPECT_NE(errorFor(build(d)).find("unsupported bit depth 1"), std::string::npos);
}

TEST(PsdMalformed, HeaderProblemsAreReported)
{
    EXPECT_NE(errorFor(QByteArray("GIF89a....")).find("not a Photoshop file"), std::string::npos);
    QByteArray b = build(smallRgbDocument());
    put16(b, 4, 3);
    EXPECT_EQ(errorFor(b), "unsupported file version 3");

    for (uint32_t size : {0u, 300001u, 0xffffffffu}) {
        b = build(smallRgbDocument());
        put32(b, 14, size);  // height
        EXPECT_NE(errorFor(b).find("outside 1..300000"), std::string::npos) << size;
    }
    b = build(smallRgbDocument());
    put16(b, 12, 2);  // two channels for RGB
    EXPECT_NE(errorFor(b).find("channel count 2"), std::string::npos);
}

TEST(PsdMalformed, LengthsPastTheEndAreCaught)
{
    const QByteArray good = build(smallRgbDocument());
    QByteArray b = good;
    put32(b, 26, 0x7fffffff);  // colour mode data
    EXPECT_NE(errorFor(b).find("colour mode data at offset 26 runs past the end"), std::string::npos);

    b = good;
    put32(b, 30, 1000);  // image resources
    EXPECT_NE(errorFor(b).find("image resources"), std::string::npos);

    b = good;
    put32(b, kLayerSectionLength, 0xfffffff0);
    EXPECT_NE(errorFor(b).find("layer and mask section"), std::string::npos);

    b = good;
    put32(b, kLayerSectionLength + 4, 0x00ffffff);  // layer info
    EXPECT_NE(errorFor(b).find("layer info length"), std::string::npos);

    b = good;
    put32(b, kFirstRecord + 16 + 2 + 2, 200);  // first channel's data length, within the file but not the section
    EXPECT_NE(errorFor(b).find("channel 0 image data at offset"), std::string::npos);

    b = good;
    put32(b, kFirstRecord + 16 + 2 + 2, 0x00100000);  // more than the whole file
    EXPECT_NE(errorFor(b).find("claims more data than the file holds"), std::string::npos);
}

TEST(PsdMalformed, AbsurdLayerCountsAndBoundsAreRefusedBeforeAllocating)
{
    QByteArray b = build(smallRgbDocument());
    put16(b, kLayerCount, 10001);
    EXPECT_EQ(errorFor(b).rfind("layer count 10001 exceeds the limit of 10000", 0), 0u);

    b = build(smallRgbDocument());
    put16(b, kLayerCount, 9000);  // allowed, but the bytes cannot hold that many records
    EXPECT_NE(errorFor(b).find("claims 9000 layers"), std::string::npos);

    // A layer claiming 300000 x 300000 pixels with a few bytes of RLE data.
    b = build(smallRgbDocument());
    put32(b, kFirstRecord + 8, 300000);  // bottom
    put32(b, kFirstRecord + 12, 300000);  // right
    const std::string e = errorFor(b);
    EXPECT_NE(e.find("layer"), std::string::npos) << e;

    b = build(smallRgbDocument());
    put32(b, kFirstRecord + 12, 400000);  // right
    EXPECT_NE(errorFor(b).find("above the limit of 300000"), std::string::npos);

    b = build(smallRgbDocument());
    put32(b, kFirstRecord + 12, 0);  // right < left
    EXPECT_NE(errorFor(b).find("inverted bounds"), std::string::npos);
}

TEST(PsdMalformed, ChannelDataProblemsNameTheLayerAndChannel)
{
    Document d = smallRgbDocument();
    d.layerCompression = Raw;
    const QByteArray raw = build(d);
    // The first channel's data starts right after the single record.
    const qsizetype record = kFirstRecord + 16 + 2 + 4 * 6 + 12 + 4 + 4 + 4 + 8;
    QByteArray b = raw;
    put16(b, record, 9);
    EXPECT_EQ(errorFor(b), "layer record 0 (\"Small\") channel 0 uses unknown compression 9");

    d.layerCompression = Rle;
    b = build(d);
    put16(b, record + 2, 1);  // first row count below what a 3-sample row needs
    EXPECT_NE(errorFor(b).find("channel 0 RLE row 0 has 1 bytes"), std::string::npos);

    b = build(d);
    b[record + 2 + 4] = char(0x7f);  // literal of 128 bytes in a 4-byte row
    EXPECT_NE(errorFor(b).find("RLE row 0 at offset"), std::string::npos);

    d.layerCompression = Zip;
    b = build(d);
    b[record + 2] = char(0xff);  // not a zlib header
    EXPECT_NE(errorFor(b).find("ZIP data is corrupt"), std::string::npos);

    d.layers[0].channels.erase(d.layers[0].channels.begin() + 1);
    EXPECT_EQ(errorFor(build(d)), "layer record 0 (\"Small\") lacks colour channel 1");
}

TEST(PsdMalformed, ZipThatCannotHoldItsPixelsIsRefused)
{
    Document d = smallRgbDocument();
    d.layerCompression = Zip;
    QByteArray b = build(d);
    put32(b, kFirstRecord + 8, 200000);  // bottom: 3 x 199999 samples from a dozen bytes
    EXPECT_NE(errorFor(b).find("bytes of ZIP data"), std::string::npos);
}

TEST(PsdMalformed, RandomDamageNeverCrashes)
{
    std::mt19937 random(1234);
    for (Compression c : {Raw, Rle, Zip, ZipPredicted}) {
        Document d = smallRgbDocument();
        d.layerCompression = c;
        d.layers[0].mask = Mask{QRect(0, 0, 2, 2), 255, 0};
        d.layers[0].channels.push_back({-2, {1, 2, 3, 4}});
        d.layers[0].unicodeName = QStringLiteral("ünï");
        const QByteArray good = build(d);
        for (int i = 0; i < 3000; ++i) {
            QByteArray b = good;
            const int flips = 1 + int(random() % 4);
            for (int k = 0; k < flips; ++k) b[qsizetype(random() % uint32_t(b.size()))] = char(random());
            std::string error;
            const auto doc = psd::decode(b, &error);
            if (!doc) {
                EXPECT_FALSE(error.empty());
            }
        }
    }
}

}  // namespace
