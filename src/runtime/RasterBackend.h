#pragma once
// The QPainter backend: deterministic, headless drawing into premultiplied
// ARGB32 images. Used by the tests, the command line and thumbnails.

#include "runtime/Backend.h"
#include "runtime/DerivedImageCache.h"
#include "runtime/RepeatedDrawCache.h"
#include "runtime/TargetPainter.h"

#include <QImage>
#include <QPolygonF>
#include <QTransform>

#include <array>

namespace runtime {

// Paints with one QPainter kept open between draws (see TargetPainter): the
// image can be read, copied, replaced or painted on by others between draws.
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
    // Flat-shaded triangles, far ones first (RasterMesh.cpp): no depth
    // buffer and no texture here.
    void drawMesh(const MeshDraw& mesh) override;
    Image snapshot() const override;

    const QImage& image() const { return external_ ? *external_ : owned_; }

private:
    using Corners = std::array<QPointF, 4>;
    QImage& pixels() { return external_ ? *external_ : owned_; }
    QImage sourcePixels(const QuadDraw& quad, qint64* key);
    bool project(const QuadDraw& quad, Corners& corners) const;
    // Destination units → pixels, in perspective; false behind the eye.
    bool projectPoint(const QVector3D& p, QPointF& pixel) const;
    void drawFlat(const QuadDraw& quad, const Corners& corners);
    void drawImage(const QuadDraw& quad, const Corners& corners);
    // A repeated Source Over draw from its cached picture; false when there
    // is none (yet) and the draw is to be made directly.
    template <class Paint>
    bool drawRepeated(const RepeatedDrawCache::Key& key, const Corners& corners, Paint&& paint);

    QImage owned_;
    QImage* external_ = nullptr;
    QTransform view_;
    DerivedImageCache* cache_;
    RepeatedDrawCache repeated_;
    QPolygonF sourceQuad_, destinationQuad_;  // kept: QTransform::quadToQuad takes polygons
    TargetPainter painter_;                   // last: ends before the pixels go
};

class RasterBackend : public Backend {
public:
    std::unique_ptr<RenderTarget> makeTarget(QSize pixelSize) override;
    std::unique_ptr<RenderTarget> wrapImage(QImage* image, const QTransform& view = {}) override { return wrap(image, view); }
    std::unique_ptr<RasterTarget> makeRasterTarget(QSize pixelSize);
    std::unique_ptr<RasterTarget> wrap(QImage* image, const QTransform& view = {});

private:
    DerivedImageCache cache_;
};

}  // namespace runtime
