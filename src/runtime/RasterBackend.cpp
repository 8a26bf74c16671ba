#include "runtime/RasterBackend.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace runtime {

BlendMode blendModeFromIndex(int index)
{
    switch (index) {
    case 0: return BlendMode::Replace;
    case 2: return BlendMode::Add;
    default: return BlendMode::Over;
    }
}

bool isCulled(const QuadDraw& quad)
{
    if (quad.culling == Culling::None) return false;
    // rect.top() is the lower edge (y up). The normal of the corners' turn,
    // taken after the transform, also counts a mirroring scale as turning
    // the quad over, as a rasteriser's winding test does.
    const QRectF r = quad.rect;
    const QVector3D lowerLeft = quad.transform.map(QVector3D(float(r.left()), float(r.top()), 0));
    const QVector3D lowerRight = quad.transform.map(QVector3D(float(r.right()), float(r.top()), 0));
    const QVector3D upperLeft = quad.transform.map(QVector3D(float(r.left()), float(r.bottom()), 0));
    const QVector3D normal = QVector3D::crossProduct(lowerRight - lowerLeft, upperLeft - lowerLeft);
    const QVector3D toEye = QVector3D(0, 0, float(kEyeDistance)) - lowerLeft;
    const bool front = QVector3D::dotProduct(normal, toEye) > 0;
    return quad.culling == Culling::Back ? !front : front;
}

namespace {

double clamp01(double v)
{
    return std::isnan(v) ? 0.0 : std::clamp(v, 0.0, 1.0);
}

QColor toQColor(const Color& c)
{
    return QColor::fromRgbF(float(clamp01(c.red)), float(clamp01(c.green)), float(clamp01(c.blue)),
                            float(clamp01(c.alpha)));
}

QPainter::CompositionMode compositionMode(BlendMode blend)
{
    switch (blend) {
    case BlendMode::Replace: return QPainter::CompositionMode_Source;
    case BlendMode::Add: return QPainter::CompositionMode_Plus;
    case BlendMode::Over: break;
    }
    return QPainter::CompositionMode_SourceOver;
}

bool isNearlyInteger(double v)
{
    return std::abs(v - std::round(v)) < 1e-3;
}

// The painter is kept from draw to draw: each draw sets all the state it
// relies on, so nothing carries over from the one before.
void prepare(QPainter& painter, QPainter::CompositionMode mode, bool antialias, bool smooth, qreal opacity)
{
    painter.setCompositionMode(mode);
    painter.setRenderHint(QPainter::Antialiasing, antialias);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
    painter.setOpacity(opacity);
    painter.resetTransform();
}

// The pixels a quad can touch, anti-aliased edges included.
QRect pixelBounds(const std::array<QPointF, 4>& corners, QSize target)
{
    double left = corners[0].x(), right = left, top = corners[0].y(), bottom = top;
    for (const QPointF& p : corners) {
        left = std::min(left, p.x());
        right = std::max(right, p.x());
        top = std::min(top, p.y());
        bottom = std::max(bottom, p.y());
    }
    const QRectF bounds(QPointF(std::max(left, -1.0), std::max(top, -1.0)),
                        QPointF(std::min(right, target.width() + 1.0), std::min(bottom, target.height() + 1.0)));
    if (!bounds.isValid()) return {};
    return bounds.toAlignedRect().adjusted(-1, -1, 1, 1) & QRect(QPoint(0, 0), target);
}

RepeatedDrawCache::Key repeatedDrawKey(qint64 source, const std::array<QPointF, 4>& corners, const Color& color,
                                       bool antialias)
{
    RepeatedDrawCache::Key key;
    key.source = source;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        key.corners[2 * i] = corners[i].x();
        key.corners[2 * i + 1] = corners[i].y();
    }
    key.color = {clamp01(color.red), clamp01(color.green), clamp01(color.blue), clamp01(color.alpha)};
    key.antialias = antialias;
    return key;
}

}  // namespace

RasterTarget::RasterTarget(QSize pixelSize, DerivedImageCache* cache)
    : owned_(pixelSize.expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied),
      cache_(cache),
      repeated_(qint64(owned_.width()) * owned_.height())
{
    owned_.fill(Qt::transparent);
}

