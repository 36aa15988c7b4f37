// The allocator settings behind keep_freed_memory().
#include "sparkhost/core/memory_policy.h"

#include <malloc.h>

#include <algorithm>
#include <cstddef>

namespace sparkhost {

int frames_in_flight(const FrameFormat &format, int most) {
    constexpr std::size_t kBudget = 64u * 1024 * 1024;
    const std::size_t frame = std::max<std::size_t>(format.bytes(), 1);
    return int(std::clamp<std::size_t>(kBudget / frame, 1, std::size_t(std::max(most, 1))));
}

void keep_freed_memory() {
    // The largest threshold the C library accepts on 64-bit systems.
    constexpr int kHeapBlocksUpTo = 32 * 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, kHeapBlocksUpTo);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024 * 1024);
}

}  // namespace sparkhost
