// A frame's pixels as an image file stores them: top row first, in the
// file's channel type. The library's own per-sample conversion to half and
// float costs more than compressing the frame, so each level is converted
// once, through a table the library itself fills, and the frame then goes
// through the table: the same values, a fraction of the time.
#pragma once

#include <OpenImageIO/typedesc.h>

#include <cstdint>
#include <vector>

#include "sparkhost/core/frame.h"

namespace sparkhost {

// A frame's samples ready for the writer: `rows` points at the file's top
// row and successive rows are `stride` bytes apart (negative when they run
// downwards in memory).
struct FileSamples {
    OIIO::TypeDesc type;
    const void *rows = nullptr;
    std::ptrdiff_t stride = 0;
};

// Converts frames into the file's layout a band of rows at a time, keeping
// its small buffer from band to band and frame to frame, so that writing
// needs neither a second frame-sized buffer nor fresh pages for every file.
class FilePixels {
public:
    // Whether the file's samples are the frame's own bytes: 8-bit frames
    // bound for 8-bit files, which go to the writer whole and untouched.
    static bool passes_through(const Frame &frame, bool float_file);
    // The channel type the file stores: 8 or 16 bits, or half or full floats
    // (half floats for 8-bit frames, full floats for 12-bit ones, since half
    // floats cannot hold 12 bits exactly).
    static OIIO::TypeDesc file_type(const Frame &frame, bool float_file);

    // The samples of file_type() the file stores for `count` file rows from
    // `top` (row 0 is the top of the picture). Valid until the next call.
    FileSamples convert(const Frame &frame, bool float_file, int top, int count);

private:
    std::vector<unsigned char> buffer_;
};

}  // namespace sparkhost
