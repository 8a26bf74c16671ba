#pragma once
// The rules of timeline editing, one function each, free of widgets and
// events: how far a drag has gone in whole frames, how a clip or its edges
// move, how keyframes move, what a click selects, what a marquee selects,
// and which stop-frame and keyframe buttons are live. The view decides when
// each is called; these decide what happens.

#include "timeline/TimelineRows.h"

#include <QList>
#include <QPointer>
#include <QRectF>

#include <optional>
#include <utility>
#include <vector>

namespace model {
class Attribute;
class Composition;
class QuartzComponent;
}  // namespace model

namespace timeline {

// The frame-quantised part of a drag. The event's horizontal movement is
// added to `remainderPixels`; when that makes at least one frame the frames'
// time is returned and their pixels taken out, so the sub-frame rest carries
// over to the next event. Less than a frame returns 0 and keeps it all.
double draggingDeltaTime(double& remainderPixels, double movementPixels, const TimelineGeometry& geometry);

// Moves a clip's start by `delta` seconds: with keepDuration the whole clip
// (held inside [0, compositionDuration]), else only the start edge (which
// never passes the end and stops at 0). When the start changes, every
// animated attribute's keyframes move by the requested delta, not by the
// clamped change, so keyframes keep moving while the clip waits at a limit.
void adjustStartTime(model::QuartzComponent& component, bool keepDuration, double delta, double compositionDuration);

// Moves the end edges of the selected components, in row order. One running
// value starts at `delta` and each component adds its end time to it; a
// component whose start lies before that value ends there. The value is
// never reset, so a second selected end moves by the first end as well.
void moveEndEdges(const std::vector<model::QuartzComponent*>& selectedTopFirst, double delta);

// Moves every selected keyframe of the composition by `delta`; answers the
// least non-negative new time of the moved keyframes, if any.
std::optional<double> moveSelectedKeyframes(model::Composition& composition, double delta);

// Keyframe selection as it was when a marquee started.
using SavedKeyframeSelection = std::vector<std::pair<QPointer<model::Attribute>, QList<float>>>;
// Every animated attribute's selected times, components top first.
SavedKeyframeSelection saveKeyframeSelection(const std::vector<model::QuartzComponent*>& topFirst);
// One step of a marquee: the keyframes whose diamonds intersect `rect`
// become the selection; with `additive` (Control held) the selection saved
// at the press is added back, so a plain marquee replaces and a Control
// marquee adds.
void applyMarquee(model::Composition& composition, const TimelineRows& rows, const TimelineGeometry& geometry,
                  const QRectF& rect, bool additive, const SavedKeyframeSelection& saved);

// Selection by a click on a clip (or the name of a component). An
// unselected component: with Shift and an earlier click, the whole range of
// rows between the two; without Shift or Control the others are dropped
// first; the clicked one is selected and remembered. A selected one: with
// Control it is deselected, otherwise nothing changes, so a selection of
// several can be dragged.
void selectComponent(model::Composition& composition, const std::vector<model::QuartzComponent*>& topFirst,
                     model::QuartzComponent* component, bool shift, bool control, int& lastSelectedIndex);
// Selection by a click on a keyframe: Control deselects a selected one; an
// unselected one is selected, after the others are dropped unless Control
// is held, and its component is selected if it was not.
void selectKeyframe(model::Composition& composition, const std::vector<model::QuartzComponent*>& topFirst,
                    model::Attribute* attribute, float key, bool shift, bool control, int& lastSelectedIndex);

// The bits of the control buttons at time t: 1 something before t, 2
// something at t, 4 something after t. Stop frames compare to the
// hundredth of a second; keyframes by their own rule (at t within 1/100 s).
enum ControlFlag : int { kFlagBefore = 1, kFlagAt = 2, kFlagAfter = 4 };
int stopFrameControlFlags(const std::vector<double>& sortedTimes, double t);
int keyframeControlFlags(const model::Attribute& attribute, double t);

// The nearest stop frame strictly after or before t (to the hundredth).
std::optional<double> nextStopFrame(const std::vector<double>& sortedTimes, double t);
std::optional<double> previousStopFrame(const std::vector<double>& sortedTimes, double t);

}  // namespace timeline
