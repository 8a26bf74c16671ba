// Mouse and keyboard editing on the canvas: click selection, moving the
// selection, resizing by a handle, marquee selection, guide rulers and
// nudges. Geometry rules (handles, hit tests, resize arithmetic) belong to
// the component; this decides when each is called and with what.

#include "canvas/CompositionView.h"

#include "canvas/CanvasHitRules.h"
#include "canvas/CanvasZoom.h"

#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleHints>

#include <cmath>

namespace canvas {

using model::QuartzComponent;

namespace {

bool isToggle(Qt::KeyboardModifiers m) { return m & (Qt::ShiftModifier | Qt::ControlModifier); }
bool isHandle(int h) { return h != model::kHandleBody && h != model::kHandleNone; }

Qt::CursorShape cursorForHandle(int handle)
{
    switch (handle) {
    case 0: return Qt::OpenHandCursor;
    case 1: case 8: return Qt::SizeBDiagCursor;  // south-west, north-east
    case 3: case 6: return Qt::SizeFDiagCursor;  // north-west, south-east
    case 2: case 7: return Qt::SizeHorCursor;
    case 4: case 5: return Qt::SizeVerCursor;
    default: return Qt::ArrowCursor;
    }
}

Qt::CursorShape cursorForRuler(const model::Ruler& ruler)
{
    return ruler.horizontal() ? Qt::SizeVerCursor : Qt::SizeHorCursor;
}

}  // namespace

model::UndoManager* CompositionView::undoManager() const
{
    return document_ ? &document_->store().undoManager() : nullptr;
}

void CompositionView::openUndoGroup(const QString& name)
{
    if (model::UndoManager* undo = undoManager(); undo && !gesture_.undoGroup)
        gesture_.undoGroup = std::make_unique<model::UndoGroup>(*undo, name);
}

// Mouse -------------------------------------------------------------------------

void CompositionView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !composition()) {
        QWidget::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    endGesture(false);
    gesture_.startOnScreen = event->globalPosition();
    gesture_.lastGlobal = event->globalPosition();
    beginGestureAt(compositionPointFromView(event->position()), event->position(), event->modifiers());
    event->accept();
}

void CompositionView::beginGestureAt(const QPointF& p, const QPointF& viewPoint, Qt::KeyboardModifiers modifiers)
{
    model::Composition* c = composition();
    gesture_.start = p;
    gesture_.startInView = viewPoint;
    gesture_.startModifiers = modifiers;

    // The front-most component under the point.
    const std::vector<QuartzComponent*> ordered = c->componentsSortedByInverseZLevel();
    QuartzComponent* target = nullptr;
    for (QuartzComponent* component : ordered) {
        if (handleAt(*component, p) != model::kHandleNone) {
            target = component;
            break;
        }
    }
    if (!target) {
        if (model::Ruler* ruler = rulerAt(p)) {
            gesture_.kind = GestureKind::Guide;
            gesture_.ruler = ruler;
            setCursor(cursorForRuler(*ruler));
        } else {
            gesture_.kind = GestureKind::Marquee;
            rubberBand_.setCurrentRect({});
        }
        return;
    }

    // The handle of a selected component beneath wins over an unselected
    // component on top. The question goes to the hit component, as the
    // editor always did; templates' users are used to exactly this.
    if (!target->selected() && isHandle(target->handleIndexForLocation(p))) {
        for (QuartzComponent* component : ordered) {
            if (component->selected()) {
                target = component;
                break;
            }
        }
    }

    const int ownHandle = handleAt(*target, p);
    if (target->selected() && isHandle(ownHandle)) {
        gesture_.kind = GestureKind::Resize;
        gesture_.handle = ownHandle;
        gesture_.components = {target};
        gesture_.frames = {target->drawingFrame()};
        return;
    }

    {
        // Selecting by click is editor state, never an undo step.
        model::UndoRegistrationPause pause(*undoManager());
        if (isToggle(modifiers)) {
            target->setSelected(!target->selected());
        } else if (!target->selected()) {
            c->clearSelection();
            target->setSelected(true);
        }
    }

    if (target->selected()) {
        gesture_.kind = GestureKind::Move;
        for (QuartzComponent* component : c->selectedComponents()) {
            gesture_.components.emplace_back(component);
            gesture_.frames.push_back(component->drawingFrame());
            gesture_.unionFrame = gesture_.unionFrame.isNull() ? component->drawingFrame()
                                                               : gesture_.unionFrame.united(component->drawingFrame());
        }
        setCursor(Qt::ClosedHandCursor);
    }
}

