#include "preview/QCViewWithVideo.h"

#include <QPaintEvent>
#include <QPainter>

namespace preview {

QCViewWithVideo::QCViewWithVideo(QWidget* parent) : QWidget(parent), playback_(player_)
{
    // Every pixel is painted each time; nothing behind needs erasing.
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::NoFocus);
    connect(&playback_, &playout::RealTimePlayback::frameReady, this, qOverload<>(&QWidget::update));
}

QCViewWithVideo::~QCViewWithVideo()
{
    playback_.stop();
}

void QCViewWithVideo::loadComposition(playout::PlayoutTemplate played)
{
    stopRendering();
    player_.load(std::move(played));
    updateGeometry();
    update();
}

void QCViewWithVideo::unloadComposition()
{
    stopRendering();
    player_.unload();
    videoInputKeys_.clear();
    update();
}

void QCViewWithVideo::startRendering()
{
    videoInputKeys_ = player_.videoInputKeys();
    player_.reload();
    playback_.start();
}

void QCViewWithVideo::stopRendering()
{
    playback_.stop();
}

QSize QCViewWithVideo::sizeHint() const
{
    return player_.isLoaded() ? player_.frameSize() : QSize(480, 270);
}

void QCViewWithVideo::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), Qt::black);
    const QImage& frame = player_.frame();
    if (frame.isNull()) return;
    QSize fitted = frame.size();
    if (fitted.width() > width() || fitted.height() > height()) fitted.scale(size(), Qt::KeepAspectRatio);
    const QRect target(QPoint((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted);
    // Interlaced lines must not blur into one another at full size.
    if (fitted != frame.size()) painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, frame);
}

}  // namespace preview
