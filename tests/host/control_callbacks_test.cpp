// The control callbacks of the real plug-in, driven through our host as a
// user would: common controls kept equal, preview, reset, colours, the
// visibility rules, setups and the amplitude import.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "plugin_host_fixture.h"
#include "sparkhost/controls.h"
#include "sparkhost/curves.h"

using sparkhost::Depth;
using sparkhost::Message;

namespace {

constexpr const char *kResetQuestion = "Are you sure you want to reset the current settings to default values?";

class ControlCallbacks : public PluginHostTest {
protected:
    int redraws() { return host().events().viewing_draws; }
    int confirmations() {
        int count = 0;
        for (const Message &message : host().messages())
            if (message.kind == Message::Kind::Confirm && message.text == kResetQuestion) ++count;
        return count;
    }
    void expect_shown(const std::vector<int> &numbers, bool expected) {
        for (int number : numbers) EXPECT_EQ(shown(number), expected) << "control " << number;
    }
    // The values of a common control, repeated 29 numbers apart on the four pages.
    std::vector<int> on_every_page(int first, bool list = false) {
        std::vector<int> values;
        for (int n = first; n < first + 4 * 29; n += 29)
            values.push_back(list ? list_control(n).Value : switch_control(n).Value);
        return values;
    }
};

}  // namespace

TEST_F(ControlCallbacks, CommonControlsStayEqualOnAllPagesAndResolutionRendersEvenWithoutPreview) {
    host().set_control(92, 0);  // "Auto Preview", page 2
    EXPECT_EQ(on_every_page(34), std::vector<int>(4, 0));
    for (int page = 0; page < 4; ++page) {
        EXPECT_TRUE(host().set_control(33 + 29 * page, 2 + page)) << page;
        EXPECT_EQ(on_every_page(33, true), std::vector<int>(4, 2 + page)) << page;
    }
    host().set_control(121, 1);
    EXPECT_EQ(on_every_page(34), std::vector<int>(4, 1));

    const int before = redraws();
    EXPECT_FALSE(host().set_control(57, 1));  // "Clear Overlay", page 1
    EXPECT_EQ(on_every_page(28), std::vector<int>(4, 1));
    EXPECT_EQ(redraws(), before + 1);
}

TEST_F(ControlCallbacks, ParameterChangeRendersWithAutoPreviewAndOnlyRedrawsWithout) {
    int before = redraws();
    EXPECT_TRUE(host().set_control("Density", 40));
    EXPECT_EQ(redraws(), before);

    host().set_control(63, 0);
    const sparkhost::Frame shown = host().output_buffer();
    before = redraws();
    EXPECT_FALSE(host().set_control("Density", 30));
    EXPECT_TRUE(host().output_buffer() == shown);
    EXPECT_FALSE(host().press_control(6));  // "Restart" on page 0
    EXPECT_FALSE(host().set_control("Gravity", 1));
    EXPECT_EQ(redraws(), before + 3);
}

TEST_F(ControlCallbacks, BlendRendersOnlyWhileTheViewerShowsTheResult) {
    int before = redraws();
    EXPECT_TRUE(host().set_control("Blend", 50));
    EXPECT_EQ(redraws(), before + 1);

    host().settings().viewer_active = false;
    before = redraws();
    EXPECT_FALSE(host().set_control("Blend", 60));
    EXPECT_EQ(redraws(), before + 1);
    EXPECT_FLOAT_EQ(float_control(27).Value, 60.0f);
}

TEST_F(ControlCallbacks, ResetAsksThenRestoresItsOwnPageOnly) {
    host().set_control("Density", 40);
    host().set_control(23, 0);          // "Growth Mode: Assorted"
    host().set_control("Demos", 5);
    host().set_control("Blend", 30);
    host().set_control(38, 0);          // "Turbulence" lives on page 1
    host().set_control(33, 2);          // resolution: common to every page

    // Answered no, nothing changes but the press still previews.
    host().settings().confirm_answer = false;
    EXPECT_TRUE(host().press_control(32));
    EXPECT_EQ(confirmations(), 1);
    EXPECT_FLOAT_EQ(float_control(27).Value, 30.0f);

    host().settings().confirm_answer = true;
    EXPECT_TRUE(host().press_control(32));
    EXPECT_EQ(confirmations(), 2);
    EXPECT_FLOAT_EQ(float_control(16).Value, 20.0f);
    EXPECT_EQ(list_control(23).Value, 3);
    EXPECT_EQ(list_control(29).Value, 0);
    EXPECT_FLOAT_EQ(float_control(27).Value, 0.0f);
    EXPECT_EQ(switch_control(38).Value, 0);
    EXPECT_EQ(list_control(33).Value, 2);
    // The effect followed: "TimeMaxSize" is shown again with linear growth.
    EXPECT_TRUE(shown(14));

    host().set_control(42, 0);
    EXPECT_TRUE(host().press_control(61));
    EXPECT_EQ(switch_control(38).Value, 1);
    EXPECT_EQ(switch_control(42).Value, 1);
}

