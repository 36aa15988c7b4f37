// fizzle-render's options: declaration, help texts and checks.
#include "render/options.h"

#include <algorithm>
#include <cmath>

#include "render/shot_runner.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/files/regular_file.h"
#include "sparkhost/core/resolution.h"
#include "sparkhost/controls/text_match.h"

using sparkhost::Error;

namespace {

std::string joined_resolutions() {
    std::string text;
    for (const std::string &name : sparkhost::resolution_names())
        text += (text.empty() ? "" : "|") + name;
    return text;
}

// A frame number wider than a file name holds is a bad argument, found
// before anything starts.
void check_patterns(const RenderOptions &options) {
    const std::pair<const char *, const std::string *> patterns[] = {
        {"--output", &options.output},
        {"--overlay-svg", &options.overlay_svg},
        {"--layer", &options.plates.layer},
        {"--scene", &options.inputs[sparkhost::kScene]},
        {"--birth", &options.inputs[sparkhost::kBirth]},
        {"--burst", &options.inputs[sparkhost::kBurst]},
        {"--reflection", &options.inputs[sparkhost::kReflection]},
    };
    for (const auto &[option, text] : patterns) {
        try {
            sparkhost::FramePattern{*text};
        } catch (const Error &error) {
            throw Error(std::string(option) + ": " + error.what());
        }
    }
}

void add_overlay_options(CLI::App &app, RenderOptions &options) {
    app.add_flag("--overlay", options.overlay,
                 "Draw the effect's viewer overlay (emitter, light and cone handles) over each frame");
    app.add_option("--overlay-svg", options.overlay_svg,
                   "Also write the overlay as SVG, one file a frame, e.g. overlay.%04d.svg");
}

// The options that act on the plug-in's controls, in the order they apply.
void add_control_group(CLI::App &app, RenderOptions &options) {
    const char *group =
        "Controls (applied in this order: setup, preset, sets, animations, amplitude import, pre-roll)";
    app.add_option("--setup", options.setup, "Setup file to load first (as written by --save-setup)")
        ->group(group);
    app.add_option("--preset", options.preset,
                   "Choose a demo preset as a user would from the \"Demos\" list (see --list-presets); "
                   "it also restarts the bubbles")
        ->group(group);
    app.add_option("--set", options.set_texts,
                   "NAME=VALUE: set a control, named by its title without the value format "
                   "(\"Light Inten=80\", any case) or by number (\"102=80\"); lists take an entry "
                   "name or its number counted from 1, switches on/off/1/0; repeatable")
        ->group(group);
    app.add_option("--animate", options.animate_texts,
                   "NAME=FRAME:VALUE,...: keys on the control's animation curve, frames counted as "
                   "--frames counts them (\"Density=1:5,48:40\"); repeatable")
        ->group(group);
    app.add_option("--import-amplitude", options.import_amplitude,
                   "FILE: press \"Import Amplitude File\" and pick FILE, an amplitude control file whose "
                   "keys become the animation curve of control 93")
        ->group(group);
    app.add_flag("--preroll", options.preroll,
                 "Press \"Restart+PreRoll\" before the first frame, so it starts with bubbles in flight")
        ->group(group);
    app.add_option("--save-setup", options.save_setup,
                   "Write the setup in force, once every option above is applied (before the first frame)")
        ->group(group);
    app.add_flag("--list-controls", options.list_controls,
                 "List every control (page, number, name, value, range) after applying the options, then stop")
        ->group(group);
    app.add_flag("--list-presets", options.list_presets, "List the demo presets, then stop")->group(group);
}

}  // namespace

