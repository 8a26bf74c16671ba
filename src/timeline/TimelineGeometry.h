#pragma once
// Where things lie on the timeline, free of any widget: pixels per second
// from the zoom, x ↔ time for the rows and for the time ruler (which does
// not scroll with them), frame quantisation of times read from positions,
// the tick stride of the ruler, and the rectangles of clips, rows and
// keyframe diamonds. Coordinates are the timeline view's: origin at the top
// left of the first row, y down, one row every `componentHeight` points.

#include <QRectF>
#include <QSizeF>

namespace timeline {

// The sizes of the timeline. The first three are fixed; the others are the
// look we chose (the name font must fit a row).
struct TimelineMetrics {
    double xOffset = 3.0;     // left inset of time 0
    double tickHeight = 2.5;  // a tick inside a second
    double unitHeight = 9.0;  // a whole-second tick
    double componentHeight = 20.0;
    double componentsWidth = 200.0;  // the name column
    double componentIndent1 = 22.0;  // name text of a component row
    double componentIndent2 = 10.0;  // further in for an attribute row
    QSizeF keyframeSize{11.0, 11.0};
    QSizeF markerSize{11.0, 8.0};
    QSizeF stopFrameSize{11.0, 8.0};
    double buttonSpacing = 5.0;  // between the images of the control buttons

    double rulerThickness() const { return unitHeight + markerSize.height() + 4.0; }
};

// Within this many pixels of a clip's end the press takes the edge.
inline constexpr double kClipEdgeWidth = 5.0;
// A slider at 0 shows 25 pixels a second, at 1 300.
inline constexpr double kMinimumUnitWidth = 25.0;
inline constexpr double kUnitWidthRange = 275.0;

// What a press on a clip takes hold of.
enum ClipPart : int { kPartNone = -1, kPartStart = 0, kPartEnd = 1, kPartWhole = 2 };

// Pixels per second for a zoom slider value in [0, 1] (clamped).
double unitWidthForZoom(double sliderValue);

// The tick stride of the time ruler: the step between ticks doubles until it
// is at least 5 pixels, and the stride grows by one per doubling, not by a
// factor of two, so drawn ticks may fall closer than 5 pixels (at 25 ticks
// and 25 px a second the stride is 4 and ticks are 4 pixels apart).
int tickStride(double unitWidth, int ticksPerSecond);

// The part of a clip a point at `x` takes: the start edge strictly inside
// the first 5 pixels, the end edge strictly inside the last 5, else the
// whole clip. Left of the clip is the start edge and right of it the end.
int clipPartAt(const QRectF& clip, double x);

class TimelineGeometry {
public:
    TimelineGeometry() = default;
    // `rateCode` is the composition's frame rate (model::VideoResolution
    // rate code); `visibleX` is the left of the visible rows in the
    // ruler's own terms (see xPosition).
    TimelineGeometry(double unitWidth, int rateCode, const TimelineMetrics& metrics = {}, double visibleX = 0.0);

    double unitWidth() const { return unitWidth_; }
    int rateCode() const { return rateCode_; }
    const TimelineMetrics& metrics() const { return metrics_; }
    double visibleX() const { return visibleX_; }
    double rowHeight() const { return metrics_.componentHeight; }

    // Seconds to unshifted pixels.
    double xPositionAtTime(double t) const { return t * unitWidth_; }
    // A pixel distance placed: round(xOffset + x) in the rows; in the ruler
    // also minus visibleX, since the ruler stays put while the rows scroll.
    double xPosition(double x, bool inRuler) const;
    double xPositionAtTime(double t, bool inRuler) const { return xPosition(xPositionAtTime(t), inRuler); }
    // A pixel distance as seconds, quantised down to whole frames of the
    // composition's rate; a negative distance gives the negative time.
    double timeFromPosition(double p) const;
    // A point of the rows or the ruler as a quantised time.
    double timeFromPosition(double p, bool inRuler) const { return timeFromPosition(p - xPositionAtTime(0, inRuler)); }
    // The exact (unquantised) time under a point of the rows.
    double exactTimeAt(double x) const;

    // Rows.
    double rowTop(int row) const { return row * metrics_.componentHeight; }
    // The row under y, or -1 above the first.
    int rowAt(double y) const;
    // From start to end time in row `row`.
    QRectF clipRect(double startTime, double endTime, int row) const;
    // A whole row, `width` wide: an attribute row.
    QRectF rowRect(int row, double width) const;
    QRectF keyframeRect(double t, int row) const;
    // The keyframe times whose diamonds may touch [left, right): for the
    // binary search of the first and last visible key.
    double earliestTimeTouching(double left) const;
    double latestTimeTouching(double right) const;

    // The scrollable size: the duration plus 50 points, and the rows.
    QSizeF timeAxisSize(double duration, int rowCount) const;

private:
    double unitWidth_ = kMinimumUnitWidth;
    int rateCode_ = 2;
    TimelineMetrics metrics_;
    double visibleX_ = 0.0;
};

}  // namespace timeline