TEST_F(ControlCallbacks, VisibilityFollowsTheSwitchesFromTheFirstFrameOn) {
    const std::vector<int> lighting = {100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 94, 95, 96, 97};
    // The first frame hides what the default switches leave unused.
    expect_shown({45, 46, 50, 51, 52, 53, 98, 99, 100, 101, 102, 103, 104, 107, 108, 109, 111, 112, 113, 94}, false);
    expect_shown({14, 39, 40, 41, 43, 16, 24}, true);

    // "Ref Intensity" needs both Light and Reflections.
    host().set_control("Light", 1);
    host().set_control("Reflections", 1);
    expect_shown({98, 99}, true);
    host().set_control("Light", 0);
    expect_shown({98, 99}, false);
    expect_shown(lighting, false);
    host().set_control("Light", 1);
    expect_shown({99}, true);
    expect_shown(lighting, true);

    // Congregate without Burst shows the shared controls, not the probability.
    host().set_control("Congregate", 1);
    expect_shown({51, 52, 53}, true);
    expect_shown({50}, false);
    host().set_control("Congregate", 0);
    expect_shown({51, 52, 53}, false);

    // "TimeMaxSize" is hidden by Assorted growth alone.
    for (int mode : {0, 1, 0, 2, 3}) {
        host().set_control("Growth Mode", mode);
        EXPECT_EQ(shown(14), mode != 0) << "mode " << mode;
    }
}

TEST_F(ControlCallbacks, SwitchAsksTheHostToRedrawItselfAfterItsRule) {
    host().set_control("Gravity", 1);
    EXPECT_TRUE(shown(45));
    const std::vector<int> updates = sparkhost::control_log().updates();
    EXPECT_NE(std::find(updates.begin(), updates.end(), 44), updates.end());
}

TEST_F(ControlCallbacks, ImportAmplitudeFileFillsTheCurveOfTheLightSwitch) {
    host().settings().browser_answer = std::string(FIZZLE_TEST_DATA) + "/well_formed.amp";
    host().press_control("Import Amplitude File");
    ASSERT_TRUE(sparkhost::curve_of(93));
    EXPECT_FALSE(sparkhost::curve_of(93)->empty());
}

// Colours in both directions and both depths: percent sliders to the packed
// word and back.
class ColourCallbacks : public PluginHostTest, public ::testing::WithParamInterface<Depth> {
protected:
    void SetUp() override { start(quiet_host_settings(GetParam())); }
    bool deep() const { return GetParam() == Depth::Bits12; }
    uint32_t rgb(int number) { return colour_control(number).Value & 0xFFFFFFu; }  // red in the low byte
    void expect_sliders(int first, const std::vector<double> &expected) {
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(float_control(first + i).Value, expected[i], 1e-3) << first + i;
    }
};

TEST_P(ColourCallbacks, SlidersBuildThePackedColour) {
    host().set_control("BubbleColour R", 50);
    host().set_control("BubbleColour G", 0.2);
    host().set_control("BubbleColour B", 0);
    // Red: round(50 x 2.551) = 128; round(50 x 40.951) = 2048 in 12 bits, top byte 128.
    EXPECT_EQ(rgb(71), deep() ? 0x000080u : 0x000180u);
    host().set_control("Light Colour G", 10);
    // Green: round(25.51) = 26; round(409.51) = 410 in 12 bits, top byte 25.
    EXPECT_EQ(rgb(94), deep() ? 0xFF19FFu : 0xFF1AFFu);
}

TEST_P(ColourCallbacks, PickedColourFillsTheSliders) {
    host().set_control(71, double(0x00FF8040u));
    // 12-bit widens each byte (0x40 to 0x404) and scales by 40.951 instead of 2.551.
    expect_sliders(72, deep() ? std::vector<double>{25.1032, 50.2063, 99.9976}
                              : std::vector<double>{25.0882, 50.1764, 99.9608});
    host().set_control(94, 0.0);
    expect_sliders(95, {0, 0, 0});
}

INSTANTIATE_TEST_SUITE_P(Depths, ColourCallbacks, ::testing::Values(Depth::Bits8, Depth::Bits12),
                         [](const auto &info) { return info.param == Depth::Bits8 ? "Bits8" : "Bits12"; });

TEST(ControlSetup, SavedSetupComesBackIntoAFreshPluginAndReachesTheEffect) {
    namespace fs = std::filesystem;
    const fs::path path = fs::temp_directory_path() / ("fizzle-setup-" + std::to_string(::getpid()) + ".json");
    fs::remove(path);
    sparkhost::Settings settings = quiet_host_settings();
    settings.setup_path = path.string();
    {
        sparkhost::Host host(settings);
        host.load(FIZZLE_PLUGIN_PATH);
        host.initialise();
        host.set_control("Density", 40);
        host.set_control("Growth Mode", 0);
        host.set_control("Left X", -12.5);
        host.set_control(71, double(0x00102030u));
        host.uninitialise();
    }
    ASSERT_TRUE(fs::exists(path));
    sparkhost::Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    host.initialise();
    EXPECT_DOUBLE_EQ(host.controls().at("Density").value(), 40.0);
    EXPECT_DOUBLE_EQ(host.controls().at(23).value(), 0.0);
    EXPECT_DOUBLE_EQ(host.controls().at("Left X").value(), -12.5);
    EXPECT_DOUBLE_EQ(host.controls().at(71).value(), double(0x00102030u));
    sparkhost::control_log().clear();
    ASSERT_TRUE(host.process(1));
    EXPECT_FALSE(sparkhost::control_log().enabled(14));  // Assorted growth, synchronised on the first frame
    fs::remove(path);
}