void add_render_options(CLI::App &app, RenderOptions &options) {
    app.description(
        "Renders frames of the Fizzle bubble effect through its Spark interface, as a "
        "compositing host would, and writes them as image files. Inputs not given are "
        "built-in pictures.");
    app.add_option("--frames", options.frames_text,
                   "Frames to render: FIRST-LAST (e.g. 1-100) or one frame; numbered from 1, "
                   "as input and output sequences are")
        ->capture_default_str();
    app.add_option("--size", options.size_text, "Frame size WIDTHxHEIGHT in pixels; inputs must match it")
        ->capture_default_str();
    app.add_option("--depth", options.depth_bits, "Bits a channel: 8, or 12 (written as 16-bit files)")
        ->capture_default_str()
        ->check(CLI::IsMember({8, 12}));
    app.add_option("--aspect", options.pixel_aspect, "Pixel aspect ratio, width over height of a pixel")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--proxy", options.proxy_text,
                   "Resolution the effect works at: " + joined_resolutions() +
                       " (default: the plug-in's own setting)");
    app.add_option("--processors", options.processors, "Processors to spread each frame over, 1-127 (default: this machine's cores)")
        ->capture_default_str()
        ->check(CLI::Range(1, 127));
    app.add_option("--scene", options.inputs[sparkhost::kScene],
                   "Scene clip: an image or a sequence (name.%04d.exr or name.####.exr); "
                   "default: a built-in moving scene");
    app.add_option("--birth", options.inputs[sparkhost::kBirth],
                   "Birth matte: bubbles are born where it is white; default: the bottom tenth");
    app.add_option("--burst", options.inputs[sparkhost::kBurst],
                   "Burst-or-gather matte; default: a soft disc in the upper middle");
    app.add_option("--reflection", options.inputs[sparkhost::kReflection],
                   "Image the bubbles reflect; default: a built-in colourful picture");
    app.add_option("-o,--output", options.output,
                   "Output file pattern, e.g. out/frame.%04d.png; the extension picks the format "
                   "(png, tif, exr, dpx, jpg); needed unless only listing or saving a setup");
    app.add_option("--compression", options.compression,
                   "Output compression, as the format names it: tif none|lzw|zip|packbits, exr "
                   "none|rle|zip|zips|piz|pxr24|b44|b44a|dwaa|dwab, png zip|none; zip:0-9 sets the "
                   "Deflate level (default: tif none, exr piz, png zip:1; other formats their own)");
    add_overlay_options(app, options);
    add_shot_options(app, options);
    add_plate_options(app, options);
    app.add_option("--plugin", options.plugin, "The plug-in to load (default: fizzle.spark next to this program)");
    app.add_flag("-q,--quiet", options.quiet, "No progress bar, summary or plug-in start-up banner");
    app.add_flag("--timings", options.timings,
                 "At the end, say where the time went: start-up, the plug-in's frame cycle, and the rest "
                 "(reading inputs, writing files)");

    add_control_group(app, options);
    app.footer(
        "Exit status: 0 every frame written; 1 an input or output failed; 2 bad arguments; "
        "130 or 143 stopped by SIGINT or SIGTERM (the frame in progress is finished first, a second "
        "signal stops at once; no partial file is left either way).");
}

void resolve_options(RenderOptions &options) {
    if (options.output.empty() && !options.list_controls && !options.list_presets && options.save_setup.empty() &&
        !options.simulate_only)
        throw Error("--output is required (unless only --list-controls, --list-presets or --save-setup is asked for)");
    check_shot_options(options);
    for (const std::string &text : options.set_texts) options.sets.push_back(parse_assignment(text));
    for (const std::string &text : options.animate_texts) options.animations.push_back(parse_animation(text));
    if (!options.import_amplitude.empty()) {
        try {
            sparkhost::check_regular_file(options.import_amplitude);
        } catch (const Error &error) {
            throw Error(std::string("--import-amplitude: ") + error.what());
        }
    }
    check_patterns(options);
    const FrameRange frames = parse_frames(options.frames_text);
    options.first_frame = frames.first;
    options.last_frame = frames.last;
    const PixelSize size = parse_size(options.size_text);
    options.format.width = size.width;
    options.format.height = size.height;
    options.format.depth = options.depth_bits == 12 ? sparkhost::Depth::Bits12 : sparkhost::Depth::Bits8;
    if (!std::isfinite(options.pixel_aspect) || options.pixel_aspect <= 0)
        throw Error("--aspect: must be a positive number");
    if (!options.proxy_text.empty()) options.proxy = parse_proxy(options.proxy_text);
    check_plate_options(options);
}
