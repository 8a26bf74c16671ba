// The mouse and keys on the rows. A press hit-tests and remembers; the
// first drag event (or the release, for a plain click) runs the selection
// step; a drag of a clip or of keyframes then opens one undo group that the
// release closes, and every event moves by whole frames, carrying the
// pixels short of a frame over to the next. A press on empty rows drags a
// marquee over the keyframes instead.

#include "timeline/VLTimelineView.h"

#include "document/CompositionDocument.h"
#include "document/DocumentCommands.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "timeline/VLTimelineScrollView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

namespace timeline {

namespace {

bool shiftHeld(Qt::KeyboardModifiers m) { return m & Qt::ShiftModifier; }
// Control plays the part of the Command key.
bool controlHeld(Qt::KeyboardModifiers m) { return m & Qt::ControlModifier; }

}  // namespace

// Selection ---------------------------------------------------------------------

void VLTimelineView::clearComponentSelection()
{
    if (model::Composition* c = composition()) c->clearSelection();
}

void VLTimelineView::clearKeyFrameSelection()
{
    if (model::Composition* c = composition()) c->deselectAllKeyFrames();
}

bool VLTimelineView::dragCheckFirstEvent(Qt::KeyboardModifiers modifiers)
{
    if (!gesture_.firstEventPending) return false;
    gesture_.firstEventPending = false;
    selectionStep(gesture_.clickedPoint, modifiers);
    return true;
}

void VLTimelineView::selectionStep(const QPointF& point, Qt::KeyboardModifiers modifiers)
{
    model::Composition* c = composition();
    if (!c) return;
    // Selecting is editor state, never an undo step.
    model::UndoRegistrationPause pause(*undoManager());
    const TimelineHit hit = rows().hitTest(timelineGeometry(), point);
    if (hit.isClip()) {
        selectComponent(*c, rows().components(), hit.component, shiftHeld(modifiers), controlHeld(modifiers), lastSelected_);
    } else if (hit.isKeyframe()) {
        selectKeyframe(*c, rows().components(), hit.attribute, hit.key, shiftHeld(modifiers), controlHeld(modifiers),
                       lastSelected_);
    } else {
        clearComponentSelection();
        clearKeyFrameSelection();
    }
    updateClipView();
    updateComponentsRuler();
}

// Mouse -------------------------------------------------------------------------

void VLTimelineView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !composition()) {
        QWidget::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    cancelGesture();
    gesture_.active = true;
    gesture_.clickedPoint = event->position();
    gesture_.lastX = event->position().x();
    gesture_.firstEventPending = true;
    const TimelineHit hit = rows().hitTest(timelineGeometry(), gesture_.clickedPoint);
    if (hit.isClip()) {
        gesture_.draggingComponent = true;
        gesture_.part = hit.part;
        gesture_.component = hit.component;
    } else if (hit.isKeyframe()) {
        gesture_.draggingKeyFrames = true;
    } else {
        gesture_.savedSelection = saveKeyframeSelection(rows().components());
    }
    beginTooltip();
    event->accept();
}

void VLTimelineView::mouseMoveEvent(QMouseEvent* event)
{
    if (!composition()) return;
    if (!gesture_.active) {
        // Hovering: the cursor tells an edge from the middle of a clip.
        const TimelineHit hit = rows().hitTest(timelineGeometry(), event->position());
        setCursor(cursorForDraggingPart(hit.isClip() ? hit.part : kPartNone));
        return;
    }
    const bool first = dragCheckFirstEvent(event->modifiers());
    if (first && (gesture_.draggingComponent || gesture_.draggingKeyFrames) && undoManager())
        gesture_.undoGroup = std::make_unique<model::UndoGroup>(
            *undoManager(), gesture_.draggingKeyFrames ? tr("Move Keyframes")
                            : gesture_.part == kPartWhole ? tr("Move Clip")
                                                          : tr("Trim Clip"));
    if (!gesture_.draggingComponent && !gesture_.draggingKeyFrames) {
        updateDraggingMarquee(event->position(), event->modifiers());
        return;
    }
    const double delta = draggingDeltaTimeForEvent(event->position().x());
    if (gesture_.draggingKeyFrames) {
        if (delta != 0) dragKeyframes(delta);
        setCursor(cursorForDraggingPart(kPartWhole));
    } else {
        if (delta != 0) dragClip(delta);
        setCursor(cursorForDraggingPart(gesture_.part));
    }
}

void VLTimelineView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !gesture_.active) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    const bool pending = gesture_.firstEventPending;
    const QPointF clicked = gesture_.clickedPoint;
    endGesture();
    // A plain click selects here, once the press has become a click.
    if (pending) selectionStep(clicked, event->modifiers());
    updateClipView();
}

double VLTimelineView::draggingDeltaTimeForEvent(double x)
{
    const double movement = x - gesture_.lastX;
    gesture_.lastX = x;
    return draggingDeltaTime(gesture_.deltaX, movement, timelineGeometry());
}

