// fizzle-render's command line spelled from a render's description.
#include "render/render_command.h"

#include <cstdio>

#include "render/options.h"

bool RenderCommand::operator==(const RenderCommand &other) const {
    return format == other.format && pixel_aspect == other.pixel_aspect && inputs == other.inputs &&
           setup == other.setup && preroll == other.preroll && first_frame == other.first_frame &&
           last_frame == other.last_frame && output == other.output && layer == other.layer &&
           layer_type == other.layer_type && colour_config == other.colour_config &&
           scene_space == other.scene_space && working_space == other.working_space;
}

namespace {

// Only what was asked for: an empty value leaves the option out. A value
// that starts with a dash would read as an option of its own, so it is
// joined to its option instead.
void add_given(std::vector<std::string> &arguments, const std::string &option, const std::string &value) {
    if (value.empty()) return;
    if (value[0] == '-')
        arguments.push_back(option + "=" + value);
    else
        arguments.insert(arguments.end(), {option, value});
}

}  // namespace

std::vector<std::string> render_arguments(const RenderCommand &command) {
    std::vector<std::string> arguments = {"--size", command.format.size_text(), "--depth",
                                          command.format.depth == sparkhost::Depth::Bits12 ? "12" : "8"};
    if (command.pixel_aspect != 1.0) {
        // The host takes the aspect as a float, which nine digits carry exactly.
        char aspect[32];
        std::snprintf(aspect, sizeof aspect, "%.9g", command.pixel_aspect);
        arguments.insert(arguments.end(), {"--aspect", aspect});
    }
    for (int clip = 0; clip < sparkhost::kClipCount; ++clip)
        add_given(arguments, std::string("--") + sparkhost::clip_name(clip), command.inputs[clip]);
    add_given(arguments, "--setup", command.setup);
    if (command.preroll) arguments.push_back("--preroll");
    add_given(arguments, "--colour-config", command.colour_config);
    add_given(arguments, "--scene-space", command.scene_space);
    add_given(arguments, "--working-space", command.working_space);
    add_given(arguments, "--layer", command.layer);
    add_given(arguments, "--layer-type", command.layer_type);
    arguments.insert(arguments.end(), {"--frames", std::to_string(command.first_frame) + "-" +
                                                       std::to_string(command.last_frame)});
    // The short spelling, as users type it; a dashed name needs the long one.
    if (!command.output.empty() && command.output[0] == '-')
        add_given(arguments, "--output", command.output);
    else
        add_given(arguments, "-o", command.output);
    return arguments;
}

RenderCommand render_command(const RenderOptions &options) {
    RenderCommand command;
    command.format = options.format;
    command.pixel_aspect = options.pixel_aspect;
    command.inputs = options.inputs;
    command.setup = options.setup;
    command.preroll = options.preroll;
    command.first_frame = options.first_frame;
    command.last_frame = options.last_frame;
    command.output = options.output;
    const PlateOptions &plates = options.plates;
    command.layer = plates.layer;
    command.layer_type = plates.layer_type_text;
    command.colour_config = plates.colour_config;
    command.scene_space = plates.scene_space;
    if (plates.working_space_given) command.working_space = plates.working_space;
    return command;
}
