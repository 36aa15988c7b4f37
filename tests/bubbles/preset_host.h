// The real plug-in in our host, ready to render a demo preset over a plain
// grey scene (birth matte: the bottom fifth; burst matte: a disc in the
// upper middle; reflection: a colour ramp), for tests that look at whole
// frames.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sparkhost/core/frame.h"
#include "sparkhost/core/host.h"

// How the host presents frames: depth, pixel aspect and proxy resolution.
struct PresetLook {
    sparkhost::Depth depth = sparkhost::Depth::Bits8;
    float pixel_aspect = 1.0f;
    std::optional<int> proxy;  // resolution list entry; unset: full size
};

struct PresetHost {
    static constexpr int kSceneGrey = 100;

    PresetHost(int width, int height, int processors = 2, const PresetLook &look = {});
    ~PresetHost();

    // Picks the preset's entry of the "Demos" list as a user would, with
    // Auto Preview off so that nothing renders yet.
    void choose(const std::string &preset);
    // Sets controls by name, in order, as a user would before the pre-roll.
    void set_controls(const std::vector<std::pair<std::string, double>> &settings);
    void press_preroll();
    // Processes one frame (numbered from 1); an empty frame when refused.
    sparkhost::Frame render(int number);
    // The first error the plug-in reported, empty when none.
    std::string first_error() const;

    sparkhost::FrameFormat format;
    std::unique_ptr<sparkhost::Host> host;
};

// 64-bit FNV-1a of a frame's bytes, as hex.
std::string frame_hash(const sparkhost::Frame &frame);
