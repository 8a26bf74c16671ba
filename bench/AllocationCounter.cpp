// The bench binary replaces malloc and its siblings with counting wrappers
// around glibc's own implementation; every library in the process (Qt's
// containers included) then goes through them.

#include "AllocationCounter.h"

#include <atomic>
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* pointer, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {
std::atomic<std::uint64_t> allocations{0};
void count() { allocations.fetch_add(1, std::memory_order_relaxed); }
}  // namespace

namespace bench {
std::uint64_t allocationCount() { return allocations.load(std::memory_order_relaxed); }
}  // namespace bench

extern "C" {

void* malloc(std::size_t size)
{
    count();
    return __libc_malloc(size);
}

void* calloc(std::size_t n, std::size_t size)
{
    count();
    return __libc_calloc(n, size);
}

void* realloc(void* pointer, std::size_t size)
{
    count();
    return __libc_realloc(pointer, size);
}

void* memalign(std::size_t alignment, std::size_t size)
{
    count();
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    count();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    count();
    *result = __libc_memalign(alignment, size);
    return *result ? 0 : 12;  // ENOMEM
}

}  // extern "C"
