// fizzle-render's command line: what the user asked for, checked and typed.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "sparkhost/core/frame.h"
#include "sparkhost/core/host.h"
#include "render/plate_options.h"
#include "render/value_parsers.h"

struct RenderOptions {
    // As typed, turned into the typed fields by resolve_options.
    std::string frames_text = "1";
    std::string size_text = "1920x1080";
    int depth_bits = 8;
    std::string proxy_text;

    int first_frame = 1;
    int last_frame = 1;
    sparkhost::FrameFormat format;
    double pixel_aspect = 1.0;
    std::optional<int> proxy;  // resolution list entry; unset leaves the plug-in's own
    int processors = sparkhost::Settings::default_processors();
    std::array<std::string, sparkhost::kClipCount> inputs;  // empty: built-in picture
    std::string output;
    std::string compression;  // empty: sparkhost::default_compression of the output
    bool overlay = false;     // draw the viewer overlay over each written frame
    std::string overlay_svg;  // pattern of SVG files of the overlay, one a frame
    std::string plugin;  // empty: fizzle.spark next to this program
    bool quiet = false;
    bool timings = false;  // say where the time went, at the end
    PlateOptions plates;   // the bubbles layer and colour spaces

    // What the plug-in's controls are set to before the first frame, in
    // this order: setup, preset, sets, animations, the amplitude
    // import, then the pre-roll.
    std::string setup;       // setup file to load
    std::string preset;      // an entry of the "Demos" list
    std::vector<std::string> set_texts;
    std::vector<std::string> animate_texts;
    std::vector<ControlAssignment> sets;
    std::vector<ControlAnimation> animations;
    std::string import_amplitude;  // amplitude control file picked for "Import Amplitude File"
    bool preroll = false;    // press "Restart+PreRoll" before the first frame
    std::string save_setup;  // where to write the setup in force once the options are applied
    bool list_controls = false;
    bool list_presets = false;

    // The shot always starts at frame 1: frames before --frames are
    // simulated (or taken from the cache) so each frame comes out as in one
    // run from frame 1.
    std::string cache_dir;    // checkpoints of the simulation; empty: none
    int cache_every = 25;     // a checkpoint after every Nth frame
    bool simulate_only = false;  // fill the cache, write no frame
    bool skip_existing = false;  // frames whose output exists are simulated, not rendered

    // Nothing to render: only listing or saving a setup.
    bool renders() const { return !output.empty() || simulate_only; }
    bool writes_frames() const { return !output.empty() && !simulate_only; }

    int frame_count() const { return last_frame - first_frame + 1; }
};

// Declares every option on the app, bound to the fields of options.
void add_render_options(CLI::App &app, RenderOptions &options);

// Checks what CLI11 cannot and fills the typed fields; throws
// sparkhost::Error with a message naming the option.
void resolve_options(RenderOptions &options);
