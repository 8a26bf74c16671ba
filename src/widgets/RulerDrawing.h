#pragma once
// Drawing a ruler: the canvas's pixel rulers and the timeline's time ruler
// share the tick layout and the look; only the labels and the mapping from
// values to ruler positions differ.

#include <QColor>
#include <QPainter>
#include <QString>

#include <functional>

namespace widgets {

struct RulerScale {
    Qt::Orientation orientation = Qt::Horizontal;
    double thickness = 18;       // across the ruler, in points
    double first = 0, last = 0;  // the values at the two ends of the visible ruler
    double pixelsPerUnit = 1;    // the zoom
    double majorStep = 10;       // between labelled ticks, in units
    double minorStep = 1;        // between small ticks, in units
    std::function<double(double value)> position;  // ruler coordinate of a value
    std::function<QString(double value)> label;    // the text at a labelled tick
};

// The distance between labelled ticks: 1, 2 or 5 times a power of ten of
// `base` units, at least `minimumSpacing` points apart at the zoom.
double majorTickStep(double pixelsPerUnit, double minimumSpacing = 60.0, double base = 1.0);
// Ten minor ticks to a major one when there is room for them, else five.
double minorTickStep(double majorStep, double pixelsPerUnit);

// Ticks, labels and the edge line, in the widget's palette colours.
void drawRulerTicks(QPainter& painter, const RulerScale& scale, const QColor& ink, const QColor& edge);

}  // namespace widgets
