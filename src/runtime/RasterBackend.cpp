#include "runtime/RasterBackend.h"

#include <QPainter>
#include <QPolygonF>

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

namespace {

constexpr std::size_t kCacheEntries = 64;

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

}  // namespace

QImage* DerivedImageCache::find(const QString& key)
{
    auto it = entries_.find(key);
    if (it == entries_.end()) return nullptr;
    it->second.lastUse = ++clock_;
    return &it->second.result;
}

void DerivedImageCache::store(const QString& key, QImage image)
{
    if (entries_.size() >= kCacheEntries) {
        auto oldest = std::min_element(entries_.begin(), entries_.end(),
                                       [](const auto& a, const auto& b) { return a.second.lastUse < b.second.lastUse; });
        entries_.erase(oldest);
    }
    entries_[key] = Entry{std::move(image), ++clock_};
}

QImage DerivedImageCache::tinted(const Image& image, const Color& color)
{
    const QString key = QStringLiteral("t%1/%2/%3/%4").arg(image.cacheKey()).arg(color.red).arg(color.green).arg(color.blue);
    if (QImage* hit = find(key)) return *hit;
    QImage out = tint(image.raster(), color);
    store(key, out);
    return out;
}

QImage DerivedImageCache::tint(const QImage& image, const Color& color)
{
    QImage out = image.copy();
    const int r = int(std::lround(clamp01(color.red) * 256));
    const int g = int(std::lround(clamp01(color.green) * 256));
    const int b = int(std::lround(clamp01(color.blue) * 256));
    for (int y = 0; y < out.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < out.width(); ++x) {
            const QRgb p = line[x];
            line[x] = qRgba((qRed(p) * r) >> 8, (qGreen(p) * g) >> 8, (qBlue(p) * b) >> 8, qAlpha(p));
        }
    }
    return out;
}

QImage DerivedImageCache::masked(const QImage& image, qint64 imageKey, const Image& mask)
{
    const QString key = QStringLiteral("m%1/%2").arg(imageKey).arg(mask.cacheKey());
    if (QImage* hit = find(key)) return *hit;
    QImage out = image.copy();
    // The mask is stretched over the image.
    const QImage m = (mask.isInfinite() ? mask.renderRegion(QRect(QPoint(0, 0), out.size())) : mask.raster())
                         .scaled(out.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                         .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < out.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        const auto* mline = reinterpret_cast<const QRgb*>(m.constScanLine(y));
        for (int x = 0; x < out.width(); ++x) {
            // Premultiplied mask: its grey level already includes its alpha.
            const int coverage = (qRed(mline[x]) * 299 + qGreen(mline[x]) * 587 + qBlue(mline[x]) * 114) / 1000;
            const QRgb p = line[x];
            line[x] = qRgba(qRed(p) * coverage / 255, qGreen(p) * coverage / 255, qBlue(p) * coverage / 255,
                            qAlpha(p) * coverage / 255);
        }
    }
    store(key, out);
    return out;
}

RasterTarget::RasterTarget(QSize pixelSize, DerivedImageCache* cache)
    : owned_(pixelSize.expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied), cache_(cache)
{
    owned_.fill(Qt::transparent);
}

RasterTarget::RasterTarget(QImage* external, DerivedImageCache* cache, const QTransform& view)
    : external_(external), view_(view), cache_(cache)
{
    if (external_->format() != QImage::Format_ARGB32_Premultiplied)
        *external_ = external_->convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

void RasterTarget::clear(const Color& color)
{
    QImage& target = pixels();
    // A picture of the last frame may still be held downstream: filling a
    // shared image would first copy every pixel only to overwrite them.
    if (!external_ && !target.isDetached()) target = QImage(target.size(), target.format());
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

void RasterTarget::drawQuad(const QuadDraw& quad)
{
    if (quad.rect.width() == 0 || quad.rect.height() == 0) return;
    QImage& target = pixels();
    const double w = target.width(), h = target.height();
    const QRectF r = quad.rect;
    const QVector3D local[4] = {QVector3D(float(r.left()), float(r.top()), 0),
                                QVector3D(float(r.right()), float(r.top()), 0),
                                QVector3D(float(r.right()), float(r.bottom()), 0),
                                QVector3D(float(r.left()), float(r.bottom()), 0)};
    // rect.top() is the lower edge here (y up): corners run lower-left,
    // lower-right, upper-right, upper-left.
    QPolygonF destination;
    for (const QVector3D& corner : local) {
        const QVector3D p = quad.transform.map(corner);
        const double depth = kEyeDistance - double(p.z());
        if (depth <= 1e-6) return;  // behind the eye
        const double s = kEyeDistance / depth;
        const QPointF unit = view_.map(QPointF(p.x() * s, p.y() * s));
        destination << QPointF((unit.x() + 1.0) * w / 2.0, h / 2.0 - unit.y() * w / 2.0);
    }

    QPainter painter(&target);
    painter.setCompositionMode(compositionMode(quad.blend));
    if (quad.antialias) painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);

    if (quad.image.isNull()) {
        QColor c = toQColor(quad.color);
        painter.setPen(Qt::NoPen);
        painter.setBrush(c);
        painter.drawPolygon(destination);
        return;
    }

    qint64 key = 0;
    const QImage source = sourcePixels(quad, &key);
    if (source.isNull()) return;
    painter.setOpacity(clamp01(quad.color.alpha));
    const QPolygonF sourceQuad({QPointF(0, source.height()), QPointF(source.width(), source.height()),
                                QPointF(source.width(), 0), QPointF(0, 0)});
    QTransform transform;
    if (!QTransform::quadToQuad(sourceQuad, destination, transform)) return;
    if (transform.type() <= QTransform::TxTranslate && std::abs(transform.dx()) < 1e6 && std::abs(transform.dy()) < 1e6 &&
        isNearlyInteger(transform.dx()) && isNearlyInteger(transform.dy())) {
        // Pixel-exact placement: a plain blit, no resampling.
        painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
        painter.drawImage(QPoint(int(std::lround(transform.dx())), int(std::lround(transform.dy()))), source);
        return;
    }
    painter.setTransform(transform);
    painter.drawImage(QPointF(0, 0), source);
}

Image RasterTarget::snapshot() const
{
    return Image::fromRaster(image());
}

std::unique_ptr<RenderTarget> RasterBackend::makeTarget(QSize pixelSize)
{
    return std::make_unique<RasterTarget>(pixelSize, &cache_);
}

std::unique_ptr<RasterTarget> RasterBackend::wrap(QImage* image, const QTransform& view)
{
    return std::make_unique<RasterTarget>(image, &cache_, view);
}

}  // namespace runtime
