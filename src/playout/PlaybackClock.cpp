#include "playout/PlaybackClock.h"

#include <chrono>
#include <cmath>

namespace playout {

namespace {
qint64 steadyNanoseconds()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
}  // namespace

PlaybackClock::PlaybackClock(Now now) : now_(now ? std::move(now) : Now(&steadyNanoseconds)) {}

void PlaybackClock::start(double stepsPerSecond)
{
    stepsPerSecond_ = stepsPerSecond > 0 ? stepsPerSecond : 25;
    anchor_ = now_();
    lastShown_ = -1;
    shownCount_ = 0;
    dropped_ = 0;
}

qint64 PlaybackClock::dueStep() const
{
    const double elapsed = double(now_() - anchor_) * 1e-9;
    return elapsed <= 0 ? 0 : qint64(std::floor(elapsed * stepsPerSecond_));
}

qint64 PlaybackClock::nanosecondsUntil(qint64 step) const
{
    const qint64 due = anchor_ + qint64(std::ceil(double(step) / stepsPerSecond_ * 1e9));
    const qint64 left = due - now_();
    return left > 0 ? left : 0;
}

void PlaybackClock::shown(qint64 step)
{
    if (step <= lastShown_) return;
    dropped_ += step - lastShown_ - 1;
    lastShown_ = step;
    ++shownCount_;
}

}  // namespace playout
