// Files with pixels for part of their frame. Compositing packages often
// write only the part of a frame that holds anything: the file's pixels (its
// data window) cover part of its frame (its display window). The frame is
// the display window, black (0) where the file has no pixels. Pixels
// outside the frame (overscan) could not be kept, so such a file is refused
// rather than cropped.
#pragma once

#include <OpenImageIO/imageio.h>

#include <string>

#include "sparkhost/core/error.h"

namespace sparkhost {

inline void require_inside_display(const OIIO::ImageSpec &spec, const std::string &path) {
    if (spec.x < spec.full_x || spec.y < spec.full_y || spec.x + spec.width > spec.full_x + spec.full_width ||
        spec.y + spec.height > spec.full_y + spec.full_height)
        throw Error("'" + path + "' has pixels outside its display window (overscan), which a render cannot keep; "
                    "crop it to the display window first");
}

inline bool fills_display(const OIIO::ImageSpec &spec) {
    return spec.x == spec.full_x && spec.y == spec.full_y && spec.width == spec.full_width &&
           spec.height == spec.full_height;
}

}  // namespace sparkhost
