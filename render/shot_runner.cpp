// The shot's key, catching up to the first frame, and checkpoints on the way.
#include "render/shot_runner.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "sparkhost/core/error.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/files/setup_file.h"

namespace fs = std::filesystem;
using sparkhost::Error;

void add_shot_options(CLI::App &app, RenderOptions &options) {
    const char *group = "Starting anywhere in a shot (the shot always starts at frame 1)";
    app.add_option("--cache", options.cache_dir,
                   "DIR: keep checkpoints of the simulation there and start from the nearest one")
        ->group(group);
    app.add_option("--cache-every", options.cache_every, "Save a checkpoint after every Nth frame")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000))
        ->group(group);
    app.add_flag("--simulate-only", options.simulate_only,
                 "Only simulate the frames and fill the --cache; write no picture")
        ->group(group);
    app.add_flag("--skip-existing", options.skip_existing,
                 "Frames whose output file exists are simulated, not rendered again")
        ->group(group);
}

void check_shot_options(const RenderOptions &options) {
    if (options.simulate_only && options.cache_dir.empty())
        throw Error("--simulate-only needs --cache DIR to fill");
}


ShotRunner::ShotRunner(sparkhost::Host &host, const RenderOptions &options,
                       std::function<void(const std::string &)> notes)
    : host_(host), options_(options), notes_(std::move(notes)) {
    if (options_.cache_dir.empty()) return;
    if (!host_.can_simulate()) {
        if (options_.simulate_only)
            throw Error("--simulate-only: plug-in '" + host_.plugin_path() + "' cannot save its state");
        notes_("plug-in '" + host_.plugin_path() + "' cannot save its state; --cache is not used");
        return;
    }
    std::error_code error;
    fs::create_directories(options_.cache_dir, error);
    const bool writable = !error && fs::is_directory(options_.cache_dir, error) &&
                          access(options_.cache_dir.c_str(), W_OK) == 0;
    if (!writable) {
        const std::string why = error ? error.message() : std::strerror(errno);
        if (options_.simulate_only) throw Error("--cache: '" + options_.cache_dir + "' is not writable: " + why);
        notes_("cache '" + options_.cache_dir + "' is not writable (" + why + "); no checkpoint will be saved");
    }
    saving_ = writable;

    // Everything that decides the simulation besides the input pictures.
    uint64_t key = add_text(0xcbf29ce484222325ull, file_bytes(host_.plugin_path()));
    key = add_text(key, setup_text(host_));
    const std::vector<uint8_t> state = host_.export_state();  // pending restart and pre-roll
    key = fnv1a(state.data(), state.size(), key);
    const sparkhost::FrameFormat &format = options_.format;
    const double numbers[5] = {double(format.width), double(format.height),
                               format.depth == sparkhost::Depth::Bits12 ? 12.0 : 8.0, options_.pixel_aspect,
                               double(options_.proxy.value_or(-1))};
    key = fnv1a(numbers, sizeof numbers, key);
    for (const std::string &input : options_.inputs)
        key = add_text(key, input.empty() ? std::string("built-in") : fs::absolute(input).string());
    shot_key_ = key;
    chain_.push_back(key);
    store_ = std::make_unique<CheckpointStore>(options_.cache_dir, shot_key_, notes_);
}

uint64_t ShotRunner::input_digest(int frame) const {
    uint64_t hash = 0xcbf29ce484222325ull;
    for (const std::string &input : options_.inputs) {
        if (input.empty()) continue;
        sparkhost::FramePattern pattern(fs::absolute(input).string());
        hash = add_file(hash, pattern.path(frame));
    }
    return hash;
}

uint64_t ShotRunner::key_at(int frame) {
    while (int(chain_.size()) <= frame) {
        const uint64_t digest = input_digest(int(chain_.size()));
        chain_.push_back(fnv1a(&digest, sizeof digest, chain_.back()));
    }
    return chain_[size_t(frame)];
}

void ShotRunner::advance(int frame) {
    if (host_.can_simulate()) {
        host_.simulate(frame);
        return;
    }
    if (!host_.process(frame)) throw Error(host_.last_failure());
}

int ShotRunner::catch_up() {
    const int target = options_.first_frame - 1;
    // Filling the cache goes on from the newest checkpoint it already holds.
    const int newest = options_.simulate_only ? options_.last_frame : target;
    int next = 1;
    if (store_ && newest >= 1) {
        std::optional<int> restored = store_->restore(
            newest, [this](int frame) { return key_at(frame); },
            [this](const std::vector<uint8_t> &state) { return host_.import_state(state); });
        if (restored) {
            restored_from_ = *restored;
            next = *restored + 1;
            if (!options_.quiet) notes_("starting from the checkpoint after frame " + std::to_string(*restored));
        }
    }
    for (int frame = next; frame <= target; ++frame) {
        advance(frame);
        frame_done(frame);
    }
    return std::max(next, options_.first_frame);
}

void ShotRunner::frame_done(int frame) {
    if (!store_ || !saving_ || frame % options_.cache_every != 0 || store_->has(frame)) return;
    if (store_->save(frame, key_at(frame), host_.export_state())) return;
    // Filling the cache is the whole of such a run: a checkpoint lost fails it.
    if (options_.simulate_only)
        throw Error("--simulate-only: the checkpoint after frame " + std::to_string(frame) + " could not be saved");
    saving_ = false;
}
