#include "psd/TaskRunner.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace psd {

int coreCount() { return std::max(1, int(std::thread::hardware_concurrency())); }

void runTasks(int count, int threads, const std::function<bool(int task)>& work)
{
    if (count <= 0) return;
    const int workers = std::clamp(threads > 0 ? threads : coreCount(), 1, count);
    std::atomic<int> next{0};
    std::atomic<bool> stopped{false};
    auto drain = [&] {
        while (!stopped.load(std::memory_order_relaxed)) {
            const int task = next.fetch_add(1, std::memory_order_relaxed);
            if (task >= count) return;
            if (!work(task)) stopped.store(true, std::memory_order_relaxed);
        }
    };
    std::vector<std::thread> helpers;
    helpers.reserve(size_t(workers - 1));
    for (int i = 1; i < workers; ++i) helpers.emplace_back(drain);
    drain();
    for (std::thread& t : helpers) t.join();
}

}  // namespace psd
