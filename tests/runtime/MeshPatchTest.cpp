// Mesh Creator, Mesh Renderer, Mesh Transform, Mesh Components and Mesh
// Bounds. Built into the raster test binary and the OpenGL one
// (tests/runtime/gl): there each picture is also drawn on the raster
// backend and the two must agree within the golden images' allowance.

#include "CompositionBuilder.h"

#include "runtime/Mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using test::Node;

namespace {

constexpr QSize kSize(64, 48);  // 32 pixels per unit, centre (32, 24)

plist::Value list(std::initializer_list<double> numbers)
{
    plist::Array a;
    for (const double n : numbers) a.emplace_back(n);
    return plist::Value(std::move(a));
}

plist::Value listOf(std::initializer_list<plist::Value> items)
{
    return plist::Value(plist::Array(items));
}

// A square of side 0.5 facing the eye, corners counter-clockwise from the
// lower left.
plist::Value squareCorners()
{
    return listOf({list({-0.25, -0.25, 0}), list({0.25, -0.25, 0}), list({0.25, 0.25, 0}), list({-0.25, 0.25, 0})});
}

Node squareCreator()
{
    Node creator("QCMeshCreator", "Creator_1");
    creator.input("inputVertices", squareCorners()).input("inputIndices", list({0, 1, 2, 0, 2, 3})).input("inputPrimitiveType", 0);
    return creator;
}

Node meshRenderer(double r, double g, double b)
{
    Node n("QCMeshRenderer", "Renderer_1");
    n.input("inputColor", test::colorValue(r, g, b));
    return n;
}

Node sceneWith(const Node& source, const std::string& sourceKey, const std::string& sourcePort, const Node& renderer)
{
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 0))).child(source).child(renderer);
    r.connect(sourceKey, sourcePort, "Renderer_1", "inputMesh");
    return r;
}

int channelDistance(QRgb p, QRgb q)
{
    return std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q)),
                     std::abs(qAlpha(p) - qAlpha(q))});
}

// The golden images' rule: no more than 1% of the pixels differ by more
// than 8, not counting edge pixels (a neighbour differs by more than 8)
// that differ by up to 96 (multisampled against exact coverage).
void expectBackendsAgree(const QImage& raster, const QImage& drawn)
{
    ASSERT_EQ(raster.size(), drawn.size());
    int bad = 0;
    for (int y = 0; y < raster.height(); ++y)
        for (int x = 0; x < raster.width(); ++x) {
            const int d = channelDistance(raster.pixel(x, y), drawn.pixel(x, y));
            bool edge = false;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int nx = std::clamp(x + dx, 0, raster.width() - 1), ny = std::clamp(y + dy, 0, raster.height() - 1);
                    edge = edge || channelDistance(raster.pixel(x, y), raster.pixel(nx, ny)) > 8;
                }
            if (d > 8 && !(edge && d <= 96)) ++bad;
        }
    EXPECT_LE(bad, raster.width() * raster.height() / 100) << bad << " pixels differ between the backends";
}

// Draws with the binary's backend (OpenGL in the OpenGL build) and checks
// that the raster backend draws the same.
QImage draw(const Node& root)
{
    const auto composition = test::load(root);
    runtime::Renderer renderer(composition, kSize);
    renderer.render(0);
    const QImage image = renderer.snapshot().convertToFormat(QImage::Format_ARGB32);
    if (renderer.backendKind() == runtime::BackendKind::OpenGL) {
        runtime::Renderer raster(composition, kSize, runtime::BackendPreference::Raster);
        raster.render(0);
        expectBackendsAgree(raster.snapshot().convertToFormat(QImage::Format_ARGB32), image);
    }
    return image;
}

// The pixel box of everything not black.
QRect coloured(const QImage& image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qGray(image.pixel(x, y)) > 60) box |= QRect(x, y, 1, 1);
    return box;
}

TEST(MeshPatches, CreatedSquareDrawsAtItsSizeInItsColour)
{
    const QImage image = draw(sceneWith(squareCreator(), "Creator_1", "outputMesh", meshRenderer(1, 0.5, 0)));
    EXPECT_EQ(image.pixel(32, 24), qRgb(255, 128, 0));
    // Half a unit is 16 pixels, centred.
    const QRect box = coloured(image);
    EXPECT_NEAR(box.left(), 24, 1);
    EXPECT_NEAR(box.right(), 39, 1);
    EXPECT_NEAR(box.top(), 16, 1);
    EXPECT_NEAR(box.bottom(), 31, 1);
}

