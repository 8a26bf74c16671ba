#include "canvas/VLRulerView.h"

#include "canvas/CompositionView.h"
#include "model/Composition.h"

#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace canvas {

VLRulerView::VLRulerView(Qt::Orientation orientation, QWidget* parent) : QWidget(parent), orientation_(orientation)
{
    setObjectName(orientation == Qt::Horizontal ? QStringLiteral("HorizontalRuler") : QStringLiteral("VerticalRuler"));
    setToolTip(orientation == Qt::Horizontal ? tr("Double-click to add a vertical guide")
                                             : tr("Double-click to add a horizontal guide"));
}

void VLRulerView::setCompositionView(CompositionView* view)
{
    view_ = view;
    update();
}

double VLRulerView::majorTickStep(double zoom)
{
    constexpr double kMinimumSpacing = 60.0;
    for (double decade = 1.0;; decade *= 10.0)
        for (double multiple : {1.0, 2.0, 5.0})
            if (decade * multiple * zoom >= kMinimumSpacing || decade > 1e6) return decade * multiple;
}

QPointF VLRulerView::viewPointAt(const QPointF& rulerPoint) const
{
    // Both widgets live in the same window; map through it.
    const QPoint offset = view_->mapFrom(window(), mapTo(window(), QPoint(0, 0)));
    return rulerPoint + QPointF(offset);
}

double VLRulerView::compositionCoordinateAt(const QPointF& rulerPoint) const
{
    if (!view_) return 0;
    const QPointF p = view_->compositionPointFromView(viewPointAt(rulerPoint));
    return orientation_ == Qt::Horizontal ? p.x() : p.y();
}

void VLRulerView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QColor base = palette().color(QPalette::Window);
    painter.fillRect(rect(), base.darker(115));
    const bool horizontal = orientation_ == Qt::Horizontal;
    QColor ink = palette().color(QPalette::WindowText);
    if (!view_ || !view_->composition()) return;

    const double zoom = view_->zoomFactor();
    const QSizeF size = view_->composition()->size();
    const double length = horizontal ? width() : height();
    // Ruler coordinate of a composition coordinate.
    const QPointF origin = viewPointAt(QPointF(0, 0));
    const QRectF area = view_->geometry().drawingAreaRect();
    auto toRuler = [&](double c) {
        return horizontal ? area.left() + c * zoom - origin.x() : area.bottom() - c * zoom - origin.y();
    };

    // The extent of the drawing area, lighter.
    const double a = toRuler(0), b = toRuler(horizontal ? size.width() : size.height());
    const QRectF extent = horizontal ? QRectF(QPointF(std::min(a, b), 0), QPointF(std::max(a, b), height()))
                                     : QRectF(QPointF(0, std::min(a, b)), QPointF(width(), std::max(a, b)));
    painter.fillRect(extent, base.darker(102));

    const double major = majorTickStep(zoom);
    const double minor = major * zoom >= 100 ? major / 10 : major / 5;
    const double first = horizontal ? compositionCoordinateAt(QPointF(0, 0)) : compositionCoordinateAt(QPointF(0, length));
    const double last = horizontal ? compositionCoordinateAt(QPointF(length, 0)) : compositionCoordinateAt(QPointF(0, 0));
    const double thickness = horizontal ? height() : width();
    QFont font = painter.font();
    font.setPointSizeF(7.5);
    painter.setFont(font);
    ink.setAlpha(150);
    painter.setPen(QPen(ink, 1));
    for (double c = std::floor(first / minor) * minor; c <= last + minor; c += minor) {
        const double r = std::round(toRuler(c)) + 0.5;
        const bool labelled = std::abs(std::remainder(c, major)) < minor * 0.01;
        const double tick = labelled ? thickness * 0.75 : thickness * 0.25;
        if (horizontal) {
            painter.drawLine(QPointF(r, thickness - tick), QPointF(r, thickness));
            if (labelled) painter.drawText(QPointF(r + 3, 9), QString::number(std::lround(c)));
        } else {
            painter.drawLine(QPointF(thickness - tick, r), QPointF(thickness, r));
            if (labelled) {
                painter.save();
                painter.translate(9, r - 3);
                painter.rotate(-90);
                painter.drawText(QPointF(0, 0), QString::number(std::lround(c)));
                painter.restore();
            }
        }
    }
    painter.setPen(QPen(base.darker(160), 1));
    if (horizontal)
        painter.drawLine(QPointF(0, height() - 0.5), QPointF(width(), height() - 0.5));
    else
        painter.drawLine(QPointF(width() - 0.5, 0), QPointF(width() - 0.5, height()));
}

void VLRulerView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!view_ || !view_->composition() || event->button() != Qt::LeftButton) return;
    const double position = std::round(compositionCoordinateAt(event->position()));
    // The vertical ruler makes horizontal guides and the other way round.
    view_->addGuide(position, orientation_ == Qt::Vertical);
}

}  // namespace canvas
