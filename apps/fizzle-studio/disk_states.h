// The studio's checkpoints on disk (--cache DIR): the bubbles' state after
// every Nth frame of a run from the range's first frame, in fizzle-render's
// checkpoint files, keyed by everything that decides the run. They outlive
// the studio, so a jump can start from one made in an earlier session.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "render/checkpoints.h"
#include "render/options.h"
#include "sparkhost/core/host.h"

class DiskStates {
public:
    // Inactive without options.cache_dir. notes: one-line remarks.
    DiskStates(sparkhost::Host &host, const RenderOptions &options, std::function<void(const std::string &)> notes);

    bool active() const { return active_; }
    // Anything the run depends on changed: the key is made afresh when next needed.
    void forget_key();
    // Imports the newest usable state after a frame in (after, frame] of the
    // run from first to last; returns that frame.
    std::optional<int> restore(int after, int frame, int first, int last, bool preroll);
    // After frame, in a clean run: saves the state when one is due.
    void frame_done(int frame, int first, int last, bool preroll);

private:
    CheckpointStore &store(int first, int last, bool preroll);
    uint64_t key_at(int frame);

    sparkhost::Host &host_;
    const RenderOptions &options_;
    std::function<void(const std::string &)> notes_;
    bool active_ = false;
    bool writable_ = false;
    uint64_t plugin_hash_ = 0;
    std::unique_ptr<CheckpointStore> store_;
    std::vector<uint64_t> chain_;  // chain_[n]: the key after frame n's inputs
};
