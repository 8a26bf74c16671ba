// Counting wrappers around glibc's own malloc and the raw mmap system call.
// Linked into the executable that counts (never into a library): its
// definitions take precedence over the C library's for every shared library
// that calls them.

#include "AllocationCounter.h"

#include <atomic>
#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define VELLORAN_COUNTING 0
#else
#define VELLORAN_COUNTING 1
#endif

namespace {
std::atomic<std::uint64_t> heapAllocations{0};
std::atomic<std::uint64_t> mappings{0};
}  // namespace

namespace counting {
bool allocationCountingAvailable() { return VELLORAN_COUNTING; }
std::uint64_t heapAllocationCount() { return heapAllocations.load(std::memory_order_relaxed); }
std::uint64_t mappingCount() { return mappings.load(std::memory_order_relaxed); }
}  // namespace counting

#if VELLORAN_COUNTING

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* pointer, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {
void countHeap() { heapAllocations.fetch_add(1, std::memory_order_relaxed); }
}  // namespace

extern "C" {

void* malloc(std::size_t size)
{
    countHeap();
    return __libc_malloc(size);
}

void* calloc(std::size_t n, std::size_t size)
{
    countHeap();
    return __libc_calloc(n, size);
}

void* realloc(void* pointer, std::size_t size)
{
    countHeap();
    return __libc_realloc(pointer, size);
}

void* memalign(std::size_t alignment, std::size_t size)
{
    countHeap();
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    countHeap();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    countHeap();
    *result = __libc_memalign(alignment, size);
    return *result ? 0 : 12;  // ENOMEM
}

void* mmap(void* address, std::size_t length, int protection, int flags, int fd, off_t offset)
{
    mappings.fetch_add(1, std::memory_order_relaxed);
    return reinterpret_cast<void*>(syscall(SYS_mmap, address, length, protection, flags, fd, offset));
}

}  // extern "C"

#endif
