#pragma once
// The passive layers of the canvas, painted in this order around the
// components: the drawing area (its shadow, border and background), then,
// over the components, the selection, the safe areas and guides, then the
// rubber band. Overlays are drawn in widget coordinates at a fixed screen
// size, two-toned so they show on any picture.

#include "canvas/CanvasGeometry.h"

#include <QColor>
#include <QImage>
#include <QRectF>

#include <vector>

class QPainter;

namespace model {
class Composition;
class QuartzComponent;
}

namespace canvas {

struct Guide;

class DrawingAreaLayer {
public:
    static QColor chessboardColor1() { return QColor(0x9c, 0x9c, 0x9c); }
    static QColor chessboardColor2() { return QColor(0x74, 0x74, 0x74); }

    // The transparency pattern: 64-pixel-wide rows of squares, centred
    // horizontally. A width under 64 pixels gives no rows, only colour 1.
    static QImage chessBoardPatternForWidth(int pixelWidth, int pixelHeight);

    // Shadow, border and the background of the composition's mode:
    // 0 chessboard, 1 colour, 2 image; another mode keeps the last one.
    void paint(QPainter& painter, const CanvasGeometry& geometry, const model::Composition& composition);

private:
    int lastMode_ = 0;
    QImage chessboard_;       // at the composition's size
    QImage shownChessboard_;  // scaled to the drawing area on screen
};

class SelectionLayer {
public:
    // The outline of each selected, shown component's hit frame (turned
    // with the layer) and its eight handles as squares of a fixed screen size.
    void paint(QPainter& painter, const CanvasGeometry& geometry,
               const std::vector<model::QuartzComponent*>& components) const;
};

class SafeAreasLayer {
public:
    // The action-safe frame's colour; guides have their own, so the two
    // are never confused.
    static QColor safeAreaColor() { return QColor(0, 192, 255); }
    static QColor guideColor() { return QColor(255, 60, 200); }
    // A rectangle made integral and moved half a pixel so that one-pixel
    // lines fall on pixel centres.
    static QRectF niceDrawingRectFromRect(const QRectF& rect);
    // The two safe frames in widget coordinates: action safe (outer) and
    // title safe (inner: 5 % left and right, 2.5 % top and bottom).
    static QRectF actionSafeRect(const CanvasGeometry& geometry);
    static QRectF titleSafeRect(const CanvasGeometry& geometry);

    void paint(QPainter& painter, const CanvasGeometry& geometry, bool showsSafeZones,
               const std::vector<Guide>& guides) const;
};

class RubberBandLayer {
public:
    static QColor color() { return QColor(120, 190, 255); }
    QRectF currentRect() const { return currentRect_; }
    // True when the rectangle changed (and the band needs a repaint).
    bool setCurrentRect(const QRectF& rect);
    void paint(QPainter& painter) const;

private:
    QRectF currentRect_;
};

}  // namespace canvas
