#pragma once
// A ruler beside the canvas, in composition pixels with the origin at the
// drawing area's lower-left corner (y counts upwards on the vertical
// ruler). A double click adds a guide: the vertical ruler makes a
// horizontal guide at the clicked height, the horizontal ruler a vertical
// guide at the clicked x.

#include "canvas/CanvasZoom.h"

#include <QPointer>
#include <QWidget>

namespace canvas {

class CompositionView;

class VLRulerView : public QWidget {
    Q_OBJECT
public:
    VLRulerView(Qt::Orientation orientation, QWidget* parent = nullptr);

    void setCompositionView(CompositionView* view);
    Qt::Orientation orientation() const { return orientation_; }

    // The composition coordinate under a point of the ruler.
    double compositionCoordinateAt(const QPointF& rulerPoint) const;
    // The distance between labelled ticks for a zoom: 1, 2 or 5 times a
    // power of ten, at least 60 points apart on screen.
    static double majorTickStep(double zoom);
    // The unit the ruler counts in for the view's zoom mode: the labels
    // always read composition pixels, whatever the zoom.
    RulerUnit rulerUnit() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QPointF viewPointAt(const QPointF& rulerPoint) const;

    Qt::Orientation orientation_;
    QPointer<CompositionView> view_;
};

}  // namespace canvas
