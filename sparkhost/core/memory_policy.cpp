// The allocator settings behind keep_freed_memory().
#include "sparkhost/core/memory_policy.h"

#include <malloc.h>

namespace sparkhost {

void keep_freed_memory() {
    // The largest threshold the C library accepts on 64-bit systems.
    constexpr int kHeapBlocksUpTo = 32 * 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, kHeapBlocksUpTo);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024 * 1024);
}

}  // namespace sparkhost