void VLTimelineView::dragClip(double delta)
{
    model::Composition* c = composition();
    const std::vector<model::QuartzComponent*> selected = [&] {
        // In row order, which the end edges' running sum depends on.
        std::vector<model::QuartzComponent*> inRows;
        for (model::QuartzComponent* component : rows().components())
            if (component->selected() && !component->isDeleted()) inRows.push_back(component);
        return inRows;
    }();
    if (gesture_.part == kPartEnd) {
        moveEndEdges(selected, delta);
    } else {
        for (model::QuartzComponent* component : c->selectedComponents())
            adjustStartTime(*component, gesture_.part == kPartWhole, delta, c->duration());
    }
    if (model::QuartzComponent* pressed = gesture_.component; pressed && !pressed->isDeleted()) {
        const double t = gesture_.part == kPartEnd ? pressed->endTime() : pressed->startTime();
        showTooltip(t, timelineGeometry().xPositionAtTime(t, false));
    }
}

void VLTimelineView::dragKeyframes(double delta)
{
    if (const std::optional<double> least = moveSelectedKeyframes(*composition(), delta))
        showTooltip(*least, timelineGeometry().xPositionAtTime(*least, false));
}

void VLTimelineView::updateDraggingMarquee(const QPointF& point, Qt::KeyboardModifiers modifiers)
{
    gesture_.marquee = QRectF(gesture_.clickedPoint, point).normalized();
    applyMarquee(*composition(), rows(), timelineGeometry(), gesture_.marquee, controlHeld(modifiers), gesture_.savedSelection);
    updateClipView();
}

void VLTimelineView::endGesture()
{
    // Closing the group makes the whole drag one step.
    gesture_.undoGroup.reset();
    gesture_ = Gesture{};
    finishTooltip();
    unsetCursor();
}

void VLTimelineView::cancelGesture()
{
    const bool hadMarquee = !gesture_.marquee.isNull();
    endGesture();
    endRulerGesture();
    if (hadMarquee) updateClipView();
}

// Keys --------------------------------------------------------------------------

bool VLTimelineView::hasSelectedKeyframes() const
{
    const model::Composition* c = composition();
    return c && !c->attributesWithSelectedKeyframes().empty();
}

void VLTimelineView::deleteForward()
{
    model::Composition* c = composition();
    if (!c) return;
    if (!hasSelectedKeyframes()) {
        // Not ours: the document deletes the selected components.
        if (document::DocumentCommands* commands = this->commands()) commands->deleteForward();
        return;
    }
    {
        model::UndoGroup group(*undoManager(), tr("Delete Keyframes"));
        for (model::Attribute* a : c->attributesWithSelectedKeyframes()) a->deleteSelectedTimepoints();
    }
    c->sendChangeNotificationForValues(true);
    updateClipView();
    updateComponentsRuler();
}

void VLTimelineView::togglePlay()
{
    if (document::DocumentCommands* commands = this->commands())
        commands->play();
    else if (model::Composition* c = composition())
        c->setPlayMode(c->playMode() ^ 1);
}

void VLTimelineView::controlAction(int segment)
{
    document::DocumentCommands* commands = this->commands();
    if (segment == 2) {
        togglePlay();
        return;
    }
    if (!commands) return;
    switch (segment) {
    case 0: commands->jumpToBeginning(); break;
    case 1: commands->jumpToPreviousFrame(); break;
    case 3: commands->jumpToNextFrame(); break;
    case 4: commands->jumpToEnd(); break;
    default: break;
    }
}

bool VLTimelineView::event(QEvent* event)
{
    // Keys the window also binds: the timeline takes Delete and Backspace
    // only while it has keyframes to delete, and the arrows always.
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool plain = (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
        const bool deleting = key->key() == Qt::Key_Delete || key->key() == Qt::Key_Backspace;
        const bool stepping = key->key() == Qt::Key_Left || key->key() == Qt::Key_Right;
        if (plain && ((deleting && hasSelectedKeyframes()) || stepping)) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void VLTimelineView::keyPressEvent(QKeyEvent* event)
{
    document::DocumentCommands* commands = this->commands();
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (!composition() || !plain) {
        QWidget::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Space: togglePlay(); break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace: deleteForward(); break;
    case Qt::Key_Home:
        if (commands) commands->jumpToBeginning();
        break;
    case Qt::Key_End:
        if (commands) commands->jumpToEnd();
        break;
    case Qt::Key_Left:
        if (commands) commands->jumpToPreviousFrame();
        break;
    case Qt::Key_Right:
        if (commands) commands->jumpToNextFrame();
        break;
    default: QWidget::keyPressEvent(event); return;
    }
    event->accept();
}

void VLTimelineView::wheelEvent(QWheelEvent* event)
{
    // Control and the wheel zoom the time axis around the mouse; the plain
    // wheel is the scroll view's and scrolls the rows.
    if (!(event->modifiers() & Qt::ControlModifier) || !scrollView_) {
        event->ignore();
        return;
    }
    const double steps = event->angleDelta().y() / 120.0;
    if (steps == 0) return;
    const double viewportX = mapTo(scrollView_->viewport(), event->position()).x();
    scrollView_->zoomAround(zoom_ + steps * 0.05, viewportX);
    event->accept();
}

}  // namespace timeline
