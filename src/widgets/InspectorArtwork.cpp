#include "widgets/InspectorArtwork.h"

#include "widgets/ArtworkIcon.h"

#include <QPainter>
#include <QPainterPath>

#include <map>

namespace widgets {

namespace {

// Five lines of text, each starting and ending where the alignment puts it.
// `widths` are the lengths of the lines on the 24-unit grid.
void textLines(QPainter& p, const ArtworkInk& ink, Qt::Alignment alignment)
{
    static const double widths[] = {16, 11, 16, 9, 13};
    p.setPen(QPen(ink.line, 1.8, Qt::SolidLine, Qt::RoundCap));
    for (int i = 0; i < 5; ++i) {
        const double w = alignment == Qt::AlignJustify ? 16 : widths[i];
        double x = 4;
        if (alignment == Qt::AlignHCenter) x = 12 - w / 2;
        if (alignment == Qt::AlignRight) x = 20 - w;
        const double y = 5 + i * 3.5;
        p.drawLine(QPointF(x, y), QPointF(x + w, y));
    }
}

// Sliders with knobs: the properties of what is selected.
void properties(QPainter& p, const ArtworkInk& ink)
{
    p.setPen(QPen(ink.line, 1.6, Qt::SolidLine, Qt::RoundCap));
    for (double y : {6.0, 12.0, 18.0}) p.drawLine(QPointF(4, y), QPointF(20, y));
    p.setPen(QPen(ink.line, 1.4));
    p.setBrush(ink.accent);
    p.drawEllipse(QPointF(9, 6), 2.4, 2.4);
    p.drawEllipse(QPointF(16, 12), 2.4, 2.4);
    p.drawEllipse(QPointF(7, 18), 2.4, 2.4);
}

// A padlock: what the operator may change.
void permissions(QPainter& p, const ArtworkInk& ink)
{
    p.setPen(QPen(ink.line, 1.8, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    QPainterPath shackle;
    shackle.moveTo(8, 11);
    shackle.lineTo(8, 8);
    shackle.arcTo(QRectF(8, 4, 8, 8), 180, -180);
    shackle.lineTo(16, 11);
    p.drawPath(shackle);
    p.setBrush(ink.fill);
    p.drawRoundedRect(QRectF(5.5, 11, 13, 9), 1.5, 1.5);
    p.setPen(Qt::NoPen);
    p.setBrush(ink.accent);
    p.drawEllipse(QPointF(12, 15.5), 1.6, 1.6);
}

// A page with a folded corner and a film strip's frame on it: the document.
void document(QPainter& p, const ArtworkInk& ink)
{
    p.setPen(QPen(ink.line, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(ink.fill);
    p.drawPolygon(QPolygonF({QPointF(5, 3), QPointF(15, 3), QPointF(19, 7), QPointF(19, 21), QPointF(5, 21)}));
    p.drawPolyline(QPolygonF({QPointF(15, 3), QPointF(15, 7), QPointF(19, 7)}));
    p.setPen(Qt::NoPen);
    p.setBrush(ink.accent);
    p.drawRect(QRectF(8, 11, 8, 6));
}

const std::map<QString, ArtworkDrawing>& drawings()
{
    static const std::map<QString, ArtworkDrawing> table = {
        {QStringLiteral("Properties"), properties},
        {QStringLiteral("Permissions"), permissions},
        {QStringLiteral("Document"), document},
        {QStringLiteral("TextLeft"), [](QPainter& p, const ArtworkInk& i) { textLines(p, i, Qt::AlignLeft); }},
        {QStringLiteral("TextCenter"), [](QPainter& p, const ArtworkInk& i) { textLines(p, i, Qt::AlignHCenter); }},
        {QStringLiteral("TextRight"), [](QPainter& p, const ArtworkInk& i) { textLines(p, i, Qt::AlignRight); }},
        {QStringLiteral("TextJustified"), [](QPainter& p, const ArtworkInk& i) { textLines(p, i, Qt::AlignJustify); }},
        // Natural follows the script's direction; drawn as left with a small
        // arrow so that it differs from left at a glance.
        {QStringLiteral("TextNatural"),
         [](QPainter& p, const ArtworkInk& i) {
             textLines(p, i, Qt::AlignLeft);
             p.setPen(QPen(i.accent, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
             p.drawPolyline(QPolygonF({QPointF(17, 14), QPointF(20, 17), QPointF(17, 20)}));
         }},
    };
    return table;
}

}  // namespace

QStringList InspectorArtwork::names()
{
    // The tabs in their order, then the alignment segments in theirs.
    return {QStringLiteral("Properties"), QStringLiteral("Permissions"), QStringLiteral("Document"),
            QStringLiteral("TextLeft"),   QStringLiteral("TextCenter"),  QStringLiteral("TextRight"),
            QStringLiteral("TextJustified"), QStringLiteral("TextNatural")};
}

QIcon InspectorArtwork::inspectorImageWithName(const QString& name)
{
    const auto found = drawings().find(name);
    return found == drawings().end() ? QIcon() : artworkIcon(found->second);
}

}  // namespace widgets
