// Which side of a sprite faces the viewer, what culling removes, and the
// lower-left origin of a crop: what a flip card (a flap of two sprites back
// to back, turned about the card's middle) is made of. Built into the raster
// test binary and the OpenGL one (tests/runtime/gl), so both backends agree.

#include "CompositionBuilder.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

constexpr QSize kSize(64, 48);  // 32 pixels per unit; y = 24 is the middle row
constexpr QRgb kBackground = qRgb(0, 0, 0);

// Red upper half, blue lower half, in raster rows (top row first).
QImage redOverBlue()
{
    QImage pixels(8, 8, QImage::Format_ARGB32);
    pixels.fill(qRgb(0, 0, 255));
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) pixels.setPixel(x, y, qRgb(255, 0, 0));
    return pixels;
}

QImage greenOverBlue()
{
    QImage pixels = redOverBlue();
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) pixels.setPixel(x, y, qRgb(0, 255, 0));
    return pixels;
}

Node clear()
{
    return Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 0));
}

Node sprite(const std::string& key, double rotateX, int culling)
{
    Node n("QCSprite", key);
    n.input("inputWidth", 1.0).input("inputHeight", 1.0).input("inputRX", rotateX).input("inputCulling", culling);
    return n;
}

QImage draw(const Node& root, const std::vector<std::pair<QString, QImage>>& images)
{
    runtime::Renderer renderer(test::load(root), kSize);
    for (const auto& [key, pixels] : images) renderer.setInputPortValue(key, runtime::Value(runtime::Image::fromRaster(pixels)));
    renderer.render(0);
    return renderer.snapshot().convertToFormat(QImage::Format_ARGB32);
}

// One 1 × 1 sprite at the centre, showing the red-over-blue image.
QImage drawSprite(double rotateX, int culling)
{
    Node r = test::root();
    r.child(clear()).child(sprite("Sprite_1", rotateX, culling));
    r.publishInput("image", "Sprite_1", "inputImage");
    return draw(r, {{QStringLiteral("image"), redOverBlue()}});
}

// Rows a quarter unit above and below the centre.
constexpr int kAbove = 24 - 8, kBelow = 24 + 8;

TEST(SpriteFacing, TurnedHalfRoundAboutXTheImageIsUpsideDown)
{
    const QImage upright = drawSprite(0, 0);
    EXPECT_EQ(upright.pixel(32, kAbove), qRgb(255, 0, 0));
    EXPECT_EQ(upright.pixel(32, kBelow), qRgb(0, 0, 255));
    const QImage turned = drawSprite(180, 0);  // no culling: the back is drawn
    EXPECT_EQ(turned.pixel(32, kAbove), qRgb(0, 0, 255));
    EXPECT_EQ(turned.pixel(32, kBelow), qRgb(255, 0, 0));
}

TEST(SpriteFacing, BackFaceCullingHidesOnlyTheBack)
{
    EXPECT_EQ(drawSprite(0, 1).pixel(32, kAbove), qRgb(255, 0, 0));
    EXPECT_EQ(drawSprite(180, 1).pixel(32, kAbove), kBackground);
    EXPECT_EQ(drawSprite(180, 1).pixel(32, kBelow), kBackground);
    // Turned a little less than a quarter round, the front still shows.
    EXPECT_NE(drawSprite(80, 1).pixel(32, 24), kBackground);
    EXPECT_EQ(drawSprite(100, 1).pixel(32, 24), kBackground);
}

TEST(SpriteFacing, FrontFaceCullingHidesOnlyTheFront)
{
    EXPECT_EQ(drawSprite(0, 2).pixel(32, kAbove), kBackground);
    EXPECT_EQ(drawSprite(180, 2).pixel(32, kAbove), qRgb(0, 0, 255));
}

TEST(SpriteFacing, ParentRotationsCountTowardsTheFacing)
{
    // A sprite turned half round inside a camera turned half round faces
    // the viewer again, and culling the back keeps it.
    Node camera("QCCamera", "Camera_1");
    camera.input("inputRotateX", 180.0).child(sprite("Sprite_1", 180, 1));
    camera.publishInput("image", "Sprite_1", "inputImage");
    Node r = test::root();
    r.child(clear()).child(camera);
    r.publishInput("image", "Camera_1", "image");
    const QImage image = draw(r, {{QStringLiteral("image"), redOverBlue()}});
    EXPECT_EQ(image.pixel(32, kAbove), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(32, kBelow), qRgb(0, 0, 255));
}

// A flap over the upper half of a card: red on its front, green-over-blue
// on its back (turned half round, so upside down until the flap turns).
QImage drawFlap(double flapAngle)
{
    Node camera("QCCamera", "Flap");
    camera.input("inputRotateX", flapAngle);
    camera.child(sprite("Front", 0, 1).input("inputY", 0.5)).child(sprite("Back", 180, 1).input("inputY", 0.5));
    camera.publishInput("front", "Front", "inputImage").publishInput("back", "Back", "inputImage");
    Node r = test::root();
    r.child(clear()).child(camera);
    r.publishInput("front", "Flap", "front").publishInput("back", "Flap", "back");
    QImage red(4, 4, QImage::Format_ARGB32);
    red.fill(qRgb(255, 0, 0));
    return draw(r, {{QStringLiteral("front"), red}, {QStringLiteral("back"), greenOverBlue()}});
}

TEST(SpriteFacing, AFlapShowsItsBackUprightOnceTurnedDown)
{
    // Rows 8 and 16 px (¼ and ½ unit) from the middle, above and below.
    const QImage before = drawFlap(0);
    EXPECT_EQ(before.pixel(32, 24 - 8), qRgb(255, 0, 0));
    EXPECT_EQ(before.pixel(32, 24 - 24), qRgb(255, 0, 0));
    EXPECT_EQ(before.pixel(32, 24 + 8), kBackground);

    const QImage after = drawFlap(180);
    EXPECT_EQ(after.pixel(32, 24 - 8), kBackground);
    EXPECT_EQ(after.pixel(32, 24 + 4), qRgb(0, 255, 0));   // the back's upper half just below the axis
    EXPECT_EQ(after.pixel(32, 24 + 20), qRgb(0, 0, 255));  // and its lower half at the bottom
}

TEST(SpriteFacing, CropRectanglesStartAtTheLowerLeft)
{
    // The lower half of a red-over-blue image is blue.
    Node crop("QCImageFilter", "Crop_1");
    crop.identifier("CICrop").input("inputRectangle_X", 0.0).input("inputRectangle_Y", 0.0)
        .input("inputRectangle_Z", 8.0).input("inputRectangle_W", 4.0);
    Node r = test::root();
    r.child(clear()).child(crop).child(Node("QCSprite", "Sprite_1").input("inputWidth", 1.0).input("inputHeight", 1.0));
    r.connect("Crop_1", "outputImage", "Sprite_1", "inputImage");
    r.publishInput("image", "Crop_1", "inputImage");
    const QImage image = draw(r, {{QStringLiteral("image"), redOverBlue()}});
    EXPECT_EQ(image.pixel(32, kAbove), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(32, kBelow), qRgb(0, 0, 255));
}

}  // namespace
