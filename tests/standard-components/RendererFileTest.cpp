// "Renderer.qtz": the patches the export copies, and what they draw once
// wired as the export wires them.

#include "ExportedTemplate.h"

#include "quartz/QuartzStrings.h"

#include <set>

using plist::Value;
using stdtest::ExportedTemplate;
using stdtest::Placement;

namespace {

std::set<QString> publishedKeys(const QuartzPatch& patch, const char* list)
{
    std::set<QString> keys;
    for (const Value& port : patch.state().value(list).array()) keys.insert(quartz::toQt(port.value("key").string()));
    return keys;
}

std::set<QString> keys(std::initializer_list<const char*> names)
{
    std::set<QString> set;
    for (const char* name : names) set.insert(QString::fromLatin1(name));
    return set;
}

bool isRed(QRgb p) { return qAlpha(p) >= 128 && qRed(p) > 100 && qGreen(p) < 60 && qBlue(p) < 60; }

QRect redBounds(const QImage& image) { return stdtest::boundsWhere(image, isRed); }

// Expected pixel rectangle (y down) of a template rectangle (y up) at a
// destination, each axis scaled on its own.
QRectF expectedPixels(QRectF templateRect, QSize destination, QSize templateSize = QSize(1920, 1080))
{
    const double sx = double(destination.width()) / templateSize.width();
    const double sy = double(destination.height()) / templateSize.height();
    return QRectF(templateRect.x() * sx, destination.height() - (templateRect.y() + templateRect.height()) * sy,
                  templateRect.width() * sx, templateRect.height() * sy);
}

// Pixel bounds (inclusive) within a pixel of the expected edges.
void expectBounds(const QRect& actual, const QRectF& expected)
{
    ASSERT_FALSE(actual.isNull()) << "nothing drawn";
    EXPECT_NEAR(actual.left(), expected.left(), 1.0);
    EXPECT_NEAR(actual.right() + 1, expected.right(), 1.0);
    EXPECT_NEAR(actual.top(), expected.top(), 1.0);
    EXPECT_NEAR(actual.bottom() + 1, expected.bottom(), 1.0);
}

const std::map<QString, Value> kRed{{QStringLiteral("Color"), stdtest::colourValue(1, 0, 0)}};

}  // namespace

TEST(RendererFile, OffersThePatchesAndPortsTheExportTakes)
{
    const auto file = stdtest::loadModel(QStringLiteral("Renderer.qtz"));
    ASSERT_TRUE(file);
    struct Expected {
        const char* name;
        std::set<QString> inputs;
        std::set<QString> outputs;
    };
    const Expected expected[] = {
        {"Scaling Factor", keys({"compositionWidth", "compositionHeight"}),
         keys({"widthScalingFactor", "heightScalingFactor", "renderWidth", "renderHeight", "pixelScaleW", "pixelScaleH"})},
        {"Renderer",
         keys({"image", "scaleFactorWidth", "scaleFactorHeight", "renderWidth", "renderHeight", "originX", "originY", "inputWidth",
               "inputHeight", "opacity", "zRotation"}),
         {}},
        {"Position", keys({"scaleFactorWidth", "scaleFactorHeight", "originX", "originY", "inputWidth", "inputHeight", "enabled"}),
         keys({"X", "Y", "W", "H"})},
        {"Timer", keys({"patchTime", "startTime", "endTime"}), keys({"time"})},
        {"Enabler", keys({"patchTime", "startTime", "endTime"}), keys({"outputResult"})},
    };
    for (const Expected& e : expected) {
        SCOPED_TRACE(e.name);
        const QuartzPatch* patch = file->rootPatch().patchWithName(QString::fromLatin1(e.name));
        ASSERT_TRUE(patch);
        EXPECT_EQ(patch->patchClass(), QStringLiteral("QCPatch"));
        EXPECT_EQ(publishedKeys(*patch, "publishedInputPorts"), e.inputs);
        EXPECT_EQ(publishedKeys(*patch, "publishedOutputPorts"), e.outputs);
    }
    const QuartzPatch* logic = file->rootPatch().patchWithName(QStringLiteral("Logic_1"));
    ASSERT_TRUE(logic);
    EXPECT_EQ(logic->patchClass(), QStringLiteral("QCLogic"));
    EXPECT_EQ(logic->state().value("ivarInputPortStates").value("inputOperation").value("value").toInt(), 0) << "AND";
}