TEST(MeshPatches, PrimitiveTypesMakeTheirTriangles)
{
    const auto area = [](const Node& creator) {
        const QImage image = draw(sceneWith(creator, "Creator_1", "outputMesh", meshRenderer(1, 1, 1)));
        const QRect box = coloured(image);
        int lit = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) lit += qGray(image.pixel(x, y)) > 128;
        return std::pair{lit, box};
    };
    // Four corners as a strip (lower left, upper left, lower right, upper
    // right) cover the square; as plain triangles only the first three
    // count: half of it.
    Node strip("QCMeshCreator", "Creator_1");
    strip.input("inputVertices", listOf({list({-0.25, -0.25, 0}), list({-0.25, 0.25, 0}), list({0.25, -0.25, 0}), list({0.25, 0.25, 0})}));
    const auto [stripArea, stripBox] = area(strip);
    EXPECT_NEAR(stripArea, 256, 24);
    // In this order both triangles of the strip turn clockwise (they face
    // away), as OpenGL reads a strip: culling back faces hides the whole
    // square, culling front faces hides none of it.
    const auto culled = [&](int culling) {
        Node r = sceneWith(strip, "Creator_1", "outputMesh", meshRenderer(1, 1, 1).input("inputCulling", culling));
        return coloured(draw(r));
    };
    EXPECT_TRUE(culled(1).isEmpty());
    EXPECT_EQ(culled(2), stripBox);
    Node triangles = strip;
    triangles.input("inputPrimitiveType", 0);
    EXPECT_NEAR(area(triangles).first, 128, 24);
    // A fan and quads of the counter-clockwise corners cover it too.
    Node fan("QCMeshCreator", "Creator_1");
    fan.input("inputVertices", squareCorners()).input("inputPrimitiveType", 2);
    EXPECT_NEAR(area(fan).first, 256, 24);
    Node quads = fan;
    quads.input("inputPrimitiveType", 3);
    EXPECT_NEAR(area(quads).first, 256, 24);
    EXPECT_EQ(area(quads).second, stripBox);
}

TEST(MeshPatches, TrianglesNamingMissingVerticesAreLeftOut)
{
    Node creator = squareCreator();
    creator.input("inputIndices", list({0, 1, 2, 0, 2, 7}));  // vertex 7 does not exist
    const QImage image = draw(sceneWith(creator, "Creator_1", "outputMesh", meshRenderer(1, 1, 1)));
    EXPECT_EQ(image.pixel(32 + 6, 24 + 6), qRgb(255, 255, 255));  // lower right: the first triangle
    EXPECT_EQ(image.pixel(32 - 6, 24 - 6), qRgb(0, 0, 0));        // upper left: the dropped one
}

TEST(MeshPatches, VertexColoursMultiplyTheRenderersColour)
{
    Node creator = squareCreator();
    const plist::Value red = list({1, 0, 0, 1});
    creator.input("inputColors", listOf({red, red, red, red}));
    EXPECT_EQ(draw(sceneWith(creator, "Creator_1", "outputMesh", meshRenderer(1, 1, 1))).pixel(32, 24), qRgb(255, 0, 0));
    EXPECT_EQ(draw(sceneWith(creator, "Creator_1", "outputMesh", meshRenderer(0.5, 1, 1))).pixel(32, 24), qRgb(128, 0, 0));
    // Colours given as colour values, keyed structures read by their keys.
    Node keyed = squareCreator();
    plist::Dictionary green;
    green["a"] = 1.0;
    green["g"] = 1.0;
    green["r"] = 0.0;
    green["b"] = 0.0;
    const plist::Value g(std::move(green));
    keyed.input("inputColors", listOf({g, g, g, g}));
    EXPECT_EQ(draw(sceneWith(keyed, "Creator_1", "outputMesh", meshRenderer(1, 1, 1))).pixel(32, 24), qRgb(0, 255, 0));
}

