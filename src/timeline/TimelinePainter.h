#pragma once
// The passive drawing of the timeline: everything it shows, from a scene
// that the view fills in before each paint. It reads the model and changes
// nothing. Each part draws only what touches the exposed rectangle: the
// rows under it, the seconds across it, and of each attribute row only the
// keyframes found by binary search inside it.

#include "timeline/TimelineGeometry.h"
#include "timeline/TimelineRows.h"
#include "timeline/TimelineStyle.h"

#include <QPixmap>
#include <QRectF>

#include <vector>

class QPainter;

namespace timeline {

class VLTimelineControlButtons;

// What one paint reads besides the rows.
struct TimelineScene {
    const TimelineGeometry& geometry;
    const TimelineRows& rows;
    const TimelineStyle& style;
    double duration = 0;
    int ticksPerSecond = 25;
    double editorTime = 0;
    std::vector<double> stopFrameTimes;
};

class TimelinePainter {
public:
    explicit TimelinePainter(const TimelineScene& scene) : scene_(scene) {}

    // Shapes, in y-down coordinates.
    // A triangle pointing down, its base `size.height` above its tip at
    // `tip`; with the line, a hairline runs from the tip down to `lineEnd`.
    static void drawTriangle(QPainter& painter, const QPointF& tip, const QSizeF& size, const QColor& color,
                             bool verticalLine = false, double lineEnd = 0);
    // A diamond whose top corner is at `top`.
    static void drawDiamond(QPainter& painter, const QPointF& top, const QSizeF& size, const QColor& fill,
                            const QColor& stroke = QColor());
    // A vertical hairline at x + 0.5 over the bounds.
    static void drawMarker(QPainter& painter, double x, const QRectF& bounds, const QColor& color);

    // The rows in timeline-view coordinates: clip bars, keyframe diamonds,
    // and the playhead over them.
    void paintRows(QPainter& painter, const QRectF& exposed, const QRectF& bounds) const;
    // Behind the rows, in the clip view's coordinates where the timeline
    // view's origin lies at `viewOrigin`: one grid line a second, the
    // playhead, the marquee (given in timeline-view coordinates).
    void paintClipBackground(QPainter& painter, const QRectF& exposed, const QRectF& bounds, const QPointF& viewOrigin,
                             const QRectF& marquee) const;
    // The time ruler, as wide as the whole scroll view: the corner with the
    // stop-frame buttons over the name column, then stop frames, seconds
    // and ticks, and the playhead's triangle.
    void paintTimeRuler(QPainter& painter, const QRectF& exposed, const QRectF& bounds,
                        const VLTimelineControlButtons& stopFrameButtons) const;
    // The name column, its rows `scrollY` up: titles, disclosure triangles,
    // and the keyframe buttons of the attribute row under the mouse.
    void paintNameColumn(QPainter& painter, const QRectF& exposed, const QRectF& bounds, double scrollY,
                         int mouseOverRow, const QPixmap& discloseOpen, const QPixmap& discloseClosed,
                         const VLTimelineControlButtons& keyframeButtons) const;

    // The name column's rectangles of a row (see paintNameColumn).
    static QRectF nameRowRect(const TimelineGeometry& g, int row, double width, double scrollY);
    static QRectF nameTextRect(const TimelineGeometry& g, const TimelineRow& row, const QRectF& rowRect);
    static QRectF disclosureRect(const QRectF& textRect, const QSizeF& imageSize);

private:
    // The time ruler's seconds: (second, x) from the first to the last
    // second that can be seen in [left, right].
    template <class Visit> void forEachVisibleSecond(double x0, double left, double right, Visit visit) const;

    const TimelineScene& scene_;
};

}  // namespace timeline
