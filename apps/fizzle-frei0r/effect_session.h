// One effect as a frei0r instance runs it: the plug-in loaded and set up
// as fizzle-render sets it up, answering frames in any order with the
// pictures one run from frame 1 would give.
#pragma once

#include <memory>
#include <string>

#include "render/options.h"
#include "render/shot_runner.h"
#include "sparkhost/core/host.h"
#include "sparkhost/core/state_cache.h"

class EffectSession {
public:
    // Loads a private copy of the plug-in and applies the setup, preset,
    // sets and pre-roll of options (its format is the frame size). Throws
    // sparkhost::Error naming the first problem.
    EffectSession(const RenderOptions &options, const std::string &plugin_path);
    ~EffectSession();
    EffectSession(const EffectSession &) = delete;
    EffectSession &operator=(const EffectSession &) = delete;

    // Where the host's picture goes before render(): the scene of the frame.
    sparkhost::Frame &scene();
    // Frame `frame` (from 1) over scene(). The picture stays valid until
    // the next call. Throws sparkhost::Error when the plug-in refuses it.
    const sparkhost::Frame &render(int frame);

    // Frames simulated without a picture so far, to reach earlier or skipped frames.
    long simulated_frames() const { return simulated_; }

private:
    class SceneClip;
    void reach(int done);
    void advance(int frame);

    RenderOptions options_;
    sparkhost::Host host_;
    std::shared_ptr<SceneClip> scene_;
    std::unique_ptr<ShotRunner> shot_;
    sparkhost::StateCache states_;
    bool started_ = false;
    int done_ = 0;  // the plug-in's state is the one after this frame
    int shown_ = 0;  // the frame in the output buffer, 0: none
    long simulated_ = 0;
};
