// Storage for image pixel blocks. Frame-sized blocks are kept for reuse: a
// frame cycle frees and allocates the same few of them every frame, and
// fresh pages from the system cost more than the pixels written into them.
#pragma once

#include <cstddef>

#include "framework/pixel.h"

// A block of `count` pixels, all channels 0 when `zeroed`, else with
// whatever a reused block held (for callers that write every pixel).
PixelQv *AcquirePixels(size_t count, bool zeroed);

// Gives back a block of `count` pixels from AcquirePixels (or malloc).
void ReleasePixels(PixelQv *block, size_t count);
