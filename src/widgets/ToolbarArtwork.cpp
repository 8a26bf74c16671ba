#include "widgets/ToolbarArtwork.h"

#include "widgets/ArtworkIcon.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <functional>
#include <map>

namespace widgets {

namespace {

using Ink = ArtworkInk;
using Drawing = ArtworkDrawing;

void bar(QPainter& p, const QRectF& r, const QColor& c) { p.fillRect(r, c); }

// A framed picture of hills under a sun, for the image and poster-frame icons.
void landscape(QPainter& p, const Ink& i, const QRectF& frame, double corner, const QPolygonF& hills,
               const QPointF& sun, double sunRadius, const QColor& sunColour)
{
    p.setPen(QPen(i.line, 1.5));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(frame, corner, corner);
    p.setPen(Qt::NoPen);
    p.setBrush(i.accent);
    p.drawPolygon(hills);
    p.setBrush(sunColour);
    p.drawEllipse(sun, sunRadius, sunRadius);
}

void alignDrawing(QPainter& p, const Ink& ink, bool horizontal, int where)
{
    // Two bars of different length lined up on a guide at start, middle or end.
    auto place = [&](double length, double offset, double across) {
        double start = where == 0 ? 5 : where == 1 ? 12 - length / 2 : 19 - length;
        return horizontal ? QRectF(start, offset, length, across) : QRectF(offset, start, across, length);
    };
    bar(p, place(13, 6, 4), ink.fill);
    bar(p, place(8, 13, 4), ink.accent);
    p.setPen(QPen(ink.line, 1.5));
    const double g = where == 0 ? 4.5 : where == 1 ? 12 : 19.5;
    if (horizontal)
        p.drawLine(QPointF(g, 3), QPointF(g, 21));
    else
        p.drawLine(QPointF(3, g), QPointF(21, g));
}

void distributeDrawing(QPainter& p, const Ink& ink, bool horizontal, int where)
{
    // Three boxes evenly spaced, with a tick at the edge or centre that counts.
    const double positions[] = {3, 10, 17};
    const double sizes[] = {4, 5, 4};
    p.setPen(QPen(ink.line, 1));
    for (int i = 0; i < 3; ++i) {
        const double a = positions[i], s = sizes[i];
        const QRectF box = horizontal ? QRectF(a, 9 - s / 2 + 3, s, 8) : QRectF(9 - s / 2 + 3, a, 8, s);
        bar(p, box, i == 1 ? ink.accent : ink.fill);
        const double t = where == 0 ? a : where == 1 ? a + s / 2 : a + s;
        if (horizontal)
            p.drawLine(QPointF(t, 3), QPointF(t, 21));
        else
            p.drawLine(QPointF(3, t), QPointF(21, t));
    }
}

const std::map<QString, Drawing>& drawings()
{
    static const std::map<QString, Drawing> table = {
        {QStringLiteral("AlignLeft"), [](QPainter& p, const Ink& i) { alignDrawing(p, i, true, 0); }},
        {QStringLiteral("AlignHCenter"), [](QPainter& p, const Ink& i) { alignDrawing(p, i, true, 1); }},
        {QStringLiteral("AlignRight"), [](QPainter& p, const Ink& i) { alignDrawing(p, i, true, 2); }},
        {QStringLiteral("AlignTop"), [](QPainter& p, const Ink& i) { alignDrawing(p, i, false, 0); }},
        {QStringLiteral("AlignVCenter"), [](QPainter& p, const Ink& i) { alignDrawing(p, i, false, 1); }},
        {QStringLiteral("AlignBottom"), [](QPainter& p, const Ink& i) { alignDrawing(p, i, false, 2); }},
        {QStringLiteral("DistributeLeft"), [](QPainter& p, const Ink& i) { distributeDrawing(p, i, true, 0); }},
        {QStringLiteral("DistributeHCenter"), [](QPainter& p, const Ink& i) { distributeDrawing(p, i, true, 1); }},
        {QStringLiteral("DistributeRight"), [](QPainter& p, const Ink& i) { distributeDrawing(p, i, true, 2); }},
        {QStringLiteral("DistributeTop"), [](QPainter& p, const Ink& i) { distributeDrawing(p, i, false, 0); }},
        {QStringLiteral("DistributeVCenter"), [](QPainter& p, const Ink& i) { distributeDrawing(p, i, false, 1); }},
        {QStringLiteral("DistributeBottom"), [](QPainter& p, const Ink& i) { distributeDrawing(p, i, false, 2); }},
        {QStringLiteral("Backward"),
         [](QPainter& p, const Ink& i) {
             bar(p, QRectF(9, 4, 11, 11), i.accent);
             p.setPen(QPen(i.line, 1.5));
             p.setBrush(i.fill);
             p.drawRect(QRectF(4.5, 9.5, 11, 11));
         }},
        {QStringLiteral("Forward"),
         [](QPainter& p, const Ink& i) {
             p.setPen(QPen(i.line, 1.5));
             p.setBrush(i.fill);
             p.drawRect(QRectF(8.5, 3.5, 11, 11));
             bar(p, QRectF(4, 9, 11, 11), i.accent);
         }},
        {QStringLiteral("StopFrame"),
         [](QPainter& p, const Ink& i) {
             p.setPen(QPen(i.line, 1.5));
             p.drawLine(QPointF(3, 19.5), QPointF(21, 19.5));
             QPainterPath octagon;
             for (int k = 0; k < 8; ++k) {
                 const double a = (k * 45.0 + 22.5) * M_PI / 180.0;
                 const QPointF pt(12 + 7 * std::cos(a), 10 + 7 * std::sin(a));
                 k == 0 ? octagon.moveTo(pt) : octagon.lineTo(pt);
             }
             octagon.closeSubpath();
             p.setPen(Qt::NoPen);
             p.setBrush(QColor(220, 60, 50));
             p.drawPath(octagon);
             bar(p, QRectF(8.5, 9, 7, 2), Qt::white);
         }},
        {QStringLiteral("PosterFrame"),
         [](QPainter& p, const Ink& i) {
             landscape(p, i, QRectF(3.5, 5.5, 17, 13), 0,
                       QPolygonF({QPointF(5, 17), QPointF(10, 11), QPointF(13, 14), QPointF(15, 12), QPointF(19, 17)}),
                       QPointF(16, 9), 1.6, i.fill);
         }},
        {QStringLiteral("Preview"),
         [](QPainter& p, const Ink& i) {
             p.setPen(QPen(i.line, 1.5));
             p.setBrush(Qt::NoBrush);
             p.drawRoundedRect(QRectF(3.5, 4.5, 17, 13), 1.5, 1.5);
             p.drawLine(QPointF(8, 20.5), QPointF(16, 20.5));
             p.setPen(Qt::NoPen);
             p.setBrush(i.accent);
             p.drawPolygon(QPolygonF({QPointF(10, 7.5), QPointF(16, 11), QPointF(10, 14.5)}));
         }},
        {QStringLiteral("Text"),
         [](QPainter& p, const Ink& i) {
             bar(p, QRectF(5, 4, 14, 3), i.line);
             bar(p, QRectF(10.5, 4, 3, 16), i.line);
         }},
        {QStringLiteral("LowerThird"),
         [](QPainter& p, const Ink& i) {
             p.setPen(QPen(i.line, 1.2));
             p.setBrush(Qt::NoBrush);
             p.drawRect(QRectF(2.5, 4.5, 19, 15));
             bar(p, QRectF(4, 13, 13, 4), i.accent);
             bar(p, QRectF(4, 13, 2, 4), i.fill);
         }},
        {QStringLiteral("Ticker"),
         [](QPainter& p, const Ink& i) {
             bar(p, QRectF(2, 9, 20, 7), i.accent);
             p.setPen(QPen(i.fill, 1.5));
             p.drawLine(QPointF(6, 12.5), QPointF(17, 12.5));
             p.drawLine(QPointF(6, 12.5), QPointF(9, 10.5));
             p.drawLine(QPointF(6, 12.5), QPointF(9, 14.5));
         }},
        {QStringLiteral("Image"),
         [](QPainter& p, const Ink& i) {
             landscape(p, i, QRectF(3.5, 4.5, 17, 15), 1.5,
                       QPolygonF({QPointF(5, 18), QPointF(10, 11), QPointF(14, 15), QPointF(16, 13), QPointF(19, 18)}),
                       QPointF(15.5, 8.5), 1.8, QColor(240, 200, 80));
         }},
        {QStringLiteral("Box"),
         [](QPainter& p, const Ink& i) {
             p.setPen(QPen(i.line, 1.5));
             p.setBrush(i.accent);
             p.drawRoundedRect(QRectF(4.5, 6.5, 15, 11), 1.5, 1.5);
         }},
        {QStringLiteral("Clock"),
         [](QPainter& p, const Ink& i) {
             p.setPen(QPen(i.line, 1.5));
             p.setBrush(Qt::NoBrush);
             p.drawEllipse(QPointF(12, 12), 8, 8);
             p.setPen(QPen(i.accent, 2, Qt::SolidLine, Qt::RoundCap));
             p.drawLine(QPointF(12, 12), QPointF(12, 6.5));
             p.drawLine(QPointF(12, 12), QPointF(16, 14));
         }},
    };
    return table;
}

}  // namespace

QString ToolbarArtwork::imageNameForToolbarItem(const QString& name)
{
    QString stripped = name;
    stripped.remove(QLatin1Char(' ')).remove(QLatin1Char('/'));
    return QStringLiteral("imageOfToolbar") + stripped;
}

QIcon ToolbarArtwork::toolbarImageWithName(const QString& name)
{
    const QString key = imageNameForToolbarItem(name).mid(int(qstrlen("imageOfToolbar")));
    const auto found = drawings().find(key);
    return found == drawings().end() ? QIcon() : artworkIcon(found->second);
}

}  // namespace widgets
