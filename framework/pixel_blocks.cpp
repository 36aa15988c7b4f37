// Storage for image pixel blocks, with a small cache of frame-sized blocks.
#include "framework/pixel_blocks.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

namespace {

constexpr size_t kSmallestCachedBytes = size_t(1) << 20;
// Enough for the four inputs and the output of a frame, and one scratch copy.
constexpr size_t kCachedBlocks = 6;

struct CachedBlock {
    PixelQv *block;
    size_t count;
};

// Never destroyed: images may be freed by exit handlers after static
// destructors of this file would have run.
std::mutex &cache_mutex() {
    static std::mutex *mutex = new std::mutex;
    return *mutex;
}
std::vector<CachedBlock> &cache() {
    static std::vector<CachedBlock> *blocks = new std::vector<CachedBlock>;
    return *blocks;
}

bool cacheable(size_t count) { return count * sizeof(PixelQv) >= kSmallestCachedBytes; }

}  // namespace

PixelQv *AcquirePixels(size_t count, bool zeroed) {
    if (count == 0) count = 1;  // a real, freeable address even for an empty image
    if (cacheable(count)) {
        PixelQv *reused = nullptr;
        {
            std::lock_guard<std::mutex> lock(cache_mutex());
            std::vector<CachedBlock> &blocks = cache();
            for (size_t i = blocks.size(); i-- > 0;) {
                if (blocks[i].count == count) {
                    reused = blocks[i].block;
                    blocks.erase(blocks.begin() + long(i));
                    break;
                }
            }
        }
        if (reused) {
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
    if (!cacheable(count)) {
        std::free(block);
        return;
    }
    PixelQv *evicted = nullptr;
    {
        std::lock_guard<std::mutex> lock(cache_mutex());
        std::vector<CachedBlock> &blocks = cache();
        blocks.push_back({block, count});
        if (blocks.size() > kCachedBlocks) {
            evicted = blocks.front().block;
            blocks.erase(blocks.begin());
        }
    }
    std::free(evicted);
}
