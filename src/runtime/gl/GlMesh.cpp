// Meshes on the OpenGL backend: depth-tested, culled, lit and fogged per
// pixel (the mesh program in GlContext.cpp mirrors Lighting.cpp and
// Fog.cpp), or drawn with a file's GLSL program (GlProgram.cpp).

#include "runtime/Lighting.h"
#include "runtime/gl/GlBackend.h"
#include "runtime/gl/GlDrawing.h"

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {
QVector3D rgb(const Color& c)
{
    return QVector3D(unitChannel(c.red), unitChannel(c.green), unitChannel(c.blue));
}
}  // namespace

void GlTarget::drawMesh(const MeshDraw& mesh)
{
    if (!mesh.vertices || mesh.vertices->size() < 3) return;
    drawImmediately();
    if (!bind()) return;
    if (environment().program) {
        const std::vector<MeshVertex>& v = *mesh.vertices;
        const ProgramVertices arrays{reinterpret_cast<const float*>(&v[0].position), reinterpret_cast<const float*>(&v[0].normal),
                                     reinterpret_cast<const float*>(&v[0].texCoord), int(sizeof(MeshVertex)),
                                     int(v.size() - v.size() % 3), GL_TRIANGLES};
        if (drawWithProgram(arrays, mesh.transform, mesh.image, mesh.color, mesh.blend, mesh.depthTest, mesh.culling, mesh.lighting))
            return;
    }
    QOpenGLFunctions& gl = backend_.context().functions();
    QOpenGLShaderProgram& program = backend_.context().meshProgram();
    program.bind();

    GLuint temporary = 0;
    const bool hasImage = !mesh.image.isNull();
    if (hasImage) {
        const bool finite = !mesh.image.isInfinite();
        const QImage raster = finite ? mesh.image.raster() : mesh.image.renderRegion(QRect(QPoint(0, 0), size_));
        const GLuint id = backend_.texture(raster, finite ? mesh.image.cacheKey() : 0, finite);
        if (!finite) temporary = id;
        gl.glActiveTexture(GL_TEXTURE0);
        gl.glBindTexture(GL_TEXTURE_2D, id);
    }
    program.setUniformValue("hasImage", hasImage);
    program.setUniformValue("image", 0);
    program.setUniformValue("color", QVector4D(rgb(mesh.color), unitChannel(mesh.color.alpha)));
    program.setUniformValue("matrix", projection() * mesh.transform);
    program.setUniformValue("modelView", mesh.transform);
    program.setUniformValue("normalMatrix", mesh.transform.normalMatrix());
    const DrawEnvironment& environment = this->environment();
    program.setUniformValue("eye", QVector3D(0, 0, float(environment.orthographic() ? kEyeDistance : environment.eyeDistance)));
    setFogUniforms(program, environment.fog);
    const Lighting* lighting = mesh.lighting;
    program.setUniformValue("lit", lighting != nullptr);
    if (lighting) {
        const int count = int(std::min<std::size_t>(lighting->lights.size(), Lighting::kMaxLights));
        program.setUniformValue("twoSided", lighting->twoSided);
        program.setUniformValue("ambient", rgb(lighting->ambient));
        program.setUniformValue("shininess", float(lighting->shininess));
        program.setUniformValue("specular", float(lighting->specular));
        program.setUniformValue("lightCount", count);
        for (int i = 0; i < count; ++i) {
            const Light& light = lighting->lights[std::size_t(i)];
            const QByteArray index = QByteArray::number(i);
            program.setUniformValue(("lightPosition[" + index + "]").constData(), light.position);
            program.setUniformValue(("lightColor[" + index + "]").constData(), rgb(light.color));
            program.setUniformValue(("lightAttenuation[" + index + "]").constData(), float(light.attenuation));
        }
    }

    applyBlendAndDepth(gl, mesh.blend, mesh.depthTest);
    if (mesh.culling == Culling::None) {
        gl.glDisable(GL_CULL_FACE);
    } else {
        gl.glEnable(GL_CULL_FACE);
        gl.glFrontFace(GL_CCW);
        gl.glCullFace(mesh.culling == Culling::Back ? GL_BACK : GL_FRONT);
    }
    gl.glEnable(GL_MULTISAMPLE);

    const std::vector<MeshVertex>& v = *mesh.vertices;
    const int position = program.attributeLocation("position"), normal = program.attributeLocation("normal"),
              texCoord = program.attributeLocation("texCoord");
    for (int location : {position, normal, texCoord})
        if (location >= 0) program.enableAttributeArray(location);
    if (position >= 0) program.setAttributeArray(position, GL_FLOAT, &v[0].position, 3, sizeof(MeshVertex));
    if (normal >= 0) program.setAttributeArray(normal, GL_FLOAT, &v[0].normal, 3, sizeof(MeshVertex));
    if (texCoord >= 0) program.setAttributeArray(texCoord, GL_FLOAT, &v[0].texCoord, 2, sizeof(MeshVertex));
    // Without vertex colours the attribute holds white for every vertex.
    const int vertexColor = program.attributeLocation("vertexColor");
    const bool perVertex = mesh.colors && mesh.colors->size() == v.size();
    if (vertexColor >= 0) {
        if (perVertex) {
            program.enableAttributeArray(vertexColor);
            program.setAttributeArray(vertexColor, GL_FLOAT, mesh.colors->data(), 4, sizeof(QVector4D));
        } else {
            program.disableAttributeArray(vertexColor);
            program.setAttributeValue(vertexColor, 1.0f, 1.0f, 1.0f, 1.0f);
        }
    }
    gl.glDrawArrays(GL_TRIANGLES, 0, GLsizei(v.size() - v.size() % 3));
    for (int location : {position, normal, texCoord})
        if (location >= 0) program.disableAttributeArray(location);
    if (vertexColor >= 0 && perVertex) program.disableAttributeArray(vertexColor);
    gl.glDisable(GL_DEPTH_TEST);
    gl.glDisable(GL_CULL_FACE);
    if (temporary) gl.glDeleteTextures(1, &temporary);
}

}  // namespace runtime
