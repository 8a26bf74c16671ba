#include "timeline/TimelinePainter.h"

#include "model/Attribute.h"
#include "model/QuartzComponent.h"
#include "timeline/TimelineDrag.h"
#include "timeline/VLTimelineControlButtons.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace timeline {

namespace {

QPen hairline(const QColor& color)
{
    QPen pen(color, 0);
    pen.setCosmetic(true);
    return pen;
}

}  // namespace

// Shapes ------------------------------------------------------------------------

void TimelinePainter::drawTriangle(QPainter& painter, const QPointF& tip, const QSizeF& size, const QColor& color,
                                   bool verticalLine, double lineEnd)
{
    const double x = tip.x() + 0.5, base = tip.y() - size.height();
    QPainterPath path;
    path.moveTo(x - size.width() / 2, base);
    path.lineTo(x + size.width() / 2, base);
    path.lineTo(x, tip.y());
    path.closeSubpath();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.fillPath(path, color);
    painter.restore();
    if (verticalLine) {
        painter.setPen(hairline(color));
        painter.drawLine(QPointF(x, tip.y()), QPointF(x, lineEnd));
    }
}

void TimelinePainter::drawDiamond(QPainter& painter, const QPointF& top, const QSizeF& size, const QColor& fill,
                                  const QColor& stroke)
{
    const double x = top.x(), y = top.y(), w = size.width(), h = size.height();
    const QPointF corners[] = {{x, y}, {x - w / 2, y + h / 2}, {x, y + h}, {x + w / 2, y + h / 2}};
    painter.setPen(stroke.isValid() ? hairline(stroke) : QPen(Qt::NoPen));
    painter.setBrush(fill);
    painter.drawPolygon(corners, 4);
}

void TimelinePainter::drawMarker(QPainter& painter, double x, const QRectF& bounds, const QColor& color)
{
    painter.setPen(hairline(color));
    painter.drawLine(QPointF(x + 0.5, bounds.top()), QPointF(x + 0.5, bounds.bottom()));
}

template <class Visit> void TimelinePainter::forEachVisibleSecond(double x0, double left, double right, Visit visit) const
{
    const double unit = scene_.geometry.unitWidth();
    const int seconds = int(std::trunc(std::max(0.0, scene_.duration)));
    // Seconds whose labels or ticks reach into [left, right].
    const int first = std::max(0, int(std::floor((left - x0) / unit)) - 1);
    const int last = std::min(seconds, int(std::ceil((right - x0) / unit)));
    for (int i = first; i <= last; ++i) visit(i, seconds, x0 + i * unit);
}

// The rows ----------------------------------------------------------------------

