// The ten ready-made looks of the "Demos" list, as data.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

// One preset: the value it gives each control, in the units the effect's
// controls take (positions and "Position Var" as fractions of the frame,
// angles in degrees, lists numbered from 1, switches 0 or 1). An empty value
// leaves the control as the user set it.
struct DemoPreset {
    using Value = std::optional<double>;

    const char *name;  // as in the list entry "Demos: <name>"

    Value preroll, seed;
    Value left_x, left_y, right_x, right_y;
    Value position_var;
    Value density, lifetime, time_max_size, use_birth_matte;
    Value initial_velocity, velocity_var, vel_dir;
    Value growth_mode, bubble_size, bubble_size_var, colour_var, mono_var;
    Value fade_mode;
    Value gravity_on, gravity, grav_angle;
    Value friction_on, friction;
    Value turbulence_on, swirl_dens, swirl_amp, swirl_max_time;
    Value burst_on, burst_probability, burst_quantity, burst_extent, afterlife;
    Value congregate;
    Value light_on, light_source_x, light_source_y, light_target_x, light_target_y;
    Value light_z, glisten_tight, light_spread, light_intensity, min_bright, shine, highlight;
    Value reflections_on, ref_intensity;

    // Red, green, blue and a fourth component, 16-bit; every preset gives both colours.
    std::array<uint16_t, 4> bubble_colour;
    std::array<uint16_t, 4> light_colour;
};

constexpr int kDemoPresetCount = 10;

// In list order: Basic, Soap, Champagne, Under Water, Floating, Bubbly,
// Swirly, Gathering, Flurry, Pipe.
const std::array<DemoPreset, kDemoPresetCount> &demo_presets();

// The preset of a "Demos" list value (numbered from 1); 0, negative values
// and values above 10 give "Basic".
const DemoPreset &demo_preset_for_list_value(long list_value);

// The list value (1..10) of a preset named case-insensitively ("under
// water"), or 0 when there is none of that name.
int demo_preset_list_value(std::string_view name);