TEST(RendererFile, PlacesAComponentInTemplatePixelsAtAnyOutputSize)
{
    ExportedTemplate exported;
    exported.addComponent(QStringLiteral("Box.qtz"), {100, 200, 400, 300}, kRed);
    // Lower-left origin: the box's bottom edge is 200 pixels above the frame's bottom.
    for (const QSize destination : {QSize(1920, 1080), QSize(480, 270), QSize(720, 576)}) {
        SCOPED_TRACE(destination.width());
        const QImage picture = exported.render(destination, 1.0);
        stdtest::savePicture(picture, QStringLiteral("renderer-place-%1").arg(destination.width()));
        expectBounds(redBounds(picture), expectedPixels(QRectF(100, 200, 400, 300), destination));
    }
}

TEST(RendererFile, RotatesAboutTheCentreAndAppliesOpacity)
{
    ExportedTemplate rotated;
    Placement turned{100, 200, 400, 300};
    turned.zRotation = 90;
    rotated.addComponent(QStringLiteral("Box.qtz"), turned, kRed);
    for (const QSize destination : {QSize(1920, 1080), QSize(480, 270)}) {
        const QImage picture = rotated.render(destination, 1.0);
        stdtest::savePicture(picture, QStringLiteral("renderer-rotated-%1").arg(destination.width()));
        // 300 × 400 about the same centre (300, 350).
        expectBounds(redBounds(picture), expectedPixels(QRectF(150, 150, 300, 400), destination));
    }

    // Counter-clockwise, as the editor turns it: the picture's left half
    // ends at the bottom.
    QImage halves(40, 20, QImage::Format_ARGB32);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x) halves.setPixel(x, y, x < 20 ? qRgb(255, 0, 0) : qRgb(0, 255, 0));
    ExportedTemplate picture;
    Placement quarterTurn{100, 200, 400, 200};
    quarterTurn.zRotation = 90;
    picture.addComponent(QStringLiteral("ImageComponent.qtz"), quarterTurn,
                         {{QStringLiteral("Image"), QuartzComposition::quartzValueForObject(halves)}});
    const QImage quarter = picture.render(QSize(1920, 1080), 1.0);
    stdtest::savePicture(quarter, QStringLiteral("renderer-turned-image"));
    const QRect red = redBounds(quarter);
    const QRect green = stdtest::boundsWhere(quarter, [](QRgb p) { return qAlpha(p) >= 128 && qGreen(p) > 100 && qRed(p) < 60; });
    ASSERT_FALSE(red.isNull());
    ASSERT_FALSE(green.isNull());
    EXPECT_GT(red.center().y(), green.center().y()) << "left half below the right half";
    EXPECT_NEAR(red.center().x(), green.center().x(), 2);

    ExportedTemplate faded;
    Placement half{100, 200, 400, 300};
    half.opacity = 0.5;
    faded.addComponent(QStringLiteral("Box.qtz"), half, kRed);
    const QImage fadedPicture = faded.render(QSize(1920, 1080), 1.0);
    const QRgb centre = fadedPicture.convertToFormat(QImage::Format_ARGB32_Premultiplied).pixel(300, 1080 - 350);
    EXPECT_NEAR(qAlpha(centre), 128, 3);
    EXPECT_NEAR(qRed(centre), 128, 3) << "premultiplied red at half opacity";
    EXPECT_EQ(qGreen(centre), 0);
    const QRect covered = stdtest::boundsWhere(fadedPicture, [](QRgb p) { return qAlpha(p) > 64; });
    expectBounds(covered, expectedPixels(QRectF(100, 200, 400, 300), QSize(1920, 1080)));
}

