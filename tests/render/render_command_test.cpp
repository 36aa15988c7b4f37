// The render command spelled as arguments and read back by fizzle-render's
// own option parser: what the studio asks for is what fizzle-render runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "render/options.h"
#include "render/render_command.h"

// A failed comparison shows the two commands as the arguments they spell.
void PrintTo(const RenderCommand &command, std::ostream *out) {
    *out << ::testing::PrintToString(render_arguments(command));
}

namespace {

// fizzle-render's parse and checks, as its main runs them.
RenderOptions parsed(const std::vector<std::string> &arguments) {
    CLI::App app;
    RenderOptions options;
    add_render_options(app, options);
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    app.parse(reversed);
    resolve_options(options);
    return options;
}

RenderCommand read_back(const RenderCommand &command) { return render_command(parsed(render_arguments(command))); }

RenderCommand everything() {
    RenderCommand command;
    command.format = {720, 486, sparkhost::Depth::Bits12};
    command.pixel_aspect = 0.9;
    command.inputs = {"plates/scene.####.exr", "birth.png", "burst.%04d.tif", "sky reflection.jpg"};
    command.setup = "shots/a.setup";
    command.preroll = true;
    command.first_frame = 12;
    command.last_frame = 48;
    command.output = "out/frame.%04d.exr";
    command.layer = "out/bubbles.%04d.exr";
    command.layer_type = "float";
    command.colour_config = "aces.ocio";
    command.scene_space = "ACEScg";
    command.working_space = "sRGB";
    return command;
}

}  // namespace

TEST(RenderCommand, EveryFieldSurvivesFizzleRendersOwnParser) {
    RenderCommand plain;
    plain.output = "f.%04d.png";
    RenderCommand dashed = everything();
    dashed.setup = "-odd.setup";
    dashed.output = "-frames.%04d.exr";
    dashed.layer = "-layer.%04d.exr";
    RenderCommand one_colour_option = plain;
    one_colour_option.scene_space = "lin_rec709";
    for (const RenderCommand &command : {plain, everything(), dashed, one_colour_option}) {
        SCOPED_TRACE(::testing::PrintToString(render_arguments(command)));
        EXPECT_EQ(read_back(command), command);
    }
}

TEST(RenderCommand, OptionsLeftAtTheirDefaultsAreNotSpelled) {
    RenderCommand command;
    command.output = "f.%04d.png";
    const std::vector<std::string> arguments = render_arguments(command);
    for (const char *option : {"--aspect", "--setup", "--preroll", "--layer", "--layer-type", "--colour-config",
                               "--scene-space", "--working-space", "--scene"})
        EXPECT_EQ(std::find(arguments.begin(), arguments.end(), option), arguments.end()) << option;
}

TEST(RenderCommand, ALayerWithoutATypeReadsBackWithTheTypeFizzleRenderPicks) {
    RenderCommand command = everything();
    command.layer_type.clear();
    const RenderCommand back = read_back(command);
    EXPECT_EQ(back.layer_type, "half");
    // Spelled again, the picked type names the same run.
    EXPECT_EQ(read_back(back), back);
}
