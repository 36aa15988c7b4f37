// The render loop: inputs and output are checked before the first frame, so
// a bad argument never leaves half a sequence behind.
#include "render.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>

#include "render/control_options.h"
#include "host_settings.h"
#include "render/host_setup.h"
#include "overlay_output.h"
#include "plate_output.h"
#include "progress.h"
#include "render/shot_runner.h"
#include "frame_output.h"
#include "output_guard.h"
#include "resume.h"
#include "stop_request.h"
#include "timings.h"
#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/error.h"
#include "sparkhost/core/memory_policy.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/files/frame_writer.h"
#include "sparkhost/files/image_io.h"
#include "sparkhost/files/setup_file.h"

using sparkhost::Error;

namespace {

// Where the frames go; their format is checked by check_output_format.
void check_output(const RenderOptions &options) {
    namespace fs = std::filesystem;
    sparkhost::FramePattern pattern(options.output);
    if (!pattern.is_sequence() && options.frame_count() > 1)
        throw Error("output '" + options.output + "' has no frame number (%04d or ####) for " +
                    std::to_string(options.frame_count()) + " frames");
    fs::path first = pattern.path(options.first_frame);
    fs::path directory = first.parent_path().empty() ? fs::path(".") : first.parent_path();
    std::error_code error;
    if (!fs::exists(directory, error))
        throw Error("output directory '" + directory.string() + "' " +
                    (error ? "cannot be reached: " + error.message() : std::string("does not exist")));
    if (!fs::is_directory(directory, error))
        throw Error("output directory '" + directory.string() + "' is not a directory");
    if (access(directory.c_str(), W_OK) != 0)
        throw Error("output directory '" + directory.string() + "' is not writable: " + std::strerror(errno));
    if (fs::is_directory(first, error)) throw Error("output '" + first.string() + "' is a directory");
    if (!options.compression.empty()) sparkhost::check_compression(first.string(), options.compression);
}

// Asks the image library, so it waits for it to load: done once, as late as
// possible but before the first frame or setup file is written.
class OutputFormatCheck {
public:
    explicit OutputFormatCheck(const RenderOptions &options) : options_(options), done_(!options.writes_frames()) {}
    void operator()() {
        if (done_) return;
        done_ = true;
        const std::filesystem::path first = sparkhost::FramePattern(options_.output).path(options_.first_frame);
        if (!sparkhost::can_write_image(first.string()))
            throw Error("output '" + options_.output + "': no image format for the extension '" +
                        first.extension().string() + "'");
    }

private:
    const RenderOptions &options_;
    bool done_;
};

bool reads_images(const RenderOptions &options) {
    return options.renders() && std::any_of(options.inputs.begin(), options.inputs.end(),
                                            [](const std::string &input) { return !input.empty(); });
}

// Keeps what the plug-in prints at start-up off standard output, where a
// listing is being written or a quiet render asked for silence.
class QuietStdout {
public:
    explicit QuietStdout(bool quiet) {
        if (!quiet) return;
        std::fflush(stdout);
        saved_ = dup(STDOUT_FILENO);
        int null = open("/dev/null", O_WRONLY);
        if (saved_ < 0 || null < 0 || dup2(null, STDOUT_FILENO) < 0) restore();
        if (null >= 0) close(null);
    }
    ~QuietStdout() { restore(); }
    QuietStdout(const QuietStdout &) = delete;
    QuietStdout &operator=(const QuietStdout &) = delete;

private:
    void restore() {
        if (saved_ < 0) return;
        std::fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
        saved_ = -1;
    }
    int saved_ = -1;
};

// Temporaries of earlier runs killed outright, in the folders this run writes to.
void remove_stale_temporaries(const RenderOptions &options) {
    namespace fs = std::filesystem;
    std::vector<std::string> folders;
    const auto folder_of = [&](const std::string &path) {
        const fs::path parent = fs::path(path).parent_path();
        folders.push_back(parent.empty() ? "." : parent.string());
    };
    if (options.writes_frames()) folder_of(sparkhost::FramePattern(options.output).path(options.first_frame));
    if (options.writes_frames() && !options.overlay_svg.empty())
        folder_of(sparkhost::FramePattern(options.overlay_svg).path(options.first_frame));
    if (!options.save_setup.empty()) folder_of(options.save_setup);
    if (!options.cache_dir.empty()) folders.push_back(options.cache_dir);
    std::sort(folders.begin(), folders.end());
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
    for (const std::string &folder : folders) sparkhost::remove_stale_temporaries(folder);
}

// Initialises and configures the plug-in, then saves the setup and lists
// what was asked for. Returns whether frames are to be rendered.
bool set_up_plugin(sparkhost::Host &host, const RenderOptions &options, OutputFormatCheck &check_output_format) {
    const bool listing = options.list_controls || options.list_presets;
    {
        QuietStdout quiet(listing || options.quiet);
        host.initialise(options.first_frame);
        configure_plugin(host, options);
    }
    if (!options.save_setup.empty()) {
        check_output_format();
        try {
            sparkhost::save_setup(options.save_setup, plugin_controls(host));
        } catch (const std::exception &error) {
            throw Error(std::string("--save-setup: ") + error.what());
        }
    }
    if (options.list_presets) list_presets(plugin_controls(host), stdout);
    if (options.list_controls) list_controls(plugin_controls(host), stdout);
    return options.renders();
}

// One frame of the loop: only simulated (a frame kept with --skip-existing,
// or a cache being filled), rendered by the plate output, or rendered and
// handed to the writer.
struct FrameStep {
    sparkhost::Host &host;
    const RenderOptions &options;
    PlateOutput *plates;  // none when no frames are written
    OverlayOutput &overlay;
    ShotRunner &shot;
    const sparkhost::FramePattern &output;
    sparkhost::FrameWriter &writer;
    OutputFormatCheck &check_output_format;
    RenderTimings &timings;

