#include "widgets/TimelineArtwork.h"

#include "widgets/ArtworkIcon.h"

#include <QPainter>
#include <QPolygonF>

#include <map>

namespace widgets {

namespace {

// A solid triangle pointing left or right, `width` wide, vertically centred.
void triangle(QPainter& p, const QColor& colour, double x, double width, bool pointsRight)
{
    const double tip = pointsRight ? x + width : x, back = pointsRight ? x : x + width;
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawPolygon(QPolygonF({QPointF(back, 6), QPointF(tip, 12), QPointF(back, 18)}));
}

void upright(QPainter& p, const QColor& colour, double x) { p.fillRect(QRectF(x, 6, 2, 12), colour); }

void magnifier(QPainter& p, const ArtworkInk& ink, bool plus)
{
    p.setPen(QPen(ink.line, 1.6));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(QPointF(10, 10), 6, 6);
    p.setPen(QPen(ink.line, 2.6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(14.6, 14.6), QPointF(20, 20));
    p.setPen(QPen(ink.accent, 1.6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(7, 10), QPointF(13, 10));
    if (plus) p.drawLine(QPointF(10, 7), QPointF(10, 13));
}

// A diamond filling the middle of the grid, hollow or filled.
void diamond(QPainter& p, const ArtworkInk& ink, bool filled)
{
    p.setPen(QPen(filled ? ink.accent : ink.line, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(filled ? QBrush(ink.accent) : QBrush(Qt::NoBrush));
    p.drawPolygon(QPolygonF({QPointF(12, 4), QPointF(20, 12), QPointF(12, 20), QPointF(4, 12)}));
}

// A triangle pointing down from the top, as stop frames are drawn.
void stopFrame(QPainter& p, const ArtworkInk& ink, bool filled)
{
    p.setPen(QPen(filled ? ink.accent : ink.line, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(filled ? QBrush(ink.accent) : QBrush(Qt::NoBrush));
    p.drawPolygon(QPolygonF({QPointF(4, 6), QPointF(20, 6), QPointF(12, 19)}));
}

void disclosure(QPainter& p, const ArtworkInk& ink, bool open)
{
    p.setPen(Qt::NoPen);
    p.setBrush(ink.line);
    if (open)
        p.drawPolygon(QPolygonF({QPointF(5, 8), QPointF(19, 8), QPointF(12, 17)}));
    else
        p.drawPolygon(QPolygonF({QPointF(8, 5), QPointF(17, 12), QPointF(8, 19)}));
}

const std::map<QString, ArtworkDrawing>& drawings()
{
    static const std::map<QString, ArtworkDrawing> table = {
        {QStringLiteral("ZoomIn"), [](QPainter& p, const ArtworkInk& i) { magnifier(p, i, true); }},
        {QStringLiteral("ZoomOut"), [](QPainter& p, const ArtworkInk& i) { magnifier(p, i, false); }},
        {QStringLiteral("Start"),
         [](QPainter& p, const ArtworkInk& i) {
             upright(p, i.line, 4);
             triangle(p, i.line, 6, 7, false);
             triangle(p, i.line, 13, 7, false);
         }},
        {QStringLiteral("FrameBack"),
         [](QPainter& p, const ArtworkInk& i) {
             triangle(p, i.line, 7, 8, false);
             upright(p, i.line, 16);
         }},
        {QStringLiteral("Play"), [](QPainter& p, const ArtworkInk& i) { triangle(p, i.accent, 7, 11, true); }},
        {QStringLiteral("Stop"), [](QPainter& p, const ArtworkInk& i) { p.fillRect(QRectF(7, 7, 10, 10), i.line); }},
        {QStringLiteral("FrameForwards"),
         [](QPainter& p, const ArtworkInk& i) {
             upright(p, i.line, 6);
             triangle(p, i.line, 9, 8, true);
         }},
        {QStringLiteral("End"),
         [](QPainter& p, const ArtworkInk& i) {
             triangle(p, i.line, 4, 7, true);
             triangle(p, i.line, 11, 7, true);
             upright(p, i.line, 18);
         }},
        {QStringLiteral("DiscloseClosed"), [](QPainter& p, const ArtworkInk& i) { disclosure(p, i, false); }},
        {QStringLiteral("DiscloseOpen"), [](QPainter& p, const ArtworkInk& i) { disclosure(p, i, true); }},
        {QStringLiteral("PreviousKeyframe"), [](QPainter& p, const ArtworkInk& i) { triangle(p, i.line, 6, 11, false); }},
        {QStringLiteral("NextKeyframe"), [](QPainter& p, const ArtworkInk& i) { triangle(p, i.line, 7, 11, true); }},
        {QStringLiteral("AddKeyframe"), [](QPainter& p, const ArtworkInk& i) { diamond(p, i, false); }},
        {QStringLiteral("RemoveKeyframe"), [](QPainter& p, const ArtworkInk& i) { diamond(p, i, true); }},
        {QStringLiteral("AddStopFrame"), [](QPainter& p, const ArtworkInk& i) { stopFrame(p, i, false); }},
        {QStringLiteral("RemoveStopFrame"), [](QPainter& p, const ArtworkInk& i) { stopFrame(p, i, true); }},
    };
    return table;
}

}  // namespace

QStringList TimelineArtwork::names()
{
    // In the order the buttons sit under the timeline.
    return {QStringLiteral("ZoomIn"), QStringLiteral("ZoomOut"), QStringLiteral("Start"), QStringLiteral("FrameBack"),
            QStringLiteral("Play"), QStringLiteral("Stop"), QStringLiteral("FrameForwards"), QStringLiteral("End"),
            // The rows' disclosure triangles and the keyframe and stop-frame buttons.
            QStringLiteral("DiscloseClosed"), QStringLiteral("DiscloseOpen"), QStringLiteral("PreviousKeyframe"),
            QStringLiteral("NextKeyframe"), QStringLiteral("AddKeyframe"), QStringLiteral("RemoveKeyframe"),
            QStringLiteral("AddStopFrame"), QStringLiteral("RemoveStopFrame")};
}

QIcon TimelineArtwork::timelineImageWithName(const QString& name)
{
    const auto found = drawings().find(name);
    return found == drawings().end() ? QIcon() : artworkIcon(found->second);
}

}  // namespace widgets
