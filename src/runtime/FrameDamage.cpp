#include "runtime/FrameDamage.h"

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {

// Linear filtering reaches one texel past an edge and multisampled edges
// cover part of the next pixel: two pixels of margin covers both.
constexpr int kMargin = 2;

}  // namespace

bool sameDraw(const QuadDraw& a, const QuadDraw& b)
{
    // A field added to QuadDraw changes its size: it must join the comparison.
    // `lighting` is read only by files' GLSL programs, and draws inside
    // those are never recorded.
    static_assert(sizeof(QuadDraw) == 192, "compare every field of QuadDraw here");
    return a.transform == b.transform && a.rect == b.rect && a.image.cacheKey() == b.image.cacheKey() &&
           a.mask.cacheKey() == b.mask.cacheKey() && a.color == b.color && a.blend == b.blend &&
           a.antialias == b.antialias && a.depthTest == b.depthTest && a.fogged == b.fogged && a.culling == b.culling;
}

// Rectangles that touch or overlap merge until none do, then the list is
// capped by merging everything into one box.
std::vector<QRect> mergedDamage(std::vector<QRect> rects)
{
    bool changed = true;
    while (changed) {
        changed = false;
        for (std::size_t i = 0; i < rects.size() && !changed; ++i)
            for (std::size_t j = i + 1; j < rects.size(); ++j)
                if (rects[i].adjusted(-1, -1, 1, 1).intersects(rects[j])) {
                    rects[i] = rects[i].united(rects[j]);
                    rects.erase(rects.begin() + std::ptrdiff_t(j));
                    changed = true;
                    break;
                }
    }
    if (int(rects.size()) > kMaxDamageRects) {
        QRect all;
        for (const QRect& r : rects) all = all.united(r);
        rects = {all};
    }
    return rects;
}

std::vector<QRect> frameDamage(const std::vector<RecordedDraw>& previous, const std::vector<RecordedDraw>& current,
                               QSize size)
{
    const QRect whole(QPoint(0, 0), size);
    std::vector<QRect> rects;
    const auto add = [&](const QRect& r) {
        const QRect clipped = r.intersected(whole);
        if (!clipped.isEmpty()) rects.push_back(clipped);
    };
    const std::size_t count = std::max(previous.size(), current.size());
    for (std::size_t i = 0; i < count; ++i) {
        const RecordedDraw* before = i < previous.size() ? &previous[i] : nullptr;
        const RecordedDraw* now = i < current.size() ? &current[i] : nullptr;
        if (before && now && *before == *now) continue;
        if (before) add(before->bounds);
        if (now) add(now->bounds);
        if (!rects.empty() && rects.back() == whole) return {whole};
    }
    return mergedDamage(std::move(rects));
}

QRect quadPixelBounds(const QuadDraw& quad, const QMatrix4x4& projection, QSize size)
{
    const QRect whole(QPoint(0, 0), size);
    const QMatrix4x4 matrix = projection * quad.transform;
    const QRectF& r = quad.rect;
    double left = INFINITY, right = -INFINITY, top = INFINITY, bottom = -INFINITY;
    for (const QPointF corner : {r.topLeft(), r.topRight(), r.bottomLeft(), r.bottomRight()}) {
        const QVector4D clip = matrix * QVector4D(float(corner.x()), float(corner.y()), 0, 1);
        if (!(clip.w() > 1e-6f)) return whole;
        const double x = (clip.x() / clip.w() + 1.0) * size.width() / 2.0;
        const double y = (1.0 - clip.y() / clip.w()) * size.height() / 2.0;
        if (!std::isfinite(x) || !std::isfinite(y)) return whole;
        left = std::min(left, x), right = std::max(right, x);
        top = std::min(top, y), bottom = std::max(bottom, y);
    }
    // Far outside the target, the box is simply empty.
    const double limit = 4.0 * std::max(size.width(), size.height()) + 16;
    left = std::clamp(left, -limit, limit), right = std::clamp(right, -limit, limit);
    top = std::clamp(top, -limit, limit), bottom = std::clamp(bottom, -limit, limit);
    const QRect box(QPoint(int(std::floor(left)) - kMargin, int(std::floor(top)) - kMargin),
                    QPoint(int(std::ceil(right)) + kMargin, int(std::ceil(bottom)) + kMargin));
    return box.intersected(whole);
}

}  // namespace runtime
