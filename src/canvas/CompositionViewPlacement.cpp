// What the canvas reports about itself and where it puts new components:
// the status line's readout and the placement of pasted, dropped and
// toolbar-made components in the middle of the view.

#include "canvas/CompositionView.h"

#include "canvas/CanvasPlacement.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"

#include <cmath>
#include <set>

namespace canvas {

// Readout -----------------------------------------------------------------------

CanvasReadout CompositionView::readout() const
{
    CanvasReadout r;
    const model::Composition* c = composition();
    if (!c) return r;
    r.pointer = pointer_;
    // Where a screen pixel covers a composition pixel or more, decimals
    // would only say where inside the screen pixel the mouse is.
    if (r.pointer && zoomFactor() <= 1.0) *r.pointer = QPointF(std::round(r.pointer->x()), std::round(r.pointer->y()));
    for (const model::QuartzComponent* component : c->selectedComponents())
        r.selection = r.selection ? r.selection->united(component->drawingFrame()) : component->drawingFrame();
    if (!gesture_.started) return r;
    switch (gesture_.kind) {
    case GestureKind::Move: r.drag = CanvasReadout::Drag::Move; break;
    case GestureKind::Resize: r.drag = CanvasReadout::Drag::Resize; break;
    case GestureKind::Guide: r.drag = CanvasReadout::Drag::Guide; break;
    default: break;
    }
    r.delta = gesture_.delta;
    if (const model::Ruler* ruler = gesture_.ruler; ruler && !ruler->isDeleted())
        r.guide = Guide{ruler->position(), ruler->horizontal()};
    return r;
}

void CompositionView::setPointer(std::optional<QPointF> p)
{
    if (p == pointer_) return;
    pointer_ = p;
    Q_EMIT readoutChanged();
}

void CompositionView::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    if (gesture_.kind == GestureKind::None) setPointer(std::nullopt);
}

// Placing new components ----------------------------------------------------------

QPointF CompositionView::visibleCentre() const
{
    const QRect shown = visibleRegion().boundingRect();
    const QRectF area = shown.isEmpty() ? QRectF(rect()) : QRectF(shown);
    return compositionPointFromView(area.center());
}

void CompositionView::addPlacedComponents(const std::function<void()>& add, bool asGroup, std::optional<QPointF> at)
{
    model::Composition* c = composition();
    if (!c) return;
    const std::vector<model::QuartzComponent*> before = c->componentArray();
    const std::set<model::QuartzComponent*> old(before.begin(), before.end());
    std::vector<QPointF> taken;
    for (const model::QuartzComponent* component : before) taken.push_back(component->drawingFrame().topLeft());

    model::UndoGroup group(*undoManager());
    add();
    std::vector<model::QuartzComponent*> added;
    for (model::QuartzComponent* component : c->componentArray())
        if (!old.count(component)) added.push_back(component);
    if (added.empty()) return;
    const QPointF centre = at.value_or(visibleCentre());
    auto place = [&](const std::vector<model::QuartzComponent*>& members) {
        QRectF bounds;
        for (const model::QuartzComponent* m : members) bounds = bounds.isNull() ? m->drawingFrame() : bounds.united(m->drawingFrame());
        QPointF offset = offsetCentring(bounds, centre);
        offset += cascadeOffset(members.front()->drawingFrame().topLeft() + offset, taken);
        for (model::QuartzComponent* m : members) {
            m->moveBy(offset.x(), offset.y());
            taken.push_back(m->drawingFrame().topLeft());
        }
    };
    if (asGroup) place(added);
    else
        for (model::QuartzComponent* component : added) place({component});
}

}  // namespace canvas
