#pragma once
// Images whose pixels are computed from samples of another image at any
// image-space point: remapping (tiles, kaleidoscopes), blurs along lines,
// cells. The source is rendered once per region, only where it is read.

#include "runtime/Image.h"
#include "runtime/PixelColor.h"

#include <QPointF>
#include <QRectF>

#include <functional>
#include <optional>

namespace runtime {

// A rendered part of a source image, sampled in image space.
class SourcePixels {
public:
    // The part of `image` inside `wanted` (clamped to the size limit), with
    // a pixel of margin for bilinear sampling.
    static SourcePixels of(const Image& image, const QRectF& wanted);
    // All of a finite image, its coordinates repeating in both directions.
    static SourcePixels tiled(const Image& image);

    bool isEmpty() const { return raster_.isNull(); }
    const QRect& area() const { return area_; }
    // Bilinear; pixel centres are at half-integer coordinates. Transparent
    // outside the area (unless tiled) and at points that are not finite.
    PixelColor at(double x, double y) const;
    PixelColor nearest(double x, double y) const;

private:
    const QRgb* pixel(qint64 column, qint64 row) const;
    PixelColor bilinearAtEdge(qint64 column, qint64 row, float tx, float ty) const;
    void setRaster(QImage raster);
    QImage raster_;
    // The raster's layout, read for every sample.
    const uchar* bits_ = nullptr;
    qsizetype stride_ = 0;
    qint64 width_ = 0, height_ = 0;
    QRect area_;
    bool tiled_ = false;
};

// The colour of the result at the image-space point (x, y).
using PixelShader = std::function<PixelColor(const SourcePixels& source, double x, double y)>;
// The part of the source that the pixels of `region` read.
using SourceArea = std::function<QRectF(const QRect& region)>;

// Each pixel of the result is `shade`d at its centre. Without an extent the
// result is infinite. Null when the source is.
Image shadeImage(const Image& source, const std::optional<QRect>& extent, const SourceArea& area, const PixelShader& shade);
// The same over source pixels that do not depend on the region (a tile).
Image shadeImage(const SourcePixels& source, const std::optional<QRect>& extent, const PixelShader& shade);

// Each pixel of the result is the source sampled at `toSource`(its centre).
Image remapImage(const Image& source, const std::optional<QRect>& extent, const SourceArea& area,
                 const std::function<QPointF(double x, double y)>& toSource);

// The smallest rectangle holding `rect` mapped by a function that is affine
// in the point (so its corners bound it).
QRectF boundsOfAffine(const QRect& rect, const std::function<QPointF(double x, double y)>& map);

}  // namespace runtime
