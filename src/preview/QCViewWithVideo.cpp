#include "preview/QCViewWithVideo.h"

#include <QLoggingCategory>
#include <QPaintEvent>
#include <QPainter>

namespace preview {

Q_LOGGING_CATEGORY(lcPreviewView, "velloran.preview")

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
    if (!playback_.isRunning()) return;
    playback_.stop();
    const playout::RealTimePlayback::Statistics& s = playback_.statistics();
    if (s.steps > 0)
        qCInfo(lcPreviewView).noquote() << QStringLiteral("played %1 steps, %2 dropped, %3 ms a step on average, %4 ms at most")
                                               .arg(s.steps)
                                               .arg(s.dropped)
                                               .arg(s.totalMs / double(s.steps), 0, 'f', 2)
                                               .arg(s.maxMs, 0, 'f', 2);
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
