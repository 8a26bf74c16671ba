// Mesh Importer (QCCore3DLoader) and the model loader behind it: models the
// tests write themselves (OBJ, PLY, STL), the cache, the triangle cap, and
// files that are missing, cut short or not models at all.

#include "CompositionBuilder.h"

#include "runtime/ModelLoader.h"

#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstring>

using test::Node;

namespace {

constexpr QSize kSize(64, 48);

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// A unit cube around the origin: 8 corners, 6 quads (12 triangles), faces
// counter-clockwise from outside; texture coordinates when `material`.
QByteArray cubeObj(const char* material = nullptr)
{
    QByteArray obj = "# cube\n";
    if (material) obj += QByteArray("mtllib ") + material + ".mtl\nusemtl skin\n";
    for (int i = 0; i < 8; ++i)
        obj += QByteArray("v ") + (i & 1 ? "0.5" : "-0.5") + (i & 2 ? " 0.5" : " -0.5") + (i & 4 ? " 0.5\n" : " -0.5\n");
    obj += "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n";
    // Corner numbers: 1 + x + 2y + 4z.
    const char* faces[] = {"5 6 8 7", "2 1 3 4", "1 5 7 3", "6 2 4 8", "7 8 4 3", "1 2 6 5"};
    for (const char* face : faces) {
        obj += "f";
        int corner = 1;
        for (const QByteArray& v : QByteArray(face).split(' ')) obj += " " + v + "/" + QByteArray::number(corner++);
        obj += "\n";
    }
    return obj;
}

// Two red triangles making a square of side 1 in the z = 0 plane.
QByteArray squarePly()
{
    return "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n"
           "property uchar red\nproperty uchar green\nproperty uchar blue\nelement face 2\n"
           "property list uchar int vertex_indices\nend_header\n"
           "-0.5 -0.5 0 255 0 0\n0.5 -0.5 0 255 0 0\n0.5 0.5 0 255 0 0\n-0.5 0.5 0 255 0 0\n3 0 1 2\n3 0 2 3\n";
}

// A binary STL of `triangles` small triangles stepping along x, cut off
// after `written` of them.
QByteArray binaryStl(std::uint32_t triangles, std::uint32_t written)
{
    QByteArray stl(80, '\0');
    stl.replace(0, 6, "binary");
    stl.append(reinterpret_cast<const char*>(&triangles), 4);
    for (std::uint32_t i = 0; i < written; ++i) {
        const float x = float(i);
        const float facet[12] = {0, 0, 1, x, 0, 0, x + 1, 0, 0, x, 1, 0};
        stl.append(reinterpret_cast<const char*>(facet), sizeof facet);
        stl.append(2, '\0');
    }
    return stl;
}

std::shared_ptr<const runtime::Composition> loadIn(const QTemporaryDir& dir, const Node& root)
{
    QString error;
    auto composition = runtime::Composition::fromPlist(test::document(root), &error, dir.path());
    EXPECT_TRUE(composition) << error.toStdString();
    return composition;
}

Node importerScene(const std::string& path)
{
    Node r = test::root();
    Node loader("QCCore3DLoader", "Loader_1");
    if (!path.empty()) loader.state("path", path);
    r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 0))).child(loader);
    r.child(Node("QCMeshRenderer", "Renderer_1").input("inputCulling", 1)).child(Node("QCMeshComponents", "Components_1"));
    r.connect("Loader_1", "outputMesh", "Renderer_1", "inputMesh").connect("Loader_1", "outputMesh", "Components_1", "inputMesh");
    r.publishOutput("triangles", "Components_1", "outputTriangleCount").publishOutput("image", "Components_1", "outputImage");
    return r;
}

TEST(ModelLoader, ObjLoadsTriangulatedWithNormalsAndBounds)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFile(dir.filePath("cube.obj"), cubeObj()));
    const runtime::LoadedModel model = runtime::loadModel(dir.filePath("cube.obj"));
    ASSERT_TRUE(model.error.isEmpty()) << model.error.toStdString();
    EXPECT_EQ(model.mesh->triangleCount(), 12u);
    EXPECT_EQ(model.mesh->drawVertices().size(), 36u);
    EXPECT_EQ(model.mesh->boundsMin(), QVector3D(-0.5f, -0.5f, -0.5f));
    EXPECT_EQ(model.mesh->boundsMax(), QVector3D(0.5f, 0.5f, 0.5f));
    ASSERT_FALSE(model.mesh->arrays().normals.empty());
    for (const QVector3D& n : model.mesh->arrays().normals) EXPECT_NEAR(n.length(), 1.0f, 1e-4f);
    // No material colour: the renderer's colour alone decides.
    EXPECT_FALSE(model.mesh->hasColors());
}

