#include "runtime/DerivedImageCache.h"

#include <QHashFunctions>

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {

constexpr std::size_t kCacheEntries = 64;

double clamp01(double v)
{
    return std::isnan(v) ? 0.0 : std::clamp(v, 0.0, 1.0);
}

}  // namespace

std::size_t DerivedImageCache::KeyHash::operator()(const Key& key) const
{
    return qHashMulti(0, key.image, key.mask, key.red, key.green, key.blue);
}

QImage* DerivedImageCache::find(const Key& key)
{
    auto it = entries_.find(key);
    if (it == entries_.end()) return nullptr;
    it->second.lastUse = ++clock_;
    return &it->second.result;
}

void DerivedImageCache::store(const Key& key, QImage image)
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
    const Key key{image.cacheKey(), 0, color.red, color.green, color.blue};
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
    const Key key{imageKey, mask.cacheKey(), 0, 0, 0};
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

}  // namespace runtime
