#pragma once
// Counts heap allocations, for the tests and benchmarks that bound them (malloc and its siblings, from every library in
// the process) and memory mappings made through mmap by libraries (Qt's
// JavaScript engine maps its pages directly). Not available under the
// address sanitizer, which owns those functions itself.

#include <cstdint>

namespace counting {

bool allocationCountingAvailable();
std::uint64_t heapAllocationCount();
std::uint64_t mappingCount();

}  // namespace counting
