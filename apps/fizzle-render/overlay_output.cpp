// fizzle-render's overlay options and their output.
#include "overlay_output.h"

#include <unistd.h>

#include <filesystem>

#include "sparkhost/core/error.h"
#include "sparkhost/viewer/gl_recorder.h"

using sparkhost::Error;

namespace {

void check_svg_pattern(const RenderOptions &options, const sparkhost::FramePattern &pattern) {
    namespace fs = std::filesystem;
    if (!pattern.is_sequence() && options.frame_count() > 1)
        throw Error("--overlay-svg: '" + options.overlay_svg + "' has no frame number (%04d or ####) for " +
                    std::to_string(options.frame_count()) + " frames");
    fs::path first = pattern.path(options.first_frame);
    fs::path directory = first.parent_path().empty() ? fs::path(".") : first.parent_path();
    std::error_code error;
    if (!fs::is_directory(directory, error))
        throw Error("--overlay-svg: directory '" + directory.string() + "' " +
                    (error && error != std::errc::no_such_file_or_directory ? "cannot be reached: " + error.message()
                                                                            : std::string("does not exist")));
    if (access(directory.c_str(), W_OK) != 0)
        throw Error("--overlay-svg: directory '" + directory.string() + "' is not writable");
    if (fs::is_directory(first, error)) throw Error("--overlay-svg: '" + first.string() + "' is a directory");
}

}  // namespace

OverlayOutput::OverlayOutput(sparkhost::Host &host, const RenderOptions &options)
    : viewer_(host),
      over_frames_(options.overlay),
      svg_(!options.overlay_svg.empty()),
      svg_pattern_(options.overlay_svg) {
    if (svg_) check_svg_pattern(options, svg_pattern_);
    if ((over_frames_ || svg_) && !host.exports("SparkOverlay"))
        throw Error("plug-in '" + host.plugin_path() + "' exports no SparkOverlay: it has no overlay to draw");
}

void OverlayOutput::apply(int frame, sparkhost::Frame &picture) {
    if (!over_frames_ && !svg_) return;
    viewer_.set_frame(frame);
    const std::vector<sparkhost::GlPrimitive> primitives = viewer_.draw();
    if (over_frames_) sparkhost::DrawOverFrame(primitives, picture);
    if (svg_ && !sparkhost::WriteSvgFile(svg_pattern_.path(frame), primitives, picture.width(), picture.height()))
        throw Error("--overlay-svg: cannot write '" + svg_pattern_.path(frame) + "'");
}
