#pragma once
// Counts heap allocations (malloc and everything built on it, Qt's and
// ours) so that benchmarks can report allocations per iteration.

#include <cstdint>

namespace bench {

std::uint64_t allocationCount();

}  // namespace bench
