#pragma once
// Interrupts a QJSEngine that runs past a time limit. A Guard arms it for
// the duration of one script call.
//
// Arming costs two atomic stores: the watching thread is woken only when it
// has gone to sleep after a second without calls, and otherwise looks at
// the deadline every few milliseconds. A composition that calls its scripts
// thousands of times a frame (inside iterators) then pays no thread
// hand-over per call.

#include <QJSEngine>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace runtime {

class ScriptWatchdog {
public:
    explicit ScriptWatchdog(QJSEngine& engine) : engine_(engine) {}
    ~ScriptWatchdog();
    ScriptWatchdog(const ScriptWatchdog&) = delete;
    ScriptWatchdog& operator=(const ScriptWatchdog&) = delete;

    // Calls may nest (a script calling back into C++ that calls a script):
    // the outermost call's deadline holds.
    class Guard {
    public:
        Guard(ScriptWatchdog& watchdog, int milliseconds);
        ~Guard();
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        ScriptWatchdog& watchdog_;
        bool outermost_ = false;
    };

private:
    static std::int64_t nowNs();
    void run();
    void wake();

    static constexpr std::int64_t kIdle = 0;
    static constexpr std::int64_t kFired = -1;

    QJSEngine& engine_;
    std::atomic<std::int64_t> deadline_{kIdle};  // steady-clock ns, kIdle or kFired
    std::atomic<bool> sleeping_{true};
    std::mutex mutex_;  // guards the thread's start, its sleep and a firing
    std::condition_variable wakeUp_;
    std::thread thread_;
    bool wakeRequested_ = false;
    bool stopping_ = false;
};

}  // namespace runtime
