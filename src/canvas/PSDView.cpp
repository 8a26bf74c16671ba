#include "canvas/PSDView.h"

#include <QPainter>

#include <algorithm>

namespace canvas {

PSDView::PSDView(QWidget* parent) : QWidget(parent), watch_([this](int, bool) { update(); })
{
    setObjectName(QStringLiteral("PSDView"));
}

void PSDView::setImporter(const std::shared_ptr<psd::PSDLayerImporter>& importer)
{
    watch_.watch(importer);
    update();
}

float PSDView::drawingScale() const
{
    const auto importer = watch_.importer();
    if (!importer) return 0.0f;
    const QSizeF size = importer->PSDImageSize();
    if (size.width() <= 0 || size.height() <= 0) return 0.0f;
    // Single precision on purpose: the factor is for the screen only.
    return std::min(float(width()) / float(size.width()), float(height()) / float(size.height()));
}

void PSDView::paintEvent(QPaintEvent*)
{
    const auto importer = watch_.importer();
    const float scale = drawingScale();
    if (!importer || scale <= 0.0f) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    // Layer origins are canvas coordinates: lower-left corner, y up, the way
    // the components will be placed. Mirroring them about the view's bottom
    // edge shows the picture the right way up and anchors the document at
    // the lower-left corner, the corner the canvas measures from too; room
    // left over by the aspect ratio stays on the right or at the top.
    const double viewHeight = height();
    const auto& layers = importer->layers();
    for (auto it = layers.rbegin(); it != layers.rend(); ++it) {  // bottom layer first
        if (!it->visible() || it->image().isNull()) continue;
        const QSizeF size = QSizeF(it->image().size()) * scale;
        const QPointF origin = it->origin() * scale;
        const QRectF target(origin.x(), viewHeight - origin.y() - size.height(), size.width(), size.height());
        painter.setOpacity(it->opacity());
        painter.drawImage(target, it->image());
    }
}

}  // namespace canvas
