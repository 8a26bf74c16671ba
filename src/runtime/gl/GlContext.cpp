#include "runtime/gl/GlContext.h"

#include <QGuiApplication>
#include <QOpenGLVersionFunctionsFactory>
#include <QThread>

namespace runtime {

namespace {

// Fog as Fog.cpp computes it, for both fragment programs (setFogUniforms
// in GlDrawing.cpp feeds it): fogMode −1 none, 0 linear, 1 exponential,
// 2 exponential squared; `depth` is the distance from the eye.
const char* const kFogFunctions = R"(
uniform int fogMode;
uniform vec3 fogColor;
uniform float fogDensity;
uniform float fogStart;
uniform float fogEnd;
float fogAmount(float depth)
{
    float visible = 1.0;
    if (fogMode == 0) visible = fogEnd > fogStart ? (fogEnd - depth) / (fogEnd - fogStart) : (depth < fogStart ? 1.0 : 0.0);
    else if (fogMode == 1) visible = exp(-max(0.0, fogDensity) * max(0.0, depth));
    else if (fogMode == 2) { float x = max(0.0, fogDensity) * max(0.0, depth); visible = exp(-x * x); }
    return 1.0 - clamp(visible, 0.0, 1.0);
}
vec4 fogged(vec4 pixel, float depth)
{
    if (fogMode < 0) return pixel;
    return vec4(mix(pixel.rgb, fogColor * pixel.a, fogAmount(depth)), pixel.a);
}
)";

// A fragment program: the version line, the fog functions, then `body`.
QByteArray fragmentSource(const char* body)
{
    return QByteArrayLiteral("#version 120\n") + kFogFunctions + body;
}

// Premultiplied colours throughout: the texel (or white) times the colour,
// scaled by the mask's luminance × alpha where there is a mask.
const char* const kQuadVertexShader = R"(#version 120
attribute vec3 position;
attribute vec2 texCoord;
uniform mat4 matrix;
uniform mat4 local;  // to destination units, for the depth fog reads
uniform float eyeZ;
varying vec2 uv;
varying float depth;
void main()
{
    uv = texCoord;
    depth = eyeZ - (local * vec4(position, 1.0)).z;
    gl_Position = matrix * vec4(position, 1.0);
}
)";

const char* const kQuadFragmentShader = R"(
uniform sampler2D image;
uniform sampler2D mask;
uniform bool hasImage;
uniform bool hasMask;
uniform vec4 color;
varying vec2 uv;
varying float depth;
void main()
{
    vec4 pixel = hasImage ? texture2D(image, uv) * color : color;
    if (hasMask) {
        vec4 m = texture2D(mask, uv);
        // The mask's pixels are premultiplied: its luminance × alpha is the
        // luminance of the stored colour.
        pixel *= dot(m.rgb, vec3(0.299, 0.587, 0.114));
    }
    gl_FragColor = fogged(pixel, depth);
}
)";

// Meshes: the same shading as Lighting.cpp, per pixel.
const char* const kMeshVertexShader = R"(#version 120
attribute vec3 position;
attribute vec3 normal;
attribute vec2 texCoord;
attribute vec4 vertexColor;
uniform mat4 matrix;
uniform mat4 modelView;
uniform mat3 normalMatrix;
varying vec2 uv;
varying vec4 tint;
varying vec3 eyePosition;
varying vec3 eyeNormal;
void main()
{
    uv = texCoord;
    tint = vertexColor;
    eyePosition = (modelView * vec4(position, 1.0)).xyz;
    eyeNormal = normalMatrix * normal;
    gl_Position = matrix * vec4(position, 1.0);
}
)";

