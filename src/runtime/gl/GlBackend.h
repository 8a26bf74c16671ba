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
    // kEyeDistance on the z axis) with the view applied after it.
    const QMatrix4x4& projection() const { return projection_; }

    bool bind() const;

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

    GlBackend& backend_;
    QSize size_;
    QImage* external_ = nullptr;
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

private:
    explicit GlBackend(std::shared_ptr<GlContext> context) : context_(std::move(context)) {}
    void evictTo(qint64 bytes);

    struct Texture {
        GLuint id = 0;
        qint64 bytes = 0;
        std::uint64_t lastUse = 0;
    };
    std::shared_ptr<GlContext> context_;
    std::unordered_map<qint64, Texture> textures_;
    qint64 textureBytes_ = 0;
    std::uint64_t uses_ = 0;
};

}  // namespace runtime
