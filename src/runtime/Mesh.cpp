#include "runtime/Mesh.h"

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {

std::vector<std::uint32_t> triangleIndices(Mesh::Primitive primitive, const std::vector<std::uint32_t>& order, std::size_t vertexCount)
{
    const std::size_t n = order.empty() ? vertexCount : order.size();
    const auto at = [&](std::size_t i) { return order.empty() ? std::uint32_t(i) : order[i]; };
    std::vector<std::uint32_t> out;
    const auto add = [&](std::size_t a, std::size_t b, std::size_t c) {
        const std::uint32_t ia = at(a), ib = at(b), ic = at(c);
        // A triangle naming a vertex that is not there is left out.
        if (ia >= vertexCount || ib >= vertexCount || ic >= vertexCount) return;
        out.insert(out.end(), {ia, ib, ic});
    };
    switch (primitive) {
    case Mesh::Primitive::Triangles:
        out.reserve(n - n % 3);
        for (std::size_t i = 0; i + 2 < n; i += 3) add(i, i + 1, i + 2);
        break;
    case Mesh::Primitive::TriangleStrip:
        // Every other triangle of a strip turns the other way; swapping
        // its first two corners keeps them all counter-clockwise.
        for (std::size_t i = 0; i + 2 < n; ++i) i % 2 == 0 ? add(i, i + 1, i + 2) : add(i + 1, i, i + 2);
        break;
    case Mesh::Primitive::TriangleFan:
        for (std::size_t i = 1; i + 1 < n; ++i) add(0, i, i + 1);
        break;
    case Mesh::Primitive::Quads:
        for (std::size_t i = 0; i + 3 < n; i += 4) {
            add(i, i + 1, i + 2);
            add(i, i + 2, i + 3);
        }
        break;
    }
    return out;
}

std::vector<QVector3D> smoothNormals(const std::vector<QVector3D>& positions, const std::vector<std::uint32_t>& indices)
{
    std::vector<QVector3D> normals(positions.size());
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        const QVector3D a = positions[indices[i]], b = positions[indices[i + 1]], c = positions[indices[i + 2]];
        // The cross product's length is twice the area: larger faces weigh more.
        const QVector3D face = QVector3D::crossProduct(b - a, c - a);
        for (std::size_t k = 0; k < 3; ++k) normals[indices[i + k]] += face;
    }
    for (QVector3D& n : normals) {
        const float length = n.length();
        n = std::isfinite(length) && length > 0 ? n / length : QVector3D(0, 0, 1);
    }
    return normals;
}

}  // namespace

MeshPtr Mesh::make(Arrays arrays, Primitive primitive, const std::vector<std::uint32_t>& order)
{
    const std::size_t count = arrays.positions.size();
    if (arrays.normals.size() != count) arrays.normals.clear();
    if (arrays.texCoords.size() != count) arrays.texCoords.clear();
    if (arrays.colors.size() != count) arrays.colors.clear();
    arrays.indices = triangleIndices(primitive, order.empty() ? arrays.indices : order, count);
    if (arrays.normals.empty() && count > 0) arrays.normals = smoothNormals(arrays.positions, arrays.indices);
    return MeshPtr(new Mesh(std::move(arrays)));
}

Mesh::Mesh(Arrays arrays) : arrays_(std::move(arrays))
{
    const Arrays& a = arrays_;
    drawVertices_.reserve(a.indices.size());
    if (!a.colors.empty()) drawColors_.reserve(a.indices.size());
    for (const std::uint32_t i : a.indices) {
        drawVertices_.push_back({a.positions[i], a.normals[i], a.texCoords.empty() ? QVector2D() : a.texCoords[i]});
        if (!a.colors.empty()) drawColors_.push_back(a.colors[i]);
    }
    if (!a.positions.empty()) {
        min_ = max_ = a.positions.front();
        for (const QVector3D& p : a.positions) {
            min_ = QVector3D(std::min(min_.x(), p.x()), std::min(min_.y(), p.y()), std::min(min_.z(), p.z()));
            max_ = QVector3D(std::max(max_.x(), p.x()), std::max(max_.y(), p.y()), std::max(max_.z(), p.z()));
        }
    }
}

MeshPtr Mesh::transformed(const QMatrix4x4& matrix) const
{
    Arrays moved = arrays_;
    for (QVector3D& p : moved.positions) p = matrix.map(p);
    const QMatrix3x3 normalMatrix = matrix.normalMatrix();
    const float* m = normalMatrix.constData();  // column-major
    for (QVector3D& n : moved.normals) {
        const QVector3D turned(m[0] * n.x() + m[3] * n.y() + m[6] * n.z(), m[1] * n.x() + m[4] * n.y() + m[7] * n.z(),
                               m[2] * n.x() + m[5] * n.y() + m[8] * n.z());
        const float length = turned.length();
        n = length > 0 ? turned / length : n;
    }
    // A mirroring transform turns every triangle inside out: swapping two
    // corners keeps the front faces in front.
    if (matrix.determinant() < 0)
        for (std::size_t i = 0; i + 2 < moved.indices.size(); i += 3) std::swap(moved.indices[i], moved.indices[i + 1]);
    return MeshPtr(new Mesh(std::move(moved)));
}

MeshPtr Mesh::withImage(Image image) const
{
    Arrays copy = arrays_;
    copy.image = std::move(image);
    return MeshPtr(new Mesh(std::move(copy)));
}

}  // namespace runtime
