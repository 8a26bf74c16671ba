#pragma once
// The QPainter backend: deterministic, headless drawing into premultiplied
// ARGB32 images. Used by the tests, the command line and thumbnails.

#include "runtime/Backend.h"

#include <QImage>
#include <QTransform>

#include <list>
#include <unordered_map>

namespace runtime {

// Tinted and masked copies of images, so that a static layer drawn with a
// colour does not recolour its pixels every frame.
class DerivedImageCache {
public:
    QImage tinted(const Image& image, const Color& color);
    QImage masked(const QImage& image, qint64 imageKey, const Image& mask);
    // Multiplies premultiplied pixels by a colour's red, green and blue.
    static QImage tint(const QImage& image, const Color& color);

private:
    struct Entry {
        QImage result;
        std::uint64_t lastUse = 0;
    };
    QImage* find(const QString& key);
    void store(const QString& key, QImage image);

    std::unordered_map<QString, Entry> entries_;
    std::uint64_t clock_ = 0;
};

class RasterTarget : public RenderTarget {
public:
    // An offscreen target that owns its pixels, cleared to transparent.
    RasterTarget(QSize pixelSize, DerivedImageCache* cache);
    // Draws into the caller's image (converted to premultiplied ARGB32 first
    // if needed). `view` maps destination units to destination units before
    // the pixel mapping: a zoomed or panned canvas passes its transform.
    RasterTarget(QImage* external, DerivedImageCache* cache, const QTransform& view = {});

    QSize pixelSize() const override { return image().size(); }
    void clear(const Color& color) override;
    void drawQuad(const QuadDraw& quad) override;
    Image snapshot() const override;

    const QImage& image() const { return external_ ? *external_ : owned_; }

private:
    QImage& pixels() { return external_ ? *external_ : owned_; }
    QImage sourcePixels(const QuadDraw& quad, qint64* key);

    QImage owned_;
    QImage* external_ = nullptr;
    QTransform view_;
    DerivedImageCache* cache_;
};

class RasterBackend : public Backend {
public:
    std::unique_ptr<RenderTarget> makeTarget(QSize pixelSize) override;
    std::unique_ptr<RasterTarget> wrap(QImage* image, const QTransform& view = {});

private:
    DerivedImageCache cache_;
};

}  // namespace runtime