void TimelinePainter::paintRows(QPainter& painter, const QRectF& exposed, const QRectF& bounds) const
{
    const TimelineGeometry& g = scene_.geometry;
    const TimelineStyle& style = scene_.style;
    const int first = std::max(0, g.rowAt(exposed.top()));
    const int last = std::min(scene_.rows.count() - 1, g.rowAt(exposed.bottom()));
    const double radius = g.rowHeight() * 0.1;
    painter.save();
    for (int index = first; index <= last; ++index) {
        const TimelineRow& row = scene_.rows.rows()[std::size_t(index)];
        if (row.owner->isDeleted()) continue;
        if (model::QuartzComponent* c = row.component) {
            const QRectF clip = g.clipRect(c->startTime(), c->endTime(), index);
            if (!clip.intersects(exposed.adjusted(-1, 0, 1, 0))) continue;
            painter.setRenderHint(QPainter::Antialiasing, true);
            painter.setPen(Qt::NoPen);
            painter.setBrush(c->selected() ? style.componentSelectedBackgroundColor : style.componentBackgroundColor);
            painter.drawRoundedRect(clip.adjusted(0, 2, 0, -2), radius, radius);
            continue;
        }
        painter.setRenderHint(QPainter::Antialiasing, true);
        const model::Attribute* attribute = row.attribute;
        scene_.rows.forEachKeyframeInSpan(g, index, exposed.left(), exposed.right(),
                                          [&](model::Attribute*, float key, const QRectF& k) {
                                              const bool selected = attribute->isTimePointSelected(key);
                                              drawDiamond(painter, QPointF(k.x() + k.width() * 0.5, k.y()), k.size(),
                                                          selected ? style.componentKeyframeSelectedColor
                                                                   : style.componentKeyframeColor);
                                          });
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    drawMarker(painter, g.xPositionAtTime(scene_.editorTime, false), bounds, style.editorMarkerColor);
    painter.restore();
}

void TimelinePainter::paintClipBackground(QPainter& painter, const QRectF& exposed, const QRectF& bounds,
                                          const QPointF& viewOrigin, const QRectF& marquee) const
{
    const TimelineGeometry& g = scene_.geometry;
    painter.save();
    painter.fillRect(exposed, scene_.style.rowsBackgroundColor);
    // One line a second, in the view's x moved into the clip view.
    std::vector<QLineF> lines;
    const double x0 = g.xPosition(0, false) + viewOrigin.x();
    forEachVisibleSecond(x0, exposed.left(), exposed.right(), [&](int, int, double x) {
        lines.emplace_back(QPointF(x + 0.5, bounds.top()), QPointF(x + 0.5, bounds.bottom()));
    });
    painter.setPen(hairline(scene_.style.componentSeparatorColor));
    painter.drawLines(lines.data(), int(lines.size()));
    drawMarker(painter, g.xPositionAtTime(scene_.editorTime, false) + viewOrigin.x(), bounds, scene_.style.editorMarkerColor);
    if (!marquee.isEmpty()) {
        const QRectF shown = marquee.translated(viewOrigin);
        painter.fillRect(shown, scene_.style.draggingKeyFrameColor);
        painter.setPen(hairline(scene_.style.componentSeparatorColor));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(shown);
    }
    painter.restore();
}

// The time ruler ----------------------------------------------------------------

void TimelinePainter::paintTimeRuler(QPainter& painter, const QRectF& exposed, const QRectF& bounds,
                                     const VLTimelineControlButtons& stopFrameButtons) const
{
    const TimelineGeometry& g = scene_.geometry;
    const TimelineMetrics& m = g.metrics();
    const TimelineStyle& style = scene_.style;
    const double height = bounds.height();
    painter.save();

    // The corner over the name column holds the stop-frame buttons.
    const QRectF corner(bounds.left(), bounds.top(), m.componentsWidth, height);
    painter.fillRect(corner, style.alternateRowColor);
    const int flags = stopFrameControlFlags(scene_.stopFrameTimes, scene_.editorTime);
    stopFrameButtons.drawAtPoint(painter, stopFrameButtons.rectInView(bounds.size(), m.componentsWidth).topLeft(), flags);

    const QRectF timeArea(m.componentsWidth, bounds.top(), bounds.width() - m.componentsWidth, height);
    painter.setClipRect(timeArea);
    painter.fillRect(exposed.intersected(timeArea), style.rulerBackgroundColor);

    // Stop frames hang from the top edge.
    for (double t : scene_.stopFrameTimes) {
        const double x = g.xPositionAtTime(t, true);
        if (x + m.stopFrameSize.width() < exposed.left() || x - m.stopFrameSize.width() > exposed.right()) continue;
        drawTriangle(painter, QPointF(x, 1 + m.stopFrameSize.height()), m.stopFrameSize, style.stopFrameColor);
    }

    // Seconds: the label right of the whole-second tick, then the ticks of
    // the second at the stride; the last second has its whole tick only.
    const int tps = std::max(1, scene_.ticksPerSecond);
    const double step = g.unitWidth() / tps;
    const int stride = tickStride(g.unitWidth(), tps);
    std::vector<QLineF> ticks;
    painter.setFont(style.rulerFont);
    painter.setPen(style.textColor);
    const double labelBottom = height - (m.tickHeight - 0.5);
    forEachVisibleSecond(g.xPosition(0, true), exposed.left(), exposed.right(), [&](int second, int seconds, double x) {
        painter.drawText(QRectF(x + 4, 0, g.unitWidth(), labelBottom), Qt::AlignLeft | Qt::AlignBottom,
                         QString::number(second));
        const int count = second == seconds ? 1 : tps;
        for (int j = 0; j < count; j += stride) {
            const double xj = x + j * step + 0.5;
            ticks.emplace_back(QPointF(xj, height - 1), QPointF(xj, height - (j == 0 ? m.unitHeight : m.tickHeight)));
        }
    });
    painter.setPen(hairline(style.textColor));
    painter.drawLines(ticks.data(), int(ticks.size()));

    // The playhead: a triangle in the tick band with its line to the rows.
    const double marker = g.xPositionAtTime(scene_.editorTime, true);
    drawTriangle(painter, QPointF(marker, height - m.unitHeight + m.markerSize.height()), m.markerSize,
                 style.editorMarkerColor, true, height);
    painter.setClipping(false);
    painter.setPen(hairline(style.componentSeparatorColor));
    painter.drawLine(QPointF(bounds.left(), height - 0.5), QPointF(bounds.right(), height - 0.5));
    painter.restore();
}

// The name column ---------------------------------------------------------------

QRectF TimelinePainter::nameRowRect(const TimelineGeometry& g, int row, double width, double scrollY)
{
    return QRectF(0, g.rowTop(row) - scrollY, width, g.rowHeight());
}

QRectF TimelinePainter::nameTextRect(const TimelineGeometry& g, const TimelineRow& row, const QRectF& rowRect)
{
    const TimelineMetrics& m = g.metrics();
    const double indent = m.componentIndent1 + (row.attribute ? m.componentIndent2 : 0.0);
    return QRectF(rowRect.x() + indent, rowRect.y(), rowRect.width() - indent, rowRect.height());
}

QRectF TimelinePainter::disclosureRect(const QRectF& textRect, const QSizeF& imageSize)
{
    return QRectF(textRect.x() - 4 - imageSize.width(), textRect.y() + (textRect.height() - imageSize.height()) / 2,
                  imageSize.width(), imageSize.height());
}

void TimelinePainter::paintNameColumn(QPainter& painter, const QRectF& exposed, const QRectF& bounds, double scrollY,
                                      int mouseOverRow, const QPixmap& discloseOpen, const QPixmap& discloseClosed,
                                      const VLTimelineControlButtons& keyframeButtons) const
{
    const TimelineGeometry& g = scene_.geometry;
    const TimelineStyle& style = scene_.style;
    painter.save();
    painter.fillRect(exposed, style.rowsBackgroundColor);
    painter.setFont(style.componentFont);
    const QFontMetricsF metrics(style.componentFont);
    const int first = std::max(0, g.rowAt(exposed.top() + scrollY));
    const int last = g.rowAt(exposed.bottom() + scrollY);
    for (int index = first; index <= last; ++index) {
        const QRectF rowRect = nameRowRect(g, index, bounds.width(), scrollY);
        const TimelineRow* row = scene_.rows.row(index);
        const bool selected = row && row->component && row->component->selected();
        // A selected component's row, one pixel short; else odd rows shaded.
        if (selected)
            painter.fillRect(rowRect.adjusted(0, 0, 0, -1), style.componentSelectedBackgroundColor);
        else if (index % 2 == 1)
            painter.fillRect(rowRect, style.alternateRowColor);
        if (!row || row->owner->isDeleted()) continue;
        const QRectF text = nameTextRect(g, *row, rowRect);
        painter.setPen(selected ? style.selectedComponentTextColor : style.componentTextColor);
        if (row->component) {
            const QPixmap& disclose = row->component->expanded() ? discloseOpen : discloseClosed;
            painter.drawPixmap(disclosureRect(text, disclose.deviceIndependentSize()).topLeft(), disclose);
            painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                             metrics.elidedText(row->component->title(), Qt::ElideRight, text.width() - 4));
            continue;
        }
        const bool hovered = index == mouseOverRow;
        const QRectF buttons = keyframeButtons.rectInRect(rowRect);
        const double room = hovered ? buttons.left() - text.left() - 4 : text.width() - 4;
        painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(row->attribute->title(), Qt::ElideRight, room));
        if (hovered)
            keyframeButtons.drawAtPoint(painter, buttons.topLeft(), keyframeControlFlags(*row->attribute, scene_.editorTime));
    }
    painter.setPen(hairline(style.componentSeparatorColor));
    painter.drawLine(QPointF(bounds.right() - 0.5, exposed.top()), QPointF(bounds.right() - 0.5, exposed.bottom()));
    painter.restore();
}

}  // namespace timeline
