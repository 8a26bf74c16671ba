#pragma once
// The wall clock of on-screen playback: an anchor taken when playing starts,
// from which the step due at any moment follows. The steps are never
// accumulated from timer ticks, so a late tick makes the picture skip a
// step (counted as dropped) instead of making the template run slow.

#include <QtGlobal>

#include <functional>

namespace playout {

class PlaybackClock {
public:
    // Monotonic nanoseconds; the default reads the steady clock.
    using Now = std::function<qint64()>;

    explicit PlaybackClock(Now now = {});

    // Step 0 is due now; `stepsPerSecond` steps follow each second.
    void start(double stepsPerSecond);
    // The newest step whose time has come.
    qint64 dueStep() const;
    // Nanoseconds from now until `step` is due (0 when it already is).
    qint64 nanosecondsUntil(qint64 step) const;

    // Records the step put on screen. The steps passed over since the one
    // shown before count as dropped.
    void shown(qint64 step);
    qint64 lastShown() const { return lastShown_; }
    qint64 shownCount() const { return shownCount_; }
    qint64 dropped() const { return dropped_; }

private:
    Now now_;
    qint64 anchor_ = 0;
    double stepsPerSecond_ = 25;
    qint64 lastShown_ = -1;
    qint64 shownCount_ = 0;
    qint64 dropped_ = 0;
};

}  // namespace playout
