// Files written by other programs (ag-psd, ImageMagick), checked against what
// psd-tools reads from them (tests/fixtures/psd/expected, made by make_fixtures.sh).
#include "psd/PsdDocument.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

const QString kFixtures = QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/psd/");

QJsonObject expectation(const QString& fixture)
{
    QFile f(kFixtures + "expected/" + QString(fixture).replace('.', '_') + ".json");
    if (!f.open(QIODevice::ReadOnly)) return {};
    return QJsonDocument::fromJson(f.readAll()).object();
}

// Compares straight RGBA pixels; a 16-bit source may round differently by one step.
void expectSamePixels(const QImage& actual, const QString& expectedPng, int tolerance, const std::string& what)
{
    const QImage expected = QImage(kFixtures + "expected/" + expectedPng).convertToFormat(QImage::Format_RGBA8888);
    ASSERT_FALSE(expected.isNull()) << expectedPng.toStdString();
    ASSERT_EQ(actual.format(), QImage::Format_RGBA8888) << what;
    ASSERT_EQ(actual.size(), expected.size()) << what;
    int mismatches = 0;
    for (int y = 0; y < expected.height(); ++y) {
        const uchar* a = actual.constScanLine(y);
        const uchar* e = expected.constScanLine(y);
        for (int i = 0; i < expected.width() * 4; ++i) {
            if (std::abs(int(a[i]) - int(e[i])) > tolerance && mismatches++ < 5)
                ADD_FAILURE() << what << " pixel (" << i / 4 << ", " << y << ") channel " << i % 4 << ": got "
                              << int(a[i]) << ", psd-tools " << int(e[i]);
        }
    }
    EXPECT_EQ(mismatches, 0) << what;
}

class PsdFixture : public testing::TestWithParam<const char*> {};

TEST_P(PsdFixture, MatchesWhatPsdToolsReads)
{
    const QString name = QString::fromUtf8(GetParam());
    const QJsonObject want = expectation(name);
    ASSERT_FALSE(want.isEmpty()) << "no expectation for " << GetParam();
    std::string error;
    const auto doc = psd::decodeFile(kFixtures + name, &error);
    ASSERT_TRUE(doc) << error;

    EXPECT_EQ(doc->width, want["width"].toInt());
    EXPECT_EQ(doc->height, want["height"].toInt());
    EXPECT_EQ(doc->bitsPerChannel, want["depth"].toInt());
    EXPECT_EQ(doc->largeFormat, want["largeFormat"].toBool());
    const int tolerance = doc->bitsPerChannel == 16 ? 1 : 0;

    const QJsonArray layers = want["layers"].toArray();
    ASSERT_EQ(int(doc->layers.size()), layers.size());
    for (int i = 0; i < layers.size(); ++i) {
        const QJsonObject w = layers[i].toObject();
        const psd::Layer& l = doc->layers[size_t(i)];
        const std::string what = name.toStdString() + " layer " + std::to_string(i);
        EXPECT_EQ(l.name, w["name"].toString()) << what;
        EXPECT_EQ(l.bounds, QRect(w["left"].toInt(), w["top"].toInt(), w["width"].toInt(), w["height"].toInt())) << what;
        EXPECT_EQ(qRound(l.opacity * 255), w["opacity"].toInt()) << what;
        EXPECT_EQ(l.visible, w["visible"].toBool()) << what;
        EXPECT_EQ(l.shownInDocument(), w["shown"].toBool()) << what;
        EXPECT_EQ(l.clipping, w["clipping"].toBool()) << what;
        EXPECT_EQ(QString::fromLatin1(l.blendMode), w["blendMode"].toString()) << what;
        QStringList path;
        for (const QJsonValue& g : w["groupPath"].toArray()) path.append(g.toString());
        EXPECT_EQ(l.groupPath, path) << what;
        if (w.contains("png")) expectSamePixels(l.image, w["png"].toString(), tolerance, what);
        else EXPECT_TRUE(l.image.isNull()) << what;
    }
    expectSamePixels(doc->composite, want["composite"].toString(), tolerance, name.toStdString() + " composite");
}

