#include "timeline/VLTimelineRulerView.h"

#include "timeline/VLTimelineScrollView.h"
#include "timeline/VLTimelineView.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

namespace timeline {

// The ruler ---------------------------------------------------------------------

VLTimelineRulerView::VLTimelineRulerView(Qt::Orientation orientation, VLTimelineScrollView* scrollView)
    : QWidget(scrollView), orientation_(orientation), scrollView_(scrollView), contentView_(new VLTimelineRulerContentView(this))
{
    setObjectName(orientation == Qt::Horizontal ? QStringLiteral("TimeRuler") : QStringLiteral("NameColumn"));
    // The content view fills it all; a background under it would be painted
    // for nothing on every repaint.
}

VLTimelineView* VLTimelineRulerView::timelineView() const { return scrollView_ ? scrollView_->timelineView() : nullptr; }

void VLTimelineRulerView::needsDisplay() { contentView_->update(); }

void VLTimelineRulerView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    contentView_->setGeometry(rect());
}

// Its content -------------------------------------------------------------------

VLTimelineRulerContentView::VLTimelineRulerContentView(VLTimelineRulerView* rulerView)
    : QWidget(rulerView), rulerView_(rulerView)
{
    setObjectName(QStringLiteral("RulerContent"));
    setMouseTracking(true);
    // It paints every pixel it is asked for.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void VLTimelineRulerContentView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    if (VLTimelineView* view = timelineView())
        view->drawRulerInView(painter, rulerView_, event->rect());
    else
        painter.fillRect(event->rect(), palette().color(QPalette::Window));
}

void VLTimelineRulerContentView::mousePressEvent(QMouseEvent* event)
{
    if (VLTimelineView* view = timelineView()) view->mouseDownInRuler(event, rulerView_, event->position());
}

void VLTimelineRulerContentView::mouseMoveEvent(QMouseEvent* event)
{
    VLTimelineView* view = timelineView();
    if (!view) return;
    if (event->buttons() & Qt::LeftButton)
        view->mouseDraggedInRuler(event, rulerView_, event->position());
    else
        view->mouseMovedInRuler(event, rulerView_, event->position());
}

void VLTimelineRulerContentView::mouseReleaseEvent(QMouseEvent* event)
{
    if (VLTimelineView* view = timelineView()) view->mouseUpInRuler(event, rulerView_, event->position());
}

void VLTimelineRulerContentView::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    if (VLTimelineView* view = timelineView()) view->mouseExitedRuler(rulerView_);
}

// The clip view -----------------------------------------------------------------

VLTimelneClipView::VLTimelneClipView(VLTimelineScrollView* scrollView) : QWidget(scrollView), scrollView_(scrollView)
{
    setObjectName(QStringLiteral("VLTimelneClipView"));
    setAttribute(Qt::WA_OpaquePaintEvent);
}

VLTimelineView* VLTimelneClipView::documentView() const { return scrollView_ ? scrollView_->timelineView() : nullptr; }

void VLTimelneClipView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    // The document view fills what it draws on; without one the background shows.
    if (VLTimelineView* view = documentView())
        view->drawClipInView(painter, this, event->rect());
    else
        painter.fillRect(event->rect(), palette().color(QPalette::Base));
}

void VLTimelneClipView::forward(QMouseEvent* event)
{
    VLTimelineView* view = documentView();
    // What happens over the view is the view's; an event it ignored and
    // that bubbled up here goes no further back.
    if (!view || view->geometry().contains(event->position().toPoint())) {
        event->ignore();
        return;
    }
    const QPointF local = view->mapFrom(this, event->position());
    QMouseEvent moved(event->type(), local, event->globalPosition(), event->button(), event->buttons(), event->modifiers());
    QCoreApplication::sendEvent(view, &moved);
}

void VLTimelneClipView::mousePressEvent(QMouseEvent* event) { forward(event); }
void VLTimelneClipView::mouseMoveEvent(QMouseEvent* event) { forward(event); }
void VLTimelneClipView::mouseReleaseEvent(QMouseEvent* event) { forward(event); }

}  // namespace timeline
