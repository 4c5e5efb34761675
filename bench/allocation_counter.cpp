#include "bench/allocation_counter.hpp"

#include <malloc.h>

#include <ovsel/ovsel.hpp>

#include "host_interfaces/utility.hpp"

namespace {
std::size_t allocationCount = 0;
} // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

// Default visibility, so that the shared libraries find these and not the C library's.
#define SEEN_BY_ALL __attribute__((visibility("default")))

SEEN_BY_ALL void* malloc(std::size_t size) noexcept {
    ++allocationCount;
    return __libc_malloc(size);
}

SEEN_BY_ALL void* calloc(std::size_t count, std::size_t size) noexcept {
    ++allocationCount;
    return __libc_calloc(count, size);
}

SEEN_BY_ALL void* realloc(void* block, std::size_t size) noexcept {
    ++allocationCount;
    return __libc_realloc(block, size);
}

SEEN_BY_ALL void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    ++allocationCount;
    return __libc_memalign(alignment, size);
}
}

namespace bench {

std::size_t AllocationCount() { return allocationCount; }

std::size_t HeapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

bool AllocationsAreSeen() {
    // One operator new in the library, one malloc in the host. The path comes first: it allocates too.
    const ovPath path = ovCreatePath(0, "allocations");
    const std::size_t before = allocationCount;
    ovSearch* search = ovCreateAllSearchIterator(path, ustring(), nullptr, ovCaseOfPath);
    const std::size_t between = allocationCount;
    ovDestroySearch(&search);
    HostFree(HostMallocWithCheck(1));
    return before < between && between < allocationCount;
}

} // namespace bench