INSTANTIATE_TEST_SUITE_P(WrittenByOtherPrograms, PsdFixture,
                         testing::Values("agpsd_rgb8_rle.psd", "agpsd_rgb8_zip.psd", "agpsd_rgb8_rle.psb",
                                         "agpsd_varied_rle.psd", "agpsd_varied_zip.psd", "psdtools_varied_zippred.psd",
                                         "psdtools_varied_zippred16.psd", "im_rgb16_raw.psd", "im_gray8_rle.psd",
                                         "im_gray16_zip.psd", "im_rgb8_rle.psb", "im_rgb8_zip.psd"),
                         [](const testing::TestParamInfo<const char*>& info) {
                             std::string n = info.param;
                             for (char& c : n)
                                 if (c == '.') c = '_';
                             return n;
                         });

// The layered fixture as a person would describe it, independent of psd-tools.
TEST(PsdFixtureContent, LayeredDocumentReadsAsDrawn)
{
    std::string error;
    const auto doc = psd::decodeFile(kFixtures + "agpsd_rgb8_rle.psd", &error);
    ASSERT_TRUE(doc) << error;
    ASSERT_EQ(doc->layers.size(), 8u);
    EXPECT_EQ(doc->layers.front().name, QStringLiteral("Ünïcødé ✓ 日本"));
    EXPECT_EQ(doc->layers.back().name, QStringLiteral("Background"));

    const psd::Layer& halfRed = doc->layers[6];
    EXPECT_EQ(halfRed.name, QStringLiteral("Half red"));
    EXPECT_EQ(halfRed.bounds, QRect(-4, -3, 10, 8));  // hangs over the top-left corner
    EXPECT_NEAR(halfRed.opacity, 0.4, 0.003);
    EXPECT_EQ(qAlpha(halfRed.image.pixel(0, 2)), 100);  // straight alpha, colour untouched
    EXPECT_EQ(qRed(halfRed.image.pixel(0, 2)), 255);

    const psd::Layer& masked = doc->layers[1];
    // Outside the mask's rectangle its default colour (black) hides the layer.
    EXPECT_EQ(qAlpha(masked.image.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(masked.image.pixel(5, 4)), 255 * 0 + 3 * 80 + 3 * 5);  // mask column 3, row 3
}

// One document of mid-row runs, noise and soft edges, stored by three
// encoders in four ways. The 16-bit samples were made to round back to the
// 8-bit ones, so all must agree exactly, with no tolerance.
TEST(PsdFixtureContent, VariedDocumentDecodesAlikeThroughEveryCompressionAndDepth)
{
    std::string error;
    const auto reference = psd::decodeFile(kFixtures + "agpsd_varied_rle.psd", &error);
    ASSERT_TRUE(reference) << error;
    ASSERT_EQ(reference->layers.size(), 6u);
    EXPECT_EQ(reference->layers[4].name, QStringLiteral("Steps"));
    EXPECT_EQ(reference->layers[4].bounds, QRect(-30, 4, 300, 6));  // past both sides of the canvas

    for (const char* other : {"agpsd_varied_zip.psd", "psdtools_varied_zippred.psd", "psdtools_varied_zippred16.psd"}) {
        const auto doc = psd::decodeFile(kFixtures + other, &error);
        ASSERT_TRUE(doc) << other << ": " << error;
        ASSERT_EQ(doc->layers.size(), reference->layers.size()) << other;
        for (size_t i = 0; i < doc->layers.size(); ++i)
            EXPECT_TRUE(doc->layers[i].image == reference->layers[i].image) << other << " layer " << i;
        EXPECT_TRUE(doc->composite == reference->composite) << other << " composite";
    }
}

}  // namespace
