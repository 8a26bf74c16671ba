// Track Ball, Lighting, Sphere, Cube and Mouse Interaction. Built into the
// raster test binary and the OpenGL one (tests/runtime/gl), so each case
// holds on both backends; what only a depth buffer gives is checked where
// the renderer draws with OpenGL.

#include "CompositionBuilder.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

constexpr QSize kSize(64, 48);  // 32 pixels per unit

Node clearTo(double grey)
{
    return Node("QCClear", "Clear_1").input("inputColor", test::colorValue(grey, grey, grey));
}

Node sphere(const std::string& key, double r, double g, double b)
{
    Node n("QCSphere", key);
    n.input("inputColor", test::colorValue(r, g, b)).input("inputScale", 1.0);
    return n;
}

QImage draw(const Node& root, std::unique_ptr<runtime::Renderer>* keep = nullptr)
{
    auto renderer = std::make_unique<runtime::Renderer>(test::load(root), kSize);
    renderer->render(0);
    QImage image = renderer->snapshot().convertToFormat(QImage::Format_ARGB32);
    if (keep) *keep = std::move(renderer);
    return image;
}

TEST(ThreeDPatches, AnUnlitSphereIsADiscOfItsDiameter)
{
    Node r = test::root();
    r.child(clearTo(0)).child(sphere("Sphere_1", 1, 0, 0));
    const QImage image = draw(r);
    // Diameter 1 unit = 32 px; its silhouette, nearer the eye than z = 0,
    // is a little larger.
    EXPECT_EQ(image.pixel(32, 24), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(32 + 14, 24), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(32, 24 - 14), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(32 + 20, 24), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(2, 2), qRgb(0, 0, 0));
}

TEST(ThreeDPatches, LightingShadesTheSideFacingTheLight)
{
    // One white light to the right: the right of the sphere is bright, the
    // left only ambient; objects outside the Lighting patch stay unlit.
    Node lighting("QCLighting", "Lighting_1");
    lighting.state("lightCount", 1)
        .input("positionX_1", 3.0).input("positionY_1", 0.0).input("positionZ_1", 0.5)
        .input("inputAmbientColor", test::colorValue(0.1, 0.1, 0.1)).input("inputObjectSpecular", 0.0)
        .child(sphere("Sphere_1", 1, 1, 1).input("inputScale", 0.5).input("inputX", 0.4));
    Node r = test::root();
    r.child(clearTo(0)).child(lighting).child(sphere("Sphere_2", 1, 1, 1).input("inputScale", 0.5).input("inputX", -0.4));
    const QImage image = draw(r);
    const int right = qGray(image.pixel(32 + 13 + 5, 24)), left = qGray(image.pixel(32 + 13 - 5, 24));
    EXPECT_GT(right, 150);
    EXPECT_LT(left, 80);
    EXPECT_GT(right, left + 80);
    EXPECT_EQ(image.pixel(32 - 13, 24), qRgb(255, 255, 255));  // the unlit one
}

TEST(ThreeDPatches, CubeFacesTakeTheirOwnColours)
{
    const auto cube = [](double turnY) {
        Node n("QCCube", "Cube_1");
        n.input("inputWidth", 0.5).input("inputHeight", 0.5).input("inputDepth", 0.5).input("inputRY", turnY);
        n.input("inputColorFront", test::colorValue(1, 0, 0)).input("inputColorBack", test::colorValue(0, 1, 0));
        n.input("inputColorLeft", test::colorValue(0, 0, 1)).input("inputColorRight", test::colorValue(1, 1, 0));
        n.input("inputCulling", 1);
        Node r = test::root();
        r.child(clearTo(0)).child(n);
        return draw(r);
    };
    EXPECT_EQ(cube(0).pixel(32, 24), qRgb(255, 0, 0));      // front faces the eye
    EXPECT_EQ(cube(90).pixel(32, 24), qRgb(0, 0, 255));     // turned left: the left face
    EXPECT_EQ(cube(180).pixel(32, 24), qRgb(0, 255, 0));    // the back
    EXPECT_EQ(cube(0).pixel(32 + 14, 24), qRgb(0, 0, 0));   // 0.5 units = 16 px wide
}

TEST(ThreeDPatches, TrackBallLeavesItsChildrenWhereTheyAre)
{
    // No pointer: the track ball never turns.
    Node ball("QCTrackBall", "TrackBall_1");
    ball.child(Node("QCSprite", "Sprite_1").input("inputWidth", 0.5).input("inputHeight", 0.25)
                   .input("inputX", 0.5).input("inputColor", test::colorValue(0, 1, 0)));
    Node r = test::root();
    r.child(clearTo(0)).child(ball);
    const QImage image = draw(r);
    EXPECT_EQ(image.pixel(48, 24), qRgb(0, 255, 0));
    EXPECT_EQ(image.pixel(28, 24), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(48, 24 - 6), qRgb(0, 0, 0));
}

