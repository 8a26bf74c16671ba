#include "runtime/gl/GlBackend.h"

#include <vector>

namespace runtime {

namespace {
// Textures of images that stay alive between frames (embedded pictures,
// text) are kept up to this size in total.
constexpr qint64 kTextureBudget = 256ll << 20;
}  // namespace

std::unique_ptr<GlBackend> GlBackend::make(QString* why)
{
    auto context = GlContext::forThisThread(why);
    if (!context) return nullptr;
    return std::unique_ptr<GlBackend>(new GlBackend(std::move(context)));
}

GlBackend::~GlBackend()
{
    if (!context_->makeCurrent()) return;
    programs_.clear();  // with the context current
    for (const auto& [key, texture] : textures_) context_->functions().glDeleteTextures(1, &texture.id);
}

std::unique_ptr<RenderTarget> GlBackend::makeTarget(QSize pixelSize)
{
    return std::make_unique<GlTarget>(*this, pixelSize);
}

std::unique_ptr<RenderTarget> GlBackend::wrapImage(QImage* image, const QTransform& view)
{
    return std::make_unique<GlTarget>(*this, image, view);
}

GLuint GlBackend::texture(const QImage& raster, qint64 key, bool keep)
{
    ++uses_;
    if (keep) {
        auto found = textures_.find(key);
        if (found != textures_.end()) {
            found->second.lastUse = uses_;
            return found->second.id;
        }
    }
    QOpenGLFunctions& gl = context_->functions();
    // Premultiplied ARGB32 is B, G, R, A in memory on little-endian
    // machines; the RGBA byte order is what every GL takes.
    const QImage pixels = raster.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    GLuint id = 0;
    gl.glGenTextures(1, &id);
    gl.glBindTexture(GL_TEXTURE_2D, id);
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, pixels.width(), pixels.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                    pixels.constBits());
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    if (!keep) return id;
    const qint64 bytes = qint64(pixels.width()) * pixels.height() * 4;
    evictTo(kTextureBudget - bytes);
    textures_[key] = {id, bytes, uses_};
    textureBytes_ += bytes;
    return id;
}

void GlBackend::evictTo(qint64 bytes)
{
    while (textureBytes_ > bytes && !textures_.empty()) {
        auto oldest = textures_.begin();
        for (auto it = textures_.begin(); it != textures_.end(); ++it)
            if (it->second.lastUse < oldest->second.lastUse) oldest = it;
        context_->functions().glDeleteTextures(1, &oldest->second.id);
        textureBytes_ -= oldest->second.bytes;
        textures_.erase(oldest);
    }
}

}  // namespace runtime
