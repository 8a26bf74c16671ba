// Files' GLSL programs (the GLSL Shader patch) on the OpenGL backend. They
// are written for GLSL 1.10/1.20 and read OpenGL's fixed-function state
// through the built-ins (gl_Vertex, gl_Normal, gl_Color, gl_MultiTexCoord0,
// gl_ModelViewProjectionMatrix, gl_NormalMatrix, gl_LightSource, gl_Fog):
// the context is a compatibility profile, so each draw loads that state
// the old way, with client-side arrays, before drawing.

#include "runtime/Lighting.h"
#include "runtime/gl/GlBackend.h"
#include "runtime/gl/GlDrawing.h"

#include <algorithm>
#include <array>

namespace runtime {

QOpenGLShaderProgram* GlBackend::program(const ShaderProgram& source, QString* error)
{
    auto found = programs_.find(source.key);
    if (found == programs_.end()) {
        CompiledProgram compiled;
        auto program = std::make_unique<QOpenGLShaderProgram>();
        // A missing stage is left to the fixed-function pipeline.
        const bool ok = (source.vertexSource.trimmed().isEmpty() ||
                         program->addShaderFromSourceCode(QOpenGLShader::Vertex, source.vertexSource)) &&
                        (source.fragmentSource.trimmed().isEmpty() ||
                         program->addShaderFromSourceCode(QOpenGLShader::Fragment, source.fragmentSource)) &&
                        program->link();
        if (ok) compiled.program = std::move(program);
        else compiled.error = program->log().trimmed();
        found = programs_.emplace(source.key, std::move(compiled)).first;
    }
    if (error) *error = found->second.error;
    return found->second.program.get();
}

QString GlTarget::prepareProgram(const ShaderProgram& program)
{
    if (!backend_.context().makeCurrent()) return QStringLiteral("the OpenGL context cannot be made current");
    if (!backend_.context().legacyFunctions())
        return QStringLiteral("this OpenGL driver has no fixed-function state for GLSL programs");
    QString error;
    if (!backend_.program(program, &error))
        return error.isEmpty() ? QStringLiteral("the program does not link") : error;
    return {};
}

namespace {

std::array<float, 4> rgba(const Color& c)
{
    return {unitChannel(c.red), unitChannel(c.green), unitChannel(c.blue), unitChannel(c.alpha)};
}

// The Lighting patch's lights as OpenGL's, for programs that read
// gl_LightSource / gl_FrontMaterial. Positions are in destination units;
// the model-view matrix current when they are set takes them to eye space.
void loadLights(QOpenGLFunctions_2_1& gl, const Lighting* lighting, const Color& material)
{
    const auto ambient = lighting ? rgba(lighting->ambient) : std::array<float, 4>{0.2f, 0.2f, 0.2f, 1.0f};
    gl.glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient.data());
    const auto diffuse = rgba(material);
    gl.glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse.data());
    gl.glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, diffuse.data());
    const float specularStrength = lighting ? unitChannel(lighting->specular) : 0.0f;
    const std::array<float, 4> specular{specularStrength, specularStrength, specularStrength, 1.0f};
    gl.glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular.data());
    gl.glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, lighting ? float(std::clamp(lighting->shininess, 0.0, 128.0)) : 0.0f);
    const std::size_t count = lighting ? std::min<std::size_t>(lighting->lights.size(), Lighting::kMaxLights) : 0;
    for (std::size_t i = 0; i < std::size_t(Lighting::kMaxLights); ++i) {
        const GLenum light = GLenum(GL_LIGHT0 + i);
        const std::array<float, 4> off{0, 0, 0, 1};
        if (i >= count) {
            gl.glLightfv(light, GL_DIFFUSE, off.data());
            gl.glLightfv(light, GL_SPECULAR, off.data());
            continue;
        }
        const Light& l = lighting->lights[i];
        const std::array<float, 4> position{l.position.x(), l.position.y(), l.position.z(), 1.0f};
        gl.glLightfv(light, GL_POSITION, position.data());
        const auto colour = rgba(l.color);
        gl.glLightfv(light, GL_DIFFUSE, colour.data());
        gl.glLightfv(light, GL_SPECULAR, colour.data());
        gl.glLightf(light, GL_LINEAR_ATTENUATION, float(std::max(0.0, l.attenuation)));
    }
}

void loadFog(QOpenGLFunctions_2_1& gl, const Fog* fog)
{
    if (!fog) return;
    const GLint mode = fog->mode == Fog::Mode::Linear        ? GL_LINEAR
                       : fog->mode == Fog::Mode::Exponential ? GL_EXP
                                                             : GL_EXP2;
    gl.glFogi(GL_FOG_MODE, mode);
    const auto colour = rgba(fog->color);
    gl.glFogfv(GL_FOG_COLOR, colour.data());
    gl.glFogf(GL_FOG_DENSITY, float(fog->density));
    gl.glFogf(GL_FOG_START, float(fog->start));
    gl.glFogf(GL_FOG_END, float(fog->end));
}

}  // namespace