    void operator()(int frame) {
        const bool layered = plates && plates->active();
        const bool exists = layered ? plates->frame_exists(frame) : output_exists(output.path(frame));
        if (!options.writes_frames() || (options.skip_existing && exists)) {
            shot.advance(frame);
            return;
        }
        timings.first_frame_begins();
        if (layered) plates->render(frame);
        if (layered && plates->writes_output()) {
            if (!options.overlay_svg.empty()) {
                sparkhost::Frame scratch = host.output_buffer();
                overlay.apply(frame, scratch);
            }
            return;
        }
        if (!host.run_frame(frame)) throw Error(host.last_failure());
        timings.frame_rendered(host.last_frame_times());
        const auto checking = RenderTimings::Clock::now();
        check_output_format();
        const auto handing = RenderTimings::Clock::now();
        timings.waited_for_library(std::chrono::duration<double>(handing - checking).count());
        sparkhost::Frame picture = writer.take_buffer();
        host.take_output(picture);
        overlay.apply(frame, picture);
        writer.submit(frame, std::move(picture));
        timings.handed_over(std::chrono::duration<double>(RenderTimings::Clock::now() - handing).count());
    }
};

}  // namespace

int render(const RenderOptions &options) {
    Progress progress(options.frame_count(), !options.quiet && isatty(STDERR_FILENO));
    sparkhost::Host host(host_settings(options, progress));
    attach_inputs(host, options);
    if (options.writes_frames()) check_output(options);
    check_outputs_spare_inputs(options);
    remove_stale_temporaries(options);
    host.load(plugin_path(options));
    for (const char *entry : {"SparkInitialise", "SparkProcess", "SparkUnInitialise"})
        if (!host.exports(entry)) throw Error("plug-in '" + host.plugin_path() + "' exports no " + entry);
    // Input files are looked at before anything else, so the image library
    // is wanted at once; loading it before the plug-in would hold that up.
    if (reads_images(options)) sparkhost::preload_image_io();
    auto warn = [&progress](const std::string &text) {
        progress.clear_line();
        std::fprintf(stderr, "fizzle-render: warning: %s\n", text.c_str());
    };
    std::optional<PlateOutput> plates;
    if (options.writes_frames()) plates.emplace(host, options, warn);
    if (options.renders()) host.check_inputs(options.first_frame, options.last_frame);
    OutputFormatCheck check_output_format(options);
    if (!set_up_plugin(host, options, check_output_format)) return 0;
    OverlayOutput overlay(host, options);
    ShotRunner shot(host, options, [&progress](const std::string &note) {
        progress.clear_line();
        std::fprintf(stderr, "fizzle-render: note: %s\n", note.c_str());
    });

    // Inputs are read ahead and frames written behind, each on a thread of
    // its own, so the render itself waits on neither. Those threads start
    // before the image library loads: a thread started while a library is
    // loading waits until it is loaded. The library then loads while the
    // shot catches up and the first frame renders.
    sparkhost::FramePattern output(options.output);
    // Catching up never goes past the first frame, except when filling the cache.
    if (!options.simulate_only) host.read_ahead(options.first_frame, options.last_frame);
    // Each frame queued or being encoded is held whole: 50 MB at 4K 12-bit,
    // where one encoder keeps up with the render on two processors.
    const sparkhost::FrameFormat &format = host.settings().format;
    sparkhost::FrameWriter writer(output, options.compression, sparkhost::frames_in_flight(format, 3),
                                  sparkhost::frames_in_flight(format, 2));
    if (options.writes_frames()) sparkhost::preload_image_io();
    const int start = shot.catch_up();
    if (options.simulate_only) host.read_ahead(start, options.last_frame);
    progress.start();
    RenderTimings timings;
    FrameStep step{host, options, plates ? &*plates : nullptr, overlay, shot, output, writer, check_output_format, timings};
    for (int frame = start; frame <= options.last_frame; ++frame) {
        if (int signal = stop_signal()) {
            progress.clear_line();
            report_stop(signal, options, frame - 1);
            host.uninitialise(std::max(options.first_frame, frame - 1));  // as a finished render does
            return stopped_exit_code(signal);
        }
        step(frame);
        shot.frame_done(frame);
        progress.frame_done(frame);
    }
    writer.finish();
    if (plates) plates->finish();
    if (options.timings) {
        progress.clear_line();
        timings.print(stderr);
    }
    host.uninitialise(options.last_frame);
    // A stop that came while the last frames were still being written is
    // still a stop: the caller asked for one and learns it was heeded.
    if (int signal = stop_signal()) {
        progress.clear_line();
        report_stop(signal, options, options.last_frame);
        return stopped_exit_code(signal);
    }
    progress.finish(options.writes_frames() ? options.output : "the cache " + options.cache_dir);
    return 0;
}
