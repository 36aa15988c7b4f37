// The "Demos" presets as data: lookup, and which values a preset leaves to the user.
#include <gtest/gtest.h>

#include <string>

#include "bubbles/presets.h"

TEST(DemoPresets, ListValuesOutsideOneToTenLoadBasic) {
    EXPECT_STREQ(demo_preset_for_list_value(1).name, "Basic");
    EXPECT_STREQ(demo_preset_for_list_value(3).name, "Champagne");
    EXPECT_STREQ(demo_preset_for_list_value(10).name, "Pipe");
    for (long outside : {0L, 11L, -1L, 1000L}) EXPECT_STREQ(demo_preset_for_list_value(outside).name, "Basic");

    EXPECT_EQ(demo_preset_list_value("under water"), 4);
    EXPECT_EQ(demo_preset_list_value("FLURRY"), 9);
    EXPECT_EQ(demo_preset_list_value("Fizzy"), 0);
    for (int value = 1; value <= kDemoPresetCount; ++value)
        EXPECT_EQ(demo_preset_list_value(demo_preset_for_list_value(value).name), value);
}

TEST(DemoPresets, AmountsAreGivenOnlyWhereTheirSwitchIsOn) {
    std::string congregating, without_gravity;
    for (const DemoPreset &p : demo_presets()) {
        SCOPED_TRACE(p.name);
        const bool gives_burst = p.burst_on == 1.0 || p.congregate == 1.0;
        EXPECT_EQ(p.burst_probability.has_value(), gives_burst);
        EXPECT_EQ(p.afterlife.has_value(), gives_burst);
        EXPECT_EQ(p.gravity.has_value(), p.gravity_on == 1.0);
        EXPECT_EQ(p.friction.has_value(), p.friction_on == 1.0);
        EXPECT_EQ(p.ref_intensity.has_value(), p.reflections_on == 1.0);
        if (p.congregate == 1.0) congregating += p.name;
        if (p.gravity_on == 0.0) without_gravity += std::string(p.name) + " ";
    }
    EXPECT_EQ(congregating, "Gathering");
    EXPECT_EQ(without_gravity, "Gathering Flurry ");
    // Positions are fractions of the frame: Pipe's emitter lies off the left edge.
    EXPECT_DOUBLE_EQ(*demo_preset_for_list_value(10).left_x, -0.131);
}
