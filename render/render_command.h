// A fizzle-render run as another program asks for one: the description, and
// the one place that spells it as fizzle-render's command line.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "sparkhost/core/frame.h"
#include "sparkhost/core/host.h"

struct RenderOptions;

struct RenderCommand {
    sparkhost::FrameFormat format{1920, 1080, sparkhost::Depth::Bits8};
    double pixel_aspect = 1.0;
    std::array<std::string, sparkhost::kClipCount> inputs;  // empty: built-in picture
    std::string setup;  // setup file to load; empty: none
    bool preroll = false;
    int first_frame = 1;
    int last_frame = 1;
    std::string output;
    // The bubbles layer and colour spaces; empty: fizzle-render's defaults.
    std::string layer;
    std::string layer_type;  // half, float or uint16
    std::string colour_config;
    std::string scene_space;
    std::string working_space;

    bool operator==(const RenderCommand &other) const;
    bool operator!=(const RenderCommand &other) const { return !(*this == other); }
};

// The arguments after the program's name; options left at their defaults
// are not spelled.
std::vector<std::string> render_arguments(const RenderCommand &command);

// The command that renders what resolved options describe (the fields
// above; the rest of the options are not part of a command).
RenderCommand render_command(const RenderOptions &options);
