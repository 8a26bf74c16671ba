#pragma once
// The view of the preview window: paints the player's pictures, nothing
// else. It owns the player and the wall clock that drives it; starting it
// plays the loaded template from its beginning. Pictures larger than the
// view are scaled down to fit, keeping their shape.

#include "playout/Player.h"
#include "playout/RealTimePlayback.h"

#include <QStringList>
#include <QWidget>

namespace preview {

class QCViewWithVideo : public QWidget {
    Q_OBJECT
public:
    explicit QCViewWithVideo(QWidget* parent = nullptr);
    ~QCViewWithVideo() override;

    playout::Player& player() { return player_; }
    const playout::Player& player() const { return player_; }
    playout::RealTimePlayback& playback() { return playback_; }

    // Stops, then loads; nothing plays until startRendering.
    void loadComposition(playout::PlayoutTemplate played);
    void unloadComposition();
    bool hasComposition() const { return player_.isLoaded(); }

    // Collects the video inputs, then plays from the beginning on the wall
    // clock.
    void startRendering();
    void stopRendering();
    bool isRendering() const { return playback_.isRunning(); }
    // Input keys of the loaded template that contain "videoInput", as of
    // the last start.
    const QStringList& videoInputKeys() const { return videoInputKeys_; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    playout::Player player_;
    playout::RealTimePlayback playback_;
    QStringList videoInputKeys_;
};

}  // namespace preview
