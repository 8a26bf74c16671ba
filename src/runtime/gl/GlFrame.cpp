// The frame record of an offscreen OpenGL target: what a frame drew, what
// of it differs from the previous frame, and reading those pixels back.

#include "runtime/gl/GlBackend.h"

#include <algorithm>
#include <cstring>

namespace runtime {

void GlTarget::drawImmediately()
{
    if (mode_ == FrameMode::Recording) {
        // A draw the record cannot hold: what was recorded goes down first,
        // and the next frame is drawn whole.
        replay({whole()});
        frame_.clear();
    }
    mode_ = FrameMode::Immediate;
    previousKnown_ = false;
    unread_ = {whole()};
}

void GlTarget::endFrame()
{
    if (mode_ == FrameMode::Recording) {
        const std::vector<QRect> damage =
            previousKnown_ ? frameDamage(previousFrame_, frame_, size_) : std::vector<QRect>{whole()};
        replay(damage);
        previousFrame_ = std::move(frame_);
        frame_.clear();
        previousKnown_ = true;
        unread_.insert(unread_.end(), damage.begin(), damage.end());
        unread_ = mergedDamage(std::move(unread_));
    }
    mode_ = FrameMode::Closed;
}

void GlTarget::replay(const std::vector<QRect>& rects)
{
    if (rects.empty() || !bind()) return;
    // Recorded draws were made outside every environment patch.
    const DrawEnvironment outer = environment().isStandard() ? environment() : setEnvironment(DrawEnvironment{});
    QOpenGLFunctions& gl = backend_.context().functions();
    gl.glEnable(GL_SCISSOR_TEST);
    for (const QRect& rect : rects) {
        // Scissor rectangles count rows from the bottom.
        gl.glScissor(rect.x(), size_.height() - rect.y() - rect.height(), rect.width(), rect.height());
        for (const RecordedDraw& draw : frame_) {
            if (draw.clear) clearNow(*draw.clear);
            else if (draw.bounds.intersects(rect)) drawQuadNow(draw.quad);
        }
    }
    gl.glDisable(GL_SCISSOR_TEST);
    if (!outer.isStandard()) setEnvironment(outer);
}

void GlTarget::readBack()
{
    if (unread_.empty() && !snapshot_.isNull()) return;
    snapshot_ = {};  // our own share of pixels_ must not make the writes below copy it
    if (pixels_.size() != size_) {
        pixels_ = QImage(size_, QImage::Format_ARGB32_Premultiplied);
        pixels_.fill(Qt::transparent);
        unread_ = {whole()};
    }
    if (!unread_.empty() && bind()) {
        // The multisampled buffer resolves into a plain one, kept for the
        // next frame.
        QOpenGLFramebufferObject* source = fbo_.get();
        const bool multisampled = fbo_->format().samples() > 0;
        if (multisampled && !resolved_) resolved_ = std::make_unique<QOpenGLFramebufferObject>(size_);
        QOpenGLFunctions& gl = backend_.context().functions();
        // BGRA bytes are premultiplied ARGB32 on the little-endian machines
        // we build for: rows go straight into the image, bottom row first.
        static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN);
        std::vector<uchar> rowBuffer;
        for (const QRect& rect : unread_) {
            const QRect glRect(rect.x(), size_.height() - rect.y() - rect.height(), rect.width(), rect.height());
            if (multisampled) {
                QOpenGLFramebufferObject::blitFramebuffer(resolved_.get(), glRect, fbo_.get(), glRect);
                source = resolved_.get();
            }
            source->bind();
            gl.glPixelStorei(GL_PACK_ALIGNMENT, 4);
            gl.glPixelStorei(GL_PACK_ROW_LENGTH, pixels_.bytesPerLine() / 4);
            uchar* first = pixels_.scanLine(rect.top()) + rect.left() * 4;
            gl.glReadPixels(glRect.x(), glRect.y(), glRect.width(), glRect.height(), GL_BGRA, GL_UNSIGNED_BYTE, first);
            // The rows arrived bottom first: turn the block over.
            const std::size_t rowBytes = std::size_t(rect.width()) * 4;
            rowBuffer.resize(rowBytes);
            for (int top = rect.top(), bottom = rect.bottom(); top < bottom; ++top, --bottom) {
                uchar* a = pixels_.scanLine(top) + rect.left() * 4;
                uchar* b = pixels_.scanLine(bottom) + rect.left() * 4;
                std::memcpy(rowBuffer.data(), a, rowBytes);
                std::memcpy(a, b, rowBytes);
                std::memcpy(b, rowBuffer.data(), rowBytes);
            }
        }
        gl.glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    }
    unread_.clear();
    snapshot_ = Image::fromRaster(pixels_);
}

}  // namespace runtime
