// Aligning and distributing the selected components.
//
// Distribution hands out the positions in the order in which the
// composition lists the selected components, without sorting them by place
// first. This is intended; docs/commands.md describes it for users.

#include "document/DocumentCommands.h"

#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"

#include <algorithm>

namespace document {

namespace {

// Writes only what changes, so aligning already aligned components leaves
// nothing to undo.
void setOriginX(model::QuartzComponent* c, double x)
{
    if (c->originX() != x) c->setOriginX(x);
}

void setOriginY(model::QuartzComponent* c, double y)
{
    if (c->originY() != y) c->setOriginY(y);
}

struct Reference {
    double originX = 0, extentH = 0, extentV = 0, originY = 0, centerH = 0, centerV = 0;
};

Reference referenceOf(const model::QuartzComponent* c)
{
    return {c->originX(), c->extentH(), c->extentV(), c->originY(), c->centerH(), c->centerV()};
}

// The outer edges of the selection; the centres are those of the widest and
// the tallest component (the first of equals), not of the bounding box, so
// centring lines everything up on the component that dominates the group.
Reference referenceOfAll(const std::vector<model::QuartzComponent*>& components)
{
    Reference r;
    r.originX = r.originY = 4294934527.0;
    double widest = 0, tallest = 0;
    for (const model::QuartzComponent* c : components) {
        r.originX = std::min(r.originX, c->originX());
        r.originY = std::min(r.originY, c->originY());
        r.extentH = std::max(r.extentH, double(c->extentH()));
        r.extentV = std::max(r.extentV, double(c->extentV()));
        if (c->width() > widest) {
            widest = c->width();
            r.centerH = c->centerH();
        }
        if (c->height() > tallest) {
            tallest = c->height();
            r.centerV = c->centerV();
        }
    }
    return r;
}

// The value a distribution mode spaces evenly.
double measure(const model::QuartzComponent* c, int mode)
{
    switch (mode) {
    case kDistributeLeft: return c->originX();
    case kDistributeCenterH: return c->centerH();
    case kDistributeRight: return c->extentH();
    case kDistributeTop: return c->extentV();
    case kDistributeCenterV: return c->centerV();
    default: return c->originY();
    }
}

void place(model::QuartzComponent* c, int mode, double position)
{
    switch (mode) {
    case kDistributeLeft: setOriginX(c, position); break;
    case kDistributeCenterH: setOriginX(c, position - 0.5 * c->width()); break;
    case kDistributeRight: setOriginX(c, position - c->width()); break;
    case kDistributeTop: setOriginY(c, position - c->height()); break;
    case kDistributeCenterV: setOriginY(c, position - 0.5 * c->height()); break;
    default: setOriginY(c, position); break;
    }
}

}  // namespace

void DocumentCommands::doAlignComponents(int mode, bool anchorToFirstSelected)
{
    if (mode < kAlignLeft || mode > kDistributeBottom) return;
    const bool aligning = mode <= kAlignBottom;
    if (composition_.selectedComponents().size() < (aligning ? 2u : 3u)) return;
    model::UndoGroup group(undoManager(), aligning ? QStringLiteral("Align") : QStringLiteral("Distribute"));
    if (aligning)
        align(mode, anchorToFirstSelected);
    else
        distribute(mode);
}

void DocumentCommands::align(int mode, bool anchorToFirstSelected)
{
    const auto selected = composition_.selectedComponents();
    // The composition never records which component was picked first; the
    // first in the selection's order is the one users see as the anchor.
    const Reference r = anchorToFirstSelected ? referenceOf(selected.front()) : referenceOfAll(selected);
    for (model::QuartzComponent* c : selected) {
        switch (mode) {
        case kAlignLeft: setOriginX(c, r.originX); break;
        case kAlignCenterH: setOriginX(c, r.centerH - 0.5 * c->width()); break;
        case kAlignRight: setOriginX(c, r.extentH - c->width()); break;
        case kAlignTop: setOriginY(c, r.extentV - c->height()); break;
        case kAlignCenterV: setOriginY(c, r.centerV - 0.5 * c->height()); break;
        default: setOriginY(c, r.originY); break;
        }
    }
}

void DocumentCommands::distribute(int mode)
{
    const auto selected = composition_.selectedComponents();
    // Extremes replace only on a strictly better value, so among equals the
    // earliest in the selection wins; one component can be both extremes.
    model::QuartzComponent *leftmost = selected.front(), *rightmost = leftmost, *highest = leftmost, *lowest = leftmost;
    for (model::QuartzComponent* c : selected) {
        if (c->originX() < leftmost->originX()) leftmost = c;
        if (c->extentH() > rightmost->extentH()) rightmost = c;
        if (c->extentV() > highest->extentV()) highest = c;
        if (c->originY() < lowest->originY()) lowest = c;
    }
    const bool horizontal = mode <= kDistributeRight;
    const model::QuartzComponent* first = horizontal ? leftmost : lowest;
    const model::QuartzComponent* last = horizontal ? rightmost : highest;
    const double step = (measure(last, mode) - measure(first, mode)) / double(selected.size() - 1);
    if (step == 0) return;
    double position = measure(first, mode) + step;
    for (model::QuartzComponent* c : selected) {
        if (c == first || c == last) continue;
        place(c, mode, position);
        position += step;
    }
}

}  // namespace document