TEST(ModelLoader, PlyKeepsItsVertexColours)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFile(dir.filePath("square.ply"), squarePly()));
    const runtime::LoadedModel model = runtime::loadModel(dir.filePath("square.ply"));
    ASSERT_TRUE(model.error.isEmpty()) << model.error.toStdString();
    EXPECT_EQ(model.mesh->triangleCount(), 2u);
    EXPECT_EQ(model.mesh->boundsMax(), QVector3D(0.5f, 0.5f, 0.0f));
    ASSERT_TRUE(model.mesh->hasColors());
    for (const QVector4D& c : model.mesh->arrays().colors) EXPECT_EQ(c, QVector4D(1, 0, 0, 1));
}

TEST(ModelLoader, StlTrianglesAreCounted)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFile(dir.filePath("strip.stl"), binaryStl(5, 5)));
    const runtime::LoadedModel model = runtime::loadModel(dir.filePath("strip.stl"));
    ASSERT_TRUE(model.error.isEmpty()) << model.error.toStdString();
    EXPECT_EQ(model.mesh->triangleCount(), 5u);
    EXPECT_EQ(model.mesh->boundsMax().x(), 5.0f);
}

TEST(ModelLoader, TheFirstDiffuseTextureBecomesTheMeshImage)
{
    QTemporaryDir dir;
    QImage skin(8, 4, QImage::Format_ARGB32);
    skin.fill(Qt::blue);
    ASSERT_TRUE(skin.save(dir.filePath("skin.png")));
    ASSERT_TRUE(writeFile(dir.filePath("skin.mtl"), "newmtl skin\nKd 1 1 1\nmap_Kd skin.png\n"));
    ASSERT_TRUE(writeFile(dir.filePath("cube.obj"), cubeObj("skin")));
    const runtime::LoadedModel model = runtime::loadModel(dir.filePath("cube.obj"));
    ASSERT_TRUE(model.error.isEmpty()) << model.error.toStdString();
    EXPECT_EQ(model.mesh->arrays().image.pixelSize(), QSize(8, 4));
    EXPECT_EQ(model.mesh->arrays().texCoords.size(), model.mesh->arrays().positions.size());
}

TEST(ModelLoader, LargeModelsAreRefusedAtTheCap)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFile(dir.filePath("cube.obj"), cubeObj()));
    runtime::ModelLimits limits;
    limits.maxTriangles = 11;
    const runtime::LoadedModel refused = runtime::loadModel(dir.filePath("cube.obj"), limits);
    EXPECT_TRUE(refused.error.contains(QStringLiteral("more than 11 triangles"))) << refused.error.toStdString();
    EXPECT_TRUE(refused.mesh && refused.mesh->isEmpty());
    limits.maxTriangles = 12;
    EXPECT_TRUE(runtime::loadModel(dir.filePath("cube.obj"), limits).error.isEmpty());

    // Headers that promise ten million triangles are refused before a
    // reader spends time on them (Assimp's PLY reader took seconds on this
    // one, which holds a single triangle).
    const QByteArray plyHead = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                               "property float z\nelement face 10000000\nproperty list uchar int vertex_indices\n"
                               "end_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    ASSERT_TRUE(writeFile(dir.filePath("huge.ply"), plyHead));
    ASSERT_TRUE(writeFile(dir.filePath("huge.stl"), binaryStl(10'000'000, 3)));
    for (const char* name : {"huge.ply", "huge.stl"}) {
        const runtime::LoadedModel huge = runtime::loadModel(dir.filePath(QLatin1String(name)));
        EXPECT_TRUE(huge.error.contains(QStringLiteral("more than 1000000 triangles"))) << name << ": " << huge.error.toStdString();
        EXPECT_TRUE(huge.mesh->isEmpty());
    }
    // Fewer faces than the cap, but more elements than the file has bytes.
    QByteArray shortPly = plyHead;
    shortPly.replace("element face 10000000", "element face 900000");
    ASSERT_TRUE(writeFile(dir.filePath("short.ply"), shortPly));
    EXPECT_TRUE(runtime::loadModel(dir.filePath("short.ply")).error.contains(QStringLiteral("shorter than its header says")));
}

