#pragma once
// The rows of the timeline, one list that the name column and the rows both
// read: one row per component, front-most first, and under an expanded
// component one row per child attribute (the attributes that can animate,
// by title). A child that is not animated keeps its row, empty. Queries
// find rows by arithmetic and keyframes by binary search in the sorted
// keyframe table, so only what is on screen is ever looked at.

#include "timeline/TimelineGeometry.h"

#include <QPointF>
#include <QRectF>

#include <functional>
#include <vector>

namespace model {
class Attribute;
class Composition;
class QuartzComponent;
}  // namespace model

namespace timeline {

struct TimelineRow {
    model::QuartzComponent* component = nullptr;  // a component row
    model::Attribute* attribute = nullptr;        // an attribute row
    model::QuartzComponent* owner = nullptr;      // the component either row belongs to
    int componentIndex = -1;                      // of the owner in the top-first order
};

// What lies under a point: a clip (component and part) or a keyframe
// (attribute and time), with the row.
struct TimelineHit {
    int row = -1;
    model::QuartzComponent* component = nullptr;
    int part = kPartNone;
    model::Attribute* attribute = nullptr;
    float key = 0;  // the keyframe's time, as the table keys it

    bool isClip() const { return component != nullptr; }
    bool isKeyframe() const { return attribute != nullptr; }
};

class TimelineRows {
public:
    TimelineRows() = default;
    // The rows of the composition's components, front-most first.
    static TimelineRows build(const model::Composition& composition);
    static TimelineRows build(const std::vector<model::QuartzComponent*>& topFirst);

    const std::vector<TimelineRow>& rows() const { return rows_; }
    const std::vector<model::QuartzComponent*>& components() const { return components_; }
    int count() const { return int(rows_.size()); }
    const TimelineRow* row(int index) const;
    int rowOfComponent(const model::QuartzComponent* component) const;

    // The keyframe diamonds of `row` that may touch the horizontal span
    // [left, right), each with its time and rectangle, in time order.
    using KeyframeVisitor = std::function<void(model::Attribute* attribute, float key, const QRectF& diamond)>;
    void forEachKeyframeInSpan(const TimelineGeometry& g, int row, double left, double right,
                               const KeyframeVisitor& visit) const;
    // Every keyframe whose diamond intersects `rect`.
    void forEachKeyframeIntersecting(const TimelineGeometry& g, const QRectF& rect, const KeyframeVisitor& visit) const;

    // The clip or keyframe under the point; nothing when the point lies in
    // no clip and no diamond.
    TimelineHit hitTest(const TimelineGeometry& g, const QPointF& p) const;

private:
    std::vector<TimelineRow> rows_;
    std::vector<model::QuartzComponent*> components_;
};

}  // namespace timeline
