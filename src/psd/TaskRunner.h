#pragma once
// Independent pieces of work shared among the cores: tasks are handed out in
// increasing order to one thread per core, the calling thread among them.

#include <functional>

namespace psd {

// The cores the system reports, at least one.
int coreCount();

// Runs work(i) for every i in [0, count) on up to `threads` threads
// (threads <= 0: one per core) and returns when all have finished. Once a
// task returns false no further task is started and those running finish;
// since tasks start in increasing order, every task below a failed one has
// run, which keeps "the first failure" the same however the threads raced.
void runTasks(int count, int threads, const std::function<bool(int task)>& work);

}  // namespace psd
