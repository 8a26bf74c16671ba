#include "canvas/VLZoomScrollView.h"

#include "canvas/CanvasZoom.h"
#include "canvas/CompositionView.h"
#include "canvas/VLRulerView.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QScrollBar>
#include <QWheelEvent>

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
    connect(view, &CompositionView::autoscrollRequested, this, &VLZoomScrollView::scrollBy);
    view->installEventFilter(this);
    updateDocumentView();
}

void VLZoomScrollView::updateDocumentView()
{
    if (!view_) return;
    view_->setVisibleArea(viewport()->size());
    const QSize size = documentSizeForZoom(view_->zoomedDocumentSize(), viewport()->size());
    if (view_->size() != size) view_->resize(size);
    // The page starts in the middle, and fit, which promises the whole
    // page, keeps it there.
    const bool fit = view_->composition() && view_->zoomMode() == kZoomFit;
    if ((!centred_ || (fit && !zooming_)) && view_->composition() && isVisible()) {
        centred_ = true;
        centreDrawingArea();
    }
    view_->update();
    updateRulers();
}

void VLZoomScrollView::centreDrawingArea()
{
    if (!view_) return;
    const QPointF middle = view_->geometry().drawingAreaRect().center();
    horizontalScrollBar()->setValue(int(std::lround(middle.x() - viewport()->width() / 2.0)));
    verticalScrollBar()->setValue(int(std::lround(middle.y() - viewport()->height() / 2.0)));
}

void VLZoomScrollView::zoomTo(int mode) { zoomTo(mode, QRectF(viewport()->rect()).center()); }

void VLZoomScrollView::zoomTo(int mode, QPointF viewportPoint)
{
    if (!view_ || !view_->composition()) return;
    const QPointF scroll(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const QPointF fixed = view_->compositionPointFromView(viewportPoint + scroll);
    zooming_ = true;
    view_->setZoomMode(mode);  // resizes the document through zoomChanged
    zooming_ = false;
    if (mode == kZoomFit) {
        centreDrawingArea();
        return;
    }
    const QPointF target = scrollPositionKeeping(view_->geometry(), fixed, viewportPoint);
    horizontalScrollBar()->setValue(int(std::lround(target.x())));
    verticalScrollBar()->setValue(int(std::lround(target.y())));
}

void VLZoomScrollView::zoomIn()
{
    if (view_) zoomTo(nextZoomStep(view_->zoomFactor(), 1));
}

void VLZoomScrollView::zoomOut()
{
    if (view_) zoomTo(nextZoomStep(view_->zoomFactor(), -1));
}

void VLZoomScrollView::zoomChanged()
{
    if (zooming_ || view_->zoomMode() == kZoomFit) {
        updateDocumentView();
        return;
    }
    // A zoom from elsewhere (the toolbar, a mode item) keeps the middle of
    // what is visible in the middle.
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

void VLZoomScrollView::scrollBy(QPoint step)
{
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + step.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() + step.y());
}

bool VLZoomScrollView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == view_ && handleCanvasEvent(event)) return true;
    return QScrollArea::eventFilter(watched, event);
}

// Zoom and pan gestures over the canvas; true when the event was used.
bool VLZoomScrollView::handleCanvasEvent(QEvent* event)
{
    switch (event->type()) {
    case QEvent::Wheel: {
        auto* wheel = static_cast<QWheelEvent*>(event);
        if (!(wheel->modifiers() & Qt::ControlModifier)) return false;  // the scroll area pans
        const QPointF at = viewport()->mapFromGlobal(wheel->globalPosition());
        zoomTo(zoomPercentForWheel(view_->zoomFactor(), wheel->angleDelta().y()), at);
        return true;
    }
    case QEvent::NativeGesture: {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() != Qt::ZoomNativeGesture) return false;
        const QPointF at = viewport()->mapFromGlobal(gesture->globalPosition());
        zoomTo(zoomPercentForPinch(view_->zoomFactor(), gesture->value()), at);
        return true;
    }
    case QEvent::ShortcutOverride: {
        // Space is the window's Play / Stop key; over the canvas it first
        // comes here, so it can be held to pan and only a tap plays.
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() != Qt::Key_Space || key->modifiers() != Qt::NoModifier) return false;
        event->accept();
        return true;
    }
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() != Qt::Key_Space || key->modifiers() != Qt::NoModifier) return false;
        if (!key->isAutoRepeat()) {
            spaceHeld_ = event->type() == QEvent::KeyPress;
            if (spaceHeld_) spacePanned_ = false;
            if (!view_->isDragging()) view_->setCursor(spaceHeld_ ? Qt::OpenHandCursor : Qt::ArrowCursor);
            if (!spaceHeld_ && !spacePanned_) Q_EMIT spaceTapped();
        }
        return true;
    }
    case QEvent::MouseButtonPress: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        const bool pans = mouse->button() == Qt::MiddleButton || (mouse->button() == Qt::LeftButton && spaceHeld_);
        if (!pans) return false;
        panning_ = true;
        spacePanned_ = spaceHeld_;
        panLast_ = mouse->globalPosition().toPoint();
        view_->setCursor(Qt::ClosedHandCursor);
        return true;
    }
    case QEvent::MouseMove: {
        if (!panning_) return false;
        auto* mouse = static_cast<QMouseEvent*>(event);
        const QPoint now = mouse->globalPosition().toPoint();
        scrollBy(panLast_ - now);
        panLast_ = now;
        return true;
    }
    case QEvent::MouseButtonRelease: {
        if (!panning_) return false;
        panning_ = false;
        view_->setCursor(spaceHeld_ ? Qt::OpenHandCursor : Qt::ArrowCursor);
        return true;
    }
    default: return false;
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
