#include "widgets/ArtworkIcon.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

namespace widgets {

namespace {

class ArtworkIconEngine : public QIconEngine {
public:
    explicit ArtworkIconEngine(ArtworkDrawing drawing) : drawing_(std::move(drawing)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        // Square and centred, so a wide button does not stretch the drawing.
        const int side = std::min(rect.width(), rect.height());
        if (side <= 0) return;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.x() + (rect.width() - side) / 2.0, rect.y() + (rect.height() - side) / 2.0);
        painter->scale(side / double(kArtworkGrid), side / double(kArtworkGrid));
        drawing_(*painter, artworkInk(mode));
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1.0);
    }

    // QIcon hands over the size in device pixels, already multiplied by the
    // scale.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        if (size.isEmpty()) return {};
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), pixmap.size()), mode, state);
        painter.end();
        pixmap.setDevicePixelRatio(scale);
        return pixmap;
    }

    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override { return size; }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override
    {
        return {QSize(16, 16), QSize(24, 24), QSize(32, 32), QSize(48, 48), QSize(64, 64)};
    }
    QString key() const override { return QStringLiteral("VelloranArtwork"); }
    QIconEngine* clone() const override { return new ArtworkIconEngine(drawing_); }
    bool isNull() override { return !drawing_; }

private:
    ArtworkDrawing drawing_;
};

}  // namespace

ArtworkInk artworkInk(QIcon::Mode mode)
{
    const QPalette palette = QGuiApplication::palette();
    const QPalette::ColorGroup group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    ArtworkInk ink{palette.color(group, QPalette::WindowText), palette.color(group, QPalette::WindowText),
                   palette.color(group, QPalette::Highlight)};
    ink.fill.setAlphaF(0.55f);
    if (mode == QIcon::Disabled) {
        ink.line.setAlphaF(0.35f);
        ink.fill.setAlphaF(0.2f);
        ink.accent.setAlphaF(0.3f);
    }
    return ink;
}

QIcon artworkIcon(ArtworkDrawing drawing)
{
    if (!drawing) return {};
    return QIcon(new ArtworkIconEngine(std::move(drawing)));
}

}  // namespace widgets
