#include "runtime/gl/GlContext.h"

#include <QGuiApplication>
#include <QThread>

namespace runtime {

namespace {

// Premultiplied colours throughout: the texel (or white) times the colour,
// scaled by the mask's luminance × alpha where there is a mask.
const char* const kQuadVertexShader = R"(#version 120
attribute vec3 position;
attribute vec2 texCoord;
uniform mat4 matrix;
varying vec2 uv;
void main()
{
    uv = texCoord;
    gl_Position = matrix * vec4(position, 1.0);
}
)";

const char* const kQuadFragmentShader = R"(#version 120
uniform sampler2D image;
uniform sampler2D mask;
uniform bool hasImage;
uniform bool hasMask;
uniform vec4 color;
varying vec2 uv;
void main()
{
    vec4 pixel = hasImage ? texture2D(image, uv) * color : color;
    if (hasMask) {
        vec4 m = texture2D(mask, uv);
        // The mask's pixels are premultiplied: its luminance × alpha is the
        // luminance of the stored colour.
        pixel *= dot(m.rgb, vec3(0.299, 0.587, 0.114));
    }
    gl_FragColor = pixel;
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
    quadProgram_ = std::make_unique<QOpenGLShaderProgram>();
    if (!quadProgram_->addShaderFromSourceCode(QOpenGLShader::Vertex, kQuadVertexShader) ||
        !quadProgram_->addShaderFromSourceCode(QOpenGLShader::Fragment, kQuadFragmentShader) ||
        !quadProgram_->link()) {
        *why = QStringLiteral("the quad program does not compile: %1").arg(quadProgram_->log());
        return false;
    }
    return true;
}

GlContext::~GlContext()
{
    // The program's objects are deleted with the context current.
    if (makeCurrent()) quadProgram_.reset();
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
