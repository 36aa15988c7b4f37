// Storage for image pixel blocks, with a small cache of frame-sized blocks.
#include "framework/pixel_blocks.h"

#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

constexpr size_t kSmallestCachedBytes = size_t(1) << 20;
// Enough for the four inputs and the output of a frame, and one scratch copy.
constexpr size_t kCachedBlocks = 6;

struct CachedBlock {
    PixelQv *block;
    size_t count;
};

// Plain static storage with nothing to construct or destroy, so images freed
// by other static destructors, in whatever order they run, still find it.
std::mutex cache_mutex;
CachedBlock cached[kCachedBlocks];
size_t cached_count = 0;  // oldest first
bool cache_closed = false;

// When the plug-in is unloaded (or the program ends) its cached blocks go
// back to the system: once the library is unmapped nothing knows of them,
// and a host that loads the plug-in again would lose them frame size by
// frame size. Blocks released after this are freed at once.
struct CacheCloser {
    ~CacheCloser() {
        std::lock_guard<std::mutex> lock(cache_mutex);
        cache_closed = true;
        for (size_t i = 0; i < cached_count; ++i) std::free(cached[i].block);
        cached_count = 0;
    }
} cache_closer;

bool cacheable(size_t count) { return count * sizeof(PixelQv) >= kSmallestCachedBytes; }

// The most recently released block of exactly `count` pixels, taken out of
// the cache; null when there is none.
PixelQv *take_cached(size_t count) {
    std::lock_guard<std::mutex> lock(cache_mutex);
    for (size_t i = cached_count; i-- > 0;) {
        if (cached[i].count != count) continue;
        PixelQv *block = cached[i].block;
        for (size_t j = i + 1; j < cached_count; ++j) cached[j - 1] = cached[j];
        --cached_count;
        return block;
    }
    return nullptr;
}

// Keeps the block for reuse; returns the block to free instead (the oldest
// when the cache is full, the block itself once the cache is closed).
PixelQv *keep_cached(PixelQv *block, size_t count) {
    std::lock_guard<std::mutex> lock(cache_mutex);
    if (cache_closed) return block;
    PixelQv *evicted = nullptr;
    if (cached_count == kCachedBlocks) {
        evicted = cached[0].block;
        for (size_t j = 1; j < cached_count; ++j) cached[j - 1] = cached[j];
        --cached_count;
    }
    cached[cached_count++] = {block, count};
    return evicted;
}

}  // namespace

PixelQv *AcquirePixels(size_t count, bool zeroed) {
    if (count == 0) count = 1;  // a real, freeable address even for an empty image
    if (cacheable(count)) {
        if (PixelQv *reused = take_cached(count)) {
            if (zeroed) std::memset(reused, 0, count * sizeof(PixelQv));
            return reused;
        }
    }
    void *block = zeroed ? std::calloc(count, sizeof(PixelQv)) : std::malloc(count * sizeof(PixelQv));
    return static_cast<PixelQv *>(block);
}

void ReleasePixels(PixelQv *block, size_t count) {
    if (!block) return;
    if (count == 0) count = 1;
    std::free(cacheable(count) ? keep_cached(block, count) : block);
}
