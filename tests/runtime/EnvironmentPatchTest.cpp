// Teapot, Fog and Projection. Built into the raster test binary and the
// OpenGL one (tests/runtime/gl), so each case holds on both backends.

#include "CompositionBuilder.h"

#include "runtime/Fog.h"
#include "runtime/TeapotData.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cmath>

using test::Node;

namespace {

constexpr QSize kSize(128, 96);  // 64 pixels per unit

Node clearTo(double grey)
{
    return Node("QCClear", "Clear_1").input("inputColor", test::colorValue(grey, grey, grey));
}

QImage draw(const Node& root, QSize size = kSize)
{
    runtime::Renderer renderer(test::load(root), size);
    renderer.render(0);
    return renderer.snapshot().convertToFormat(QImage::Format_ARGB32);
}

// Pixels in row y (or column x) that differ from the background.
int coveredInRow(const QImage& image, int y, QRgb background)
{
    int n = 0;
    for (int x = 0; x < image.width(); ++x) n += image.pixel(x, y) != background;
    return n;
}
int coveredInColumn(const QImage& image, int x, QRgb background)
{
    int n = 0;
    for (int y = 0; y < image.height(); ++y) n += image.pixel(x, y) != background;
    return n;
}
// The first and last covered columns.
std::pair<int, int> coveredColumns(const QImage& image, QRgb background)
{
    int first = -1, last = -1;
    for (int x = 0; x < image.width(); ++x)
        if (coveredInColumn(image, x, background) > 0) {
            if (first < 0) first = x;
            last = x;
        }
    return {first, last};
}

TEST(Teapot, TessellationIsOneUnitWideAndFacesOutwards)
{
    const std::vector<runtime::MeshVertex> mesh = runtime::teapot::tessellate(8);
    ASSERT_EQ(mesh.size(), std::size_t(32 * 8 * 8 * 6));
    QVector3D low(1e9f, 1e9f, 1e9f), high(-1e9f, -1e9f, -1e9f);
    double volume = 0;
    int agree = 0, triangles = 0;
    for (std::size_t i = 0; i < mesh.size(); i += 3) {
        const QVector3D a = mesh[i].position, b = mesh[i + 1].position, c = mesh[i + 2].position;
        for (const QVector3D& p : {a, b, c}) {
            low = QVector3D(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
            high = QVector3D(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
        }
        // Signed volume (divergence theorem): positive when the
        // counter-clockwise sides face out.
        volume += QVector3D::dotProduct(a, QVector3D::crossProduct(b, c)) / 6.0;
        const QVector3D face = QVector3D::crossProduct(b - a, c - a);
        if (face.lengthSquared() < 1e-12f) continue;  // collapsed at the lid's knob and the bottom's centre
        ++triangles;
        const QVector3D n = mesh[i].normal + mesh[i + 1].normal + mesh[i + 2].normal;
        agree += QVector3D::dotProduct(face, n) > 0;
        for (std::size_t k = 0; k < 3; ++k) ASSERT_NEAR(mesh[i + k].normal.length(), 1.0f, 1e-3f);
    }
    EXPECT_NEAR(high.x() - low.x(), 1.0f, 0.02f);             // spout tip to handle back (control points)
    EXPECT_NEAR(high.y() - low.y(), 3.15f / 6.525f, 0.01f);  // bottom to knob
    EXPECT_NEAR(high.y() + low.y(), 0.0f, 0.01f);             // centred in height
    EXPECT_GT(high.x(), -low.x());                            // the spout reaches further (+x)
    EXPECT_GT(volume, 0.0);
    // Normals from the surface agree with the winding almost everywhere
    // (the spout's and handle's ends meet the body at an angle).
    EXPECT_GT(agree, triangles * 98 / 100) << agree << " of " << triangles;
    EXPECT_EQ(runtime::teapot::tessellate(0).size(), std::size_t(32 * 6));  // clamped to one step
}

TEST(Teapot, UnlitTeapotShowsItsSilhouette)
{
    Node teapot("QCTeapot", "Teapot_1");
    teapot.input("inputColor", test::colorValue(0, 0, 1)).input("inputScale", 1.0);
    Node r = test::root();
    r.child(clearTo(0)).child(teapot);
    const QImage image = draw(r);
    const QRgb black = qRgb(0, 0, 0);
    EXPECT_EQ(image.pixel(64, 48), qRgb(0, 0, 255));  // the body at the centre, flat blue
    // About 1 unit (64 px) from the handle to the spout; the body's axis at
    // the centre, so the spout's side reaches further.
    const auto [first, last] = coveredColumns(image, black);
    EXPECT_NEAR(last - first + 1, 66, 6);
    EXPECT_GT(last - 64, 64 - first);
    EXPECT_EQ(coveredInRow(image, 2, black), 0);
    EXPECT_EQ(coveredInRow(image, 93, black), 0);
}

TEST(Teapot, LightingShadesTheSideFacingTheLight)
{
    Node teapot("QCTeapot", "Teapot_1");
    teapot.input("inputScale", 1.5);
    Node lighting("QCLighting", "Lighting_1");
    lighting.state("lightCount", 1).input("positionX_1", 4.0).input("positionY_1", 0.0).input("positionZ_1", 1.0)
        .input("inputObjectSpecular", 0.0).child(teapot);
    Node r = test::root();
    r.child(clearTo(0)).child(lighting);
    const QImage image = draw(r);
    // Either side of the body at the centre's height.
    const int right = qGray(image.pixel(64 + 20, 48)), left = qGray(image.pixel(64 - 20, 48));
    EXPECT_GT(right, left + 60) << right << " " << left;
    EXPECT_GT(left, 0);  // ambient light
}

Node sphereIn(Node environment, double z, double r, double g, double b)
{
    Node sphere("QCSphere", "Sphere_1");
    sphere.input("inputColor", test::colorValue(r, g, b)).input("inputScale", 0.5).input("inputZ", z);
    environment.child(sphere);
    return environment;
}

TEST(Fog, LinearFogMixesTheFogColourByDepth)
{
    // Eye at 1.732: a sphere whose front is ~1.48 from the eye, with fog
    // from 1.0 (clear) to 2.0 (all fog), is about half fogged; pushed back
    // by a unit it is all fog.
    const auto fogged = [](double z) {
        Node fog("QCFog", "Fog_1");
        fog.input("inputType", 0).input("inputStart", 1.0).input("inputEnd", 2.0).input("inputColor", test::colorValue(0, 1, 0));
        Node r = test::root();
        r.child(clearTo(0)).child(sphereIn(fog, z, 1, 0, 0));
        return draw(r).pixel(64, 48);
    };
    const QRgb half = fogged(0.0), far = fogged(-1.0);
    EXPECT_NEAR(qRed(half), 255 - qGreen(half), 6);
    EXPECT_GT(qRed(half), 60);
    EXPECT_GT(qGreen(half), 60);
    EXPECT_EQ(qBlue(half), 0);
    EXPECT_EQ(far, qRgb(0, 255, 0));
    // Outside the Fog patch, no fog.
    Node r = test::root();
    r.child(clearTo(0)).child(sphereIn(Node("QCPatch", "Patch_1"), 0.0, 1, 0, 0));
    EXPECT_EQ(draw(r).pixel(64, 48), qRgb(255, 0, 0));
}

TEST(Fog, ExponentialFogFollowsItsDensity)
{
    const auto centre = [](int type, double density) {
        Node fog("QCFog", "Fog_1");
        fog.input("inputType", type).input("inputDensity", density).input("inputColor", test::colorValue(1, 1, 1));
        Node r = test::root();
        r.child(clearTo(0)).child(sphereIn(fog, 0.0, 0, 0, 0));
        return qGray(draw(r).pixel(64, 48));
    };
    EXPECT_EQ(centre(1, 0.0), 0);
    const int thin = centre(1, 0.2), thick = centre(1, 1.0), squared = centre(2, 0.2);
    EXPECT_GT(thin, 20);
    EXPECT_GT(thick, thin + 60);
    EXPECT_LT(squared, thin);  // (0.2 d)² < 0.2 d for d < 5
}

TEST(Fog, AmountMatchesOpenGLsEquations)
{
    runtime::Fog fog;
    fog.start = 1;
    fog.end = 3;
    EXPECT_DOUBLE_EQ(fog.amount(0.5), 0.0);
    EXPECT_DOUBLE_EQ(fog.amount(2.0), 0.5);
    EXPECT_DOUBLE_EQ(fog.amount(10.0), 1.0);
    fog.end = 1;  // start = end: a wall
    EXPECT_DOUBLE_EQ(fog.amount(0.9), 0.0);
    EXPECT_DOUBLE_EQ(fog.amount(1.1), 1.0);
    fog.mode = runtime::Fog::Mode::Exponential;
    fog.density = 0.5;
    EXPECT_NEAR(fog.amount(2.0), 1.0 - std::exp(-1.0), 1e-12);
    fog.mode = runtime::Fog::Mode::ExponentialSquared;
    EXPECT_NEAR(fog.amount(2.0), 1.0 - std::exp(-1.0), 1e-12);
    fog.density = std::nan("");
    EXPECT_DOUBLE_EQ(fog.amount(2.0), 0.0);
}

// A 1-unit square sprite turned 60° about y: its two vertical edges are
// equally tall in an orthographic view, and the nearer one is taller in
// perspective, the more so the wider the field of view.
Node turnedSprite(double fieldOfView)
{
    Node sprite("QCSprite", "Sprite_1");
    sprite.input("inputWidth", 1.0).input("inputHeight", 1.0).input("inputRY", 60.0).input("inputColor", test::colorValue(1, 1, 1));
    Node projection("QCProjection", "Projection_1");
    projection.input("inputFieldOfView", fieldOfView).child(sprite);
    Node r = test::root();
    r.child(clearTo(0)).child(projection);
    return r;
}

TEST(Projection, FieldOfViewSetsThePerspective)
{
    const QRgb black = qRgb(0, 0, 0);
    const auto edges = [&](double fieldOfView) {
        const QImage image = draw(turnedSprite(fieldOfView));
        const auto [first, last] = coveredColumns(image, black);
        return std::make_pair(coveredInColumn(image, first + 1, black), coveredInColumn(image, last - 1, black));
    };
    const auto [orthoLeft, orthoRight] = edges(0.0);
    EXPECT_NEAR(orthoLeft, 64, 2);
    EXPECT_NEAR(orthoRight, 64, 2);
    const auto [narrowLeft, narrowRight] = edges(30.0);
    const auto [wideLeft, wideRight] = edges(60.0);
    // Turned +60° about y, the left edge comes towards the eye.
    EXPECT_GT(narrowLeft, narrowRight + 3);
    EXPECT_GT(wideLeft - wideRight, narrowLeft - narrowRight + 3);
}

TEST(Projection, SixtyDegreesIsTheStandardViewAndZeroIsFlat)
{
    // The same picture as without a Projection patch at 60°; at 0° a sprite
    // brought forward is no larger than at z = 0.
    Node plain = test::root();
    Node sprite("QCSprite", "Sprite_1");
    sprite.input("inputWidth", 0.5).input("inputHeight", 0.5).input("inputZ", 0.5).input("inputColor", test::colorValue(1, 1, 1));
    plain.child(clearTo(0)).child(sprite);
    Node standard = test::root();
    standard.child(clearTo(0)).child(Node("QCProjection", "Projection_1").input("inputFieldOfView", 60.0).child(sprite));
    Node flat = test::root();
    flat.child(clearTo(0)).child(Node("QCProjection", "Projection_1").input("inputFieldOfView", 0.0).child(sprite));
    const QImage plainImage = draw(plain), standardImage = draw(standard);
    int largest = 0;  // the eye distances agree to the last bits only
    for (int y = 0; y < plainImage.height(); ++y)
        for (int x = 0; x < plainImage.width(); ++x)
            largest = std::max(largest, std::abs(qGray(plainImage.pixel(x, y)) - qGray(standardImage.pixel(x, y))));
    EXPECT_LE(largest, 2);
    EXPECT_GT(coveredInRow(plainImage, 48, qRgb(0, 0, 0)), 40);  // 32 px at z = 0, larger nearer the eye
    EXPECT_NEAR(coveredInRow(draw(flat), 48, qRgb(0, 0, 0)), 32, 1);
}

TEST(Projection, TheCorpusFlipCardLoadsAndRenders)
{
    const QString file = QStringLiteral(VELLORAN_CORPUS_DIR "/ideo_avocado_Flip.qtz");
    if (!QFile::exists(file)) GTEST_SKIP() << "corpus file missing: " << file.toStdString();
    QString error;
    auto composition = runtime::Composition::loadFile(file, &error);
    ASSERT_TRUE(composition) << error.toStdString();
    EXPECT_FALSE(composition->unsupportedClasses().contains("QCProjection"));
    EXPECT_EQ(composition->patchCounts().at("QCProjection"), 2);
    runtime::Renderer renderer(composition, QSize(160, 90));
    for (double t : {0.0, 0.5, 1.0}) renderer.render(t);
    EXPECT_EQ(renderer.snapshot().size(), QSize(160, 90));
}

}  // namespace

namespace {

TEST(Fog, SpritesAreFoggedAndBillboardsAreNot)
{
    // A flat sprite mixes in the fog colour by its depth; an image sprite
    // in black fog fades towards black; a billboard is left alone.
    Node fog("QCFog", "Fog_1");
    fog.input("inputType", 0).input("inputStart", 1.0).input("inputEnd", 2.5).input("inputColor", test::colorValue(0, 0, 0));
    Node flat("QCSprite", "Sprite_1");
    flat.input("inputX", -0.5).input("inputWidth", 0.4).input("inputHeight", 0.4).input("inputColor", test::colorValue(1, 1, 1));
    Node pictured("QCSprite", "Sprite_2");
    pictured.input("inputX", 0.0).input("inputWidth", 0.4).input("inputHeight", 0.4);
    Node billboard("QCBillboard", "Billboard_1");
    billboard.state("sizeMode", "custom").input("inputX", 0.5).custom("inputWidth", 0.4).custom("inputHeight", 0.4);
    fog.child(flat).child(pictured).child(billboard);
    Node r = test::root();
    r.child(clearTo(0)).child(fog);
    QImage white(8, 8, QImage::Format_ARGB32);
    white.fill(Qt::white);
    runtime::Renderer renderer(test::load(r), kSize);
    ASSERT_TRUE(renderer.setNodeInputValue("Fog_1/Sprite_2", "inputImage", white));
    ASSERT_TRUE(renderer.setNodeInputValue("Fog_1/Billboard_1", "inputImage", white));
    renderer.render(0);
    const QImage image = renderer.snapshot().convertToFormat(QImage::Format_ARGB32);
    // Depth 1.732 from the eye: (1.732 − 1) / 1.5 of the way to black.
    const int expected = int(std::lround(255 * (1 - (1.7320508 - 1.0) / 1.5)));
    EXPECT_NEAR(qGray(image.pixel(64 - 32, 48)), expected, 3);
    EXPECT_NEAR(qGray(image.pixel(64, 48)), expected, 3);
    EXPECT_EQ(image.pixel(64 + 32, 48), qRgb(255, 255, 255));
}

}  // namespace