TEST(RendererFile, PositionGivesTheEngineOutputRectangleInDestinationPixels)
{
    ExportedTemplate exported;
    exported.addComponent(QStringLiteral("Box.qtz"), {100, 200, 400, 300}, kRed, true);
    const auto composition = exported.load();
    ASSERT_TRUE(composition);
    struct Case {
        QSize destination;
        double x, y, w, h;
    };
    for (const Case& c : {Case{QSize(1920, 1080), 100, 200, 400, 300}, Case{QSize(480, 270), 25, 50, 100, 75}}) {
        SCOPED_TRACE(c.destination.width());
        runtime::Renderer renderer(composition, c.destination);
        renderer.render(1.0);
        EXPECT_NEAR(renderer.outputValue(QStringLiteral("engineOut_X")).toDouble(), c.x, 1e-3);
        EXPECT_NEAR(renderer.outputValue(QStringLiteral("engineOut_Y")).toDouble(), c.y, 1e-3);
        EXPECT_NEAR(renderer.outputValue(QStringLiteral("engineOut_W")).toDouble(), c.w, 1e-3);
        EXPECT_NEAR(renderer.outputValue(QStringLiteral("engineOut_H")).toDouble(), c.h, 1e-3);
        // Switched off, the rectangle is empty.
        renderer.setInputValue(QStringLiteral("Component_1_Enable"), false);
        renderer.render(1.0);
        EXPECT_EQ(renderer.outputValue(QStringLiteral("engineOut_W")).toDouble(), 0.0);
        EXPECT_EQ(renderer.outputValue(QStringLiteral("engineOut_H")).toDouble(), 0.0);
    }
}

TEST(RendererFile, ShowsAComponentOnlyInItsTimeWindowAndWhenSwitchedOn)
{
    Placement window{100, 200, 400, 300};
    window.startTime = 1;
    window.endTime = 3;
    ExportedTemplate exported;
    exported.addComponent(QStringLiteral("Box.qtz"), window, kRed);
    const auto composition = exported.load();
    ASSERT_TRUE(composition);
    runtime::Renderer renderer(composition, QSize(480, 270));
    struct Frame {
        double time;
        bool shown;
    };
    for (const Frame& f : {Frame{0.5, false}, Frame{1.0, true}, Frame{2.0, true}, Frame{3.0, true}, Frame{3.5, false}}) {
        SCOPED_TRACE(f.time);
        renderer.setSize(QSize(480, 270));  // a fresh transparent frame
        renderer.render(f.time);
        EXPECT_EQ(!redBounds(renderer.snapshot()).isNull(), f.shown);
        EXPECT_EQ(renderer.outputValue(QStringLiteral("inWindow_1")).toDouble() != 0.0, f.shown);
    }
    renderer.setInputValue(QStringLiteral("Component_1_Enable"), false);
    renderer.setSize(QSize(480, 270));
    renderer.render(2.0);
    EXPECT_TRUE(redBounds(renderer.snapshot()).isNull()) << "the per-component switch hides it";
}

TEST(RendererFile, TimerGivesATimeBasedComponentItsLocalTime)
{
    Placement band{0, 0, 1920, 72};
    band.startTime = 2;
    band.endTime = 9;
    ExportedTemplate exported;
    exported.addComponent(QStringLiteral("Ticker.qtz"), band);
    const auto composition = exported.load();
    ASSERT_TRUE(composition);
    runtime::Renderer renderer(composition, QSize(1920, 1080));
    for (const auto& [time, local] : {std::pair{0.0, 0.0}, std::pair{1.5, 0.0}, std::pair{2.0, 0.0}, std::pair{3.0, 1.0}, std::pair{6.5, 4.5}}) {
        renderer.render(time);
        EXPECT_NEAR(renderer.outputValue(QStringLiteral("localTime_1")).toDouble(), local, 1e-9) << time;
    }
    // Two seconds after its start the text has run 2 × 240 pixels in from the right edge.
    renderer.setSize(QSize(1920, 1080));
    renderer.render(4.0);
    const QImage picture = renderer.snapshot();
    stdtest::savePicture(picture, QStringLiteral("renderer-ticker"));
    const QRect text = stdtest::boundsWhere(picture, [](QRgb p) { return qAlpha(p) > 200 && qGreen(p) > 200; });
    ASSERT_FALSE(text.isNull());
    EXPECT_NEAR(text.left(), 1920 - 480, 8);
    EXPECT_GE(text.top(), 1080 - 72);
}
