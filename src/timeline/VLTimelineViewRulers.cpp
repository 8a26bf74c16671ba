// The rulers' mouse: in the time ruler a press sets the playhead, or in the
// strip of stop frames takes hold of one to drag it; the corner over the
// name column holds the stop-frame buttons, which act on release. In the
// name column a release opens or closes a component, selects it, or runs
// the keyframe buttons of the attribute row under the mouse.

#include "timeline/VLTimelineView.h"

#include "document/CompositionDocument.h"
#include "document/DocumentCommands.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/StopFrame.h"
#include "timeline/TimeTooltip.h"
#include "timeline/TimelinePainter.h"
#include "timeline/VLTimelineRulerView.h"
#include "timeline/VLTimelineScrollView.h"

#include <QMouseEvent>

#include <cmath>

namespace timeline {

// The time ruler ----------------------------------------------------------------

void VLTimelineView::mouseDownInRuler(QMouseEvent* event, VLTimelineRulerView* ruler, const QPointF& point)
{
    model::Composition* c = composition();
    if (!c || event->button() != Qt::LeftButton || ruler->orientation() != Qt::Horizontal) return;
    endRulerGesture();
    // The corner holds the stop-frame buttons, which act on release.
    if (point.x() <= metrics_.componentsWidth) return;
    ruler_.active = true;
    if (point.y() >= metrics_.stopFrameSize.height()) {
        updateTimelineRulerPoint(point.x(), true);
        return;
    }
    beginTooltip();
    const double half = metrics_.stopFrameSize.width() / 2;
    const TimelineGeometry g = timelineGeometry();
    for (model::StopFrame* stopFrame : c->stopFrames()) {
        const double x = g.xPositionAtTime(stopFrame->timepoint(), true);
        if (x > point.x() - half && x < point.x() + half) {
            ruler_.stopFrame = stopFrame;
            break;
        }
    }
    ruler_.markerSelected = !ruler_.stopFrame;
    if (ruler_.stopFrame && undoManager())
        ruler_.undoGroup = std::make_unique<model::UndoGroup>(*undoManager(), tr("Move Stop Frame"));
    updateTimelineRulerPoint(point.x(), true);
}

void VLTimelineView::mouseDraggedInRuler(QMouseEvent*, VLTimelineRulerView* ruler, const QPointF& point)
{
    if (!composition() || !ruler_.active || ruler->orientation() != Qt::Horizontal) return;
    updateTimelineRulerPoint(point.x(), false);
}

void VLTimelineView::mouseUpInRuler(QMouseEvent* event, VLTimelineRulerView* ruler, const QPointF& point)
{
    model::Composition* c = composition();
    if (!c || event->button() != Qt::LeftButton) return;
    if (ruler->orientation() == Qt::Vertical) {
        nameColumnMouseUp(event, point);
        return;
    }
    const bool pressedInTime = ruler_.active;
    endRulerGesture();
    if (point.x() > metrics_.componentsWidth) {
        c->sendChangeNotificationForValues(true);
        return;
    }
    // A drag that started on the time axis does not press a button.
    if (pressedInTime) return;
    const int flags = stopFrameControlFlags(c->stopFrameTimepoints(), c->editorTimepoint());
    const QRectF buttons = stopFrameButtons_.rectInView(ruler->size(), metrics_.componentsWidth);
    switch (stopFrameButtons_.controlActionInRect(buttons, point, flags)) {
    case VLTimelineControlButtons::kPrevious:
        if (const auto t = previousStopFrame()) setTime(*t, true);
        break;
    case VLTimelineControlButtons::kNext:
        if (const auto t = nextStopFrame()) setTime(*t, true);
        break;
    case VLTimelineControlButtons::kAdd: addStopFrame(); break;
    case VLTimelineControlButtons::kRemove: removeStopFrame(); break;
    default: break;
    }
}

void VLTimelineView::updateTimelineRulerPoint(double x, bool waitForSecond)
{
    model::Composition* c = composition();
    double t = timelineGeometry().timeFromPosition(x, true);
    const bool valid = c->validateEditorTimepoint(t);
    if (model::StopFrame* stopFrame = ruler_.stopFrame) {
        // A stop frame deleted under the mouse is let go.
        if (stopFrame->isDeleted()) {
            endRulerGesture();
            return;
        }
        stopFrame->setTimepoint(t);
        showTooltip(t, timelineGeometry().xPositionAtTime(t, false), !waitForSecond);
    } else if (valid) {
        c->setEditorTimepoint(t);
    }
}

model::StopFrame* VLTimelineView::draggingStopFrame() const { return ruler_.stopFrame; }

void VLTimelineView::endRulerGesture()
{
    ruler_.undoGroup.reset();
    const bool had = ruler_.active;
    ruler_ = RulerGesture{};
    if (had) finishTooltip();
}

// Stop frames and time ----------------------------------------------------------

std::optional<double> VLTimelineView::nextStopFrame() const
{
    const model::Composition* c = composition();
    return c ? timeline::nextStopFrame(c->stopFrameTimepoints(), c->editorTimepoint()) : std::nullopt;
}

std::optional<double> VLTimelineView::previousStopFrame() const
{
    const model::Composition* c = composition();
    return c ? timeline::previousStopFrame(c->stopFrameTimepoints(), c->editorTimepoint()) : std::nullopt;
}

void VLTimelineView::addStopFrame()
{
    if (document::DocumentCommands* commands = this->commands()) commands->addStopFrame();
}

void VLTimelineView::removeStopFrame()
{
    const model::Composition* c = composition();
    if (!c || !(stopFrameControlFlags(c->stopFrameTimepoints(), c->editorTimepoint()) & kFlagAt)) return;
    // With a stop frame at the playhead, toggling removes it.
    if (document::DocumentCommands* commands = this->commands()) commands->toggleStopframe();
}

void VLTimelineView::setTime(double t, bool updateAttributes)
{
    model::Composition* c = composition();
    if (!c) return;
    c->setEditorTimepoint(t);
    if (updateAttributes) c->sendChangeNotificationForValues(true);
}

// The name column ---------------------------------------------------------------

int VLTimelineView::nameColumnRowAt(const QPointF& point) const
{
    const int row = timelineGeometry().rowAt(point.y() - y());
    return row < rows().count() ? row : -1;
}

void VLTimelineView::mouseMovedInRuler(QMouseEvent*, VLTimelineRulerView* ruler, const QPointF& point)
{
    if (ruler->orientation() != Qt::Vertical || !composition()) return;
    const int row = nameColumnRowAt(point);
    if (row == mouseOverRow_) return;
    mouseOverRow_ = row;
    updateComponentsRuler();
}

void VLTimelineView::mouseExitedRuler(VLTimelineRulerView* ruler)
{
    if (ruler->orientation() != Qt::Vertical || mouseOverRow_ < 0) return;
    mouseOverRow_ = -1;
    updateComponentsRuler();
}

void VLTimelineView::nameColumnMouseUp(QMouseEvent* event, const QPointF& point)
{
    const int index = nameColumnRowAt(point);
    const TimelineRow* row = rows().row(index);
    if (!row || row->owner->isDeleted()) return;
    const TimelineGeometry g = timelineGeometry();
    const QRectF rowRect = TimelinePainter::nameRowRect(g, index, metrics_.componentsWidth, -y());
    if (model::QuartzComponent* component = row->component) {
        // Left of the name is the disclosure triangle; the name selects.
        if (point.x() < TimelinePainter::nameTextRect(g, *row, rowRect).left()) {
            component->setExpanded(!component->expanded());
            return;
        }
        model::UndoRegistrationPause pause(*undoManager());
        selectComponent(*composition(), rows().components(), component, event->modifiers() & Qt::ShiftModifier,
                        event->modifiers() & Qt::ControlModifier, lastSelected_);
        return;
    }
    const int flags = keyframeControlFlags(*row->attribute, composition()->editorTimepoint());
    const int action = keyframeButtons_.controlActionInRect(keyframeButtons_.rectInRect(rowRect), point, flags);
    keyframeButtonAction(row->attribute, action);
}

void VLTimelineView::keyframeButtonAction(model::Attribute* attribute, int action)
{
    model::Composition* c = composition();
    const double now = c->editorTimepoint();
    switch (action) {
    case VLTimelineControlButtons::kPrevious: setTime(attribute->previousTimePoint(now), true); break;
    case VLTimelineControlButtons::kNext: setTime(attribute->nextTimePoint(now), true); break;
    case VLTimelineControlButtons::kAdd: {
        model::UndoGroup group(*undoManager(), tr("Add Keyframe"));
        attribute->addTimepoint(now, attribute->valueAtTime(now));
        break;
    }
    case VLTimelineControlButtons::kRemove: {
        model::UndoGroup group(*undoManager(), tr("Delete Keyframe"));
        attribute->deleteTimepoint(now);
        break;
    }
    default: return;
    }
    updateComponentsRuler();
    updateClipView();
}

// The time tooltip --------------------------------------------------------------

void VLTimelineView::beginTooltip()
{
    // Nothing shows until a drag has a time to show.
    TimeTooltip::finishShared();
}

void VLTimelineView::showTooltip(double time, double x, bool visible)
{
    const model::Composition* c = composition();
    if (!visible || !c || !isVisible()) return;
    QPoint anchor = mapToGlobal(QPoint(int(x), int(gesture_.clickedPoint.y() - timelineGeometry().rowHeight() / 2)));
    if (ruler_.active && scrollView_) anchor = QPoint(anchor.x(), scrollView_->horizontalRuler()->mapToGlobal(QPoint(0, 0)).y());
    TimeTooltip::shared()->showTime(time, c->videoResolution().frameRate(), anchor);
}

void VLTimelineView::finishTooltip() { TimeTooltip::finishShared(); }

}  // namespace timeline
