// Frames before the first one asked for, and the simulation cache: brings
// the plug-in to the state it would have in one run from frame 1, from the
// nearest checkpoint when there is one, and saves checkpoints as it goes.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "render/checkpoints.h"
#include "render/options.h"
#include "sparkhost/core/host.h"

void add_shot_options(CLI::App &app, RenderOptions &options);
// Throws sparkhost::Error naming the option.
void check_shot_options(const RenderOptions &options);

class ShotRunner {
public:
    // Call once the controls are set and before any frame: the plug-in's
    // state then is part of the shot's key. notes: one-line remarks.
    ShotRunner(sparkhost::Host &host, const RenderOptions &options, std::function<void(const std::string &)> notes);

    // Brings the plug-in to the state after frame first_frame - 1 and
    // returns the frame to go on with: first_frame, or later when only
    // filling the cache and it already holds a newer checkpoint.
    int catch_up();
    // Advances one frame without a picture (simulated when the plug-in
    // can, otherwise rendered and dropped).
    void advance(int frame);
    // After each frame: saves a checkpoint when one is due.
    void frame_done(int frame);

    int restored_from() const { return restored_from_; }  // 0: started at frame 1

private:
    uint64_t key_at(int frame);
    uint64_t input_digest(int frame) const;

    sparkhost::Host &host_;
    const RenderOptions &options_;
    std::function<void(const std::string &)> notes_;
    std::unique_ptr<CheckpointStore> store_;
    bool saving_ = false;
    uint64_t shot_key_ = 0;
    std::vector<uint64_t> chain_;  // chain_[n]: the key after frame n's inputs
    int restored_from_ = 0;
};
