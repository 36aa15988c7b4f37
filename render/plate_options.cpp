// Options of scene-linear plates and the bubbles layer, and their checks.
#include "render/plate_options.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "render/options.h"
#include "sparkhost/clips/converted_clip.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/frame_pattern.h"

using sparkhost::Error;

namespace {

std::string extension_of(const std::string &path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char &c : extension) c = char(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

}  // namespace

void add_colour_options(CLI::App &app, PlateOptions &plates) {
    const char *group = "Scene-linear plates and layers";
    app.add_option("--colour-config", plates.colour_config,
                   "OpenColorIO config file (default: $OCIO, else OpenImageIO's built-in spaces)")
        ->group(group);
    app.add_option("--scene-space", plates.scene_space,
                   "Colour space of float scene and reflection files (default: the file's own, else "
                   "the config's scene_linear role); output is written in it")
        ->group(group);
    app.add_option("--working-space", plates.working_space,
                   "The encoding the effect works in; float files are converted to it for the effect "
                   "and the layer back from it")
        ->group(group)
        ->capture_default_str()
        ->each([&plates](const std::string &) { plates.working_space_given = true; });
}

bool may_hold_float(const std::string &pattern) {
    const std::string extension = extension_of(pattern);
    return extension == ".exr" || extension == ".tif" || extension == ".tiff" || extension == ".hdr" ||
           extension == ".pfm";
}

std::string plate_space(const sparkhost::ColourConfig &config, const PlateOptions &plates, const std::string &pattern,
                        const sparkhost::PlateInfo &info) {
    if (!plates.scene_space.empty()) return plates.scene_space;
    if (!info.colour_space.empty()) {
        for (const std::string &name : config.spaces())
            if (name.size() == info.colour_space.size() &&
                std::equal(name.begin(), name.end(), info.colour_space.begin(),
                           [](char a, char b) { return std::tolower(a) == std::tolower(b); }))
                return name;
    }
    if (std::string linear = config.role("scene_linear"); !linear.empty()) return linear;
    if (std::string linear = config.role("linear"); !linear.empty()) return linear;
    throw Error("'" + pattern + "': no colour space in the file and no scene_linear role in " + config.describe() +
                "; name one with --scene-space");
}

bool use_float_reflection(sparkhost::Host &host, const RenderOptions &options, const sparkhost::ColourConfig &config) {
    const std::string &reflection = options.inputs[sparkhost::kReflection];
    if (reflection.empty() || !may_hold_float(reflection)) return false;
    const sparkhost::FramePattern pattern(reflection);
    const sparkhost::PlateInfo info = sparkhost::probe_plate(pattern.path(pattern.is_sequence() ? options.first_frame : 0));
    if (!info.is_float()) return false;
    const std::string space = plate_space(config, options.plates, reflection, info);
    host.set_input(sparkhost::kReflection, std::make_shared<sparkhost::ConvertedClip>(
                                               reflection, config.conversion(space, options.plates.working_space)));
    return true;
}

void add_plate_options(CLI::App &app, RenderOptions &options) {
    PlateOptions &plates = options.plates;
    const char *group = "Scene-linear plates and layers";
    app.add_option("--layer", plates.layer,
                   "Also write the bubbles alone as premultiplied RGBA, e.g. out/bubbles.%04d.exr: "
                   "the written frame is this layer over the scene")
        ->group(group);
    app.add_option("--layer-type", plates.layer_type_text,
                   "Samples of the layer: half, float or uint16 (default: half in EXR, uint16 otherwise)")
        ->group(group)
        ->check(CLI::IsMember({"half", "float", "uint16"}));
    add_colour_options(app, plates);
}

void check_plate_options(RenderOptions &options) {
    PlateOptions &plates = options.plates;
    if (plates.layer.empty()) {
        if (!plates.layer_type_text.empty()) throw Error("--layer-type: needs --layer");
        return;
    }
    // Filling the simulation cache writes no frame, so no layer either: a
    // farm hands the fill job the same options as the chunks.
    if (options.simulate_only) return;
    if (options.output.empty()) throw Error("--layer: needs --output");
    const std::string extension = extension_of(plates.layer);
    const bool exr = extension == ".exr";
    if (plates.layer_type_text.empty()) plates.layer_type_text = exr ? "half" : "uint16";
    plates.layer_type = plates.layer_type_text == "half"    ? sparkhost::SampleType::Half
                        : plates.layer_type_text == "float" ? sparkhost::SampleType::Float
                                                            : sparkhost::SampleType::UInt16;
    const bool float_type = plates.layer_type != sparkhost::SampleType::UInt16;
    if (!exr && extension != ".tif" && extension != ".tiff" && (float_type || extension != ".png"))
        throw Error("--layer: '" + plates.layer + "' must be an EXR or TIFF file" +
                    (float_type ? "" : " (or PNG for uint16)") + " to keep the layer's alpha and precision");
    // Compared as the files they name, so "./a.%04d.exr" is "a.####.exr".
    namespace fs = std::filesystem;
    sparkhost::FramePattern layer(plates.layer), output(options.output);
    if (!layer.is_sequence() && options.frame_count() > 1)
        throw Error("--layer: '" + plates.layer + "' has no frame number (%04d or ####) for " +
                    std::to_string(options.frame_count()) + " frames");
    const fs::path first_layer = fs::absolute(layer.path(options.first_frame)).lexically_normal();
    const fs::path first_output = fs::absolute(output.path(options.first_frame)).lexically_normal();
    if (first_layer == first_output)
        throw Error("--layer: '" + plates.layer + "' names the same files as --output; the layer needs files of its own");
}
