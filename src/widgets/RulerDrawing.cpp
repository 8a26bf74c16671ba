#include "widgets/RulerDrawing.h"

#include <cmath>

namespace widgets {

double majorTickStep(double pixelsPerUnit, double minimumSpacing, double base)
{
    for (double decade = base;; decade *= 10.0)
        for (double multiple : {1.0, 2.0, 5.0})
            if (decade * multiple * pixelsPerUnit >= minimumSpacing || decade > 1e6 * base) return decade * multiple;
}

double minorTickStep(double majorStep, double pixelsPerUnit)
{
    return majorStep * pixelsPerUnit >= 100 ? majorStep / 10 : majorStep / 5;
}

void drawRulerTicks(QPainter& painter, const RulerScale& scale, const QColor& ink, const QColor& edge)
{
    const bool horizontal = scale.orientation == Qt::Horizontal;
    const double thickness = scale.thickness;
    QFont font = painter.font();
    font.setPointSizeF(7.5);
    painter.setFont(font);
    QColor tickInk = ink;
    tickInk.setAlpha(150);
    painter.setPen(QPen(tickInk, 1));
    const double minor = scale.minorStep;
    if (minor > 0) {
        for (double c = std::floor(scale.first / minor) * minor; c <= scale.last + minor; c += minor) {
            const double r = std::round(scale.position(c)) + 0.5;
            const bool labelled = std::abs(std::remainder(c, scale.majorStep)) < minor * 0.01;
            const double tick = labelled ? thickness * 0.75 : thickness * 0.25;
            if (horizontal) {
                painter.drawLine(QPointF(r, thickness - tick), QPointF(r, thickness));
                if (labelled) painter.drawText(QPointF(r + 3, 9), scale.label(c));
            } else {
                painter.drawLine(QPointF(thickness - tick, r), QPointF(thickness, r));
                if (labelled) {
                    painter.save();
                    painter.translate(9, r - 3);
                    painter.rotate(-90);
                    painter.drawText(QPointF(0, 0), scale.label(c));
                    painter.restore();
                }
            }
        }
    }
    painter.setPen(QPen(edge, 1));
    const QRectF bounds = painter.window();
    if (horizontal)
        painter.drawLine(QPointF(0, thickness - 0.5), QPointF(bounds.width(), thickness - 0.5));
    else
        painter.drawLine(QPointF(thickness - 0.5, 0), QPointF(thickness - 0.5, bounds.height()));
}

}  // namespace widgets
