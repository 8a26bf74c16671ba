#include "timeline/TimelineRows.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"

#include <algorithm>
#include <cmath>

namespace timeline {

TimelineRows TimelineRows::build(const model::Composition& composition)
{
    return build(composition.componentsSortedByInverseZLevel());
}

TimelineRows TimelineRows::build(const std::vector<model::QuartzComponent*>& topFirst)
{
    TimelineRows result;
    result.components_ = topFirst;
    result.rows_.reserve(topFirst.size());
    for (std::size_t i = 0; i < topFirst.size(); ++i) {
        model::QuartzComponent* component = topFirst[i];
        result.rows_.push_back({component, nullptr, component, int(i)});
        if (!component->expanded()) continue;
        for (model::Attribute* child : component->children()) result.rows_.push_back({nullptr, child, component, int(i)});
    }
    return result;
}

const TimelineRow* TimelineRows::row(int index) const
{
    return index >= 0 && index < count() ? &rows_[std::size_t(index)] : nullptr;
}

int TimelineRows::rowOfComponent(const model::QuartzComponent* component) const
{
    for (int i = 0; i < count(); ++i)
        if (rows_[std::size_t(i)].component == component) return i;
    return -1;
}

void TimelineRows::forEachKeyframeInSpan(const TimelineGeometry& g, int rowIndex, double left, double right,
                                         const KeyframeVisitor& visit) const
{
    const TimelineRow* r = row(rowIndex);
    if (!r || !r->attribute || !r->attribute->animateable()) return;
    const model::KeyframeValues& keys = r->attribute->keyframes();
    if (keys.isEmpty()) return;
    // The first key that can reach the span, found by search; the walk stops
    // at the first one past it.
    const double from = g.earliestTimeTouching(left), to = g.latestTimeTouching(right);
    for (auto it = keys.lowerBound(float(from)); it != keys.constEnd(); ++it) {
        if (double(it.key()) > to) break;
        const QRectF diamond = g.keyframeRect(it.key(), rowIndex);
        if (diamond.right() <= left || diamond.left() >= right) continue;
        visit(r->attribute, it.key(), diamond);
    }
}

void TimelineRows::forEachKeyframeIntersecting(const TimelineGeometry& g, const QRectF& rect,
                                               const KeyframeVisitor& visit) const
{
    if (rect.isEmpty()) return;
    const int first = std::max(0, g.rowAt(rect.top()));
    const int last = std::min(count() - 1, g.rowAt(rect.bottom()));
    for (int i = first; i <= last; ++i)
        forEachKeyframeInSpan(g, i, rect.left(), rect.right(), [&](model::Attribute* a, float key, const QRectF& diamond) {
            if (diamond.intersects(rect)) visit(a, key, diamond);
        });
}

TimelineHit TimelineRows::hitTest(const TimelineGeometry& g, const QPointF& p) const
{
    const int index = g.rowAt(p.y());
    const TimelineRow* r = row(index);
    if (!r) return {};
    if (r->component) {
        const QRectF clip = g.clipRect(r->component->startTime(), r->component->endTime(), index);
        // Half-open like every row, so a press on a shared edge has one owner.
        if (p.x() < clip.left() || p.x() >= clip.right()) return {};
        return {index, r->component, clipPartAt(clip, p.x()), nullptr, 0};
    }
    TimelineHit hit;
    forEachKeyframeInSpan(g, index, p.x(), p.x() + 1, [&](model::Attribute* a, float key, const QRectF& diamond) {
        // Half-open, as a press on a shared edge belongs to one diamond only.
        const bool inside = p.x() >= diamond.left() && p.x() < diamond.right() && p.y() >= diamond.top() &&
                            p.y() < diamond.bottom();
        if (inside && !hit.attribute) hit = {index, nullptr, kPartWhole, a, key};
    });
    return hit;
}

}  // namespace timeline
