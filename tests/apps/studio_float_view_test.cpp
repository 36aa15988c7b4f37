// The studio with a float scene: the viewer shows the bubbles over the plate
// through the colour config's display and view, not the plate clamped to the
// effect's encoding.
#include <gtest/gtest.h>

#include <OpenImageIO/imagebuf.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "apps/fizzle-studio/session.h"

namespace {

namespace fs = std::filesystem;
constexpr int kWidth = 96, kHeight = 54;

std::vector<float> read_floats(const std::string &path) {
    OIIO::ImageBuf image(path);
    std::vector<float> pixels(std::size_t(kWidth) * kHeight * 3);
    EXPECT_TRUE(image.get_pixels(OIIO::ROI(0, kWidth, 0, kHeight, 0, 1, 0, 3), OIIO::TypeDesc::FLOAT, pixels.data()))
        << path << ": " << image.geterror();
    return pixels;
}

uint8_t shown(float value) { return value > 0.0f ? uint8_t(std::min(value, 1.0f) * 255.0f + 0.5f) : 0; }

// How many samples of the picture are within a level of `expected` (floats
// as the view gives them).
std::size_t agreeing(const std::vector<uint8_t> &picture, const std::vector<float> &expected) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < picture.size(); ++i) count += std::abs(int(picture[i]) - int(shown(expected[i]))) <= 1;
    return count;
}

}  // namespace

TEST(StudioFloatScene, TheViewerShowsTheCompositeThroughTheChosenDisplayView) {
    const fs::path work = fs::temp_directory_path() / ("fizzle-float-view-" + std::to_string(getpid()));
    fs::create_directories(work);
    const std::string plate = (work / "plate.exr").string(), through = (work / "through.exr").string();
    const std::string config = std::string(FIZZLE_TEST_DATA) + "/scene_linear.ocio";
    // Scene-linear from -0.05 to 16: a plate clamped to the effect's encoding would show 0.18 as 46, not 118.
    const std::string make = "oiiotool --pattern fill:topleft=-0.05,0.18,0:topright=16,0.18,2:bottomleft=0.18,0.18,0.18:"
                             "bottomright=4,0.18,1 96x54 3 -d float -o '" + plate + "' && oiiotool --colorconfig '" +
                             config + "' '" + plate + "' --iscolorspace lin_rec709 --ociodisplay sRGB Display -d float -o '" +
                             through + "'";
    ASSERT_EQ(std::system(make.c_str()), 0) << make;

    RenderOptions options;
    options.format = {kWidth, kHeight, sparkhost::Depth::Bits12};
    options.preset = "Basic";
    options.processors = 2;
    options.plugin = FIZZLE_PLUGIN_PATH;
    options.inputs[sparkhost::kScene] = plate;
    options.plates.colour_config = config;
    Session session(options, work.string(), 1, 20);
    const nlohmann::json display = session.state(0)["display"];
    EXPECT_EQ(display["view"], "Display");
    EXPECT_EQ(display["choices"].size(), 2u);
    session.go_to(3);
    const std::vector<uint8_t> picture = *session.picture().rgb;
    const std::vector<float> linear = read_floats(plate), displayed = read_floats(through);
    ASSERT_EQ(picture.size(), displayed.size());
    // Away from the bubbles (a third of this small frame), the plate as the
    // view shows it; the plate in the effect's encoding would miss every green.
    EXPECT_GT(agreeing(picture, displayed), picture.size() * 3 / 5);
    EXPECT_NE(picture, std::vector<uint8_t>(picture.size(), 0));

    session.choose_display("sRGB", "Raw");
    EXPECT_EQ(session.state(0)["display"]["view"], "Raw");
    const std::vector<uint8_t> raw = *session.picture().rgb;
    EXPECT_GT(agreeing(raw, linear), raw.size() * 3 / 5);
    EXPECT_THROW(session.choose_display("sRGB", "Film"), RequestError);
    session.shutdown();
    fs::remove_all(work);
}

// A float reflection clip reaches the effect in its working encoding in the
// studio as in fizzle-render, so the picture is the frame the render writes
// (before, the studio handed the effect the clip's linear values clamped).
TEST(StudioFloatReflection, ThePictureIsTheFrameFizzleRenderWrites) {
    const fs::path work = fs::temp_directory_path() / ("fizzle-float-reflection-" + std::to_string(getpid()));
    fs::create_directories(work);
    const std::string reflection = (work / "reflection.exr").string(), written = (work / "out.%04d.png").string();
    const std::string config = std::string(FIZZLE_TEST_DATA) + "/scene_linear.ocio";
    const std::string make = "oiiotool --pattern fill:topleft=0.02,0.3,4:topright=8,0.05,0.6:bottomleft=0.18,2,0:"
                             "bottomright=1,0.5,12 96x54 3 -d float -o '" + reflection + "'";
    ASSERT_EQ(std::system(make.c_str()), 0) << make;
    // Champagne draws reflections.
    const std::string render = std::string("FIZZLE_NO_PAUSE=1 '") + FIZZLE_RENDER_PATH +
                               "' -q --size 96x54 --preset Champagne --processors 2 --reflection '" + reflection +
                               "' --colour-config '" + config + "' --frames 3-3 -o '" + written + "' > /dev/null 2>&1";
    ASSERT_EQ(std::system(render.c_str()), 0) << render;
    OIIO::ImageBuf frame((work / "out.0003.png").string());
    std::vector<uint8_t> expected(std::size_t(kWidth) * kHeight * 3);
    ASSERT_TRUE(frame.get_pixels(OIIO::ROI(0, kWidth, 0, kHeight, 0, 1, 0, 3), OIIO::TypeDesc::UINT8, expected.data()))
        << frame.geterror();

    RenderOptions options;
    options.format = {kWidth, kHeight, sparkhost::Depth::Bits8};
    options.preset = "Champagne";
    options.processors = 2;
    options.plugin = FIZZLE_PLUGIN_PATH;
    options.inputs[sparkhost::kReflection] = reflection;
    options.plates.colour_config = config;
    Session session(options, work.string(), 1, 20);
    session.go_to(3);
    EXPECT_EQ(*session.picture().rgb, expected);
    session.shutdown();
    fs::remove_all(work);
}
