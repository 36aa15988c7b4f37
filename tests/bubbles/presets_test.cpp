// The "Demos" presets as data: lookup, and the features each look is known by.
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

TEST(DemoPresets, EveryPresetSharesTheHouseLook) {
    for (const DemoPreset &p : demo_presets()) {
        SCOPED_TRACE(p.name);
        EXPECT_EQ(p.seed, 831.0);
        EXPECT_EQ(p.fade_mode, 3.0);
        EXPECT_EQ(p.mono_var, 0.0);
        EXPECT_EQ(p.shine, 45.0);
        EXPECT_EQ(p.turbulence_on, 1.0);
        EXPECT_EQ(p.light_on, 1.0);
        EXPECT_EQ(p.bubble_colour[3], 32640);
        EXPECT_EQ(p.light_colour[3], 32640);
        // Burst settings are given only where bursting or gathering is on.
        const bool gives_burst = p.burst_on == 1.0 || p.congregate == 1.0;
        EXPECT_EQ(p.burst_probability.has_value(), gives_burst);
        EXPECT_EQ(p.afterlife.has_value(), gives_burst);
        EXPECT_EQ(p.gravity.has_value(), p.gravity_on == 1.0);
        EXPECT_EQ(p.friction.has_value(), p.friction_on == 1.0);
        EXPECT_EQ(p.ref_intensity.has_value(), p.reflections_on == 1.0);
    }
}

TEST(DemoPresets, TellingFeaturesOfSingleLooks) {
    const DemoPreset &pipe = demo_preset_for_list_value(10);
    // Positions are fractions of the frame: the emitter lies off the left edge.
    EXPECT_DOUBLE_EQ(*pipe.left_x, -0.131);
    EXPECT_DOUBLE_EQ(*pipe.right_x, -0.0694);
    EXPECT_EQ(*pipe.initial_velocity, 2000.0);
    EXPECT_EQ(*pipe.vel_dir, 0.0);
    EXPECT_EQ(*pipe.gravity, 1.05);
    EXPECT_EQ(*pipe.grav_angle, 42.0);

    const DemoPreset &floating = demo_preset_for_list_value(5);
    EXPECT_EQ(*floating.left_x, *floating.right_x);
    EXPECT_DOUBLE_EQ(*floating.left_y - *floating.right_y, 0.011);

    const DemoPreset &champagne = demo_preset_for_list_value(3);
    EXPECT_EQ(*champagne.preroll, 74.0);
    EXPECT_EQ(*champagne.use_birth_matte, 1.0);
    EXPECT_DOUBLE_EQ(*champagne.light_source_x, -0.422);
    EXPECT_EQ(champagne.light_colour, (std::array<uint16_t, 4>{32640, 26496, 8192, 32640}));

    const DemoPreset &gathering = demo_preset_for_list_value(8);
    EXPECT_EQ(gathering.bubble_colour, (std::array<uint16_t, 4>{32640, 29952, 20480, 32640}));
    EXPECT_EQ(*gathering.burst_probability, 1.0);

    const DemoPreset &bubbly = demo_preset_for_list_value(6);
    EXPECT_EQ(*bubbly.burst_probability, 38.0);
    EXPECT_DOUBLE_EQ(*bubbly.position_var, 0.122);

    std::string congregating, without_gravity;
    for (const DemoPreset &p : demo_presets()) {
        if (p.congregate == 1.0) congregating += p.name;
        if (p.gravity_on == 0.0) without_gravity += std::string(p.name) + " ";
    }
    EXPECT_EQ(congregating, "Gathering");
    EXPECT_EQ(without_gravity, "Gathering Flurry ");
    // Swirly is the one preset that leaves Congregate as it is.
    EXPECT_FALSE(demo_preset_for_list_value(7).congregate.has_value());
}
