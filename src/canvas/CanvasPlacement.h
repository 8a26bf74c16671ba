#pragma once
// Where new components land. Those made from the toolbar, the menus and
// paste go to the middle of what the designer is looking at; each further
// one that would land exactly on an earlier one moves on by 20 pixels right
// and down, so a stack of pastes fans out instead of hiding itself. A drop
// lands where it was dropped, further files of the same drop cascading from
// there.

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <vector>

namespace canvas {

// One cascade step in composition pixels: right and down (y up).
inline const QPointF kCascadeStep(20.0, -20.0);

// The offset that moves a new component (or a group, by its first member)
// whose origin would be `origin` off every origin in `taken`: none, or as
// many cascade steps as it takes. Origins closer than half a pixel count as
// the same.
QPointF cascadeOffset(const QPointF& origin, const std::vector<QPointF>& taken);

// The offset that puts the centre of `bounds` on `centre`, in whole pixels
// so that an image lands on whole pixels at 100 %.
QPointF offsetCentring(const QRectF& bounds, const QPointF& centre);

}  // namespace canvas