void CompositionView::mouseMoveEvent(QMouseEvent* event)
{
    if (!composition()) return;
    setPointer(compositionPointFromView(event->position()));
    if (gesture_.kind == GestureKind::None) {
        updateCursor(*pointer_);
        return;
    }
    gestureStep(event->position(), event->globalPosition(), event->modifiers());
    updateAutoscroll(event->position());
}

void CompositionView::gestureStep(const QPointF& viewPoint, const QPointF& globalPoint, Qt::KeyboardModifiers modifiers)
{
    gesture_.lastGlobal = globalPoint;
    gesture_.lastModifiers = modifiers;
    const QPointF p = compositionPointFromView(viewPoint);
    switch (gesture_.kind) {
    case GestureKind::None: return;
    case GestureKind::Move: moveSelectionStep(p, modifiers); break;
    case GestureKind::Resize: resizeStep(p, modifiers); break;
    case GestureKind::Marquee: marqueeStep(viewPoint); break;
    case GestureKind::Guide: guideStep(p); break;
    }
    if (gesture_.started) {
        if (gesture_.kind == GestureKind::Guide) update();  // the label follows the mouse
        Q_EMIT readoutChanged();
    }
}

bool CompositionView::pressBecameDrag(const QPointF& globalPoint) const
{
    // A hand shakes by a pixel or two on a click; only travel past the
    // platform's drag distance on screen makes a drag, whatever the zoom.
    return dragHasStarted({}, globalPoint - gesture_.startOnScreen, QGuiApplication::styleHints()->startDragDistance(),
                          false);
}

void CompositionView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    // The release point counts as the last step, so a quick flick ends
    // where the mouse was let go rather than at the last move seen.
    if (gesture_.kind != GestureKind::None)
        gestureStep(event->position(), event->globalPosition(), event->modifiers());
    endGesture(true);
    if (composition()) updateCursor(compositionPointFromView(event->position()));
}

void CompositionView::updateAutoscroll(const QPointF& viewPoint)
{
    const bool scrolls = gesture_.started && (gesture_.kind == GestureKind::Move || gesture_.kind == GestureKind::Resize ||
                                              gesture_.kind == GestureKind::Guide);
    const QRect shown = visibleRegion().boundingRect();
    if (!scrolls || shown.isEmpty() || autoscrollStep(viewPoint - shown.topLeft(), shown.size()).isNull()) {
        autoscrollTimer_.stop();
        return;
    }
    if (!autoscrollTimer_.isActive()) autoscrollTimer_.start();
}

void CompositionView::autoscrollTick()
{
    if (gesture_.kind == GestureKind::None) {
        autoscrollTimer_.stop();
        return;
    }
    const QRect shown = visibleRegion().boundingRect();
    const QPointF viewPoint = mapFromGlobal(gesture_.lastGlobal);
    const QPoint step = shown.isEmpty() ? QPoint() : autoscrollStep(viewPoint - shown.topLeft(), shown.size());
    if (step.isNull()) {
        autoscrollTimer_.stop();
        return;
    }
    Q_EMIT autoscrollRequested(step);
    // The view moved under a still mouse: the drag follows as if it moved.
    gestureStep(mapFromGlobal(gesture_.lastGlobal), gesture_.lastGlobal, gesture_.lastModifiers);
}

void CompositionView::moveSelectionStep(const QPointF& p, Qt::KeyboardModifiers modifiers)
{
    QPointF delta = p - gesture_.start;
    if (!gesture_.started) {
        if (!dragHasStarted(delta) || !pressBecameDrag(gesture_.lastGlobal)) return;
        gesture_.started = true;
        openUndoGroup(tr("Move"));
    }
    delta = lockAxis(delta, modifiers & Qt::ShiftModifier, gesture_.lock);
    if (composition()->showsRulers()) delta = snapMoveDelta(gesture_.unionFrame, delta, guides());
    gesture_.delta = delta;
    for (std::size_t i = 0; i < gesture_.components.size(); ++i) {
        QuartzComponent* component = gesture_.components[i];
        if (!component || component->isDeleted()) continue;
        component->setOriginX(gesture_.frames[i].x() + delta.x());
        component->setOriginY(gesture_.frames[i].y() + delta.y());
    }
}

void CompositionView::resizeStep(const QPointF& point, Qt::KeyboardModifiers modifiers)
{
    QuartzComponent* component = gesture_.components.empty() ? nullptr : gesture_.components.front().data();
    if (!component || component->isDeleted()) return;
    if (!gesture_.started) {
        if (!pressBecameDrag(gesture_.lastGlobal)) return;
        gesture_.started = true;
        openUndoGroup(tr("Resize"));
    }
    const QPointF p = composition()->showsRulers() ? snapResizePoint(point, guides()) : point;
    const bool proportional = component->constrainProportions() != bool(modifiers & Qt::ShiftModifier);
    const bool fromCenter = modifiers & Qt::AltModifier;
    gesture_.handle = component->resizeByMovingHandle(gesture_.handle, p, proportional, fromCenter, gesture_.frames.front());
    const QRectF& start = gesture_.frames.front();
    gesture_.delta = QPointF(component->width() - start.width(), component->height() - start.height());
}

