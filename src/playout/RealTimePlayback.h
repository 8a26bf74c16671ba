#pragma once
// Plays a player on the wall clock, as a screen shows it: each tick renders
// the step that is due now and then sleeps until the next one is. Runs on
// the thread of the player (the GUI thread for the preview).

#include "playout/PlaybackClock.h"

#include <QObject>
#include <QTimer>

namespace playout {

class Player;

class RealTimePlayback : public QObject {
    Q_OBJECT
public:
    struct Statistics {
        qint64 steps = 0;    // rendered
        qint64 dropped = 0;  // due but never rendered
        double totalMs = 0;  // rendering time of all steps
        double maxMs = 0;    // of the slowest step
    };

    explicit RealTimePlayback(Player& player, PlaybackClock::Now now = {}, QObject* parent = nullptr);

    // Step 0 of the player is due now.
    void start();
    void stop();
    bool isRunning() const { return running_; }
    const Statistics& statistics() const { return statistics_; }

Q_SIGNALS:
    // A new picture is in the player's frame().
    void frameReady();

private:
    void tick();
    void scheduleNext();

    Player& player_;
    PlaybackClock clock_;
    QTimer timer_;
    bool running_ = false;
    Statistics statistics_;
};

}  // namespace playout
