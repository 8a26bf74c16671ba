#include "runtime/TargetPainter.h"

namespace runtime {

QPainter* TargetPainter::on(QImage& image)
{
    // Shared pixels are someone else's picture now: let go of them before
    // the image copies them, then paint on the copy.
    if (!image.isDetached()) end();
    // A new cache key, as a newly begun painter would give the pixels, so
    // that caches keyed by it do not go stale.
    image.detach();
    if (painter_.isActive() && paints(image)) return &painter_;
    end();
    if (image.isNull()) return nullptr;
    canvas_ = QImage(image.bits(), image.width(), image.height(), image.bytesPerLine(), image.format());
    if (!painter_.begin(&canvas_)) return nullptr;
    painter_.setPen(Qt::NoPen);
    brushColor_ = QColor();  // begin() reset the brush
    return &painter_;
}

void TargetPainter::end()
{
    if (painter_.isActive()) painter_.end();
    canvas_ = QImage();
}

bool TargetPainter::paints(const QImage& image) const
{
    return image.constBits() == canvas_.constBits() && image.size() == canvas_.size() &&
           image.bytesPerLine() == canvas_.bytesPerLine() && image.format() == canvas_.format();
}

void TargetPainter::setBrushColor(const QColor& color)
{
    if (brushColor_.isValid() && color == brushColor_) return;
    painter_.setBrush(color);
    brushColor_ = color;
}

}  // namespace runtime