TEST(MeshPatches, FlatNumberListsAreReadThreeAtATime)
{
    Node creator("QCMeshCreator", "Creator_1");
    creator.input("inputVertices", list({-0.25, -0.25, 0, 0.25, -0.25, 0, 0.25, 0.25, 0, -0.25, 0.25, 0}))
        .input("inputIndices", listOf({list({0, 1, 2}), list({0, 2, 3})}))
        .input("inputPrimitiveType", 0);
    const QImage image = draw(sceneWith(creator, "Creator_1", "outputMesh", meshRenderer(1, 1, 1)));
    EXPECT_EQ(image.pixel(32 - 6, 24 - 6), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(32 + 6, 24 + 6), qRgb(255, 255, 255));
}

TEST(MeshPatches, TransformMovesTurnsAndScalesTheMesh)
{
    const auto transformed = [](std::initializer_list<std::pair<const char*, double>> inputs) {
        Node transform("QCMeshTransform", "Transform_1");
        for (const auto& [key, value] : inputs) transform.input(key, value);
        Node r = sceneWith(squareCreator(), "Creator_1", "outputMesh", meshRenderer(1, 1, 1).input("inputCulling", 1));
        r.child(transform).connect("Creator_1", "outputMesh", "Transform_1", "inputMesh");
        r.connect("Transform_1", "outputMesh", "Renderer_1", "inputMesh");
        return coloured(draw(r));
    };
    const QRect still = transformed({});
    EXPECT_EQ(transformed({{"inputX", 0.5}}), still.translated(16, 0));
    EXPECT_EQ(transformed({{"inputY", 0.25}}), still.translated(0, -8));
    const QRect wide = transformed({{"inputScaleX", 2}});
    EXPECT_NEAR(wide.width(), 2 * still.width(), 1);
    EXPECT_EQ(wide.height(), still.height());
    // Turned half round the y axis it faces away and back faces are culled.
    EXPECT_TRUE(transformed({{"inputRY", 180}}).isEmpty());
    EXPECT_EQ(transformed({{"inputRZ", 90}}), still);  // a square turned a quarter
    // Mirrored, the triangles are turned back so the front stays in front.
    EXPECT_EQ(transformed({{"inputScaleX", -1}}), still);
}

TEST(MeshPatches, RendererPlacesTheMeshAsTransformWould)
{
    Node placed = meshRenderer(1, 1, 1);
    placed.input("inputX", -0.5).input("inputY", 0.25).input("inputScaleY", 0.5);
    const QRect box = coloured(draw(sceneWith(squareCreator(), "Creator_1", "outputMesh", placed)));
    EXPECT_NEAR(box.center().x(), 32 - 16, 1);
    EXPECT_NEAR(box.center().y(), 24 - 8, 1);
    EXPECT_NEAR(box.height(), 8, 1);
    EXPECT_NEAR(box.width(), 16, 1);
}

TEST(MeshPatches, LightingShadesAMeshByWhereTheLightIs)
{
    const auto centre = [](double lightZ) {
        Node lighting("QCLighting", "Lighting_1");
        lighting.state("lightCount", 1).input("positionX_1", 0.0).input("positionY_1", 0.0).input("positionZ_1", lightZ)
            .input("inputAmbientColor", test::colorValue(0.1, 0.1, 0.1)).input("inputObjectSpecular", 0.0);
        lighting.child(squareCreator()).child(meshRenderer(1, 1, 1));
        lighting.connect("Creator_1", "outputMesh", "Renderer_1", "inputMesh");
        Node r = test::root();
        r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 0))).child(lighting);
        return qGray(draw(r).pixel(32, 24));
    };
    EXPECT_GT(centre(1.0), 200);  // in front: the generated normals face it
    EXPECT_LT(centre(-1.0), 40);  // behind: ambient only
}

