#include "canvas/CanvasLayers.h"

#include "canvas/CanvasHitRules.h"
#include "canvas/CanvasSnapping.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "widgets/TwoToneOverlay.h"

#include <QPainter>

#include <cmath>

namespace canvas {

namespace {
// Pixels of the largest chessboard kept scaled for the screen (16 MB).
constexpr qint64 kLargestCachedChessboard = 4096LL * 1024;
}  // namespace

QImage DrawingAreaLayer::chessBoardPatternForWidth(int pixelWidth, int pixelHeight)
{
    QImage image(std::max(pixelWidth, 1), std::max(pixelHeight, 1), QImage::Format_RGB32);
    image.fill(chessboardColor1());
    const int rows = pixelWidth / 64;
    if (rows <= 0) return image;
    const double side = double(pixelHeight) / rows;
    QPainter painter(&image);
    painter.setPen(Qt::NoPen);
    painter.setBrush(chessboardColor2());
    auto column = [&](double x, int parity) {
        for (int row = parity; row < rows; row += 2)
            painter.drawRect(QRectF(x, pixelHeight - side * (row + 1), side, side));
    };
    // Columns run outwards from the middle, so the pattern is centred.
    int parity = 0;
    for (double x = pixelWidth / 2.0; x < pixelWidth; x += side, parity ^= 1) column(x, parity);
    parity = 0;
    for (double x = pixelWidth / 2.0 - side; x > -side; x -= side) {
        parity ^= 1;
        column(x, parity);
    }
    return image;
}

void DrawingAreaLayer::paint(QPainter& painter, const CanvasGeometry& geometry, const model::Composition& composition)
{
    const QRectF area = geometry.drawingAreaRect();
    painter.save();
    // A soft shadow down and to the right lifts the page off the backdrop.
    // Only its strips beside the page are drawn: the page covers the rest,
    // and blending the whole page area three times costs more than the page.
    painter.setPen(Qt::NoPen);
    for (int i = 3; i >= 1; --i) {
        const QRectF shadow = area.translated(i, i).adjusted(-1, -1, 1, 1);
        painter.setBrush(QColor(0, 0, 0, 40 + 20 * (3 - i)));
        painter.drawRect(QRectF(area.right(), shadow.top(), shadow.right() - area.right(), shadow.height()));
        painter.drawRect(QRectF(shadow.left(), area.bottom(), area.right() - shadow.left(), shadow.bottom() - area.bottom()));
    }

    int mode = composition.backgroundMode();
    if (mode < 0 || mode > 2) mode = lastMode_;
    lastMode_ = mode;
    if (mode == model::kBackgroundColor) {
        const QColor color = composition.backgroundColor();
        painter.fillRect(area, color.isValid() ? color : QColor(Qt::white));
    } else if (mode == model::kBackgroundImage && !composition.backgroundImage().isNull()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(area, composition.backgroundImage());
    } else {
        const QSize size = composition.size().toSize();
        if (chessboard_.size() != size) {
            chessboard_ = chessBoardPatternForWidth(size.width(), size.height());
            shownChessboard_ = QImage();
        }
        // Scaled once per zoom rather than on every repaint, as long as the
        // scaled picture stays small; zoomed far in, only the exposed part
        // is scaled, on each repaint, instead of gigabytes once.
        const QSize shown = (area.size() * painter.device()->devicePixelRatioF()).toSize();
        if (qint64(shown.width()) * shown.height() > kLargestCachedChessboard) {
            shownChessboard_ = QImage();
            painter.drawImage(area, chessboard_);
        } else {
            if (shownChessboard_.size() != shown) shownChessboard_ = chessboard_.scaled(shown);
            painter.drawImage(area, shownChessboard_);
        }
    }
    painter.setPen(QPen(QColor(128, 128, 128, 128), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(area.adjusted(-0.5, -0.5, 0.5, 0.5));
    painter.restore();
}

QRectF SafeAreasLayer::niceDrawingRectFromRect(const QRectF& rect)
{
    return QRectF(rect.toAlignedRect()).translated(0.5, 0.5);
}

QRectF SafeAreasLayer::actionSafeRect(const CanvasGeometry& g)
{
    const QRectF area = g.drawingAreaRect();
    const double w = area.width(), h = area.height();
    return QRectF(area.left() + 0.0175 * w, area.top() + 0.0175 * h, 0.965 * w, 0.965 * h);
}

QRectF SafeAreasLayer::titleSafeRect(const CanvasGeometry& g)
{
    const QRectF area = g.drawingAreaRect();
    const double w = area.width(), h = area.height();
    return QRectF(area.left() + 0.05 * w, area.top() + 0.025 * h, 0.9 * w, 0.95 * h);
}

void SafeAreasLayer::paint(QPainter& painter, const CanvasGeometry& geometry, bool showsSafeZones,
                           const std::vector<Guide>& guides) const
{
    painter.save();
    painter.setBrush(Qt::NoBrush);
    if (showsSafeZones) {
        painter.setPen(QPen(safeAreaColor(), 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(niceDrawingRectFromRect(actionSafeRect(geometry)));
        painter.setPen(QPen(Qt::red, 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(niceDrawingRectFromRect(titleSafeRect(geometry)));
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(guideColor(), 1));
    const QSizeF view = geometry.viewSize();
    for (const Guide& guide : guides) {
        if (guide.horizontal) {
            const double y = std::round(geometry.viewPointFromComposition(QPointF(0, guide.position)).y());
            painter.drawLine(QPointF(0, y), QPointF(view.width(), y));
        } else {
            const double x = std::round(geometry.viewPointFromComposition(QPointF(guide.position, 0)).x());
            painter.drawLine(QPointF(x, 0), QPointF(x, view.height()));
        }
    }
    painter.restore();
}

bool RubberBandLayer::setCurrentRect(const QRectF& rect)
{
    if (rect == currentRect_) return false;
    currentRect_ = rect;
    return true;
}

void RubberBandLayer::paint(QPainter& painter) const
{
    if (currentRect_.isEmpty()) return;
    painter.save();
    // A faint fill says which area is being swept, whatever lies under it.
    QColor fill = color();
    fill.setAlpha(40);
    painter.fillRect(currentRect_, fill);
    painter.restore();
    const QRectF r = SafeAreasLayer::niceDrawingRectFromRect(currentRect_);
    widgets::drawTwoToneOutline(painter, QPolygonF(r), widgets::marqueeTone(), true);
}

void SelectionLayer::paint(QPainter& painter, const CanvasGeometry& geometry,
                           const std::vector<model::QuartzComponent*>& components) const
{
    const widgets::TwoTone tone = widgets::selectionTone();
    for (const model::QuartzComponent* component : components) {
        if (!component->selected() || !component->visible() || !component->visibleInCompositionEditor()) continue;
        const QRectF hit = component->handleRects()[0];
        const double rotation = component->zRotation();
        QPolygonF outline;
        for (const QPointF& corner : rotatedFrameCorners(hit, rotation))
            outline << geometry.viewPointFromComposition(corner);
        widgets::drawTwoToneOutline(painter, outline, tone);
        for (int handle = 1; handle <= 8; ++handle) {
            const QPointF anchor = rotatedPoint(handleAnchor(hit, handle), hit.center(), rotation);
            widgets::drawTwoToneHandle(painter, geometry.viewPointFromComposition(anchor), kHandleScreenSize, tone);
        }
    }
}

}  // namespace canvas
