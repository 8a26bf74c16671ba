#include "runtime/gl/GlBackend.h"
#include "runtime/gl/GlDrawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace runtime {

namespace {

constexpr int kSamples = 4;  // multisampling stands for the raster backend's anti-aliasing


// Eye at (0, 0, d) looking down −z (d is kEyeDistance unless a Projection
// patch says otherwise); at z = 0 one unit across is half the
// destination's width, as the raster backend projects.
QMatrix4x4 eyeFromUnitsFor(const DrawEnvironment& environment)
{
    QMatrix4x4 m;
    m.translate(0, 0, -float(environment.orthographic() ? kEyeDistance : environment.eyeDistance));
    return m;
}

QMatrix4x4 clipFromEyeFor(QSize size, const QTransform& view, const DrawEnvironment& environment)
{
    const float aspect = float(size.width()) / float(std::max(1, size.height()));
    QMatrix4x4 projection;
    if (environment.orthographic()) {
        projection.ortho(-1.0f, 1.0f, -1.0f / aspect, 1.0f / aspect, 0.01f, 100.0f);
    } else {
        const float d = float(environment.eyeDistance);
        const float nearPlane = std::min(0.01f, d / 10), farPlane = std::max(100.0f, 10 * d);
        projection.frustum(-nearPlane / d, nearPlane / d, -nearPlane / (d * aspect), nearPlane / (d * aspect), nearPlane,
                           farPlane);
    }
    if (view.isIdentity()) return projection;
    // The view maps units to units; clip space's y is units × aspect.
    QMatrix4x4 toUnits, fromUnits, units(view);
    toUnits.scale(1.0f, 1.0f / aspect);
    fromUnits.scale(1.0f, aspect);
    return fromUnits * units * toUnits * projection;
}

// An image drawn at its own size, unrotated, lands on whole pixels as the
// raster backend puts it (half a pixel rounds right and down, as
// QPainter's blit does), rather
// than filtered half a pixel off: the shift to add in clip space, or none.
std::optional<QVector2D> blitShift(const QMatrix4x4& matrix, const QRectF& r, QSize image, QSize target)
{
    const QVector4D lowerLeft = matrix * QVector4D(float(r.left()), float(r.top()), 0, 1);
    const QVector4D upperRight = matrix * QVector4D(float(r.right()), float(r.bottom()), 0, 1);
    const QVector4D lowerRight = matrix * QVector4D(float(r.right()), float(r.top()), 0, 1);
    if (lowerLeft.w() <= 0 || std::abs(lowerLeft.w() - upperRight.w()) > 1e-6f || std::abs(lowerLeft.w() - lowerRight.w()) > 1e-6f)
        return std::nullopt;
    const auto pixel = [&](const QVector4D& c) {
        return QPointF((c.x() / c.w() + 1.0) * target.width() / 2.0, (1.0 - c.y() / c.w()) * target.height() / 2.0);
    };
    const QPointF ll = pixel(lowerLeft), ur = pixel(upperRight), lr = pixel(lowerRight);
    constexpr double kSlack = 1e-3;
    if (std::abs(ll.y() - lr.y()) > kSlack || std::abs(lr.x() - ur.x()) > kSlack) return std::nullopt;  // turned
    if (std::abs(ur.x() - ll.x() - image.width()) > kSlack || std::abs(ll.y() - ur.y() - image.height()) > kSlack)
        return std::nullopt;  // scaled or mirrored
    const double left = ll.x(), top = ur.y();
        // Within the slack of a half, the projection's rounding must not decide.
    const double dx = std::floor(left + 0.5 + kSlack) - left, dy = std::floor(top + 0.5 + kSlack) - top;
    return QVector2D(float(2.0 * dx / target.width()), float(-2.0 * dy / target.height()));
}

}  // namespace

GlTarget::GlTarget(GlBackend& backend, QSize pixelSize) : backend_(backend), size_(pixelSize.expandedTo(QSize(1, 1)))
{
    environmentChanged();
    if (!backend_.context().makeCurrent()) return;
    QOpenGLFramebufferObjectFormat format;
    format.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
    format.setSamples(kSamples);
    fbo_ = std::make_unique<QOpenGLFramebufferObject>(size_, format);
    clearNow(Color::transparentBlack());
    unread_ = {whole()};
}

