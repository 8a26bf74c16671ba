#pragma once
// Interrupts a QJSEngine that runs past a time limit. One waiting thread per
// watchdog; a Guard arms it for the duration of one script call.

#include <QJSEngine>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace runtime {

class ScriptWatchdog {
public:
    ScriptWatchdog() = default;
    ~ScriptWatchdog();
    ScriptWatchdog(const ScriptWatchdog&) = delete;
    ScriptWatchdog& operator=(const ScriptWatchdog&) = delete;

    class Guard {
    public:
        Guard(ScriptWatchdog& watchdog, QJSEngine& engine, int milliseconds);
        ~Guard();

    private:
        ScriptWatchdog& watchdog_;
    };

private:
    void run();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::thread thread_;
    QJSEngine* engine_ = nullptr;  // armed while not null
    std::chrono::steady_clock::time_point deadline_;
    std::uint64_t generation_ = 0;
    bool stopping_ = false;
};

}  // namespace runtime
