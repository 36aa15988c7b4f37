// Reading and writing host frames as image files with OpenImageIO. Files are
// stored top row first; frames keep the bottom row first, so both directions
// flip the rows.
#pragma once

#include <string>

#include "sparkhost/frame.h"

namespace sparkhost {

struct ImageSize {
    int width = 0;
    int height = 0;
};

// The size of an image file without reading its pixels. Throws Error.
ImageSize probe_image(const std::string &path);

// Reads the first three channels (a one- or two-channel image is grey) at
// the given depth, rounding to the nearest value. Throws Error.
Frame read_image(const std::string &path, Depth depth);

// Writes RGB in the format the extension names: 8 bits a channel for 8-bit
// frames, 16 for 12-bit frames; EXR gets half floats for 8-bit frames and
// full floats for 12-bit ones, since half floats cannot hold 12 bits exactly.
// The file appears under path only once complete. Throws Error.
void write_image(const std::string &path, const Frame &frame);

// Whether some image format is known for the path's extension.
bool can_write_image(const std::string &path);

}  // namespace sparkhost
