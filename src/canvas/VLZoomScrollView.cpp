#include "canvas/VLZoomScrollView.h"

#include "canvas/CompositionView.h"
#include "canvas/VLRulerView.h"

#include <QEvent>
#include <QScrollBar>

namespace canvas {

VLZoomScrollView::VLZoomScrollView(QWidget* parent)
    : QScrollArea(parent),
      horizontalRuler_(new VLRulerView(Qt::Horizontal, this)),
      verticalRuler_(new VLRulerView(Qt::Vertical, this)),
      corner_(new QWidget(this))
{
    setObjectName(QStringLiteral("CanvasScrollView"));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(false);
    setViewportMargins(int(kRulerThickness), int(kRulerThickness), 0, 0);
    corner_->setAutoFillBackground(true);
    corner_->setBackgroundRole(QPalette::Window);
    for (QScrollBar* bar : {horizontalScrollBar(), verticalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, this, &VLZoomScrollView::updateRulers);
}

void VLZoomScrollView::setCompositionView(CompositionView* view)
{
    view_ = view;
    setWidget(view);
    horizontalRuler_->setCompositionView(view);
    verticalRuler_->setCompositionView(view);
    connect(view, &CompositionView::zoomChanged, this, &VLZoomScrollView::zoomChanged);
    connect(view, &CompositionView::layoutChanged, this, &VLZoomScrollView::updateRulers);
    updateDocumentView();
}

void VLZoomScrollView::updateDocumentView()
{
    if (!view_) return;
    view_->setVisibleArea(viewport()->size());
    const QSize size = documentSizeForZoom(view_->zoomedDocumentSize(), viewport()->size());
    if (view_->size() != size) view_->resize(size);
    view_->update();
    updateRulers();
}

void VLZoomScrollView::zoomChanged()
{
    // Keep the middle of what is visible in the middle after zooming.
    auto fraction = [](const QScrollBar* bar) {
        const int range = bar->maximum() - bar->minimum() + bar->pageStep();
        return range > 0 ? (bar->value() + bar->pageStep() / 2.0) / range : 0.5;
    };
    const double fx = horizontalScrollBar()->maximum() > 0 ? fraction(horizontalScrollBar()) : 0.5;
    const double fy = verticalScrollBar()->maximum() > 0 ? fraction(verticalScrollBar()) : 0.5;
    updateDocumentView();
    for (auto [bar, f] : {std::pair{horizontalScrollBar(), fx}, std::pair{verticalScrollBar(), fy}}) {
        const int range = bar->maximum() - bar->minimum() + bar->pageStep();
        bar->setValue(int(f * range - bar->pageStep() / 2.0));
    }
}

void VLZoomScrollView::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    layoutRulers();
    updateDocumentView();
}

bool VLZoomScrollView::viewportEvent(QEvent* event)
{
    const bool result = QScrollArea::viewportEvent(event);
    // Scroll bars coming and going change the visible area without
    // resizing the scroll view itself.
    if (event->type() == QEvent::Resize) {
        layoutRulers();
        updateDocumentView();
    }
    return result;
}

void VLZoomScrollView::layoutRulers()
{
    const QRect area = viewport()->geometry();
    const int thickness = int(kRulerThickness);
    horizontalRuler_->setGeometry(area.left(), area.top() - thickness, area.width(), thickness);
    verticalRuler_->setGeometry(area.left() - thickness, area.top(), thickness, area.height());
    corner_->setGeometry(area.left() - thickness, area.top() - thickness, thickness, thickness);
}

void VLZoomScrollView::updateRulers()
{
    horizontalRuler_->update();
    verticalRuler_->update();
}

}  // namespace canvas