const char* const kMeshFragmentShader = R"(
uniform sampler2D image;
uniform bool hasImage;
uniform vec4 color;  // straight alpha
uniform bool lit;
uniform bool twoSided;
uniform vec3 eye;
uniform vec3 ambient;
uniform float shininess;
uniform float specular;
uniform int lightCount;
uniform vec3 lightPosition[4];
uniform vec3 lightColor[4];
uniform float lightAttenuation[4];
varying vec2 uv;
varying vec4 tint;
varying vec3 eyePosition;
varying vec3 eyeNormal;
void main()
{
    vec4 material = color * tint;
    vec3 rgb = material.rgb;
    if (lit) {
        vec3 n = normalize(eyeNormal);
        vec3 toEye = normalize(eye - eyePosition);
        if (twoSided && dot(n, toEye) < 0.0) n = -n;
        vec3 diffuse = ambient;
        vec3 highlight = vec3(0.0);
        for (int i = 0; i < 4; ++i) {
            if (i >= lightCount) break;
            vec3 toLight = lightPosition[i] - eyePosition;
            vec3 l = normalize(toLight);
            float fade = 1.0 / (1.0 + max(0.0, lightAttenuation[i]) * length(toLight));
            float d = max(0.0, dot(n, l)) * fade;
            diffuse += d * lightColor[i];
            if (d > 0.0)
                highlight += pow(max(0.0, dot(n, normalize(l + toEye))), max(1.0, shininess)) * specular * fade * lightColor[i];
        }
        rgb = clamp(rgb * min(diffuse, vec3(1.0)) + highlight, 0.0, 1.0);
    }
    vec4 pixel = vec4(rgb * material.a, material.a);
    if (hasImage) pixel *= texture2D(image, uv);
    gl_FragColor = fogged(pixel, eye.z - eyePosition.z);
}
)";

}  // namespace

std::shared_ptr<GlContext> GlContext::forThisThread(QString* why)
{
    thread_local std::weak_ptr<GlContext> current;
    thread_local QString failure;
    if (auto existing = current.lock()) return existing;
    if (!failure.isEmpty()) {
        // Trying again costs a driver round trip each time; it will not
        // succeed later in the same thread.
        if (why) *why = failure;
        return nullptr;
    }
    std::shared_ptr<GlContext> made(new GlContext);
    if (!made->create(&failure)) {
        if (why) *why = failure;
        return nullptr;
    }
    current = made;
    return made;
}

bool GlContext::create(QString* why)
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        *why = QStringLiteral("no GUI application");
        return false;
    }
    // A surface can be made on the GUI thread only; a worker thread's
    // renderer draws with the raster backend.
    if (QThread::currentThread() != QCoreApplication::instance()->thread()) {
        *why = QStringLiteral("not the GUI thread");
        return false;
    }
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(2, 1);
    format.setProfile(QSurfaceFormat::CompatibilityProfile);
    format.setDepthBufferSize(24);
    context_.setFormat(format);
    if (!context_.create()) {
        *why = QStringLiteral("no OpenGL context can be made on this display");
        return false;
    }
    surface_.setFormat(context_.format());
    surface_.create();
    if (!surface_.isValid() || !context_.makeCurrent(&surface_)) {
        *why = QStringLiteral("the OpenGL context cannot be made current");
        return false;
    }
    legacy_ = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_2_1>(&context_);
    if (legacy_ && !legacy_->initializeOpenGLFunctions()) legacy_ = nullptr;
    quadProgram_ = std::make_unique<QOpenGLShaderProgram>();
    if (!quadProgram_->addShaderFromSourceCode(QOpenGLShader::Vertex, kQuadVertexShader) ||
        !quadProgram_->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentSource(kQuadFragmentShader)) ||
        !quadProgram_->link()) {
        *why = QStringLiteral("the quad program does not compile: %1").arg(quadProgram_->log());
        return false;
    }
    meshProgram_ = std::make_unique<QOpenGLShaderProgram>();
    const bool compiled = meshProgram_->addShaderFromSourceCode(QOpenGLShader::Vertex, kMeshVertexShader) &&
                          meshProgram_->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentSource(kMeshFragmentShader));
    // Attribute 0 must be an array in a compatibility context: the vertex
    // colour, sometimes a constant, must not get it.
    meshProgram_->bindAttributeLocation("position", 0);
    if (!compiled || !meshProgram_->link()) {
        *why = QStringLiteral("the mesh program does not compile: %1").arg(meshProgram_->log());
        return false;
    }
    return true;
}

GlContext::~GlContext()
{
    // The program's objects are deleted with the context current.
    if (makeCurrent()) {
        quadProgram_.reset();
        meshProgram_.reset();
    }
}

bool GlContext::makeCurrent()
{
    if (QOpenGLContext::currentContext() == &context_) return true;
    return context_.isValid() && context_.makeCurrent(&surface_);
}

QString GlContext::rendererName()
{
    if (!makeCurrent()) return {};
    return QString::fromLatin1(reinterpret_cast<const char*>(functions().glGetString(GL_RENDERER)));
}

}  // namespace runtime