void CompositionView::marqueeStep(const QPointF& viewPoint)
{
    const QRectF rect = viewPoint == gesture_.startInView ? QRectF()
                                                          : QRectF(gesture_.startInView, viewPoint).normalized();
    if (rubberBand_.setCurrentRect(rect)) update();
}

void CompositionView::finishMarquee()
{
    model::Composition* c = composition();
    const bool toggle = gesture_.startModifiers & Qt::ShiftModifier;  // Control does not toggle here
    model::UndoRegistrationPause pause(*undoManager());
    if (!toggle) c->clearSelection();
    const QRectF rect = rubberBand_.currentRect();
    if (rect.isEmpty()) return;
    const QRectF area = geometry().compositionRectFromView(rect);
    for (QuartzComponent* component : c->componentArray()) {
        if (!component->visible() || !component->visibleInCompositionEditor()) continue;
        if (!component->drawingFrame().intersects(area)) continue;
        component->setSelected(toggle ? !component->selected() : true);
    }
}

void CompositionView::guideStep(const QPointF& p)
{
    model::Ruler* ruler = gesture_.ruler;
    if (!ruler || ruler->isDeleted()) return;
    if (!gesture_.started) {
        if (!pressBecameDrag(gesture_.lastGlobal)) return;
        gesture_.started = true;
        openUndoGroup(tr("Move Guide"));
    }
    model::Composition* c = composition();
    const bool horizontal = ruler->horizontal();
    const double value = horizontal ? p.y() : p.x();
    const double limit = horizontal ? c->height() : c->width();
    // Dragged off the drawing area, the guide goes away on release.
    gesture_.removeRuler = value < 0 || value > limit;
    setCursor(gesture_.removeRuler ? Qt::ForbiddenCursor : cursorForRuler(*ruler));
    ruler->setPosition(double(float(std::round(value))));
}

void CompositionView::endGesture(bool commit)
{
    if (commit && composition()) {
        if (gesture_.kind == GestureKind::Marquee) finishMarquee();
        if (gesture_.kind == GestureKind::Guide && gesture_.removeRuler && gesture_.ruler && !gesture_.ruler->isDeleted())
            composition()->removeRuler(gesture_.ruler);
    }
    const bool hadOverlay = !rubberBand_.currentRect().isNull() || (gesture_.kind == GestureKind::Guide && gesture_.started);
    const bool hadDrag = gesture_.started;
    rubberBand_.setCurrentRect({});
    autoscrollTimer_.stop();
    gesture_.undoGroup.reset();  // closes the gesture's undo step
    gesture_ = Gesture{};
    unsetCursor();
    if (hadOverlay) update();
    if (hadDrag) Q_EMIT readoutChanged();
}

void CompositionView::cancelGestureIfStale()
{
    bool stale = gesture_.ruler.isNull() && gesture_.kind == GestureKind::Guide;
    for (const auto& component : gesture_.components) stale = stale || !component || component->isDeleted();
    if (stale) endGesture(false);
}

void CompositionView::updateCursor(const QPointF& p)
{
    Qt::CursorShape shape = Qt::ArrowCursor;
    // Every component is asked, so the rearmost hit decides the cursor.
    for (QuartzComponent* component : composition()->componentsSortedByInverseZLevel()) {
        const int handle = handleAt(*component, p);
        if (handle != model::kHandleNone) shape = cursorForHandle(handle);
    }
    if (shape == Qt::ArrowCursor)
        if (const model::Ruler* ruler = rulerAt(p)) shape = cursorForRuler(*ruler);
    setCursor(shape);
}

// Keys --------------------------------------------------------------------------

void CompositionView::keyPressEvent(QKeyEvent* event)
{
    const Qt::KeyboardModifiers others = event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    if (!composition() || others != Qt::NoModifier) {
        QWidget::keyPressEvent(event);
        return;
    }
    const double step = event->modifiers() & Qt::ShiftModifier ? kFarNudge : kNudge;
    switch (event->key()) {
    case Qt::Key_Left: moveSelectedComponentsBy(-step, 0); break;
    case Qt::Key_Right: moveSelectedComponentsBy(step, 0); break;
    case Qt::Key_Up: moveSelectedComponentsBy(0, step); break;
    case Qt::Key_Down: moveSelectedComponentsBy(0, -step); break;
    default: QWidget::keyPressEvent(event); return;
    }
    event->accept();
}

}  // namespace canvas
