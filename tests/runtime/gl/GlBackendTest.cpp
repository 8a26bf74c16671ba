// The OpenGL backend against the raster one: the backend choice and its
// fallback, the picture orientation, drawing over a caller's image, and
// Render In Image read back. The 2-D golden images are checked on OpenGL
// by GoldenImageTest.cpp, built into this binary too.

#include "../CompositionBuilder.h"
#include "CliRunner.h"
#include "../GoldenCompare.h"

#include "runtime/BackendFactory.h"
#include "runtime/gl/GlBackend.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

using test::Node;

namespace {

constexpr QSize kSize(64, 48);

// A unit sprite on grey, its picture an input.
Node cornerCardScene()
{
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0.5, 0.5, 0.5)));
    r.child(Node("QCSprite", "Sprite_1").input("inputWidth", 1.0).input("inputHeight", 1.0));
    r.publishInput("image", "Sprite_1", "inputImage");
    return r;
}

// Red top left, green top right, blue bottom left, white bottom right.
QImage cornerCard()
{
    QImage card(2, 2, QImage::Format_ARGB32_Premultiplied);
    card.setPixel(0, 0, qRgb(255, 0, 0));
    card.setPixel(1, 0, qRgb(0, 255, 0));
    card.setPixel(0, 1, qRgb(0, 0, 255));
    card.setPixel(1, 1, qRgb(255, 255, 255));
    return card;
}

QImage renderCard(runtime::BackendPreference backend)
{
    runtime::Renderer renderer(test::load(cornerCardScene()), kSize, backend);
    renderer.setInputPortValue("image", runtime::Value(runtime::Image::fromRaster(cornerCard())));
    renderer.render(0);
    return renderer.snapshot().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

TEST(GlBackend, ChoosesAsAskedAndFallsBackOffTheGuiThread)
{
    EXPECT_EQ(runtime::makeBackend(runtime::BackendPreference::OpenGL).kind, runtime::BackendKind::OpenGL);
    // Automatic takes OpenGL only from hardware: llvmpipe is slower than raster.
    const runtime::MadeBackend automatic = runtime::makeBackend(runtime::BackendPreference::Automatic);
    const QString rendererName = runtime::GlBackend::make()->context().rendererName();
    EXPECT_EQ(automatic.kind, runtime::isSoftwareRenderer(rendererName) ? runtime::BackendKind::Raster : runtime::BackendKind::OpenGL)
        << rendererName.toStdString();
    if (runtime::isSoftwareRenderer(rendererName)) {
        // The verdict is kept, and an explicit choice still gets OpenGL.
        const runtime::MadeBackend again = runtime::makeBackend(runtime::BackendPreference::Automatic);
        EXPECT_EQ(again.kind, runtime::BackendKind::Raster);
        EXPECT_TRUE(again.fallbackReason.contains(rendererName)) << again.fallbackReason.toStdString();
        EXPECT_EQ(runtime::makeBackend(runtime::BackendPreference::OpenGL).kind, runtime::BackendKind::OpenGL);
    }
    EXPECT_TRUE(runtime::isSoftwareRenderer("llvmpipe (LLVM 15.0.6, 256 bits)"));
    EXPECT_FALSE(runtime::isSoftwareRenderer("AMD Radeon RX 6600 (radeonsi, navi23, LLVM 15.0.6)"));
    EXPECT_EQ(runtime::makeBackend(runtime::BackendPreference::Raster).kind, runtime::BackendKind::Raster);
    runtime::Renderer renderer(test::load(cornerCardScene()), kSize);
    EXPECT_EQ(renderer.backendKind(), runtime::BackendKind::OpenGL);  // this binary's default

    // A worker thread has no surface: raster, with the reason.
    runtime::MadeBackend worker;
    std::thread([&] { worker = runtime::makeBackend(runtime::BackendPreference::OpenGL); }).join();
    EXPECT_EQ(worker.kind, runtime::BackendKind::Raster);
    EXPECT_FALSE(worker.fallbackReason.isEmpty());
    ASSERT_TRUE(worker.backend);

    EXPECT_EQ(runtime::backendPreferenceFromName("GL"), runtime::BackendPreference::OpenGL);
    EXPECT_EQ(runtime::backendPreferenceFromName("raster"), runtime::BackendPreference::Raster);
    EXPECT_FALSE(runtime::backendPreferenceFromName("vulkan"));
}

TEST(GlBackend, PicturesKeepTheirOrientationAndColours)
{
    const QImage gl = renderCard(runtime::BackendPreference::OpenGL);
    const QImage raster = renderCard(runtime::BackendPreference::Raster);
    // The sprite spans x 16…48, y 8…40; sample each quarter's middle.
    const QPoint samples[] = {{24, 16}, {40, 16}, {24, 32}, {40, 32}, {4, 4}};
    const QRgb expected[] = {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(255, 255, 255), qRgb(128, 128, 128)};
    for (std::size_t i = 0; i < std::size(samples); ++i) {
        const QRgb g = gl.pixel(samples[i]), r = raster.pixel(samples[i]);
        // Filtering between the four texels differs slightly; the dominant
        // colour must not.
        for (int shift : {16, 8, 0}) {
            const auto channel = [shift](QRgb c) { return int((c >> shift) & 0xff); };
            EXPECT_NEAR(channel(g), channel(r), 40) << "at " << samples[i].x() << "," << samples[i].y();
            EXPECT_NEAR(channel(g), channel(expected[i]), 100) << "at " << samples[i].x() << "," << samples[i].y();
        }
    }
}

TEST(GlBackend, AnImageAtItsOwnSizeOnWholePixelsIsCopiedExactly)
{
    // A checkerboard billboard in "real size" mode at the centre: each of
    // its pixels lands on one destination pixel, unfiltered.
    QImage checker(8, 6, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < checker.height(); ++y)
        for (int x = 0; x < checker.width(); ++x) checker.setPixel(x, y, (x + y) % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 160));
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1"));
    r.child(Node("QCBillboard", "Billboard_1").state("sizeMode", "real").input("inputBlending", 1));
    r.publishInput("image", "Billboard_1", "inputImage");
    runtime::Renderer renderer(test::load(r), kSize, runtime::BackendPreference::OpenGL);
    renderer.setInputPortValue("image", runtime::Value(runtime::Image::fromRaster(checker)));
    renderer.render(0);
    const QImage image = renderer.snapshot();
    for (int y = 0; y < checker.height(); ++y)
        for (int x = 0; x < checker.width(); ++x)
            ASSERT_EQ(image.pixel(28 + x, 21 + y), checker.pixel(x, y)) << x << "," << y;
}

