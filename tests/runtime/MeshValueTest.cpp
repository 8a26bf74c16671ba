// The mesh value: how primitives become triangles, what is dropped, the
// made normals, transforms, and how mesh values cross ports.

#include "runtime/Mesh.h"
#include "runtime/Value.h"

#include <QVariant>

#include <gtest/gtest.h>

using runtime::Mesh;

namespace {

Mesh::Arrays corners(int count)
{
    Mesh::Arrays a;
    for (int i = 0; i < count; ++i) a.positions.emplace_back(float(i), float(i % 2), 0.0f);
    return a;
}

std::vector<std::uint32_t> indicesOf(const runtime::MeshPtr& mesh)
{
    return mesh->arrays().indices;
}

TEST(MeshValue, PrimitivesBecomeCounterClockwiseTriangles)
{
    using P = Mesh::Primitive;
    EXPECT_EQ(indicesOf(Mesh::make(corners(7), P::Triangles)), (std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5}));  // the 7th is left over
    EXPECT_EQ(indicesOf(Mesh::make(corners(5), P::TriangleStrip)), (std::vector<std::uint32_t>{0, 1, 2, 2, 1, 3, 2, 3, 4}));
    EXPECT_EQ(indicesOf(Mesh::make(corners(5), P::TriangleFan)), (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3, 0, 3, 4}));
    EXPECT_EQ(indicesOf(Mesh::make(corners(8), P::Quads)), (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7}));
    // An index order is read with the primitive too.
    EXPECT_EQ(indicesOf(Mesh::make(corners(4), P::TriangleFan, {3, 2, 1, 0})), (std::vector<std::uint32_t>{3, 2, 1, 3, 1, 0}));
    EXPECT_TRUE(Mesh::make(corners(2), P::TriangleStrip)->isEmpty());
}

TEST(MeshValue, BadPartsAreDroppedNotTrusted)
{
    Mesh::Arrays a = corners(4);
    a.indices = {0, 1, 2, 0, 2, 4, 0xffffffffu, 1, 2};  // two triangles name missing vertices
    a.colors = {QVector4D(1, 0, 0, 1)};                // one colour for four vertices
    a.texCoords.resize(4);
    const runtime::MeshPtr mesh = Mesh::fromTriangles(a);
    EXPECT_EQ(mesh->triangleCount(), 1u);
    EXPECT_FALSE(mesh->hasColors());
    EXPECT_EQ(mesh->arrays().texCoords.size(), 4u);
    EXPECT_EQ(mesh->drawVertices().size(), 3u);
    EXPECT_TRUE(mesh->drawColors().empty());
}

TEST(MeshValue, MadeNormalsFaceTheFrontAndBoundsEncloseThePositions)
{
    Mesh::Arrays a;
    a.positions = {{0, 0, 0}, {2, 0, 0}, {0, 1, -3}};
    const runtime::MeshPtr mesh = Mesh::fromTriangles(a);
    const QVector3D expected = QVector3D::crossProduct(a.positions[1] - a.positions[0], a.positions[2] - a.positions[0]).normalized();
    for (const QVector3D& n : mesh->arrays().normals) EXPECT_LT((n - expected).length(), 1e-5f);
    EXPECT_EQ(mesh->boundsMin(), QVector3D(0, 0, -3));
    EXPECT_EQ(mesh->boundsMax(), QVector3D(2, 1, 0));
    EXPECT_EQ(Mesh::fromTriangles({})->boundsMax(), QVector3D());
}

TEST(MeshValue, TransformsMoveTurnAndKeepTheFrontInFront)
{
    Mesh::Arrays a;
    a.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};  // faces +z
    const runtime::MeshPtr mesh = Mesh::fromTriangles(a);
    QMatrix4x4 turn;
    turn.translate(0, 0, 5);
    turn.rotate(90, 0, 1, 0);  // +z turns to +x
    const runtime::MeshPtr turned = mesh->transformed(turn);
    EXPECT_LT((turned->arrays().normals[0] - QVector3D(1, 0, 0)).length(), 1e-5f);
    EXPECT_LT((turned->boundsMax() - QVector3D(0, 1, 5)).length(), 1e-5f);
    EXPECT_EQ(mesh->boundsMax(), QVector3D(1, 1, 0));  // the original is unchanged

    QMatrix4x4 mirror;
    mirror.scale(-1, 1, 1);
    const runtime::MeshPtr mirrored = mesh->transformed(mirror);
    const auto& p = mirrored->drawVertices();
    const float turnZ = QVector3D::crossProduct(p[1].position - p[0].position, p[2].position - p[0].position).z();
    EXPECT_GT(turnZ, 0.0f);  // still counter-clockwise seen from +z
    EXPECT_GT(mirrored->arrays().normals[0].z(), 0.9f);
}

TEST(MeshValue, MeshPortsCarryOnlyMeshesAndCompareByIdentity)
{
    const runtime::MeshPtr a = Mesh::fromTriangles({}), b = Mesh::fromTriangles({});
    const runtime::Value value(a);
    EXPECT_EQ(value.kind(), runtime::Value::Kind::Mesh);
    EXPECT_EQ(value.convertedTo(runtime::PortType::Mesh), value);
    EXPECT_NE(value, runtime::Value(b));
    EXPECT_TRUE(runtime::Value(1.0).convertedTo(runtime::PortType::Mesh).isNull());
    EXPECT_TRUE(runtime::Value(runtime::MeshPtr()).isNull());
    EXPECT_EQ(value.convertedTo(runtime::PortType::Virtual).toMesh(), a);
    // Across the API as a QVariant and back.
    const QVariant variant = value.toVariant();
    EXPECT_EQ(variant.value<runtime::MeshPtr>(), a);
    EXPECT_EQ(runtime::Value::fromVariant(variant).toMesh(), a);
    EXPECT_FALSE(value.toBool());  // an empty mesh
}

}  // namespace
