#pragma once
// The passive layers of the canvas, painted in this order around the
// components: the drawing area (its shadow, border and background), then,
// over the components, the safe areas and guides, then the rubber band.

#include "canvas/CanvasGeometry.h"

#include <QColor>
#include <QImage>
#include <QRectF>

#include <vector>

class QPainter;

namespace model {
class Composition;
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

class SafeAreasLayer {
public:
    static QColor guideColor() { return QColor(0, 192, 255); }
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
