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

    // One value per parameter of bubbles/controls.def, named as the parameter.
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, parameter, ...) Value parameter;
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, parameter, ...) Value parameter;
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, parameter, ...) Value parameter##_x;
#define FIZZLE_POSITION_Y(n, title, value, min, max, step, parameter, channel) Value parameter##_y;
#define FIZZLE_SWITCH(n, title, value, member, parameter, ...) Value parameter;
#define FIZZLE_LIST(n, value, member, parameter, ...) Value parameter;
#include "bubbles/controls.def"

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
