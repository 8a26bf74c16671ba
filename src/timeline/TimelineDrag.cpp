#include "timeline/TimelineDrag.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/KeyframeValues.h"
#include "model/QuartzComponent.h"

#include <algorithm>

namespace timeline {

double draggingDeltaTime(double& remainderPixels, double movementPixels, const TimelineGeometry& geometry)
{
    remainderPixels += movementPixels;
    const double t = geometry.timeFromPosition(remainderPixels);
    if (t == 0) return 0;
    remainderPixels -= geometry.xPositionAtTime(t);
    return t;
}

void adjustStartTime(model::QuartzComponent& component, bool keepDuration, double delta, double compositionDuration)
{
    const double duration = component.duration();
    double start = component.startTime() + delta;
    if (keepDuration) {
        if (start + duration > compositionDuration)
            start = compositionDuration - duration;
        else if (start < 0)
            start = 0;
    } else {
        if (start >= component.endTime()) return;
        if (start < 0) start = 0;
    }
    if (start == component.startTime()) return;
    for (model::Attribute* a : component.attributes())
        if (a->animateable()) a->adjustTimepointsBy(delta, false);
    component.setStartTime(start);
    if (keepDuration) component.setEndTime(start + duration);
}

void moveEndEdges(const std::vector<model::QuartzComponent*>& selectedTopFirst, double delta)
{
    double running = delta;
    for (model::QuartzComponent* c : selectedTopFirst) {
        running += c->endTime();
        if (running > c->startTime()) c->setEndTime(running);
    }
}

std::optional<double> moveSelectedKeyframes(model::Composition& composition, double delta)
{
    std::optional<double> least;
    for (model::Attribute* a : composition.attributesWithSelectedKeyframes()) {
        const double t = a->adjustTimepointsBy(delta, true);
        if (t >= 0 && (!least || t < *least)) least = t;
    }
    return least;
}

SavedKeyframeSelection saveKeyframeSelection(const std::vector<model::QuartzComponent*>& topFirst)
{
    SavedKeyframeSelection saved;
    for (model::QuartzComponent* c : topFirst)
        for (model::Attribute* a : c->attributes())
            if (a->animateable()) saved.emplace_back(a, a->selectedTimepoints());
    return saved;
}

void applyMarquee(model::Composition& composition, const TimelineRows& rows, const TimelineGeometry& geometry,
                  const QRectF& rect, bool additive, const SavedKeyframeSelection& saved)
{
    composition.deselectAllKeyFrames();
    rows.forEachKeyframeIntersecting(geometry, rect, [](model::Attribute* a, float key, const QRectF&) {
        a->setTimePointSelected(key, true);
    });
    if (!additive) return;
    for (const auto& [attribute, times] : saved) {
        if (!attribute) continue;
        for (float t : times)
            if (!attribute->isTimePointSelected(t)) attribute->setTimePointSelected(t, true);
    }
}

void selectComponent(model::Composition& composition, const std::vector<model::QuartzComponent*>& topFirst,
                     model::QuartzComponent* component, bool shift, bool control, int& lastSelectedIndex)
{
    const auto found = std::find(topFirst.begin(), topFirst.end(), component);
    if (!component || found == topFirst.end()) return;
    const int index = int(found - topFirst.begin());
    if (component->selected()) {
        if (control) component->setSelected(false);
        return;
    }
    if (shift && lastSelectedIndex >= 0) {
        const int last = std::min(lastSelectedIndex, int(topFirst.size()) - 1);
        for (int i = std::min(last, index); i <= std::max(last, index); ++i) topFirst[std::size_t(i)]->setSelected(true);
    } else if (!shift && !control) {
        composition.clearSelection();
    }
    component->setSelected(true);
    lastSelectedIndex = index;
}

void selectKeyframe(model::Composition& composition, const std::vector<model::QuartzComponent*>& topFirst,
                    model::Attribute* attribute, float key, bool shift, bool control, int& lastSelectedIndex)
{
    if (!attribute) return;
    if (attribute->isTimePointSelected(key)) {
        if (control) attribute->setTimePointSelected(key, false);
        return;
    }
    if (!control) composition.deselectAllKeyFrames();
    attribute->setTimePointSelected(key, true);
    model::QuartzComponent* owner = attribute->component();
    if (owner && !owner->selected()) selectComponent(composition, topFirst, owner, shift, control, lastSelectedIndex);
}

int stopFrameControlFlags(const std::vector<double>& sortedTimes, double t)
{
    int flags = 0;
    for (double time : sortedTimes) {
        const int order = model::Composition::compareTimeInterval(time, t);
        flags |= order < 0 ? kFlagBefore : order == 0 ? kFlagAt : kFlagAfter;
    }
    return flags;
}

int keyframeControlFlags(const model::Attribute& attribute, double t)
{
    if (!attribute.animateable()) return 0;
    int flags = 0;
    if (attribute.previousTimePoint(t) != model::kConstantTimepoint) flags |= kFlagBefore;
    if (attribute.hasKeyframeAtTimePoint(t)) flags |= kFlagAt;
    if (attribute.nextTimePoint(t) != model::kConstantTimepoint) flags |= kFlagAfter;
    return flags;
}

std::optional<double> nextStopFrame(const std::vector<double>& sortedTimes, double t)
{
    for (double time : sortedTimes)
        if (model::Composition::compareTimeInterval(time, t) > 0) return time;
    return std::nullopt;
}

std::optional<double> previousStopFrame(const std::vector<double>& sortedTimes, double t)
{
    std::optional<double> found;
    for (double time : sortedTimes)
        if (model::Composition::compareTimeInterval(time, t) < 0) found = time;
    return found;
}

}  // namespace timeline
