// Meshes on the raster backend: each triangle flat, in the colour its
// centre gets from the lighting (vertex colours averaged over it), drawn far
// to near (the painter's algorithm stands for the depth buffer), fogged at
// their centre's depth. Images on meshes are not drawn here; the OpenGL
// backend draws them.

#include "runtime/Lighting.h"
#include "runtime/RasterBackend.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {

struct ProjectedTriangle {
    std::array<QPointF, 3> corners;
    double depth = 0;  // of the centre: larger is nearer
    Color color;
};

QColor toQColor(const Color& c)
{
    const auto f = [](double v) { return float(std::isnan(v) ? 0.0 : std::clamp(v, 0.0, 1.0)); };
    return QColor::fromRgbF(f(c.red), f(c.green), f(c.blue), f(c.alpha));
}

}  // namespace

void RasterTarget::drawMesh(const MeshDraw& mesh)
{
    if (!mesh.vertices || mesh.vertices->size() < 3) return;
    const std::vector<MeshVertex>& v = *mesh.vertices;
    const std::vector<QVector4D>* colors = mesh.colors && mesh.colors->size() == v.size() ? mesh.colors : nullptr;
    const QMatrix3x3 normalMatrix = mesh.transform.normalMatrix();
    std::vector<ProjectedTriangle> triangles;
    triangles.reserve(v.size() / 3);
    for (std::size_t i = 0; i + 2 < v.size(); i += 3) {
        ProjectedTriangle t;
        QVector3D centre, normal;
        bool visible = true;
        for (std::size_t k = 0; k < 3; ++k) {
            const QVector3D p = mesh.transform.map(v[i + k].position);
            visible = visible && projectPoint(p, t.corners[k]);
            centre += p / 3.0f;
            normal += v[i + k].normal;
        }
        if (!visible) continue;
        // Pixels have y down: a front face turns clockwise on screen.
        const double turn = (t.corners[1].x() - t.corners[0].x()) * (t.corners[2].y() - t.corners[0].y()) -
                            (t.corners[1].y() - t.corners[0].y()) * (t.corners[2].x() - t.corners[0].x());
        const bool front = turn < 0;
        if ((mesh.culling == Culling::Back && !front) || (mesh.culling == Culling::Front && front)) continue;
        t.depth = centre.z();
        Color material = mesh.color;
        if (colors) {
            const QVector4D c = ((*colors)[i] + (*colors)[i + 1] + (*colors)[i + 2]) / 3.0f;
            material = {material.red * c.x(), material.green * c.y(), material.blue * c.z(), material.alpha * c.w()};
        }
        if (mesh.lighting) {
            const float* n = normalMatrix.constData();  // column-major 3×3
            QVector3D eyeNormal(n[0] * normal.x() + n[3] * normal.y() + n[6] * normal.z(),
                                n[1] * normal.x() + n[4] * normal.y() + n[7] * normal.z(),
                                n[2] * normal.x() + n[5] * normal.y() + n[8] * normal.z());
            t.color = shade(*mesh.lighting, centre, eyeNormal.normalized(), material);
        } else {
            t.color = material;
        }
        if (const Fog* fog = environment().fog) t.color = fog->apply(t.color, environment().depthOf(centre));
        triangles.push_back(t);
    }
    std::stable_sort(triangles.begin(), triangles.end(), [](const auto& a, const auto& b) { return a.depth < b.depth; });
    QPainter* painter = painter_.on(pixels());
    if (!painter) return;
    painter->resetTransform();
    painter->setOpacity(1.0);
    painter->setRenderHint(QPainter::Antialiasing, false);  // seams between neighbours otherwise
    painter->setCompositionMode(mesh.blend == BlendMode::Add       ? QPainter::CompositionMode_Plus
                                : mesh.blend == BlendMode::Replace ? QPainter::CompositionMode_Source
                                                                   : QPainter::CompositionMode_SourceOver);
    painter->setPen(Qt::NoPen);
    for (const ProjectedTriangle& t : triangles) {
        painter_.setBrushColor(toQColor(t.color));
        painter->drawPolygon(t.corners.data(), 3);
    }
}

}  // namespace runtime
