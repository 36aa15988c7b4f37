// Golden-frame failure reports: files in the test output folder, written
// under a temporary name and renamed so a half-written picture never shows.
#include "golden_report.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "preset_host.h"
#include "sparkhost/files/image_io.h"

namespace fs = std::filesystem;

namespace {

fs::path output_folder() { return fs::path(FIZZLE_TEST_OUTPUT) / "golden"; }

// "Under Water 12-bit proxy 1/3 2" -> "Under-Water-12-bit-proxy-1-3-2", fit for a file name.
std::string file_stem(const std::string &name) {
    std::string stem = name;
    for (char &c : stem)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.') c = '-';
    return stem;
}

// The kept frame's bytes exactly as rendered (a picture file may not give
// back a 12-bit frame's low bits), with a picture beside them to look at.
fs::path kept_bytes_path(const std::string &name) { return output_folder() / "kept" / (file_stem(name) + ".frame"); }
fs::path kept_picture_path(const std::string &name) { return output_folder() / "kept" / (file_stem(name) + ".png"); }

fs::path partial_path(const fs::path &path) {
    return path.parent_path() / (path.stem().string() + ".partial" + path.extension().string());
}

void write_whole(const fs::path &path, const sparkhost::Frame &frame) {
    fs::create_directories(path.parent_path());
    sparkhost::write_image(partial_path(path).string(), frame);
    fs::rename(partial_path(path), path);
}

void write_bytes_whole(const fs::path &path, const sparkhost::Frame &frame) {
    fs::create_directories(path.parent_path());
    {
        std::ofstream out(partial_path(path), std::ios::binary);
        out.write(reinterpret_cast<const char *>(frame.data()), std::streamsize(frame.size()));
    }
    fs::rename(partial_path(path), path);
}

// The kept frame of that format, or an empty frame when there is none.
sparkhost::Frame read_kept(const std::string &name, const sparkhost::FrameFormat &format) {
    sparkhost::Frame kept(format);
    std::ifstream in(kept_bytes_path(name), std::ios::binary);
    if (!in || !in.read(reinterpret_cast<char *>(kept.data()), std::streamsize(kept.size())) || in.peek() != EOF)
        return sparkhost::Frame();
    return kept;
}

}  // namespace

FrameDifference compare_frames(const sparkhost::Frame &got, const sparkhost::Frame &kept,
                               sparkhost::Frame *picture) {
    FrameDifference difference;
    for (int y = 0; y < got.height(); ++y)
        for (int x = 0; x < got.width(); ++x) {
            int largest_here = 0;
            for (int c = 0; c < 3; ++c) largest_here = std::max(largest_here, std::abs(got.value(x, y, c) - kept.value(x, y, c)));
            if (largest_here) ++difference.pixels;
            difference.largest = std::max(difference.largest, largest_here);
        }
    if (picture && difference.largest) {
        *picture = sparkhost::Frame(got.format());
        const int full = got.format().max_value();
        for (int y = 0; y < got.height(); ++y)
            for (int x = 0; x < got.width(); ++x)
                for (int c = 0; c < 3; ++c)
                    picture->set_value(x, y, c,
                                       std::abs(got.value(x, y, c) - kept.value(x, y, c)) * full / difference.largest);
    }
    return difference;
}

void keep_reference(const std::string &name, const sparkhost::Frame &frame) {
    write_bytes_whole(kept_bytes_path(name), frame);
    write_whole(kept_picture_path(name), frame);
}

std::string report_mismatch(const std::string &name, const sparkhost::Frame &got, const std::string &expected_hash) {
    const fs::path got_path = output_folder() / (file_stem(name) + ".got.png");
    write_whole(got_path, got);
    std::ostringstream line;
    line << "frame got: " << got_path.string();

    const sparkhost::Frame kept = read_kept(name, got.format());
    if (kept.size() == 0 || frame_hash(kept) != expected_hash) {
        line << "; no kept frame with the expected hash to compare with (a passing run keeps one in "
             << kept_bytes_path(name).parent_path().string() << ")";
        return line.str();
    }
    sparkhost::Frame picture;
    const FrameDifference difference = compare_frames(got, kept, &picture);
    const fs::path difference_path = output_folder() / (file_stem(name) + ".difference.png");
    write_whole(difference_path, picture);
    line << "; kept frame: " << kept_picture_path(name).string() << "; difference: " << difference_path.string()
         << " (" << difference.pixels << " pixels differ, largest difference " << difference.largest
         << ", stretched to white)";
    return line.str();
}