TEST(GlBackend, DrawsOverTheCallersImageThroughItsView)
{
    // The caller's pixels stay where nothing is drawn; the view (a zoom by
    // two about the centre) applies as on the raster backend.
    Node r = test::root();
    r.child(Node("QCSprite", "Sprite_1").input("inputWidth", 0.25).input("inputHeight", 0.25)
                .input("inputColor", test::colorValue(0, 1, 0)));
    const QTransform zoom = QTransform::fromScale(2, 2);
    QImage canvases[2];
    const runtime::BackendPreference backends[] = {runtime::BackendPreference::OpenGL, runtime::BackendPreference::Raster};
    for (int i = 0; i < 2; ++i) {
        canvases[i] = QImage(kSize, QImage::Format_ARGB32_Premultiplied);
        canvases[i].fill(qRgb(200, 0, 0));
        runtime::Renderer renderer(test::load(r), kSize, backends[i]);
        renderer.render(0, canvases[i], {}, zoom);
    }
    EXPECT_EQ(canvases[0].pixel(2, 2), qRgb(200, 0, 0));
    EXPECT_EQ(canvases[0].pixel(32, 24), qRgb(0, 255, 0));
    // Zoomed, the quarter-unit sprite covers 16 pixels across, not 8.
    EXPECT_EQ(canvases[0].pixel(26, 24), qRgb(0, 255, 0));
    EXPECT_EQ(canvases[0].pixel(22, 24), qRgb(200, 0, 0));
    for (const QPoint p : {QPoint(25, 24), QPoint(38, 24), QPoint(32, 17), QPoint(32, 31)})
        EXPECT_EQ(canvases[0].pixel(p), canvases[1].pixel(p)) << p.x() << "," << p.y();
}