GlTarget::GlTarget(GlBackend& backend, QImage* external, const QTransform& view) : GlTarget(backend, external->size())
{
    external_ = external;
    mode_ = FrameMode::Immediate;  // the caller's pixels change between frames: nothing to compare
    view_ = view;
    environmentChanged();
    if (!bind() || external->isNull()) return;
    // The caller's pixels are the starting picture.
    QOpenGLFunctions& gl = backend_.context().functions();
    const GLuint id = backend_.texture(*external, 0, false);
    QuadDraw whole;
    whole.rect = QRectF(-1, -1, 2, 2);
    whole.blend = BlendMode::Replace;
    whole.antialias = false;
    const QMatrix4x4 saved = projection_;
    projection_ = QMatrix4x4();  // the rect above is clip space
    QOpenGLShaderProgram& program = backend_.context().quadProgram();
    program.bind();
    program.setUniformValue("hasImage", true);
    program.setUniformValue("hasMask", false);
    setFogUniforms(program, nullptr);
    program.setUniformValue("image", 0);
    program.setUniformValue("color", QVector4D(1, 1, 1, 1));
    program.setUniformValue("matrix", projection_);
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glBindTexture(GL_TEXTURE_2D, id);
    gl.glDisable(GL_BLEND);
    const std::array<QuadVertex, 4> corners{{{-1, -1, 0, 0, 1}, {1, -1, 0, 1, 1}, {1, 1, 0, 1, 0}, {-1, 1, 0, 0, 0}}};
    drawCorners(program, gl, corners);
    gl.glDeleteTextures(1, &id);
    projection_ = saved;
}

void GlTarget::environmentChanged()
{
    eyeFromUnits_ = eyeFromUnitsFor(environment());
    clipFromEye_ = clipFromEyeFor(size_, view_, environment());
    projection_ = clipFromEye_ * eyeFromUnits_;
}

GlTarget::~GlTarget()
{
    // The framebuffer's objects go with the context current.
    if (backend_.context().makeCurrent()) {
        fbo_.reset();
        resolved_.reset();
    }
}

bool GlTarget::bind() const
{
    if (!fbo_ || !backend_.context().makeCurrent() || !fbo_->bind()) return false;
    backend_.context().functions().glViewport(0, 0, size_.width(), size_.height());
    return true;
}

void GlTarget::clear(const Color& color)
{
    if (!external_ && mode_ == FrameMode::Closed) {
        mode_ = FrameMode::Recording;
        frame_.clear();
    }
    if (mode_ == FrameMode::Recording) {
        frame_.push_back(RecordedDraw{color, {}, whole()});
        return;
    }
    drawImmediately();
    clearNow(color);
}

