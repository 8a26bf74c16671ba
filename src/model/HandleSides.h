#pragma once
// The resize handles of a component's frame are numbered 1–8 (0 is the
// frame itself): 1–3 on the left edge bottom to top, 4 top middle, 5 bottom
// middle, 6–8 on the right edge. Which sides a handle moves, in composition
// coordinates (y up), and the hit test the handles share.

#include <QPointF>
#include <QRectF>

namespace model {

inline bool onMinXSide(int h) { return h == 1 || h == 2 || h == 3; }
inline bool onMaxXSide(int h) { return h == 6 || h == 7 || h == 8; }
inline bool onMaxYSide(int h) { return h == 3 || h == 4 || h == 8; }
inline bool onMinYSide(int h) { return h == 1 || h == 5 || h == 6; }

// Left and lower edges inside, right and upper outside: neighbouring
// handles never both claim a point.
inline bool halfOpenContains(const QRectF& r, const QPointF& p)
{
    return p.x() >= r.left() && p.x() < r.right() && p.y() >= r.top() && p.y() < r.bottom();
}

}  // namespace model
