// Noise, String MD5 and FPS Display.

#include "CompositionBuilder.h"

#include "runtime/patches/SmoothNoise.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <cmath>

using test::Node;

namespace {

// One patch, its inputs and one output published at the root.
std::unique_ptr<runtime::Renderer> rendererFor(const Node& node, const std::string& key, const std::string& output,
                                               std::initializer_list<const char*> inputs = {})
{
    Node r = test::root();
    r.child(node).publishOutput("Out", key, output);
    for (const char* in : inputs) r.publishInput(in, key, in);
    return std::make_unique<runtime::Renderer>(test::load(r), QSize(64, 48));
}

TEST(StringMD5, GivesTheLowerCaseHexDigestOfTheUtf8Bytes)
{
    auto renderer = rendererFor(Node("QCStringMD5", "StringMD5_1"), "StringMD5_1", "outputMD5", {"inputString"});
    const std::pair<QString, const char*> cases[] = {
        {QString(), "d41d8cd98f00b204e9800998ecf8427e"},
        {QStringLiteral("abc"), "900150983cd24fb0d6963f7d28e17f72"},
        {QStringLiteral("The quick brown fox jumps over the lazy dog"), "9e107d9d372bb6826bd81d3542a419d6"},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        renderer->setInputValue("inputString", cases[i].first);
        renderer->render(0);
        EXPECT_EQ(renderer->outputValue("Out").toString(), QString::fromLatin1(cases[i].second)) << cases[i].first.toStdString();
    }
    // "é" is hashed as its two UTF-8 bytes C3 A9, not as Latin-1 E9.
    renderer->setInputValue("inputString", QStringLiteral("\u00e9"));
    renderer->render(0);
    const QString digest = renderer->outputValue("Out").toString();
    EXPECT_EQ(digest, QString::fromLatin1(QCryptographicHash::hash("\xc3\xa9", QCryptographicHash::Md5).toHex()));
    EXPECT_NE(digest, QString::fromLatin1(QCryptographicHash::hash("\xe9", QCryptographicHash::Md5).toHex()));
}

TEST(SmoothNoise, IsRepeatableBoundedAndContinuous)
{
    double previous = runtime::smoothNoise(7, 0.0);
    double largestStep = 0, low = 1, high = 0;
    for (int i = 1; i <= 20000; ++i) {
        const double x = i * 0.001;
        const double v = runtime::smoothNoise(7, x);
        EXPECT_EQ(v, runtime::smoothNoise(7, x));
        largestStep = std::max(largestStep, std::abs(v - previous));
        low = std::min(low, v);
        high = std::max(high, v);
        previous = v;
    }
    // The slope is at most about 1.9 per unit, so 1/1000 apart values
    // differ by under 0.002; a jump at a lattice point would be far more.
    EXPECT_LT(largestStep, 0.003);
    EXPECT_GE(low, 0.0);
    EXPECT_LE(high, 1.0);
    // It actually moves, over much of its range.
    EXPECT_GT(high - low, 0.3);
    // Other seeds give other curves.
    int differing = 0;
    for (int i = 0; i < 100; ++i) differing += runtime::smoothNoise(7, i + 0.5) != runtime::smoothNoise(8, i + 0.5);
    EXPECT_GT(differing, 95);
    EXPECT_EQ(runtime::smoothNoise(7, std::nan("")), 0.5);
}

TEST(NoisePatch, FollowsTheSameCurveByTimeScaledToTheRange)
{
    Node noise("QCNoise", "Noise_1");
    noise.input("inputMin", -2.0).input("inputMax", 2.0).input("inputFrequency", 3.0).input("inputSeed", 5.0);
    auto a = rendererFor(noise, "Noise_1", "outputValue");
    auto b = rendererFor(noise, "Noise_1", "outputValue");
    // Renderer b sees the times in another order: the value depends on the
    // time alone, not on the frames before.
    const double times[] = {0.0, 0.25, 1.7, 4.0, 0.1};
    for (double t : times) {
        a->render(t);
        const double expected = -2.0 + 4.0 * runtime::smoothNoise(5, t * 3.0);
        EXPECT_DOUBLE_EQ(a->outputValue("Out").toDouble(), expected) << t;
    }
    b->render(1.7);
    a->render(1.7);
    EXPECT_DOUBLE_EQ(a->outputValue("Out").toDouble(), b->outputValue("Out").toDouble());
}

TEST(FpsDisplay, DrawsInTheTopLeftAndMeasuresTheFrameRate)
{
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(1, 1, 1)));
    r.child(Node("QCFPSDisplay", "FPSDisplay_1")).publishOutput("Rate", "FPSDisplay_1", "outputFPS");
    runtime::Renderer renderer(test::load(r), QSize(320, 240));
    for (int frame = 0; frame <= 30; ++frame) renderer.render(frame / 25.0);
    EXPECT_NEAR(renderer.outputValue("Rate").toDouble(), 25.0, 1e-6);

    const QImage image = renderer.snapshot().convertToFormat(QImage::Format_ARGB32);
    // The top-left corner is darkened by the box; the rest stays white.
    int darkTopLeft = 0;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 60; ++x) darkTopLeft += qGray(image.pixel(x, y)) < 200;
    EXPECT_GT(darkTopLeft, 300);
    EXPECT_EQ(image.pixel(300, 220), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(10, 220), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(300, 10), qRgb(255, 255, 255));
    // The text itself is lighter than the box around it.
    int lightInBox = 0;
    for (int y = 4; y < 16; ++y)
        for (int x = 4; x < 50; ++x) lightInBox += qGray(image.pixel(x, y)) > 160;
    EXPECT_GT(lightInBox, 5);
}

}  // namespace
