#include "playout/RealTimePlayback.h"

#include "playout/Player.h"

#include <QElapsedTimer>

#include <algorithm>

namespace playout {

RealTimePlayback::RealTimePlayback(Player& player, PlaybackClock::Now now, QObject* parent)
    : QObject(parent), player_(player), clock_(std::move(now))
{
    timer_.setSingleShot(true);
    // A coarse timer may fire up to 5 % late, a whole field at 50 Hz.
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &RealTimePlayback::tick);
}

void RealTimePlayback::start()
{
    running_ = true;
    statistics_ = {};
    clock_.start(player_.timing().stepsPerSecond());
    tick();
}

void RealTimePlayback::stop()
{
    running_ = false;
    timer_.stop();
}

void RealTimePlayback::tick()
{
    if (!running_ || !player_.isLoaded()) return;
    const qint64 due = clock_.dueStep();
    if (due > clock_.lastShown()) {
        QElapsedTimer took;
        took.start();
        player_.renderStep(due);
        const double ms = double(took.nsecsElapsed()) * 1e-6;
        clock_.shown(due);
        statistics_.steps = clock_.shownCount();
        statistics_.dropped = clock_.dropped();
        statistics_.totalMs += ms;
        statistics_.maxMs = std::max(statistics_.maxMs, ms);
        Q_EMIT frameReady();
    }
    scheduleNext();
}

void RealTimePlayback::scheduleNext()
{
    if (!running_) return;
    // Wake a little after the step is due, never before: a tick a hair
    // early would find nothing to do and wait a whole step more.
    const qint64 ns = clock_.nanosecondsUntil(clock_.lastShown() + 1);
    timer_.start(int((ns + 999'999) / 1'000'000));
}

}  // namespace playout
