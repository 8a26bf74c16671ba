#include "timeline/VLTimelineControlButtons.h"

#include "timeline/TimelineDrag.h"
#include "widgets/TimelineArtwork.h"

#include <QIcon>
#include <QPainter>

namespace timeline {

namespace {

constexpr int kArrowSize = 11;
constexpr int kMiddleSize = 14;
constexpr double kDeadOpacity = 0.3;

QPixmap image(const QString& name, int size, double ratio)
{
    return widgets::TimelineArtwork::timelineImageWithName(name).pixmap(QSize(size, size), ratio);
}

}  // namespace

VLTimelineControlButtons::VLTimelineControlButtons(const QPixmap& addImage, const QPixmap& removeImage,
                                                   const QPixmap& previousImage, const QPixmap& nextImage, double spacing)
    : add_(addImage), remove_(removeImage), previous_(previousImage), next_(nextImage)
{
    const QSizeF previous = previous_.deviceIndependentSize(), add = add_.deviceIndependentSize(),
                 next = next_.deviceIndependentSize();
    size_ = QSizeF(previous.width() + add.width() + next.width() + 2 * spacing, add.height());
    previousOffset_ = QPointF(0, (size_.height() - previous.height()) * 0.5);
    middleOffset_ = QPointF(previous.width() + spacing, 0);
    nextOffset_ = QPointF(size_.width() - next.width(), previousOffset_.y());
}

VLTimelineControlButtons VLTimelineControlButtons::stopFrameButtons(double ratio, double spacing)
{
    return VLTimelineControlButtons(image(QStringLiteral("AddStopFrame"), kMiddleSize, ratio),
                                    image(QStringLiteral("RemoveStopFrame"), kMiddleSize, ratio),
                                    image(QStringLiteral("PreviousKeyframe"), kArrowSize, ratio),
                                    image(QStringLiteral("NextKeyframe"), kArrowSize, ratio), spacing);
}

VLTimelineControlButtons VLTimelineControlButtons::keyframeButtons(double ratio, double spacing)
{
    return VLTimelineControlButtons(image(QStringLiteral("AddKeyframe"), kMiddleSize, ratio),
                                    image(QStringLiteral("RemoveKeyframe"), kMiddleSize, ratio),
                                    image(QStringLiteral("PreviousKeyframe"), kArrowSize, ratio),
                                    image(QStringLiteral("NextKeyframe"), kArrowSize, ratio), spacing);
}

void VLTimelineControlButtons::drawAtPoint(QPainter& painter, const QPointF& point, int flags) const
{
    const double opacity = painter.opacity();
    painter.setOpacity(opacity * (flags & kFlagBefore ? 1.0 : kDeadOpacity));
    painter.drawPixmap(point + previousOffset_, previous_);
    painter.setOpacity(opacity);
    painter.drawPixmap(point + middleOffset_, flags & kFlagAt ? remove_ : add_);
    painter.setOpacity(opacity * (flags & kFlagAfter ? 1.0 : kDeadOpacity));
    painter.drawPixmap(point + nextOffset_, next_);
    painter.setOpacity(opacity);
}

QRectF VLTimelineControlButtons::rectInView(const QSizeF& viewSize, double width) const
{
    return QRectF(width - size_.width() - 8, (viewSize.height() - size_.height()) * 0.5, size_.width(), size_.height());
}

QRectF VLTimelineControlButtons::rectInRect(const QRectF& r) const
{
    return QRectF(r.x() + r.width() - size_.width() - 4, r.y() + (r.height() - size_.height()) * 0.5, size_.width(),
                  size_.height());
}

int VLTimelineControlButtons::controlActionInRect(const QRectF& r, const QPointF& p, int flags) const
{
    const bool inside = p.x() >= r.left() && p.x() < r.right() && p.y() >= r.top() && p.y() < r.bottom();
    if (!inside) return kNone;
    const double dx = p.x() - r.x();
    if (dx < middleOffset_.x()) return flags & kFlagBefore ? kPrevious : kNone;
    if (dx > nextOffset_.x()) return flags & kFlagAfter ? kNext : kNone;
    return flags & kFlagAt ? kRemove : kAdd;
}

}  // namespace timeline
