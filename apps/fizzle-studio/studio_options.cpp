// fizzle-studio's options, checked with fizzle-render's own rules.
#include "studio_options.h"

#include <filesystem>

#include "sparkhost/core/error.h"

#ifndef FIZZLE_STUDIO_WEB
#define FIZZLE_STUDIO_WEB "web"
#endif
#ifndef FIZZLE_HELP_DIR
#define FIZZLE_HELP_DIR "help"
#endif

void add_studio_options(CLI::App &app, StudioOptions &options) {
    RenderOptions &render = options.render;
    render.size_text = "1280x720";
    render.frames_text = "1-100";
    options.web = FIZZLE_STUDIO_WEB;
    options.help = FIZZLE_HELP_DIR;
    app.description(
        "Serves the Fizzle plug-in's controls, viewer and timeline as a web page on this machine. "
        "Open the address it prints; it serves until stopped (Ctrl-C or SIGTERM).");
    app.add_option("--size", render.size_text, "Frame size WIDTHxHEIGHT in pixels")->capture_default_str();
    app.add_option("--depth", render.depth_bits, "Bits a channel: 8 or 12")
        ->capture_default_str()
        ->check(CLI::IsMember({8, 12}));
    app.add_option("--aspect", render.pixel_aspect, "Pixel aspect ratio")->capture_default_str()->check(CLI::PositiveNumber);
    app.add_option("--processors", render.processors, "Processors to spread each frame over, 1-127")
        ->capture_default_str()
        ->check(CLI::Range(1, 127));
    app.add_option("--frames", render.frames_text, "The timeline's range, FIRST-LAST")->capture_default_str();
    app.add_option("--scene", render.inputs[sparkhost::kScene], "Scene clip (default: a built-in moving scene)");
    app.add_option("--birth", render.inputs[sparkhost::kBirth], "Birth matte (default: the bottom tenth)");
    app.add_option("--burst", render.inputs[sparkhost::kBurst], "Burst-or-gather matte (default: a soft disc)");
    app.add_option("--reflection", render.inputs[sparkhost::kReflection], "Reflection image (default: built in)");
    app.add_option("--setup", render.setup, "Setup file to load at start");
    app.add_option("--preset", render.preset, "Demo preset to choose at start");
    app.add_option("--cache", render.cache_dir,
                   "DIR: keep checkpoints of the bubbles there (fizzle-render's files) and jump from the nearest one");
    app.add_option("--cache-every", render.cache_every, "Save a checkpoint after every Nth frame")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000));
    add_colour_options(app, render.plates);
    app.add_option("--plugin", render.plugin, "The plug-in to load (default: fizzle.spark next to this program)");
    app.add_option("--port", options.port, "Port to listen on; 0 picks a free one")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    app.add_option("--listen", options.listen, "Address to listen on")->capture_default_str();
    app.add_option("--web", options.web, "Folder of the page's files")->capture_default_str();
}

void resolve_studio_options(StudioOptions &options) {
    // The studio writes no frames of its own; the output only satisfies the
    // shared checks, which are otherwise those of fizzle-render.
    options.render.output = "unused";
    resolve_options(options.render);
    options.render.output.clear();
    std::error_code error;
    if (!std::filesystem::is_regular_file(std::filesystem::path(options.web) / "index.html", error))
        throw sparkhost::Error("--web: '" + options.web + "' holds no index.html");
}
