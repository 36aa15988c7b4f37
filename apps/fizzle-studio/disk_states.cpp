// Checkpoints on disk for the studio's jumps.
#include "disk_states.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/files/setup_file.h"

namespace fs = std::filesystem;

namespace {

// The setup's text, or none when it cannot be written out: the studio then
// only loses the use of older checkpoints.
std::string setup_text_or_none(sparkhost::Host &host) {
    try {
        return setup_text(host);
    } catch (...) {
        return {};
    }
}

}  // namespace

DiskStates::DiskStates(sparkhost::Host &host, const RenderOptions &options,
                       std::function<void(const std::string &)> notes)
    : host_(host), options_(options), notes_(std::move(notes)) {
    if (options_.cache_dir.empty()) return;
    if (!host_.can_simulate()) {
        notes_("the plug-in cannot save its state; --cache is not used");
        return;
    }
    std::error_code error;
    fs::create_directories(options_.cache_dir, error);
    writable_ = !error && access(options_.cache_dir.c_str(), W_OK) == 0;
    if (!writable_) notes_("cache '" + options_.cache_dir + "' is not writable; no checkpoint will be saved");
    active_ = true;
    plugin_hash_ = add_text(0xcbf29ce484222325ull, file_bytes(host_.plugin_path()));
}

void DiskStates::forget_key() { store_.reset(); }

CheckpointStore &DiskStates::store(int first, int last, bool preroll) {
    if (store_) return *store_;
    uint64_t key = add_text(plugin_hash_, setup_text_or_none(host_));
    const sparkhost::FrameFormat &format = options_.format;
    const double numbers[8] = {double(format.width), double(format.height),
                               format.depth == sparkhost::Depth::Bits12 ? 12.0 : 8.0, options_.pixel_aspect,
                               double(options_.proxy.value_or(-1)), double(first), double(last), preroll ? 1.0 : 0.0};
    key = fnv1a(numbers, sizeof numbers, key);
    for (const std::string &input : options_.inputs)
        key = add_text(key, input.empty() ? std::string("built-in") : fs::absolute(input).string());
    chain_.assign(1, key);
    store_ = std::make_unique<CheckpointStore>(options_.cache_dir, key, notes_);
    return *store_;
}

// Input pictures enter by their size and modification time, so an input
// changed since the checkpoint was made makes it useless.
uint64_t DiskStates::key_at(int frame) {
    while (int(chain_.size()) <= frame) {
        uint64_t hash = 0xcbf29ce484222325ull;
        const int next = int(chain_.size());
        for (const std::string &input : options_.inputs) {
            if (input.empty()) continue;
            const std::string path = sparkhost::FramePattern(fs::absolute(input).string()).path(next);
            hash = add_file(hash, path);
        }
        chain_.push_back(fnv1a(&hash, sizeof hash, chain_.back()));
    }
    return chain_[size_t(frame)];
}

std::optional<int> DiskStates::restore(int after, int frame, int first, int last, bool preroll) {
    if (!active_ || frame <= after) return std::nullopt;
    CheckpointStore &checkpoints = store(first, last, preroll);
    const int every = options_.cache_every;
    bool any = false;
    for (int candidate = frame / every * every; candidate > after && !any; candidate -= every)
        any = checkpoints.has(candidate);
    if (!any) return std::nullopt;
    std::optional<int> restored = checkpoints.restore(
        frame, [this](int number) { return key_at(number); },
        [this](const std::vector<uint8_t> &state) { return host_.import_state(state); });
    return restored;
}

void DiskStates::frame_done(int frame, int first, int last, bool preroll) {
    if (!active_ || !writable_ || frame % options_.cache_every != 0) return;
    CheckpointStore &checkpoints = store(first, last, preroll);
    if (checkpoints.has(frame)) return;
    if (!checkpoints.save(frame, key_at(frame), host_.export_state())) writable_ = false;
}
