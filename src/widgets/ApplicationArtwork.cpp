#include "widgets/ApplicationArtwork.h"

#include "widgets/ArtworkIcon.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace widgets {

namespace {

// Every shape lies on whole or half grid units, so that the small sizes
// (16 and 24 pixels are 1/8 and 3/16 of the grid) keep their edges crisp.
void drawOnGrid(QPainter& p)
{
    // The monitor: a rounded tile, darker towards the bottom.
    QLinearGradient screen(0, 8, 0, 120);
    screen.setColorAt(0, QColor(0x34, 0x4a, 0x82));
    screen.setColorAt(1, QColor(0x16, 0x20, 0x44));
    p.setPen(Qt::NoPen);
    p.setBrush(screen);
    p.drawRoundedRect(QRectF(8, 8, 112, 112), 24, 24);

    // The title-safe corners, as the canvas shows them.
    p.setPen(QPen(QColor(255, 255, 255, 110), 4, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    p.setBrush(Qt::NoBrush);
    const double in = 24, out = 104, arm = 14;
    for (const auto& [x, y, dx, dy] : {std::tuple{in, in, 1, 1}, {out, in, -1, 1}, {in, out, 1, -1}, {out, out, -1, -1}}) {
        QPainterPath corner;
        corner.moveTo(x + dx * arm, y);
        corner.lineTo(x, y);
        corner.lineTo(x, y + dy * arm);
        p.drawPath(corner);
    }

    // The lower third: a name plate over a coloured bar.
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0xee, 0xf1, 0xf8));
    p.drawRect(QRectF(28, 64, 52, 12));
    QLinearGradient bar(28, 0, 100, 0);
    bar.setColorAt(0, QColor(0xf7, 0xa8, 0x1b));
    bar.setColorAt(1, QColor(0xef, 0x6c, 0x1a));
    p.setBrush(bar);
    p.drawRect(QRectF(28, 80, 72, 16));

    // On air.
    p.setBrush(QColor(0xe5, 0x48, 0x4d));
    p.drawEllipse(QPointF(94, 40), 8, 8);
}

}  // namespace

void ApplicationArtwork::draw(QPainter& painter, double side)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / kGrid, side / kGrid);
    drawOnGrid(painter);
    painter.restore();
}

QIcon ApplicationArtwork::icon()
{
    // The shared engine draws on a 24-unit grid; scaling to ours keeps one
    // way of painting icons at any size.
    return artworkIcon([](QPainter& p, const ArtworkInk&) { draw(p, kArtworkGrid); });
}

}  // namespace widgets
