#include "canvas/CanvasReadout.h"

#include <QCoreApplication>
#include <QStringList>

#include <cmath>

namespace canvas {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("CanvasReadout", text); }

QString signedCoordinate(double value)
{
    const QString text = formatCoordinate(value);
    return value > 0 && text != QLatin1String("0") ? QLatin1Char('+') + text : text;
}

}  // namespace

QString formatCoordinate(double value)
{
    const double rounded = std::round(value * 10.0) / 10.0;
    // No "-0" for a value that rounds to nothing.
    if (rounded == 0) return QStringLiteral("0");
    if (rounded == std::round(rounded)) return QString::number(qint64(std::llround(rounded)));
    return QString::number(rounded, 'f', 1);
}

QString formatReadout(const CanvasReadout& r)
{
    QStringList parts;
    if (r.pointer) parts << tr("X %1  Y %2").arg(formatCoordinate(r.pointer->x()), formatCoordinate(r.pointer->y()));
    if (r.selection)
        parts << tr("Selection X %1  Y %2  W %3  H %4")
                     .arg(formatCoordinate(r.selection->x()), formatCoordinate(r.selection->y()),
                          formatCoordinate(r.selection->width()), formatCoordinate(r.selection->height()));
    switch (r.drag) {
    case CanvasReadout::Drag::Move:
        parts << tr("Move ΔX %1  ΔY %2").arg(signedCoordinate(r.delta.x()), signedCoordinate(r.delta.y()));
        break;
    case CanvasReadout::Drag::Resize:
        parts << tr("Resize ΔW %1  ΔH %2").arg(signedCoordinate(r.delta.x()), signedCoordinate(r.delta.y()));
        break;
    case CanvasReadout::Drag::Guide:
        if (r.guide) parts << tr("Guide %1").arg(guideLabelText(*r.guide, false));
        break;
    case CanvasReadout::Drag::None: break;
    }
    return parts.join(QStringLiteral("     "));
}

QString guideLabelText(const Guide& guide, bool removing)
{
    if (removing) return tr("Release to remove");
    return (guide.horizontal ? QStringLiteral("Y ") : QStringLiteral("X ")) + formatCoordinate(guide.position);
}

}  // namespace canvas
