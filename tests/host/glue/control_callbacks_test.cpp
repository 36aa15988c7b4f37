// The control callbacks of the real plug-in, driven through our host as a
// user would: common controls kept equal, preview, reset, colours and the
// visibility rules from the first frame on.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/plugin_host_fixture.h"

using sparkhost::Depth;

namespace {

class ControlCallbacks : public PluginHostTest {
protected:
    int redraws() { return host().events().viewing_draws; }
    void expect_shown(const std::vector<int> &numbers, bool expected) {
        for (int number : numbers) EXPECT_EQ(shown(number), expected) << "control " << number;
    }
    // The values of a common control, repeated 29 numbers apart on the four pages.
    std::vector<double> on_every_page(int first) {
        std::vector<double> values;
        for (int n = first; n < first + 4 * 29; n += 29) values.push_back(value(n));
        return values;
    }
};

}  // namespace

TEST_F(ControlCallbacks, CommonControlsStayEqualOnAllPagesAndResolutionRendersEvenWithoutPreview) {
    host().set_control(92, 0);  // "Auto Preview", page 2
    EXPECT_EQ(on_every_page(34), std::vector<double>(4, 0));
    for (int page = 0; page < 4; ++page) {
        EXPECT_TRUE(host().set_control(33 + 29 * page, 2 + page)) << page;
        EXPECT_EQ(on_every_page(33), std::vector<double>(4, 2 + page)) << page;
    }
    const int before = redraws();
    EXPECT_FALSE(host().set_control(57, 1));  // "Clear Overlay", page 1
    EXPECT_EQ(on_every_page(28), std::vector<double>(4, 1));
    EXPECT_EQ(redraws(), before + 1);
}

TEST_F(ControlCallbacks, ParameterChangeRendersWithAutoPreviewAndOnlyRedrawsWithout) {
    int before = redraws();
    EXPECT_TRUE(host().set_control("Density", 40));
    EXPECT_EQ(redraws(), before);

    host().set_control(63, 0);
    const sparkhost::Frame frame = host().output_buffer();
    before = redraws();
    EXPECT_FALSE(host().set_control("Density", 30));
    EXPECT_TRUE(host().output_buffer() == frame);
    EXPECT_FALSE(host().press_control(6));  // "Restart" on page 0
    EXPECT_EQ(redraws(), before + 2);
}

TEST_F(ControlCallbacks, BlendRendersOnlyWhileTheViewerShowsTheResult) {
    EXPECT_TRUE(host().set_control("Blend", 50));
    host().settings().viewer_active = false;
    const int before = redraws();
    EXPECT_FALSE(host().set_control("Blend", 60));
    EXPECT_EQ(redraws(), before + 1);
    EXPECT_FLOAT_EQ(value(27), 60.0f);
}

TEST_F(ControlCallbacks, ResetAsksThenRestoresItsOwnPageOnly) {
    host().set_control("Density", 40);
    host().set_control(23, 0);  // "Growth Mode: Assorted"
    host().set_control(38, 0);  // "Turbulence" lives on page 1
    host().set_control(33, 2);  // resolution: common to every page
    host().settings().confirm_answer = false;
    EXPECT_TRUE(host().press_control(32));  // answered no: nothing changes, but the press previews
    EXPECT_FLOAT_EQ(value(16), 40.0f);

    host().settings().confirm_answer = true;
    EXPECT_TRUE(host().press_control(32));
    EXPECT_EQ(host().messages().back().text, "Are you sure you want to reset the current settings to default values?");
    EXPECT_EQ((std::vector<double>{value(16), value(23), value(38), value(33)}), (std::vector<double>{20, 3, 0, 2}));
    EXPECT_TRUE(shown(14));  // the effect followed: linear growth shows "TimeMaxSize" again

    host().set_control(42, 0);
    EXPECT_TRUE(host().press_control(61));
    EXPECT_EQ(value(38), 1);
    EXPECT_EQ(value(42), 1);
}

TEST_F(ControlCallbacks, VisibilityFollowsTheSwitchesFromTheFirstFrameOn) {
    expect_shown({45, 46, 50, 51, 52, 53, 98, 99, 100, 113, 94}, false);
    expect_shown({14, 39, 40, 41, 43, 16, 24}, true);
    host().set_control("Light", 1);
    host().set_control("Reflections", 1);
    expect_shown({98, 99, 100, 113, 94}, true);
    host().set_control("Growth Mode", 0);
    EXPECT_FALSE(shown(14));

    // A switch asks the host to redraw it after applying its rule.
    host().set_control("Gravity", 1);
    EXPECT_TRUE(shown(45));
    const std::vector<int> updates = sparkhost::control_log().updates();
    EXPECT_NE(std::find(updates.begin(), updates.end(), 44), updates.end());
}

// Colours in both directions and both depths: percent sliders to the packed
// word and back.
class ColourCallbacks : public PluginHostTest, public ::testing::WithParamInterface<Depth> {
protected:
    void SetUp() override { start(quiet_host_settings(GetParam())); }
    bool deep() const { return GetParam() == Depth::Bits12; }
    uint32_t rgb(int number) { return uint32_t(value(number)) & 0xFFFFFFu; }  // red in the low byte
    void expect_sliders(int first, const std::vector<double> &expected) {
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(value(first + i), expected[i], 1e-3) << first + i;
    }
};

TEST_P(ColourCallbacks, SlidersBuildThePackedColourAndAPickedColourFillsThem) {
    host().set_control("BubbleColour R", 50);
    host().set_control("BubbleColour G", 0.2);
    host().set_control("BubbleColour B", 0);
    // Red: round(50 x 2.551) = 128; round(50 x 40.951) = 2048 in 12 bits, top byte 128.
    EXPECT_EQ(rgb(71), deep() ? 0x000080u : 0x000180u);
    host().set_control("Light Colour G", 10);
    // Green: round(25.51) = 26; round(409.51) = 410 in 12 bits, top byte 25.
    EXPECT_EQ(rgb(94), deep() ? 0xFF19FFu : 0xFF1AFFu);

    host().set_control(71, double(0x00FF8040u));
    // 12-bit widens each byte (0x40 to 0x404) and scales by 40.951 instead of 2.551.
    expect_sliders(72, deep() ? std::vector<double>{25.1032, 50.2063, 99.9976}
                              : std::vector<double>{25.0882, 50.1764, 99.9608});
    host().set_control(94, 0.0);
    expect_sliders(95, {0, 0, 0});
}

INSTANTIATE_TEST_SUITE_P(Depths, ColourCallbacks, ::testing::Values(Depth::Bits8, Depth::Bits12),
                         [](const auto &info) { return info.param == Depth::Bits8 ? "Bits8" : "Bits12"; });