void GlTarget::clearNow(const Color& color)
{
    if (!bind()) return;
    QOpenGLFunctions& gl = backend_.context().functions();
    const float a = unitChannel(color.alpha);
    gl.glClearColor(unitChannel(color.red) * a, unitChannel(color.green) * a, unitChannel(color.blue) * a, a);
    gl.glClearDepthf(1.0f);
    gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

void GlTarget::drawQuad(const QuadDraw& quad)
{
    // Culled before recording, so a hidden side adds nothing to the damage.
    if (quad.rect.width() == 0 || quad.rect.height() == 0 || isCulled(quad)) return;
    // Only draws in the standard environment are recorded: what a Fog,
    // Projection or GLSL Shader patch sets lives in the patch and may
    // change under the same pointer.
    if (mode_ == FrameMode::Recording && environment().isStandard()) {
        frame_.push_back(RecordedDraw{std::nullopt, quad, quadPixelBounds(quad, projection_, size_)});
        return;
    }
    drawImmediately();
    drawQuadNow(quad);
}

void GlTarget::drawQuadNow(const QuadDraw& quad)
{
    if (!bind()) return;
    if (environment().program) {
        // Facing the viewer, the image's top row at t = 0.
        struct Corner {
            float x, y, z, nx, ny, nz, s, t;
        };
        const QRectF r = quad.rect;
        const std::array<Corner, 4> corners{{{float(r.left()), float(r.top()), 0, 0, 0, 1, 0, 1},
                                             {float(r.right()), float(r.top()), 0, 0, 0, 1, 1, 1},
                                             {float(r.right()), float(r.bottom()), 0, 0, 0, 1, 1, 0},
                                             {float(r.left()), float(r.bottom()), 0, 0, 0, 1, 0, 0}}};
        const ProgramVertices arrays{&corners[0].x, &corners[0].nx, &corners[0].s, int(sizeof(Corner)), 4, GL_TRIANGLE_FAN};
        if (drawWithProgram(arrays, quad.transform, quad.image, quad.color, quad.blend, quad.depthTest, Culling::None, quad.lighting))
            return;
    }
    QOpenGLFunctions& gl = backend_.context().functions();
    QOpenGLShaderProgram& program = backend_.context().quadProgram();
    program.bind();

    GLuint temporary[2] = {0, 0};
    const auto bindImage = [&](const Image& image, int unit, GLuint& made) {
        // Generators are drawn as the region the destination covers at one
        // image pixel per destination pixel, as on the raster backend.
        const bool finite = !image.isInfinite();
        const QImage raster = finite ? image.raster() : image.renderRegion(QRect(QPoint(0, 0), size_));
        const GLuint id = backend_.texture(raster, finite ? image.cacheKey() : 0, finite);
        if (!finite) made = id;
        gl.glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        gl.glBindTexture(GL_TEXTURE_2D, id);
    };
    const bool hasImage = !quad.image.isNull(), hasMask = hasImage && !quad.mask.isNull();
    if (hasImage) bindImage(quad.image, 0, temporary[0]);
    if (hasMask) bindImage(quad.mask, 1, temporary[1]);
    gl.glActiveTexture(GL_TEXTURE0);

    const float a = unitChannel(quad.color.alpha);
    program.setUniformValue("hasImage", hasImage);
    program.setUniformValue("hasMask", hasMask);
    program.setUniformValue("image", 0);
    program.setUniformValue("mask", 1);
    program.setUniformValue("color", QVector4D(unitChannel(quad.color.red) * a, unitChannel(quad.color.green) * a,
                                               unitChannel(quad.color.blue) * a, a));
    QMatrix4x4 matrix = projection_ * quad.transform;
    if (hasImage && !quad.image.isInfinite() && !hasMask)
        if (const auto shift = blitShift(matrix, quad.rect, quad.image.pixelSize(), size_)) {
            QMatrix4x4 snap;
            snap.translate(shift->x(), shift->y());
            matrix = snap * matrix;
        }
    program.setUniformValue("matrix", matrix);
    const Fog* fog = quad.fogged ? environment().fog : nullptr;
    setFogUniforms(program, fog);
    if (fog) {
        program.setUniformValue("local", quad.transform);
        program.setUniformValue("eyeZ", float(environment().orthographic() ? kEyeDistance : environment().eyeDistance));
    }

    applyBlendAndDepth(gl, quad.blend, quad.depthTest);
    gl.glDisable(GL_CULL_FACE);
    if (quad.antialias) gl.glEnable(GL_MULTISAMPLE);
    else gl.glDisable(GL_MULTISAMPLE);

    // rect.top() is the lower edge (y up); the image's top row is t = 0.
    const QRectF r = quad.rect;
    const std::array<QuadVertex, 4> corners{{{float(r.left()), float(r.top()), 0, 0, 1},
                                         {float(r.right()), float(r.top()), 0, 1, 1},
                                         {float(r.right()), float(r.bottom()), 0, 1, 0},
                                         {float(r.left()), float(r.bottom()), 0, 0, 0}}};
    drawCorners(program, gl, corners);
    gl.glDisable(GL_DEPTH_TEST);
    for (GLuint id : temporary)
        if (id) gl.glDeleteTextures(1, &id);
}

// Logically const: the picture is the frame already drawn; ending the
// frame and reading it back only bring the pixels up to date.
Image GlTarget::snapshot() const
{
    auto* self = const_cast<GlTarget*>(this);
    self->endFrame();
    self->readBack();
    return snapshot_;
}

void GlTarget::finish()
{
    if (external_ && isValid()) *external_ = snapshot().raster();
    else endFrame();
}

}  // namespace runtime
