#include "runtime/patches/ScriptWatchdog.h"

namespace runtime {

ScriptWatchdog::~ScriptWatchdog()
{
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
}

ScriptWatchdog::Guard::Guard(ScriptWatchdog& watchdog, QJSEngine& engine, int milliseconds) : watchdog_(watchdog)
{
    std::lock_guard lock(watchdog_.mutex_);
    if (!watchdog_.thread_.joinable()) watchdog_.thread_ = std::thread([&w = watchdog_] { w.run(); });
    watchdog_.engine_ = &engine;
    watchdog_.deadline_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    ++watchdog_.generation_;
    watchdog_.wake_.notify_all();
}

ScriptWatchdog::Guard::~Guard()
{
    std::lock_guard lock(watchdog_.mutex_);
    watchdog_.engine_ = nullptr;
    ++watchdog_.generation_;
    watchdog_.wake_.notify_all();
}

void ScriptWatchdog::run()
{
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        if (!engine_) {
            wake_.wait(lock, [this] { return stopping_ || engine_; });
            continue;
        }
        const std::uint64_t armed = generation_;
        if (wake_.wait_until(lock, deadline_, [&] { return stopping_ || generation_ != armed; })) continue;
        // Still the same call, past its deadline: stop the script.
        if (engine_) engine_->setInterrupted(true);
        wake_.wait(lock, [&] { return stopping_ || generation_ != armed; });
    }
}

}  // namespace runtime