TEST(MeshPatches, BoundsAndComponentsDescribeTheMesh)
{
    Node transform("QCMeshTransform", "Transform_1");
    transform.input("inputX", 1.0).input("inputScaleZ", 3.0);
    Node bounds("QCMeshBounds", "Bounds_1");
    Node components("QCMeshComponents", "Components_1");
    Node r = test::root();
    Node creator = squareCreator();
    creator.input("inputVertices", listOf({list({-0.25, -0.25, -0.1}), list({0.25, -0.25, 0}), list({0.25, 0.5, 0.2}), list({-0.25, 0.25, 0})}));
    r.child(creator).child(transform).child(bounds).child(components);
    r.connect("Creator_1", "outputMesh", "Transform_1", "inputMesh").connect("Transform_1", "outputMesh", "Bounds_1", "inputMesh");
    r.connect("Creator_1", "outputMesh", "Components_1", "inputMesh");
    for (const char* key : {"outputMinX", "outputMaxY", "outputMinZ", "outputMaxZ", "outputCenterX", "outputSizeY"})
        r.publishOutput(key, "Bounds_1", key);
    for (const char* key : {"outputVertices", "outputIndices", "outputNormals", "outputTriangleCount"})
        r.publishOutput(key, "Components_1", key);
    runtime::Renderer renderer(test::load(r), kSize);
    renderer.render(0);
    EXPECT_NEAR(renderer.outputValue("outputMinX").toDouble(), 0.75, 1e-6);
    EXPECT_NEAR(renderer.outputValue("outputMaxY").toDouble(), 0.5, 1e-6);
    EXPECT_NEAR(renderer.outputValue("outputMinZ").toDouble(), -0.3, 1e-6);
    EXPECT_NEAR(renderer.outputValue("outputMaxZ").toDouble(), 0.6, 1e-6);
    EXPECT_NEAR(renderer.outputValue("outputCenterX").toDouble(), 1.0, 1e-6);
    EXPECT_NEAR(renderer.outputValue("outputSizeY").toDouble(), 0.75, 1e-6);

    const QVariantList vertices = renderer.outputValue("outputVertices").toList();
    ASSERT_EQ(vertices.size(), 4);
    EXPECT_NEAR(vertices[2].toList().value(1).toDouble(), 0.5, 1e-6);
    EXPECT_EQ(renderer.outputValue("outputIndices").toList().size(), 6);
    EXPECT_EQ(renderer.outputValue("outputTriangleCount").toInt(), 2);
    // Generated normals are unit length.
    for (const QVariant& n : renderer.outputValue("outputNormals").toList()) {
        const QVariantList c = n.toList();
        ASSERT_EQ(c.size(), 3);
        EXPECT_NEAR(std::hypot(c[0].toDouble(), c[1].toDouble(), c[2].toDouble()), 1.0, 1e-5);
    }
}

TEST(MeshPatches, NothingConnectedDrawsNothing)
{
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 0))).child(meshRenderer(1, 1, 1));
    r.child(Node("QCMeshCreator", "Creator_2")).child(Node("QCMeshTransform", "Transform_1"));
    r.connect("Creator_2", "outputMesh", "Transform_1", "inputMesh");
    EXPECT_TRUE(coloured(draw(r)).isEmpty());
    // An empty creator feeding the renderer draws nothing either.
    EXPECT_TRUE(coloured(draw(sceneWith(Node("QCMeshCreator", "Creator_1"), "Creator_1", "outputMesh", meshRenderer(1, 1, 1)))).isEmpty());
}

}  // namespace

namespace {

TEST(MeshPatches, ImagesFollowTheTextureCoordinatesWhereTheBackendDrawsThem)
{
    // A blue image over the square: OpenGL textures meshes, the raster
    // backend draws them in the renderer's colour alone.
    QImage pixels(4, 4, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(qRgb(0, 0, 255));
    const auto centre = [&](bool withCoordinates) {
        Node creator = squareCreator();
        if (withCoordinates) creator.input("inputTextureCoordinates", listOf({list({0, 1}), list({1, 1}), list({1, 0}), list({0, 0})}));
        Node r = sceneWith(creator, "Creator_1", "outputMesh", meshRenderer(1, 1, 1));
        r.publishInput("image", "Renderer_1", "inputImage");
        runtime::Renderer renderer(test::load(r), kSize);
        renderer.setInputPortValue("image", runtime::Value(runtime::Image::fromRaster(pixels)));
        renderer.render(0);
        return std::pair{renderer.snapshot().convertToFormat(QImage::Format_ARGB32).pixel(32, 24), renderer.backendKind()};
    };
    const auto [textured, kind] = centre(true);
    EXPECT_EQ(textured, kind == runtime::BackendKind::OpenGL ? qRgb(0, 0, 255) : qRgb(255, 255, 255));
    // Without texture coordinates there is nothing to map the image with.
    EXPECT_EQ(centre(false).first, qRgb(255, 255, 255));
}

}  // namespace
