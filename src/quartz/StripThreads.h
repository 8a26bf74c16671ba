#pragma once
// Strips of one image compressed or decompressed on every core: the calling
// thread and helpers take strip numbers from a shared counter until none are
// left. Small images stay on the calling thread, where starting a thread
// would cost more than it saves.

#include <QtGlobal>

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace quartz::tiff::detail {

// Below this many raw pixel bytes a second thread does not pay for itself.
constexpr qint64 kBytesWorthAThread = qint64(2) << 20;

inline int threadsFor(qint64 rawBytes, int strips)
{
    const int cores = int(std::clamp(std::thread::hardware_concurrency(), 1u, 8u));
    const qint64 byBytes = std::max<qint64>(1, rawBytes / kBytesWorthAThread);
    return int(std::max<qint64>(1, std::min<qint64>({qint64(cores), byBytes, qint64(strips)})));
}

// Calls work(thread) on `threads` threads, thread 0 being the caller, and
// waits for all. Each work function loops over nextStrip() itself, so fewer
// threads than asked (the system refusing one) only makes it slower.
template <class Work> void runOnThreads(int threads, Work work)
{
    std::vector<std::thread> helpers;
    helpers.reserve(std::size_t(std::max(0, threads - 1)));
    for (int t = 1; t < threads; ++t) {
        try {
            helpers.emplace_back(work, t);
        } catch (const std::system_error&) {
            break;
        }
    }
    work(0);
    for (std::thread& helper : helpers) helper.join();
}

class StripCounter {
public:
    explicit StripCounter(int strips) : strips_(strips) {}
    // The next strip to do, or -1 when all are taken or one failed.
    int next()
    {
        if (failed_.load(std::memory_order_relaxed)) return -1;
        const int strip = next_.fetch_add(1, std::memory_order_relaxed);
        return strip < strips_ ? strip : -1;
    }
    void fail() { failed_.store(true, std::memory_order_relaxed); }
    bool failed() const { return failed_.load(std::memory_order_relaxed); }

private:
    std::atomic<int> next_{0};
    std::atomic<bool> failed_{false};
    const int strips_;
};

}  // namespace quartz::tiff::detail
