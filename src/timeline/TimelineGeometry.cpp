#include "timeline/TimelineGeometry.h"

#include "model/Timecode.h"

#include <algorithm>
#include <cmath>

namespace timeline {

double unitWidthForZoom(double sliderValue)
{
    return std::clamp(sliderValue, 0.0, 1.0) * kUnitWidthRange + kMinimumUnitWidth;
}

int tickStride(double unitWidth, int ticksPerSecond)
{
    if (!(unitWidth > 0) || ticksPerSecond <= 0) return 1;
    const double step = unitWidth / ticksPerSecond;
    int stride = 1;
    for (double s = step; s < 5.0; s += s) ++stride;
    return stride;
}

int clipPartAt(const QRectF& clip, double x)
{
    if (x < clip.left() + kClipEdgeWidth) return kPartStart;
    if (x > clip.right() - kClipEdgeWidth) return kPartEnd;
    return kPartWhole;
}

TimelineGeometry::TimelineGeometry(double unitWidth, int rateCode, const TimelineMetrics& metrics, double visibleX)
    : unitWidth_(unitWidth > 0 ? unitWidth : kMinimumUnitWidth), rateCode_(rateCode), metrics_(metrics), visibleX_(visibleX)
{
}

double TimelineGeometry::xPosition(double x, bool inRuler) const
{
    return std::round(metrics_.xOffset + x - (inRuler ? visibleX_ : 0.0));
}

double TimelineGeometry::timeFromPosition(double p) const
{
    const double seconds = std::abs(p) / unitWidth_;
    const double quantised = model::Timecode::fromSeconds(seconds, rateCode_).secondsSinceMidnight();
    return p < 0 ? -quantised : quantised;
}

double TimelineGeometry::exactTimeAt(double x) const { return (x - xPositionAtTime(0, false)) / unitWidth_; }

int TimelineGeometry::rowAt(double y) const
{
    if (y < 0) return -1;
    return int(std::floor(y / metrics_.componentHeight));
}

QRectF TimelineGeometry::clipRect(double startTime, double endTime, int row) const
{
    const double left = xPositionAtTime(startTime, false);
    // As the original drew it: start + duration, placed the same way.
    const double right = xPositionAtTime(startTime + (endTime - startTime), false);
    return QRectF(left, rowTop(row), right - left, metrics_.componentHeight);
}

QRectF TimelineGeometry::rowRect(int row, double width) const { return QRectF(0, rowTop(row), width, metrics_.componentHeight); }

QRectF TimelineGeometry::keyframeRect(double t, int row) const
{
    const QSizeF size = metrics_.keyframeSize;
    return QRectF(xPositionAtTime(t, false) - size.width() / 2,
                  rowTop(row) + (metrics_.componentHeight - size.height()) / 2, size.width(), size.height());
}

double TimelineGeometry::earliestTimeTouching(double left) const
{
    // A diamond reaches half its width (and the rounding) left of its time.
    return exactTimeAt(left - metrics_.keyframeSize.width() / 2 - 1.0);
}

double TimelineGeometry::latestTimeTouching(double right) const
{
    return exactTimeAt(right + metrics_.keyframeSize.width() / 2 + 1.0);
}

QSizeF TimelineGeometry::timeAxisSize(double duration, int rowCount) const
{
    return QSizeF(std::max(0.0, duration) * unitWidth_ + 50.0, rowCount * metrics_.componentHeight);
}

}  // namespace timeline
