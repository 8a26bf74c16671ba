#include "canvas/VLRulerView.h"

#include "canvas/CompositionView.h"
#include "model/Composition.h"
#include "widgets/RulerDrawing.h"

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

double VLRulerView::majorTickStep(double zoom) { return widgets::majorTickStep(zoom); }

RulerUnit VLRulerView::rulerUnit() const
{
    if (!view_ || !view_->composition()) return rulerUnitForZoomMode(100, 1.0);
    return rulerUnitForZoomMode(view_->zoomMode(), view_->zoomFactor());
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
    const QColor ink = palette().color(QPalette::WindowText);
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

    widgets::RulerScale scale;
    scale.orientation = orientation_;
    scale.thickness = horizontal ? height() : width();
    scale.first = horizontal ? compositionCoordinateAt(QPointF(0, 0)) : compositionCoordinateAt(QPointF(0, length));
    scale.last = horizontal ? compositionCoordinateAt(QPointF(length, 0)) : compositionCoordinateAt(QPointF(0, 0));
    scale.pixelsPerUnit = zoom;
    scale.majorStep = majorTickStep(zoom);
    scale.minorStep = widgets::minorTickStep(scale.majorStep, zoom);
    scale.position = toRuler;
    scale.label = [](double c) { return QString::number(std::lround(c)); };
    widgets::drawRulerTicks(painter, scale, ink, base.darker(160));
}

void VLRulerView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!view_ || !view_->composition() || event->button() != Qt::LeftButton) return;
    const double position = std::round(compositionCoordinateAt(event->position()));
    // The vertical ruler makes horizontal guides and the other way round.
    view_->addGuide(position, orientation_ == Qt::Vertical);
}

}  // namespace canvas
