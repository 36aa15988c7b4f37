// The table of image-file functions the image I/O module exports. The
// module holds everything that needs OpenImageIO, whose hundreds of shared
// libraries take longer to load than a frame takes to render, so programs
// load it only once a file is read or written (image_io.h does that).
#pragma once

#include <string>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/files/image_io.h"

namespace sparkhost {

// Bumped whenever the table changes, so a stale module is refused rather
// than called through the wrong pointers.
constexpr int kImageCodecVersion = 1;

struct ImageCodec {
    int version;
    ImageSize (*probe)(const std::string &path);
    Frame (*read)(const std::string &path, Depth depth);
    // Writes to file's temporary name; committing is the caller's.
    // `compression`: as write_image takes it, the default already chosen
    // (empty for the format's own).
    void (*write)(AtomicFile &file, const Frame &frame, const std::string &compression);
    bool (*can_write)(const std::string &path);
};

}  // namespace sparkhost

// The module's one exported symbol.
extern "C" const sparkhost::ImageCodec *sparkhost_image_codec();
#define SPARKHOST_IMAGE_CODEC_SYMBOL "sparkhost_image_codec"
