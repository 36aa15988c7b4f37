// Frames written whole: a temporary beside the final name, then a rename.
#include "frame_output.h"

#include <filesystem>

#include "sparkhost/core/error.h"
#include "sparkhost/files/image_io.h"

namespace fs = std::filesystem;

// write_image already writes aside and renames, and lists its temporary
// where a signal handler removes it.
void write_frame_whole(const std::string &path, const sparkhost::Frame &frame) { sparkhost::write_image(path, frame); }

bool output_exists(const std::string &path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && fs::file_size(path, error) > 0 && !error;
}
