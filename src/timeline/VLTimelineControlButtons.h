#pragma once
// Three images side by side that act as buttons: previous, add or remove,
// next. The timeline has two sets, for stop frames (in the ruler's corner)
// and for keyframes (on the attribute row under the mouse). The flags at
// the playhead say what is live: 1 something before (previous works), 2
// something at the time (the middle removes it, else it adds), 4 something
// after (next works); a dead button is drawn faded and does not react.

#include <QPixmap>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

class QPainter;

namespace timeline {

class VLTimelineControlButtons {
public:
    enum Action : int { kPrevious = 0, kNext = 1, kAdd = 2, kRemove = 3, kNone = 4 };

    VLTimelineControlButtons(const QPixmap& addImage, const QPixmap& removeImage, const QPixmap& previousImage,
                             const QPixmap& nextImage, double spacing);
    // The two sets the timeline uses, drawn at the pixel ratio given.
    static VLTimelineControlButtons stopFrameButtons(double devicePixelRatio = 1.0, double spacing = 5.0);
    static VLTimelineControlButtons keyframeButtons(double devicePixelRatio = 1.0, double spacing = 5.0);

    QSizeF size() const { return size_; }
    QPointF previousOffset() const { return previousOffset_; }
    QPointF middleOffset() const { return middleOffset_; }
    QPointF nextOffset() const { return nextOffset_; }

    void drawAtPoint(QPainter& painter, const QPointF& point, int flags) const;
    // Right-aligned 8 points from the edge of a strip `width` wide and
    // centred in the view's height.
    QRectF rectInView(const QSizeF& viewSize, double width) const;
    // Right-aligned 4 points inside a row, centred in it.
    QRectF rectInRect(const QRectF& rect) const;
    // The button under `point` in a set drawn in `rect`.
    int controlActionInRect(const QRectF& rect, const QPointF& point, int flags) const;

private:
    QPixmap add_, remove_, previous_, next_;
    QSizeF size_;
    QPointF previousOffset_, middleOffset_, nextOffset_;
};

}  // namespace timeline
