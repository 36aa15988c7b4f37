// Every demo preset rendered through the real plug-in in our host: no
// error, and bubbles drawn from the first frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "bubbles/presets.h"
#include "preset_host.h"

namespace {

class PresetRender : public ::testing::TestWithParam<int> {};

}  // namespace

TEST_P(PresetRender, RendersWithoutErrorAndDrawsBubbles) {
    PresetHost rig(96, 64);
    rig.choose(demo_preset_for_list_value(GetParam()).name);
    bool drawn = false;
    for (int number = 1; number <= 4; ++number) {
        const sparkhost::Frame frame = rig.render(number);
        drawn |= std::any_of(frame.bytes().begin(), frame.bytes().end(),
                             [](uint8_t byte) { return byte != PresetHost::kSceneGrey; });
    }
    EXPECT_TRUE(drawn);
    EXPECT_EQ(rig.first_error(), "");
}

INSTANTIATE_TEST_SUITE_P(Demos, PresetRender, ::testing::Range(1, kDemoPresetCount + 1),
                         [](const ::testing::TestParamInfo<int> &info) {
                             std::string name = demo_preset_for_list_value(info.param).name;
                             name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
                             return name;
                         });
