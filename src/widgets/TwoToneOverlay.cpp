#include "widgets/TwoToneOverlay.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace widgets {

TwoTone selectionTone() { return {QColor(10, 20, 30, 210), QColor(120, 200, 255), 1.0}; }

TwoTone marqueeTone() { return {QColor(0, 0, 0, 170), QColor(255, 255, 255, 230), 1.0}; }

void drawTwoToneOutline(QPainter& painter, const QPolygonF& outline, const TwoTone& tone, bool dashed)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(tone.dark, tone.lightWidth + 2.0, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawPolygon(outline);
    QPen light(tone.light, tone.lightWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    if (dashed) light.setDashPattern({4, 3});
    painter.setPen(light);
    painter.drawPolygon(outline);
    painter.restore();
}

void drawTwoToneHandle(QPainter& painter, const QPointF& centre, double side, const TwoTone& tone)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    // Whole pixels, so a handle keeps its crisp square at every zoom.
    const QRectF square(std::round(centre.x() - side / 2.0) + 0.5, std::round(centre.y() - side / 2.0) + 0.5, side - 1,
                        side - 1);
    painter.setPen(QPen(tone.dark, 1.0));
    painter.setBrush(tone.light);
    painter.drawRect(square);
    painter.restore();
}

void drawTwoToneLabel(QPainter& painter, const QPointF& anchor, const QString& text, const QRectF& bounds)
{
    painter.save();
    const QFontMetricsF metrics(painter.font());
    const QSizeF size(metrics.horizontalAdvance(text) + 8.0, metrics.height() + 4.0);
    QPointF topLeft = anchor + QPointF(10, 10);
    topLeft.setX(std::clamp(topLeft.x(), bounds.left(), std::max(bounds.left(), bounds.right() - size.width())));
    topLeft.setY(std::clamp(topLeft.y(), bounds.top(), std::max(bounds.top(), bounds.bottom() - size.height())));
    const QRectF box(topLeft, size);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(20, 20, 20, 220));
    painter.drawRoundedRect(box, 3, 3);
    painter.setPen(Qt::white);
    painter.drawText(box, Qt::AlignCenter, text);
    painter.restore();
}

}  // namespace widgets
