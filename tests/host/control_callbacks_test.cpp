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

constexpr int kResolutionLists[] = {33, 62, 91, 120};
constexpr int kAutoPreviews[] = {34, 63, 92, 121};
constexpr int kClearOverlays[] = {28, 57, 86, 115};
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
};

}  // namespace

TEST_F(ControlCallbacks, ResolutionOnAnyPageChangesAllFourAndRendersEvenWithoutPreview) {
    host().set_control(34, 0);
    for (int page = 0; page < 4; ++page) {
        SCOPED_TRACE(page);
        EXPECT_TRUE(host().set_control(kResolutionLists[page], 2 + page));
        for (int list : kResolutionLists) EXPECT_EQ(list_control(list).Value, 2 + page) << list;
    }
}

TEST_F(ControlCallbacks, AutoPreviewAndClearOverlayStayEqualOnAllPages) {
    host().set_control(kAutoPreviews[2], 0);
    for (int number : kAutoPreviews) EXPECT_EQ(switch_control(number).Value, 0) << number;
    host().set_control(kAutoPreviews[3], 1);
    for (int number : kAutoPreviews) EXPECT_EQ(switch_control(number).Value, 1) << number;

    const int before = redraws();
    EXPECT_FALSE(host().set_control(kClearOverlays[1], 1));
    for (int number : kClearOverlays) EXPECT_EQ(switch_control(number).Value, 1) << number;
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

TEST_F(ControlCallbacks, ResetOnYesRestoresItsOwnPageOnly) {
    host().set_control("Density", 40);
    host().set_control(23, 0);          // "Growth Mode: Assorted"
    host().set_control("Demos", 5);
    host().set_control("Blend", 30);
    host().set_control(38, 0);          // "Turbulence" lives on page 1
    host().set_control(33, 2);          // resolution: common to every page
    const int asked = confirmations();

    EXPECT_TRUE(host().press_control(32));
    EXPECT_EQ(confirmations(), asked + 1);
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

TEST_F(ControlCallbacks, ResetOnNoChangesNothingButStillPreviews) {
    host().settings().confirm_answer = false;
    host().set_control("Light", 1);
    host().set_control("Light Inten", 120);
    const int asked = confirmations();
    EXPECT_TRUE(host().press_control(119));
    EXPECT_EQ(confirmations(), asked + 1);
    EXPECT_EQ(switch_control(93).Value, 1);
    EXPECT_FLOAT_EQ(float_control(102).Value, 120.0f);
}

TEST_F(ControlCallbacks, FirstFrameHidesWhatTheDefaultSwitchesLeaveUnused) {
    for (int number : {45, 46, 50, 51, 52, 53, 98, 99, 100, 101, 102, 103, 104, 107, 108, 109, 111, 112, 113, 94})
        EXPECT_FALSE(shown(number)) << number;
    for (int number : {14, 39, 40, 41, 43, 16, 24}) EXPECT_TRUE(shown(number)) << number;
}

TEST_F(ControlCallbacks, LightOffHidesRefIntensityEvenWithReflectionsOnAndBack) {
    EXPECT_FALSE(shown(99));
    host().set_control("Light", 1);
    host().set_control("Reflections", 1);
    EXPECT_TRUE(shown(99));
    EXPECT_TRUE(shown(98));
    host().set_control("Light", 0);
    EXPECT_FALSE(shown(99));
    EXPECT_FALSE(shown(98));
    for (int number : {100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 94, 95, 96, 97})
        EXPECT_FALSE(shown(number)) << number;
    host().set_control("Light", 1);
    EXPECT_TRUE(shown(99));
    for (int number : {100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 94, 95, 96, 97})
        EXPECT_TRUE(shown(number)) << number;
}

TEST_F(ControlCallbacks, CongregateWithoutBurstShowsTheSharedControlsButNotTheProbability) {
    host().set_control("Congregate", 1);
    for (int number : {51, 52, 53}) EXPECT_TRUE(shown(number)) << number;
    EXPECT_FALSE(shown(50));
    host().set_control("Congregate", 0);
    for (int number : {51, 52, 53}) EXPECT_FALSE(shown(number)) << number;
}

TEST_F(ControlCallbacks, AssortedGrowthHidesTimeMaxSizeAndEveryOtherModeShowsIt) {
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

TEST_F(ControlCallbacks, HostWritesAnimatedValuesBeforeEachFrameAtTheRecordsFrame) {
    sparkhost::set_curve_key(16, 0.0f, 10.0f);
    sparkhost::set_curve_key(16, 10.0f, 110.0f);
    ASSERT_TRUE(host().process(6));  // the plug-in sees frame 5
    EXPECT_FLOAT_EQ(float_control(16).Value, 60.0f);
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
    static uint32_t byte(uint32_t word, int index) { return (word >> (8 * index)) & 0xFFu; }
};

TEST_P(ColourCallbacks, SlidersBuildThePackedColour) {
    host().set_control("BubbleColour R", 50);
    host().set_control("BubbleColour G", 0.2);
    host().set_control("BubbleColour B", 0);
    const uint32_t bubble = colour_control(71).Value;
    EXPECT_EQ(byte(bubble, 0), 128u);  // round(50 x 2.551); round(50 x 40.951) = 2048 in 12 bits
    EXPECT_EQ(byte(bubble, 1), deep() ? 0u : 1u);
    EXPECT_EQ(byte(bubble, 2), 0u);

    host().set_control("Light Colour G", 10);
    const uint32_t light = colour_control(94).Value;
    EXPECT_EQ(byte(light, 0), 255u);
    EXPECT_EQ(byte(light, 1), deep() ? 25u : 26u);  // round(25.51); round(409.51) = 410, top bits 25
    EXPECT_EQ(byte(light, 2), 255u);
}

TEST_P(ColourCallbacks, PickedColourFillsTheSliders) {
    host().set_control(71, double(0x00FF8040u));
    const double scale = deep() ? 40.951 : 2.551;
    auto widen = [&](double b) { return deep() ? double((int(b) << 4) | (int(b) >> 4)) : b; };
    EXPECT_NEAR(float_control(72).Value, widen(0x40) / scale, 1e-4);
    EXPECT_NEAR(float_control(73).Value, widen(0x80) / scale, 1e-4);
    EXPECT_NEAR(float_control(74).Value, widen(0xFF) / scale, 1e-4);

    host().set_control(94, 0.0);
    for (int number : {95, 96, 97}) EXPECT_EQ(float_control(number).Value, 0.0f) << number;
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
