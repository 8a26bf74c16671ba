#pragma once
// What the status line says about the canvas: the pointer in composition
// coordinates, the selection's X, Y, width and height, and while dragging
// how far the drag has gone. Values are composition pixels, y up.

#include "canvas/CanvasSnapping.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <optional>

namespace canvas {

struct CanvasReadout {
    enum class Drag { None, Move, Resize, Guide };

    std::optional<QPointF> pointer;  // none while the mouse is elsewhere
    std::optional<QRectF> selection;  // the union of the selected frames
    Drag drag = Drag::None;
    QPointF delta;                    // a move's offset, or a resize's change of width and height
    std::optional<Guide> guide;       // the guide being moved
};

// A coordinate as shown: whole pixels without decimals, others with one.
QString formatCoordinate(double value);
// The status line's text, parts separated by wide gaps.
QString formatReadout(const CanvasReadout& readout);
// The label that follows a moving guide: its coordinate, or that letting go
// removes it.
QString guideLabelText(const Guide& guide, bool removing);

}  // namespace canvas
