// Every demo preset rendered through the real plug-in in our host: no
// error, and bubbles near the emitter from the first frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "bubbles/presets.h"
#include "preset_host.h"

namespace {

struct Point {
    double x, y;
};

double distance_to_segment(Point p, Point a, Point b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double length2 = dx * dx + dy * dy;
    double t = length2 > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / length2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(p.x - (a.x + t * dx), p.y - (a.y + t * dy));
}

bool differs_from_scene(const sparkhost::Frame &frame, int x, int y) {
    for (int c = 0; c < 3; ++c)
        if (frame.value(x, y, c) != PresetHost::kSceneGrey) return true;
    return false;
}

class PresetRender : public ::testing::TestWithParam<int> {};

}  // namespace

TEST_P(PresetRender, RendersWithoutErrorAndDrawsBubblesNearTheEmitter) {
    const DemoPreset &preset = demo_preset_for_list_value(GetParam());
    constexpr int W = 192, H = 128;
    PresetHost rig(W, H);
    rig.choose(preset.name);
    // Frame rows count from the bottom, as the effect's image rows do.
    const Point a{W * *preset.left_x, H * *preset.left_y}, b{W * *preset.right_x, H * *preset.right_y};
    int near_changes = 0;
    for (int number = 1; number <= 4; ++number) {
        const sparkhost::Frame frame = rig.render(number);
        ASSERT_EQ(frame.width(), W);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                near_changes +=
                    differs_from_scene(frame, x, y) && distance_to_segment({x + 0.5, y + 0.5}, a, b) <= 0.3 * W;
    }
    EXPECT_GT(near_changes, 0);
    EXPECT_EQ(rig.first_error(), "");
}

INSTANTIATE_TEST_SUITE_P(Demos, PresetRender, ::testing::Range(1, kDemoPresetCount + 1),
                         [](const ::testing::TestParamInfo<int> &info) {
                             std::string name = demo_preset_for_list_value(info.param).name;
                             name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
                             return name;
                         });