TEST(ModelLoader, BadFilesGiveAnErrorAndAnEmptyMesh)
{
    QTemporaryDir dir;
    QByteArray garbage(4096, '\0');
    for (int i = 0; i < garbage.size(); ++i) garbage[i] = char((i * 7919 + 13) % 251);
    ASSERT_TRUE(writeFile(dir.filePath("garbage.ply"), garbage));
    ASSERT_TRUE(writeFile(dir.filePath("garbage.3ds"), garbage));
    ASSERT_TRUE(writeFile(dir.filePath("garbage.bin"), garbage));
    ASSERT_TRUE(writeFile(dir.filePath("cut.stl"), binaryStl(12, 5)));
    ASSERT_TRUE(writeFile(dir.filePath("empty.obj"), QByteArray()));
    for (const char* name : {"missing.obj", "garbage.ply", "garbage.3ds", "garbage.bin", "cut.stl", "empty.obj"}) {
        const runtime::LoadedModel model = runtime::loadModel(dir.filePath(QLatin1String(name)));
        EXPECT_TRUE(model.error.startsWith(QStringLiteral("cannot read model"))) << name << ": " << model.error.toStdString();
        ASSERT_TRUE(model.mesh) << name;
        EXPECT_TRUE(model.mesh->isEmpty()) << name;
    }
    EXPECT_TRUE(runtime::loadModel(dir.filePath("missing.obj")).error.contains(QStringLiteral("no such file")));
    EXPECT_FALSE(runtime::loadModel(dir.path()).error.isEmpty());  // a folder
}

TEST(ModelLoader, TheCacheReadsAFileOnceUntilItChanges)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("square.ply");
    ASSERT_TRUE(writeFile(path, squarePly()));
    runtime::ModelCache& cache = runtime::ModelCache::shared();
    const runtime::MeshPtr first = cache.request(path).get().mesh;
    EXPECT_EQ(cache.request(path).get().mesh, first);  // the same mesh, not a second reading
    ASSERT_TRUE(writeFile(path, cubeObj()));             // now a cube (OBJ text, other size)
    const runtime::MeshPtr second = cache.request(path).get().mesh;
    EXPECT_NE(second, first);
}

TEST(MeshImporter, DrawsAModelRelativeToTheComposition)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFile(dir.filePath("cube.obj"), cubeObj()));
    const auto composition = loadIn(dir, importerScene("cube.obj"));
    EXPECT_TRUE(composition->problems().isEmpty()) << test::problemsText(*composition).toStdString();
    runtime::Renderer renderer(composition, kSize);
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("triangles").toInt(), 12);
    const QImage image = renderer.snapshot().convertToFormat(QImage::Format_ARGB32);
    EXPECT_EQ(image.pixel(32, 24), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(2, 2), qRgb(0, 0, 0));
    // Its front face is half a unit nearer the eye: a little over 32 pixels wide.
    int width = 0;
    for (int x = 0; x < kSize.width(); ++x) width += qGray(image.pixel(x, 24)) > 128;
    EXPECT_GT(width, 36);
    EXPECT_LT(width, 52);
}

TEST(MeshImporter, MissingCutAndGarbageFilesAreProblemsNotCrashes)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFile(dir.filePath("cut.stl"), binaryStl(12, 5)));
    ASSERT_TRUE(writeFile(dir.filePath("garbage.dae"), QByteArray(2048, '\x9c')));
    for (const char* name : {"gone.obj", "cut.stl", "garbage.dae"}) {
        const auto composition = loadIn(dir, importerScene(name));
        ASSERT_TRUE(composition);
        const QString problems = test::problemsText(*composition);
        EXPECT_TRUE(problems.contains(QStringLiteral("Loader_1: cannot read model"))) << name << ": " << problems.toStdString();
        runtime::Renderer renderer(composition, kSize);
        renderer.render(0);
        EXPECT_EQ(renderer.outputValue("triangles").toInt(), 0) << name;
        EXPECT_EQ(renderer.snapshot().convertToFormat(QImage::Format_ARGB32).pixel(32, 24), qRgb(0, 0, 0)) << name;
    }
}

TEST(MeshImporter, APathThatArrivesLaterIsLoadedWithoutStoppingFrames)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFile(dir.filePath("square.ply"), squarePly()));
    Node r = importerScene("");
    r.publishInput("path", "Loader_1", "inputPath");
    runtime::Renderer renderer(loadIn(dir, r), kSize);
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("triangles").toInt(), 0);
    renderer.setInputValue("path", dir.filePath("square.ply"));
    int frames = 0;
    for (; frames < 200 && renderer.outputValue("triangles").toInt() == 0; ++frames) {
        renderer.render(frames / 60.0);
        if (renderer.outputValue("triangles").toInt() == 0) QThread::msleep(20);
    }
    EXPECT_EQ(renderer.outputValue("triangles").toInt(), 2);
    EXPECT_EQ(renderer.snapshot().convertToFormat(QImage::Format_ARGB32).pixel(32, 24), qRgb(255, 0, 0));
    // Back to no path: the mesh goes.
    renderer.setInputValue("path", QString());
    renderer.render(10);
    EXPECT_EQ(renderer.outputValue("triangles").toInt(), 0);
}

}  // namespace
