#include "inspector/ColourWell.h"

#include "inspector/AttributeEditor.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QPainter>
#include <QStyleOptionToolButton>

namespace inspector {

namespace {

void paintFrame(QPainter& p, const QRect& r, const QPalette& palette)
{
    p.setPen(QPen(palette.color(QPalette::Mid), 1));
    p.setBrush(Qt::NoBrush);
    p.drawRect(r.adjusted(0, 0, -1, -1));
}

void paintDash(QPainter& p, const QRect& r, const QPalette& palette)
{
    p.setPen(QPen(palette.color(QPalette::Text), 2));
    p.drawLine(QPointF(r.center().x() - 5, r.center().y()), QPointF(r.center().x() + 5, r.center().y()));
}

void paintChecks(QPainter& p, const QRect& r)
{
    p.fillRect(r, Qt::white);
    const int cell = 5;
    for (int y = r.top(); y < r.bottom(); y += cell)
        for (int x = r.left() + ((y - r.top()) / cell % 2) * cell; x < r.right(); x += 2 * cell)
            p.fillRect(QRect(x, y, cell, cell).intersected(r), QColor(204, 204, 204));
}

}  // namespace

ColourWell::ColourWell(QWidget* parent) : QToolButton(parent) { setObjectName(QStringLiteral("colourWell")); }

void ColourWell::setColour(const QColor& colour)
{
    colour_ = colour;
    setToolTip(colour.isValid() ? colour.name(QColor::HexArgb) : mixedToolTip());
    update();
}

QString ColourWell::mixedToolTip() { return mixedValuesPlaceholder(); }

void ColourWell::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    const QRect r = rect().adjusted(2, 2, -2, -2);
    if (colour_.isValid()) {
        paintChecks(p, r);
        p.fillRect(r, colour_);
    } else {
        p.fillRect(r, palette().color(QPalette::Base));
        paintDash(p, r, palette());
    }
    paintFrame(p, r, palette());
    if (hasFocus()) {
        p.setPen(QPen(palette().color(QPalette::Highlight), 1));
        p.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

ImageWell::ImageWell(QWidget* parent) : QToolButton(parent)
{
    setObjectName(QStringLiteral("imageWell"));
    setAcceptDrops(true);
}

void ImageWell::setImage(const QImage& image, bool mixed)
{
    mixed_ = mixed;
    // Scaled once here rather than on every paint.
    thumbnail_ = mixed || image.isNull() ? QImage()
                                         : image.scaled(sizeHint() * 2, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    setToolTip(mixed ? mixedValuesPlaceholder()
                     : image.isNull() ? QStringLiteral("No image")
                                      : QStringLiteral("%1 × %2").arg(image.width()).arg(image.height()));
    update();
}

void ImageWell::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    const QRect r = rect().adjusted(2, 2, -2, -2);
    p.fillRect(r, palette().color(QPalette::Base));
    if (mixed_) {
        paintDash(p, r, palette());
    } else if (!thumbnail_.isNull()) {
        QSize size = thumbnail_.size().scaled(r.size() - QSize(4, 4), Qt::KeepAspectRatio);
        QRect target(QPoint(0, 0), size);
        target.moveCenter(r.center());
        paintChecks(p, target);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.drawImage(target, thumbnail_);
    }
    paintFrame(p, r, palette());
}

void ImageWell::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls() && event->mimeData()->urls().first().isLocalFile()) event->acceptProposedAction();
}

void ImageWell::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty() || !urls.first().isLocalFile()) return;
    event->acceptProposedAction();
    Q_EMIT imageFileDropped(urls.first().toLocalFile());
}

}  // namespace inspector
