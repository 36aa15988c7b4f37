// Inputs and outputs compared by file identity, before the first write.
#include "output_guard.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "sparkhost/core/error.h"
#include "sparkhost/files/frame_pattern.h"

namespace fs = std::filesystem;
using sparkhost::Error;

namespace {

using Identity = std::pair<dev_t, ino_t>;

bool identity_of(const std::string &path, Identity &identity) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) return false;
    identity = {info.st_dev, info.st_ino};
    return true;
}

// Calls found(path) for each existing file of the pattern's frames
// first..last. A sequence's directory is listed once rather than each
// frame looked for, so a long range costs no more than its directory.
void existing_files(const std::string &text, int first, int last,
                    const std::function<void(const std::string &)> &found) {
    if (text.empty()) return;
    const sparkhost::FramePattern pattern(text);
    if (!pattern.is_sequence()) {
        found(text);
        return;
    }
    const fs::path sample = pattern.path(first);
    const sparkhost::FramePattern names(sample.parent_path() == fs::path() ? text : fs::path(text).filename().string());
    if (!names.is_sequence()) {
        // The number is in a directory's name: each frame's file in turn.
        for (long long frame = first; frame <= last; ++frame) found(pattern.path(int(frame)));
        return;
    }
    const fs::path directory = sample.parent_path().empty() ? fs::path(".") : sample.parent_path();
    std::vector<int> frames;
    std::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error)) {
        const std::optional<int> frame = names.frame_of(it->path().filename().string());
        if (frame && *frame >= first && *frame <= last) frames.push_back(*frame);
    }
    // In frame order, so that a refusal names the same file every time.
    std::sort(frames.begin(), frames.end());
    for (int frame : frames) found(pattern.path(frame));
}

}  // namespace

void check_outputs_spare_inputs(const RenderOptions &options) {
    // Inputs are read from frame 1: the frames before --frames are simulated.
    std::map<Identity, std::string> inputs;
    const auto add_input = [&](const std::string &path) {
        Identity identity;
        if (identity_of(path, identity)) inputs.emplace(identity, path);
    };
    for (const std::string &input : options.inputs) existing_files(input, 1, options.last_frame, add_input);
    for (const std::string *single :
         {&options.setup, &options.import_amplitude, &options.plugin, &options.plates.colour_config})
        if (!single->empty()) add_input(*single);

    // special_ok: such names are passed over with a note (checkpoints).
    const auto refuse_input = [&](const char *option, bool special_ok = false) {
        return [&inputs, option, special_ok](const std::string &path) {
            struct stat info {};
            if (stat(path.c_str(), &info) != 0) return;
            // A file is put in place by renaming over the name: a device or a
            // FIFO there (/dev/null) would be replaced, not written to.
            if (!special_ok && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode))
                throw Error(std::string(option) + ": '" + path + "' is not a regular file; it would be replaced");
            const auto input = inputs.find(Identity{info.st_dev, info.st_ino});
            if (input == inputs.end()) return;
            throw Error(std::string(option) + ": '" + path + "' is the input '" + input->second +
                        "'; writing it would destroy it");
        };
    };
    if (options.writes_frames()) {
        existing_files(options.output, options.first_frame, options.last_frame, refuse_input("--output"));
        existing_files(options.overlay_svg, options.first_frame, options.last_frame, refuse_input("--overlay-svg"));
        existing_files(options.plates.layer, options.first_frame, options.last_frame, refuse_input("--layer"));
    }
    if (!options.save_setup.empty()) refuse_input("--save-setup")(options.save_setup);
    if (!options.cache_dir.empty()) {
        // Checkpoint files are named fizzle-<key>.<frame>.state.
        const auto checkpoint = refuse_input("--cache", true);
        std::error_code error;
        for (fs::directory_iterator it(options.cache_dir, error), end; !error && it != end; it.increment(error)) {
            const std::string name = it->path().filename().string();
            if (name.rfind("fizzle-", 0) == 0 && it->path().extension() == ".state") checkpoint(it->path().string());
        }
    }
}