RasterTarget::RasterTarget(QImage* external, DerivedImageCache* cache, const QTransform& view)
    : external_(external), view_(view), cache_(cache), repeated_(qint64(external->width()) * external->height())
{
    if (external_->format() != QImage::Format_ARGB32_Premultiplied)
        *external_ = external_->convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

void RasterTarget::clear(const Color& color)
{
    QImage& target = pixels();
    if (!target.isDetached()) {
        // A picture of the last frame is held elsewhere: the painter lets
        // go of those pixels, they are someone else's now.
        painter_.end();
        // Filling a shared image of our own would first copy every pixel
        // only to overwrite them.
        if (!external_) target = QImage(target.size(), target.format());
    }
    target.fill(toQColor(color));
}

QImage RasterTarget::sourcePixels(const QuadDraw& quad, qint64* key)
{
    QImage source;
    if (quad.image.isInfinite()) {
        // A generator drawn directly shows the region the destination would
        // cover at one image pixel per destination pixel.
        source = quad.image.renderRegion(QRect(QPoint(0, 0), pixelSize()));
        if (quad.color.red != 1.0 || quad.color.green != 1.0 || quad.color.blue != 1.0)
            source = DerivedImageCache::tint(source, quad.color);
        *key = source.cacheKey();
    } else if (quad.color.red != 1.0 || quad.color.green != 1.0 || quad.color.blue != 1.0) {
        source = cache_->tinted(quad.image, quad.color);
        *key = source.cacheKey();
    } else {
        source = quad.image.raster();
        *key = quad.image.cacheKey();
    }
    if (!quad.mask.isNull() && !source.isNull()) {
        source = cache_->masked(source, *key, quad.mask);
        *key = source.cacheKey();
    }
    return source;
}

bool RasterTarget::project(const QuadDraw& quad, Corners& corners) const
{
    const QRectF r = quad.rect;
    // rect.top() is the lower edge here (y up): corners run lower-left,
    // lower-right, upper-right, upper-left.
    const QVector3D local[4] = {QVector3D(float(r.left()), float(r.top()), 0),
                                QVector3D(float(r.right()), float(r.top()), 0),
                                QVector3D(float(r.right()), float(r.bottom()), 0),
                                QVector3D(float(r.left()), float(r.bottom()), 0)};
    for (std::size_t i = 0; i < corners.size(); ++i)
        if (!projectPoint(quad.transform.map(local[i]), corners[i])) return false;
    return true;
}

bool RasterTarget::projectPoint(const QVector3D& p, QPointF& pixel) const
{
    const double w = image().width(), h = image().height();
    // Perspective divides by the distance from the eye, scaled so that
    // z = 0 maps one to one; an orthographic view does not divide.
    double s = 1.0;
    if (!environment().orthographic()) {
        const double eye = environment().eyeDistance;
        const double depth = eye - double(p.z());
        if (depth <= 1e-6 * eye) return false;  // behind the eye
        s = eye / depth;
    }
    const QPointF unit = view_.map(QPointF(p.x() * s, p.y() * s));
    pixel = QPointF((unit.x() + 1.0) * w / 2.0, h / 2.0 - unit.y() * w / 2.0);
    return true;
}

void RasterTarget::drawQuad(const QuadDraw& quad)
{
    if (quad.rect.width() == 0 || quad.rect.height() == 0 || isCulled(quad)) return;
    Corners corners;
    if (!project(quad, corners)) return;
    const Fog* fog = quad.fogged ? environment().fog : nullptr;
    if (fog) {
        // One amount for the whole layer, at its centre's depth. A flat
        // layer mixes in the fog colour exactly; an image is multiplied by
        // white mixed towards it, exact for black fog (a fade into the
        // dark) and for the image's white, darker elsewhere.
        const QPointF centre = quad.rect.center();
        const double depth = environment().depthOf(quad.transform.map(QVector3D(float(centre.x()), float(centre.y()), 0)));
        QuadDraw fogged = quad;
        if (quad.image.isNull()) {
            fogged.color = fog->apply(quad.color, depth);
        } else {
            const Color mix = fog->apply(Color::white(), depth);
            fogged.color = Color{quad.color.red * mix.red, quad.color.green * mix.green, quad.color.blue * mix.blue, quad.color.alpha};
        }
        fogged.fogged = false;
        if (fogged.image.isNull()) drawFlat(fogged, corners);
        else drawImage(fogged, corners);
        return;
    }
    if (quad.image.isNull()) drawFlat(quad, corners);
    else drawImage(quad, corners);
}

template <class Paint>
bool RasterTarget::drawRepeated(const RepeatedDrawCache::Key& key, const Corners& corners, Paint&& paint)
{
    const auto paintPicture = [&](QImage& picturePixels, QPoint topLeft) {
        QPainter painter(&picturePixels);
        paint(painter, topLeft);
    };
    const RepeatedDrawCache::Picture* picture = repeated_.pictureFor(key, pixelBounds(corners, pixelSize()), paintPicture);
    if (!picture) return false;
    if (QPainter* painter = painter_.on(pixels())) {
        prepare(*painter, QPainter::CompositionMode_SourceOver, false, false, 1.0);
        painter->drawImage(picture->topLeft, picture->pixels);
    }
    return true;
}

void RasterTarget::drawFlat(const QuadDraw& quad, const Corners& corners)
{
    const QColor color = toQColor(quad.color);
    if (quad.blend == BlendMode::Over) {
        const auto paint = [&](QPainter& painter, QPoint topLeft) {
            // Moved by whole pixels, so the edges cover the same fractions.
            Corners moved = corners;
            for (QPointF& p : moved) p -= topLeft;
            painter.setRenderHint(QPainter::Antialiasing, quad.antialias);
            painter.setPen(Qt::NoPen);
            painter.setBrush(color);
            painter.drawPolygon(moved.data(), int(moved.size()));
        };
        if (drawRepeated(repeatedDrawKey(0, corners, quad.color, quad.antialias), corners, paint)) return;
    }
    QPainter* painter = painter_.on(pixels());
    if (!painter) return;
    prepare(*painter, compositionMode(quad.blend), quad.antialias, quad.antialias, 1.0);
    painter_.setBrushColor(color);
    painter->drawPolygon(corners.data(), int(corners.size()));
}

void RasterTarget::drawImage(const QuadDraw& quad, const Corners& corners)
{
    qint64 key = 0;
    const QImage source = sourcePixels(quad, &key);
    if (source.isNull()) return;
    const double opacity = clamp01(quad.color.alpha);
    if (sourceQuad_.size() != 4) {
        sourceQuad_.resize(4);
        destinationQuad_.resize(4);
    }
    sourceQuad_[0] = QPointF(0, source.height());
    sourceQuad_[1] = QPointF(source.width(), source.height());
    sourceQuad_[2] = QPointF(source.width(), 0);
    sourceQuad_[3] = QPointF(0, 0);
    for (int i = 0; i < 4; ++i) destinationQuad_[i] = corners[std::size_t(i)];
    QTransform transform;
    if (!QTransform::quadToQuad(sourceQuad_, destinationQuad_, transform)) return;
    const QPainter::CompositionMode mode = compositionMode(quad.blend);

    if (transform.type() <= QTransform::TxTranslate && std::abs(transform.dx()) < 1e6 && std::abs(transform.dy()) < 1e6 &&
        isNearlyInteger(transform.dx()) && isNearlyInteger(transform.dy())) {
        // Pixel-exact placement: a plain blit, no resampling.
        if (QPainter* painter = painter_.on(pixels())) {
            prepare(*painter, mode, quad.antialias, false, opacity);
            painter->drawImage(QPoint(int(std::lround(transform.dx())), int(std::lround(transform.dy()))), source);
        }
        return;
    }
    if (quad.blend == BlendMode::Over) {
        const auto paint = [&](QPainter& painter, QPoint topLeft) {
            painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform, quad.antialias);
            painter.setOpacity(opacity);
            painter.setTransform(transform * QTransform::fromTranslate(-topLeft.x(), -topLeft.y()));
            painter.drawImage(QPointF(0, 0), source);
        };
        const Color white{1, 1, 1, opacity};  // the tint is in the source pixels
        if (drawRepeated(repeatedDrawKey(key, corners, white, quad.antialias), corners, paint)) return;
    }
    QPainter* painter = painter_.on(pixels());
    if (!painter) return;
    prepare(*painter, mode, quad.antialias, quad.antialias, opacity);
    painter->setTransform(transform);
    painter->drawImage(QPointF(0, 0), source);
}

Image RasterTarget::snapshot() const
{
    return Image::fromRaster(image());
}

std::unique_ptr<RenderTarget> RasterBackend::makeTarget(QSize pixelSize)
{
    return makeRasterTarget(pixelSize);
}

std::unique_ptr<RasterTarget> RasterBackend::makeRasterTarget(QSize pixelSize)
{
    return std::make_unique<RasterTarget>(pixelSize, &cache_);
}

std::unique_ptr<RasterTarget> RasterBackend::wrap(QImage* image, const QTransform& view)
{
    return std::make_unique<RasterTarget>(image, &cache_, view);
}

}  // namespace runtime
