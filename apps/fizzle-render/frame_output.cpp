// Frames written whole: a temporary beside the final name, then a rename.
#include "frame_output.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "sparkhost/error.h"
#include "sparkhost/image_io.h"

namespace fs = std::filesystem;

void write_frame_whole(const std::string &path, const sparkhost::Frame &frame) {
    const fs::path final_path(path);
    // The extension stays last: it picks the file format.
    const fs::path temporary = final_path.parent_path() / ("." + final_path.stem().string() + ".tmp" +
                                                           std::to_string(getpid()) +
                                                           final_path.extension().string());
    try {
        sparkhost::write_image(temporary.string(), frame);
    } catch (...) {
        std::error_code ignored;
        fs::remove(temporary, ignored);
        throw;
    }
    std::error_code error;
    fs::rename(temporary, final_path, error);
    if (error) {
        fs::remove(temporary, error);
        throw sparkhost::Error("cannot write '" + path + "': " + error.message());
    }
}

bool output_exists(const std::string &path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && fs::file_size(path, error) > 0 && !error;
}
