#include "timeline/VLTimelineScrollView.h"

#include "model/Composition.h"
#include "timeline/VLTimelineRulerView.h"
#include "timeline/VLTimelineView.h"

#include <QEvent>
#include <QScrollBar>

#include <cmath>

namespace timeline {

VLTimelineScrollView::VLTimelineScrollView(QWidget* parent)
    : QScrollArea(parent),
      horizontalRuler_(new VLTimelineRulerView(Qt::Horizontal, this)),
      verticalRuler_(new VLTimelineRulerView(Qt::Vertical, this))
{
    setObjectName(QStringLiteral("VLTimelineScrollView"));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(false);
    setViewport(new VLTimelneClipView(this));
    const TimelineMetrics metrics;
    setViewportMargins(int(metrics.componentsWidth), int(std::ceil(metrics.rulerThickness())), 0, 0);
    for (QScrollBar* bar : {horizontalScrollBar(), verticalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, this, &VLTimelineScrollView::updateRulers);
}

void VLTimelineScrollView::setTimelineView(VLTimelineView* view)
{
    view_ = view;
    setWidget(view);
    view->setScrollView(this);
    view->setAutoFillBackground(false);
    updateDocumentView();
}

QPoint VLTimelineScrollView::scrollOffset() const
{
    return QPoint(horizontalScrollBar()->value(), verticalScrollBar()->value());
}

void VLTimelineScrollView::updateDocumentView()
{
    if (!view_) return;
    const QSize size = view_->timeAxisSize().expandedTo(viewport()->size());
    if (view_->size() != size) view_->resize(size);
    viewport()->update();
    updateRulers();
}

void VLTimelineScrollView::zoomAround(double value, double viewportX)
{
    if (!view_) return;
    const double time = view_->timelineGeometry().exactTimeAt(viewportX + horizontalScrollBar()->value());
    view_->setZoomValue(value);
    horizontalScrollBar()->setValue(int(std::lround(view_->timelineGeometry().xPosition(view_->timelineGeometry().xPositionAtTime(time), false) - viewportX)));
}

void VLTimelineScrollView::followPlayhead()
{
    const model::Composition* c = view_ ? view_->composition() : nullptr;
    if (!c) return;
    const double x = view_->timelineGeometry().xPositionAtTime(c->editorTimepoint(), false);
    const int left = horizontalScrollBar()->value(), width = viewport()->width();
    // A page at a time, the playhead starting again at the left.
    if (x < left || x > left + width - 20) horizontalScrollBar()->setValue(int(x) - 20);
}

void VLTimelineScrollView::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    layoutRulers();
    updateDocumentView();
}

bool VLTimelineScrollView::viewportEvent(QEvent* event)
{
    switch (event->type()) {
    // The clip view draws itself and passes presses on to the document.
    case QEvent::Paint:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        return false;
    default: break;
    }
    const bool result = QScrollArea::viewportEvent(event);
    // Scroll bars coming and going change the visible area.
    if (event->type() == QEvent::Resize) {
        layoutRulers();
        updateDocumentView();
    }
    return result;
}

void VLTimelineScrollView::layoutRulers()
{
    const QRect area = viewport()->geometry();
    const TimelineMetrics metrics;
    const int thickness = int(std::ceil(metrics.rulerThickness())), names = int(metrics.componentsWidth);
    // The time ruler spans the corner over the name column too.
    horizontalRuler_->setGeometry(area.left() - names, area.top() - thickness, area.width() + names, thickness);
    verticalRuler_->setGeometry(area.left() - names, area.top(), names, area.height());
}

void VLTimelineScrollView::updateRulers()
{
    horizontalRuler_->needsDisplay();
    verticalRuler_->needsDisplay();
}

}  // namespace timeline
