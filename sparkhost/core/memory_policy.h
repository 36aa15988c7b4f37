// How a rendering program keeps the memory it frees.
#pragma once

#include "sparkhost/core/frame.h"

namespace sparkhost {

// How many frames of `format` a queue before or behind the render holds: at
// most `most`, as many as fit in 64 MB, never none. Two frames ahead smooth
// out uneven frames at 1080p; at 4K 12-bit one frame is 50 MB and one ahead
// keeps the render as busy.
int frames_in_flight(const FrameFormat &format, int most);

// Blocks up to 32 MB come from the heap and freed memory stays with the
// process. By default the C library maps each block of more than a few
// hundred kilobytes afresh and hands freed memory back at once, so the image
// writers' per-file tables (half a megabyte for every 32 rows of an EXR)
// cost a page fault per 4 KB on every frame: a fifth of a 1080p EXR render.
// Memory then stays at the render's peak, which frame-sized buffers
// reused from frame to frame already set. Call before any thread starts.
void keep_freed_memory();

}  // namespace sparkhost
