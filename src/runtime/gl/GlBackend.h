#pragma once
// The OpenGL backend: the same drawing interface as the raster backend,
// drawn into framebuffer objects of the thread's offscreen context
// (GlContext.h). Images become textures, kept while their pixels live.

#include "runtime/Backend.h"
#include "runtime/FrameDamage.h"
#include "runtime/gl/GlContext.h"

#include <QOpenGLFramebufferObject>
#include <QTransform>

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace runtime {

class GlBackend;

// An offscreen target keeps the draws of each frame that begins with a
// clear and, when the frame ends (finish or snapshot), redraws and reads
// back only where they differ from the previous frame's (FrameDamage.h):
// a template holding still, or changing one line of text, costs a small
// part of a full frame. Meshes and frames that do not start with a clear
// are drawn as they come.
class GlTarget : public RenderTarget {
public:
    // An offscreen target cleared to transparent.
    GlTarget(GlBackend& backend, QSize pixelSize);
    // Draws over the caller's image; finish() writes the result back.
    // `view` maps destination units before the pixel mapping, as for
    // RasterTarget.
    GlTarget(GlBackend& backend, QImage* external, const QTransform& view = {});
    ~GlTarget() override;

    QSize pixelSize() const override { return size_; }
    void clear(const Color& color) override;
    void drawQuad(const QuadDraw& quad) override;
    void drawMesh(const MeshDraw& mesh) override;  // GlMesh.cpp
    Image snapshot() const override;
    void finish() override;

    bool isValid() const { return fbo_ && fbo_->isValid(); }
    // Units → clip space: Quartz Composer's perspective (the eye at
    // kEyeDistance on the z axis, or as a Projection patch sets it) with
    // the view applied after it; the product of the two below.
    const QMatrix4x4& projection() const { return projection_; }
    const QMatrix4x4& eyeFromUnits() const { return eyeFromUnits_; }
    const QMatrix4x4& clipFromEye() const { return clipFromEye_; }
    // GlProgram.cpp: files' GLSL programs, fed OpenGL's fixed-function state.
    QString prepareProgram(const ShaderProgram& program) override;

    bool bind() const;

protected:
    void environmentChanged() override;

private:
    void clearNow(const Color& color);
    void drawQuadNow(const QuadDraw& quad);

    // GlFrame.cpp: the frame record.
    void drawImmediately();  // before a draw that is not recorded
    void endFrame();         // draws what differs; its pixels become unread
    void replay(const std::vector<QRect>& rects);
    void readBack();         // unread pixels into pixels_
    QRect whole() const { return QRect(QPoint(0, 0), size_); }

    enum class FrameMode { Closed, Recording, Immediate };

    // Draws triangles (GL_TRIANGLES or a fan) with the environment's
    // program; false when it cannot, and the caller draws unshaded.
    struct ProgramVertices {
        const float* positions;  // x, y, z
        const float* normals;    // may be null
        const float* texCoords;  // s, t
        int stride;              // bytes
        int count;
        GLenum primitive;
    };
    bool drawWithProgram(const ProgramVertices& vertices, const QMatrix4x4& transform, const Image& image, const Color& color,
                         BlendMode blend, bool depthTest, Culling culling, const Lighting* lighting);

    GlBackend& backend_;
    QSize size_;
    QImage* external_ = nullptr;
    QTransform view_;
    QMatrix4x4 eyeFromUnits_;
    QMatrix4x4 clipFromEye_;
    QMatrix4x4 projection_;
    std::unique_ptr<QOpenGLFramebufferObject> fbo_;
    std::unique_ptr<QOpenGLFramebufferObject> resolved_;  // for reading a multisampled fbo_
    FrameMode mode_ = FrameMode::Closed;
    std::vector<RecordedDraw> frame_, previousFrame_;
    bool previousKnown_ = false;   // previousFrame_ is what the framebuffer holds
    std::vector<QRect> unread_;    // drawn since pixels_ was read
    QImage pixels_;                // the picture read back, top row first
    Image snapshot_;               // shares pixels_ while nothing is unread
};

class GlBackend : public Backend {
public:
    // Null, with the reason, where no context can be made.
    static std::unique_ptr<GlBackend> make(QString* why = nullptr);
    ~GlBackend() override;

    std::unique_ptr<RenderTarget> makeTarget(QSize pixelSize) override;
    std::unique_ptr<RenderTarget> wrapImage(QImage* image, const QTransform& view = {}) override;

    GlContext& context() { return *context_; }
    // A texture of `raster` (premultiplied ARGB32, top row at t = 0), kept
    // under `key` when `keep`; otherwise the caller deletes it after use.
    GLuint texture(const QImage& raster, qint64 key, bool keep);
    // The compiled and linked `source` (kept by its key), or null with the
    // driver's log in `error`; a failure is remembered too.
    QOpenGLShaderProgram* program(const ShaderProgram& source, QString* error);

private:
    explicit GlBackend(std::shared_ptr<GlContext> context) : context_(std::move(context)) {}
    void evictTo(qint64 bytes);

    struct Texture {
        GLuint id = 0;
        qint64 bytes = 0;
        std::uint64_t lastUse = 0;
    };
    struct CompiledProgram {
        std::unique_ptr<QOpenGLShaderProgram> program;  // null when it failed
        QString error;
    };
    std::shared_ptr<GlContext> context_;
    std::unordered_map<std::uint64_t, CompiledProgram> programs_;
    std::unordered_map<qint64, Texture> textures_;
    qint64 textureBytes_ = 0;
    std::uint64_t uses_ = 0;
};

}  // namespace runtime