// A frame drawn over the previous one's record (only what changed redrawn
// and read back) must equal the same frame drawn whole by a new renderer.
TEST(GlBackend, FramesDrawnOverThePreviousOneEqualFramesDrawnWhole)
{
    QImage backdrop(kSize, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < kSize.height(); ++y)
        for (int x = 0; x < kSize.width(); ++x) backdrop.setPixel(x, y, qRgb(x * 4, y * 5, 90));
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0.1, 0.1, 0.1)));
    r.child(Node("QCBillboard", "Backdrop").state("sizeMode", "real"));
    r.child(Node("QCSprite", "Moving").input("inputWidth", 0.3).input("inputHeight", 0.3).input("inputRZ", 20.0));
    r.child(Node("QCSprite", "Still").input("inputX", 0.6).input("inputY", -0.3).input("inputWidth", 0.2).input("inputHeight", 0.2));
    r.child(Node("QCSphere", "Ball").input("inputScale", 0.3).input("inputX", -0.6));
    // A picture drawn inside the frame (its own recorded target), shown as a layer.
    Node inner("QCRenderInImage", "Inset");
    inner.input("inputWidth", 16).input("inputHeight", 16);
    inner.child(Node("QCClear", "InsetClear").input("inputColor", test::colorValue(0, 0, 0.5)));
    inner.child(Node("QCSprite", "InsetSprite").input("inputWidth", 1.0).input("inputHeight", 1.0));
    inner.publishInput("Color", "InsetSprite", "inputColor");
    r.child(inner);
    r.child(Node("QCSprite", "InsetLayer").input("inputX", -0.5).input("inputY", 0.4).input("inputWidth", 0.4).input("inputHeight", 0.4));
    r.connect("Inset", "outputImage", "InsetLayer", "inputImage");
    r.publishInput("backdrop", "Backdrop", "inputImage");
    r.publishInput("x", "Moving", "inputX");
    r.publishInput("color", "Still", "inputColor");
    r.publishInput("insetColor", "Inset", "Color");
    r.publishInput("ball", "Ball", "_enable");
    r.publishInput("clear", "Clear_1", "_enable");
    const auto composition = test::load(r);

    struct Frame {
        double x;
        QColor color;
        bool ball, clear;
    };
    // Still frames, a move, a recolour, a mesh coming and going (drawn
    // as it comes), and a frame without a clear (drawn over the last one).
    const Frame frames[] = {{0.0, Qt::white, false, true},  {0.0, Qt::white, false, true}, {0.2, Qt::white, false, true},
                            {0.2, Qt::yellow, false, true}, {0.2, Qt::yellow, true, true}, {0.2, Qt::yellow, true, true},
                            {-0.4, Qt::yellow, false, true}, {-0.4, Qt::cyan, false, false}, {-0.4, Qt::cyan, false, true}};
    const auto apply = [&](runtime::Renderer& renderer, const Frame& f) {
        renderer.setInputPortValue("backdrop", runtime::Value(runtime::Image::fromRaster(backdrop)));
        renderer.setInputValue("x", f.x);
        renderer.setInputValue("color", f.color);
        renderer.setInputValue("insetColor", f.color);
        renderer.setInputValue("ball", f.ball);
        renderer.setInputValue("clear", f.clear);
    };
    runtime::Renderer running(composition, kSize, runtime::BackendPreference::OpenGL);
    QImage previous;
    for (std::size_t i = 0; i < std::size(frames); ++i) {
        apply(running, frames[i]);
        running.render(0.04 * double(i));
        const QImage held = previous.copy();
        const QImage picture = running.snapshot();

        runtime::Renderer fresh(composition, kSize, runtime::BackendPreference::OpenGL);
        if (!frames[i].clear && i > 0) {
            // Without a clear a frame lands on its predecessor: draw that first.
            apply(fresh, frames[i - 1]);
            fresh.render(0.04 * double(i - 1));
        }
        apply(fresh, frames[i]);
        fresh.render(0.04 * double(i));
        ASSERT_EQ(picture, fresh.snapshot()) << "frame " << i;
        // The inset's middle follows the colour (the record inside the frame
        // is redrawn too).
        EXPECT_LE(test::channelDistance(picture.pixel(16, 11), frames[i].color.rgb()), 16) << "frame " << i;
        // A picture handed out earlier is not changed by later frames.
        if (!previous.isNull()) {
            EXPECT_EQ(previous, held) << "frame " << i;
        }
        previous = picture;
    }
}

TEST(GlBackend, CommandLineTakesTheBackendByName)
{
    QTemporaryDir dir;
    const QString file = QStringLiteral(VELLORAN_CORPUS_DIR "/kluivers_qc-mobile_MultipleSpriteTest.qtz");
    if (!QFileInfo::exists(file)) GTEST_SKIP() << "no corpus at " VELLORAN_CORPUS_DIR;
    QImage pictures[2];
    const char* const names[] = {"gl", "raster"};
    for (int i = 0; i < 2; ++i) {
        const QString out = dir.filePath(QStringLiteral("%1.png").arg(names[i]));
        const CliResult result = runCli({"render", file, "--time", "1", "--size", "160x90", "--backend", names[i], "-o", out});
        ASSERT_EQ(result.code, 0) << result.err.toStdString();
        pictures[i] = QImage(out).convertToFormat(QImage::Format_ARGB32);
    }
    ASSERT_EQ(pictures[0].size(), pictures[1].size());
    int differ = 0;
    for (int y = 0; y < pictures[0].height(); ++y)
        for (int x = 0; x < pictures[0].width(); ++x) {
            const QRgb a = pictures[0].pixel(x, y), b = pictures[1].pixel(x, y);
            differ += std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))}) > 8;
        }
    // Photographs on sprites: only the edges and resampling differ.
    EXPECT_LT(differ, pictures[0].width() * pictures[0].height() / 50);

    const CliResult bad = runCli({"render", file, "--time", "0", "--backend", "metal", "-o", dir.filePath("o.png")});
    EXPECT_NE(bad.code, 0);
    EXPECT_TRUE(bad.err.contains("--backend is gl or raster")) << bad.err.toStdString();
    // The command's choice does not outlive it.
    EXPECT_EQ(runtime::defaultBackendPreference(), runtime::BackendPreference::OpenGL);
}

}  // namespace
