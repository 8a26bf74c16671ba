#pragma once
// A triangle mesh as it travels between mesh patches (QCMeshPort). Made
// once and never changed, so ports share it by reference like images;
// a transform makes a new mesh.
//
// It keeps the indexed arrays it was made from (for the component
// patches) and the expanded triangle list the backends draw.

#include "runtime/Backend.h"
#include "runtime/Image.h"

#include <QMatrix4x4>
#include <QMetaType>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>

#include <cstdint>
#include <memory>
#include <vector>

namespace runtime {

class Mesh;
using MeshPtr = std::shared_ptr<const Mesh>;

class Mesh {
public:
    // How a list of vertices (or indices) makes triangles, as OpenGL reads it.
    enum class Primitive : std::uint8_t { Triangles, TriangleStrip, TriangleFan, Quads };

    struct Arrays {
        std::vector<QVector3D> positions;
        std::vector<QVector3D> normals;    // empty, or one per position
        std::vector<QVector2D> texCoords;  // empty, or one per position; t = 0 at the image's top row
        std::vector<QVector4D> colors;     // empty, or one per position (straight RGBA)
        std::vector<std::uint32_t> indices;  // three per triangle
        Image image;                       // drawn over the texture coordinates unless the renderer has one
    };

    // Turns `order` (indices into `positions`, or, when empty, the
    // positions in turn) into triangles of `primitive`. Triangles naming a
    // missing vertex are dropped; attribute arrays of the wrong length are
    // dropped; missing normals are made (each vertex the area-weighted
    // average of its triangles' normals).
    static MeshPtr make(Arrays arrays, Primitive primitive = Primitive::Triangles,
                        const std::vector<std::uint32_t>& order = {});
    static MeshPtr fromTriangles(Arrays arrays) { return make(std::move(arrays)); }

    const Arrays& arrays() const { return arrays_; }
    std::size_t triangleCount() const { return arrays_.indices.size() / 3; }
    bool isEmpty() const { return arrays_.indices.empty(); }
    bool hasColors() const { return !arrays_.colors.empty(); }

    // The triangles as the backends draw them, three vertices each, and
    // their colours (empty when the mesh has none).
    const std::vector<MeshVertex>& drawVertices() const { return drawVertices_; }
    const std::vector<QVector4D>& drawColors() const { return drawColors_; }

    // Axis-aligned bounds of the positions; both zero for an empty mesh.
    QVector3D boundsMin() const { return min_; }
    QVector3D boundsMax() const { return max_; }

    // A copy with positions moved by `matrix` (normals by its normal matrix).
    MeshPtr transformed(const QMatrix4x4& matrix) const;
    MeshPtr withImage(Image image) const;

private:
    explicit Mesh(Arrays arrays);
    Arrays arrays_;
    std::vector<MeshVertex> drawVertices_;
    std::vector<QVector4D> drawColors_;
    QVector3D min_, max_;
};

}  // namespace runtime

Q_DECLARE_METATYPE(runtime::MeshPtr)
