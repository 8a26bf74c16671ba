#include "runtime/patches/ScriptWatchdog.h"

#include <chrono>

namespace runtime {

namespace {
using namespace std::chrono_literals;
// How often an awake watchdog looks at the deadline, and how long it stays
// awake without calls before it sleeps until the next one.
constexpr auto kPollInterval = 5ms;
constexpr std::int64_t kStayAwakeNs = 1'000'000'000;
}  // namespace

std::int64_t ScriptWatchdog::nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

ScriptWatchdog::~ScriptWatchdog()
{
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wakeUp_.notify_all();
    if (thread_.joinable()) thread_.join();
}

ScriptWatchdog::Guard::Guard(ScriptWatchdog& watchdog, int milliseconds) : watchdog_(watchdog)
{
    std::int64_t idle = kIdle;
    outermost_ = watchdog_.deadline_.compare_exchange_strong(idle, nowNs() + std::int64_t(milliseconds) * 1'000'000);
    if (!outermost_) return;
    // Paired with run(): either this sees the thread asleep and wakes it, or
    // the thread, going to sleep, sees this deadline and stays awake.
    if (watchdog_.sleeping_.load()) watchdog_.wake();
}

ScriptWatchdog::Guard::~Guard()
{
    if (!outermost_) return;
    if (watchdog_.deadline_.exchange(kIdle) == kFired) {
        // The watchdog fired: wait until it has finished interrupting, so
        // that the caller sees the interruption and can clear it.
        std::lock_guard lock(watchdog_.mutex_);
    }
}

void ScriptWatchdog::wake()
{
    std::lock_guard lock(mutex_);
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
    wakeRequested_ = true;
    wakeUp_.notify_all();
}

void ScriptWatchdog::run()
{
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        sleeping_.store(true);
        wakeUp_.wait(lock, [this] { return stopping_ || wakeRequested_ || deadline_.load() != kIdle; });
        wakeRequested_ = false;
        sleeping_.store(false);
        std::int64_t lastBusy = nowNs();
        while (!stopping_) {
            if (wakeUp_.wait_for(lock, kPollInterval, [this] { return stopping_; })) break;
            const std::int64_t now = nowNs();
            std::int64_t deadline = deadline_.load();
            if (deadline == kIdle) {
                if (now - lastBusy > kStayAwakeNs) break;
                continue;
            }
            lastBusy = now;
            // Fire only if the same call is still running: a call that has
            // just ended (or a new one) changed the deadline.
            if (deadline > 0 && now > deadline && deadline_.compare_exchange_strong(deadline, kFired))
                engine_.setInterrupted(true);
        }
    }
}

}  // namespace runtime