bool GlTarget::drawWithProgram(const ProgramVertices& vertices, const QMatrix4x4& transform, const Image& image,
                               const Color& color, BlendMode blend, bool depthTest, Culling culling, const Lighting* lighting)
{
    const ShaderProgram& source = *environment().program;
    QOpenGLShaderProgram* program = backend_.program(source, nullptr);
    QOpenGLFunctions_2_1* fixed = backend_.context().legacyFunctions();
    if (!program || !fixed || vertices.count <= 0) return false;
    QOpenGLFunctions& gl = backend_.context().functions();
    program->bind();

    // Matrices: eye space is the destination's units seen from the eye.
    fixed->glMatrixMode(GL_PROJECTION);
    fixed->glLoadMatrixf(clipFromEye_.constData());
    fixed->glMatrixMode(GL_TEXTURE);
    fixed->glLoadIdentity();
    fixed->glMatrixMode(GL_MODELVIEW);
    fixed->glLoadMatrixf(eyeFromUnits_.constData());
    loadLights(*fixed, lighting, color);
    loadFog(*fixed, environment().fog);
    const QMatrix4x4 modelView = eyeFromUnits_ * transform;
    fixed->glLoadMatrixf(modelView.constData());
    const auto straight = rgba(color);
    fixed->glColor4f(straight[0], straight[1], straight[2], straight[3]);
    fixed->glNormal3f(0, 0, 1);

    // The draw's own image on unit 0 (gl_MultiTexCoord0 runs over it), the
    // program's samplers from unit 1 on.
    std::vector<GLuint> temporary;
    const auto bindImage = [&](const Image& picture, int unit) {
        const bool finite = !picture.isInfinite();
        const QImage raster = finite ? picture.raster() : picture.renderRegion(QRect(QPoint(0, 0), size_));
        const GLuint id = backend_.texture(raster, finite ? picture.cacheKey() : 0, finite);
        if (!finite) temporary.push_back(id);
        gl.glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        gl.glBindTexture(GL_TEXTURE_2D, id);
    };
    if (!image.isNull()) bindImage(image, 0);
    int unit = 1;
    for (const ShaderUniform& uniform : source.uniforms) {
        const int location = program->uniformLocation(uniform.name.constData());
        if (location < 0) continue;  // declared but unused: the linker dropped it
        const auto& v = uniform.value;
        switch (uniform.kind) {
        case UniformKind::Float: program->setUniformValue(location, v[0]); break;
        case UniformKind::Vec2: program->setUniformValue(location, v[0], v[1]); break;
        case UniformKind::Vec3: program->setUniformValue(location, v[0], v[1], v[2]); break;
        case UniformKind::Vec4: program->setUniformValue(location, v[0], v[1], v[2], v[3]); break;
        case UniformKind::Int:
        case UniformKind::Bool: program->setUniformValue(location, GLint(v[0])); break;
        case UniformKind::Sampler:
            if (unit >= 8) break;  // more samplers than any file of ours binds
            if (!uniform.image.isNull()) bindImage(uniform.image, unit);
            program->setUniformValue(location, unit);
            ++unit;
            break;
        }
    }
    gl.glActiveTexture(GL_TEXTURE0);

    applyBlendAndDepth(gl, blend, depthTest);
    // Programs write straight (unpremultiplied) colour, as OpenGL's fixed
    // pipeline does; the target keeps premultiplied pixels.
    if (blend == BlendMode::Over) gl.glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    else if (blend == BlendMode::Add) gl.glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE, GL_ONE, GL_ONE);
    if (culling == Culling::None) {
        gl.glDisable(GL_CULL_FACE);
    } else {
        gl.glEnable(GL_CULL_FACE);
        gl.glFrontFace(GL_CCW);
        gl.glCullFace(culling == Culling::Back ? GL_BACK : GL_FRONT);
    }
    gl.glEnable(GL_MULTISAMPLE);

    fixed->glEnableClientState(GL_VERTEX_ARRAY);
    fixed->glVertexPointer(3, GL_FLOAT, vertices.stride, vertices.positions);
    if (vertices.normals) {
        fixed->glEnableClientState(GL_NORMAL_ARRAY);
        fixed->glNormalPointer(GL_FLOAT, vertices.stride, vertices.normals);
    }
    fixed->glClientActiveTexture(GL_TEXTURE0);
    fixed->glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    fixed->glTexCoordPointer(2, GL_FLOAT, vertices.stride, vertices.texCoords);
    gl.glDrawArrays(vertices.primitive, 0, vertices.count);
    fixed->glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    fixed->glDisableClientState(GL_NORMAL_ARRAY);
    fixed->glDisableClientState(GL_VERTEX_ARRAY);

    program->release();
    gl.glDisable(GL_DEPTH_TEST);
    gl.glDisable(GL_CULL_FACE);
    for (GLuint id : temporary) gl.glDeleteTextures(1, &id);
    return true;
}

}  // namespace runtime