TEST(ThreeDPatches, DepthTestingHidesWhatIsBehind)
{
    // The red sphere is drawn first but is nearer: with a depth buffer it
    // stays in front of the blue one drawn after it. The raster backend has
    // no depth buffer between draws and paints the blue one over it.
    Node r = test::root();
    r.child(clearTo(0)).child(sphere("Near", 1, 0, 0).input("inputZ", 0.3)).child(sphere("Far", 0, 0, 1).input("inputZ", -0.3));
    std::unique_ptr<runtime::Renderer> renderer;
    const QImage image = draw(r, &renderer);
    if (renderer->backendKind() == runtime::BackendKind::OpenGL) EXPECT_EQ(image.pixel(32, 24), qRgb(255, 0, 0));
    else EXPECT_EQ(image.pixel(32, 24), qRgb(0, 0, 255));
}

TEST(ThreeDPatches, MouseInteractionHoldsItsInitialValues)
{
    Node mouse("QCMouseInteraction", "Mouse_1");
    mouse.input("inputInitialXDrag", 0.25).input("inputInitialMagnifyValue", 2.0);
    Node r = test::root();
    r.child(mouse).child(Node("QCSprite", "Sprite_1"));
    r.connect("Mouse_1", "outputInteraction", "Sprite_1", "_inputInteraction");
    r.publishOutput("drag", "Mouse_1", "outputXDrag").publishOutput("magnify", "Mouse_1", "outputMagnifyValue");
    r.publishOutput("down", "Mouse_1", "outputMouseDown");
    runtime::Renderer renderer(test::load(r), kSize);
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("drag").toDouble(), 0.25);
    EXPECT_EQ(renderer.outputValue("magnify").toDouble(), 2.0);
    EXPECT_FALSE(renderer.outputValue("down").toBool());
}

}  // namespace

namespace {

TEST(ThreeDPatches, ReplicatorSpreadsItsCopiesFromFirstToLast)
{
    // Three copies of a small sprite, moved 1 unit right in all: at x = 0,
    // 0.5 and 1 (the last half outside the frame's right edge).
    Node replicator("QCReplicator", "Replicator_1");
    replicator.input("inputCopies", 3).input("inputTranslationX", 1.0);
    replicator.child(Node("QCSprite", "Sprite_1").input("inputWidth", 0.125).input("inputHeight", 0.125)
                         .input("inputX", -0.5).input("inputColor", test::colorValue(1, 1, 1)));
    Node r = test::root();
    r.child(clearTo(0)).child(replicator);
    const QImage image = draw(r);
    for (int x : {16, 32, 48}) EXPECT_EQ(image.pixel(x, 24), qRgb(255, 255, 255)) << x;
    for (int x : {8, 24, 40, 56}) EXPECT_EQ(image.pixel(x, 24), qRgb(0, 0, 0)) << x;
}

TEST(ThreeDPatches, ImageMatrixMovesTurnsAndScalesTheImage)
{
    QImage pixels(4, 2, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::red);
    const runtime::Image image = runtime::Image::fromRaster(pixels);
    const auto transformed = [&](std::initializer_list<std::pair<const char*, double>> inputs) {
        Node m("QCImageMatrix", "Matrix_1");
        for (const auto& [key, value] : inputs) m.input(key, value);
        Node r = test::root();
        r.child(m).publishInput("image", "Matrix_1", "inputImage").publishOutput("out", "Matrix_1", "outputImage");
        runtime::Renderer renderer(test::load(r), kSize);
        renderer.setInputPortValue("image", runtime::Value(image));
        renderer.render(0);
        return renderer.outputPortValue("out").toImage();
    };
    EXPECT_EQ(transformed({{"inputTranslateX", 10}, {"inputTranslateY", -3}}).extent(), QRect(10, -3, 4, 2));
    EXPECT_EQ(transformed({{"inputRotate", 90}}).extent().size(), QSize(2, 4));  // about its centre
    EXPECT_EQ(transformed({{"inputScaleX", 2}, {"inputScaleY", 0}}).extent().size(), QSize(8, 2));  // 0: unscaled
}

}  // namespace

namespace {

TEST(ThreeDPatches, SpritesWithDepthTestingSitAmongMeshes)
{
    // A green sprite behind a red sphere, drawn after it: with depth
    // testing on OpenGL the sphere hides its middle; without, or on the
    // raster backend, the sprite covers the sphere.
    const auto centre = [](int zBuffer) {
        Node r = test::root();
        r.child(clearTo(0)).child(sphere("Sphere_1", 1, 0, 0));
        r.child(Node("QCSprite", "Sprite_1").input("inputZ", -0.6).input("inputZBuffer", zBuffer)
                    .input("inputColor", test::colorValue(0, 1, 0)));
        std::unique_ptr<runtime::Renderer> renderer;
        const QImage image = draw(r, &renderer);
        return std::pair{image.pixel(32, 24), renderer->backendKind()};
    };
    const auto [tested, kind] = centre(1);
    EXPECT_EQ(tested, kind == runtime::BackendKind::OpenGL ? qRgb(255, 0, 0) : qRgb(0, 255, 0));
    EXPECT_EQ(centre(0).first, qRgb(0, 255, 0));
}

}  // namespace
