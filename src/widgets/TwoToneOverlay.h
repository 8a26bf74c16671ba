#pragma once
// Overlay strokes that read on any background: every line is drawn twice,
// a wide dark one under a narrow light one, so a selection frame shows on
// a white title card as well as on black. The canvas uses it for the
// selection, its handles and the marquee; anything else drawn over a
// picture of unknown colours can share it.

#include <QColor>
#include <QPolygonF>
#include <QRectF>

class QPainter;

namespace widgets {

struct TwoTone {
    QColor dark = QColor(0, 0, 0, 200);
    QColor light = QColor(255, 255, 255, 235);
    double lightWidth = 1.0;  // in screen pixels; the dark one is 2 wider
};

// The selection's tones: light blue over near black.
TwoTone selectionTone();
// The marquee's: dashed light over solid dark.
TwoTone marqueeTone();

// A closed outline (four corners of a possibly turned frame) in widget
// coordinates.
void drawTwoToneOutline(QPainter& painter, const QPolygonF& outline, const TwoTone& tone, bool dashed = false);
// A filled square handle of `side` screen pixels centred on a point: light
// fill with a dark rim.
void drawTwoToneHandle(QPainter& painter, const QPointF& centre, double side, const TwoTone& tone);
// A small label with a dark box behind light text, placed beside `anchor`
// and kept inside `bounds`.
void drawTwoToneLabel(QPainter& painter, const QPointF& anchor, const QString& text, const QRectF& bounds);

}  // namespace widgets
