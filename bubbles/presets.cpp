// The "Demos" presets, kept as one row per control with a column per preset,
// so that the table reads the way the looks were designed side by side.
#include "bubbles/presets.h"

#include <cctype>
#include <string>

namespace {

using Value = DemoPreset::Value;
using Column = std::array<Value, kDemoPresetCount>;
constexpr std::nullopt_t kLeave = std::nullopt;

struct Row {
    Value DemoPreset::*field;
    double divisor;  // 100 for the figures given in percent of the frame
    Column values;
};

constexpr double kPercent = 100;

// Columns: Basic, Soap, Champagne, Under Water, Floating, Bubbly, Swirly,
// Gathering, Flurry, Pipe. Switches 1 on, 0 off.
const Row kRows[] = {
    {&DemoPreset::preroll, 1, {60, 72, 74, 60, 60, 72, 50, 72, 72, 60}},
    {&DemoPreset::seed, 1, {831, 831, 831, 831, 831, 831, 831, 831, 831, 831}},
    {&DemoPreset::left_x, kPercent, {0, 11.8, 0, 38, 7.4, 43.3, 0, 40, 52.7, -13.1}},
    {&DemoPreset::left_y, kPercent, {1.6, 33.3, 1, 3, 4.5, 42.9, 2, 4.3, 42.9, 11.1}},
    {&DemoPreset::right_x, kPercent, {100, 80.5, 100, 44, 7.4, 55.1, 100, 60, 52.7, -6.94}},
    {&DemoPreset::right_y, kPercent, {1.6, 33.3, 1, 3, 3.4, 42.7, 2, 4.3, 43.1, 11.1}},
    {&DemoPreset::position_var, kPercent, {0.5, 5.9, 0.5, 1.7, 2.7, 12.2, 0.7, 1.4, 4, 2.7}},
    {&DemoPreset::density, 1, {20, 20, 20, 2, 0.55, 5, 9, 24.4, 1, 6}},
    {&DemoPreset::lifetime, 1, {200, 58, 200, 200, 200, 200, 200, 200, 115, 200}},
    {&DemoPreset::time_max_size, 1, {25, 68, 48, 104, 104, 68, 104, 100, 117, 104}},
    {&DemoPreset::use_birth_matte, 1, {0, 0, 1, 1, 0, 0, 0, 0, 0, 0}},
    {&DemoPreset::initial_velocity, 1, {500, 32, 500, 200, 200, 200, 500, 442, 0, 2000}},
    {&DemoPreset::velocity_var, 1, {100, 100, 100, 100, 100, 100, 100, 200, 200, 100}},
    {&DemoPreset::vel_dir, 1, {90, 20, 90, 90, 0, 90, 90, 90, 0, 0}},
    {&DemoPreset::growth_mode, 1, {1, 2, 4, 3, 3, 3, 4, 4, 4, 3}},
    {&DemoPreset::bubble_size, 1, {5, 20, 3.66, 25, 25, 12, 25, 8, 40, 9}},
    {&DemoPreset::size_var, 1, {17, 100, 18, 100, 50, 100, 100, 11, 100, 50}},
    {&DemoPreset::colour_var, 1, {0, 22, 0, 0, 0, 22, 0, 22, 22, 0}},
    {&DemoPreset::mono_var, 1, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {&DemoPreset::fade_mode, 1, {3, 3, 3, 3, 3, 3, 3, 3, 3, 3}},
    {&DemoPreset::gravity_on, 1, {1, 1, 1, 1, 1, 1, 1, 0, 0, 1}},
    {&DemoPreset::gravity, 1, {0.2, 0.07, 0.2, 0.44, 0.02, 0.07, 0.44, kLeave, kLeave, 1.05}},
    {&DemoPreset::grav_angle, 1, {90, 270, 90, 90, 90, 270, 90, kLeave, kLeave, 42}},
    {&DemoPreset::friction_on, 1, {1, 1, 1, 1, 0, 1, 1, 1, 0, 1}},
    {&DemoPreset::friction, 1, {0.038, 0.05, 0.038, 0.027, kLeave, 0.05, 0.067, 0.178, kLeave, 0.154}},
    {&DemoPreset::turbulence_on, 1, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
    {&DemoPreset::swirl_dens, 1, {60, 60, 73, 6.67, 4, 60, 6.67, 60, 60, 4}},
    {&DemoPreset::swirl_amp, 1, {0.6, 1, 0.3, 3.56, 0.5, 1, 1.54, 0.77, 3, 0.5}},
    {&DemoPreset::swirl_max_time, 1, {0, 0, 25, 0, 0, 0, 0, 70, 70, 63}},
    {&DemoPreset::burst_on, 1, {0, 0, 0, 0, 0, 1, 0, 1, 0, 0}},
    {&DemoPreset::burst_probability, 1, {kLeave, kLeave, kLeave, kLeave, kLeave, 38, kLeave, 1, kLeave, kLeave}},
    {&DemoPreset::burst_quantity, 1, {kLeave, kLeave, kLeave, kLeave, kLeave, 80, kLeave, 80, kLeave, kLeave}},
    {&DemoPreset::burst_extent, 1, {kLeave, kLeave, kLeave, kLeave, kLeave, 8, kLeave, 8, kLeave, kLeave}},
    {&DemoPreset::afterlife, 1, {kLeave, kLeave, kLeave, kLeave, kLeave, 3, kLeave, 3, kLeave, kLeave}},
    {&DemoPreset::congregate, 1, {0, 0, 0, 0, 0, 0, kLeave, 1, 0, 0}},
    {&DemoPreset::light_on, 1, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
    {&DemoPreset::light_source_x, kPercent, {-21.2, 122, -42.2, -21.2, -21.2, 122, -21.2, 122, 122, -21.2}},
    {&DemoPreset::light_source_y, kPercent, {107.5, 88, 104, 107.5, 107.5, 86.8, 107.5, 86.8, 86.8, 107.5}},
    {&DemoPreset::light_target_x, kPercent, {58, 72, 101.5, 60, 60, 7.2, 59.8, -21, 72, 60}},
    {&DemoPreset::light_target_y, kPercent, {28.5, 28.5, 54.9, 30, 30, 28.5, 29.7, 39.4, 28.5, 30}},
    {&DemoPreset::light_z, 1, {0.375, 0.375, 0.808, 0.786, 0.786, 0.375, 0.786, 0.375, 0.375, 0.786}},
    {&DemoPreset::glisten_tight, 1, {0, 0, 10, 0, 0, 0, 0, 0, 0, 0}},
    {&DemoPreset::light_spread, 1, {115, 115, 152, 114, 114, 114, 114, 114, 114, 114}},
    {&DemoPreset::light_intensity, 1, {101, 88, 78, 81, 81, 88, 81, 96, 88, 81}},
    {&DemoPreset::min_bright, 1, {100, 60, 100, 100, 100, 60, 100, 60, 60, 100}},
    {&DemoPreset::shine, 1, {45, 45, 45, 45, 45, 45, 45, 45, 45, 45}},
    {&DemoPreset::highlight, 1, {9, 15, 15, 11, 11, 15, 11, 15, 15, 11}},
    {&DemoPreset::reflections_on, 1, {0, 0, 1, 1, 1, 0, 1, 0, 1, 1}},
    {&DemoPreset::ref_intensity, 1, {kLeave, kLeave, 111, 82, 82, kLeave, 82, kLeave, 62, 82}},
};

using Rgb = std::array<uint16_t, 3>;
constexpr uint16_t kFull = 32640;  // the full value the presets use, also the fourth component

const std::array<Rgb, kDemoPresetCount> kBubbleColours = {{
    {kFull, kFull, kFull},
    {22272, 29184, kFull},
    {kFull, kFull, kFull},
    {kFull, kFull, kFull},
    {kFull, kFull, kFull},
    {22272, kFull, 29184},
    {kFull, kFull, kFull},
    {kFull, 29952, 20480},
    {22272, 29184, kFull},
    {kFull, kFull, kFull},
}};

const std::array<Rgb, kDemoPresetCount> kLightColours = {{
    {kFull, 25856, kFull},
    {kFull, kFull, kFull},
    {kFull, 26496, 8192},
    {kFull, kFull, kFull},
    {kFull, kFull, kFull},
    {kFull, kFull, kFull},
    {kFull, kFull, kFull},
    {kFull, kFull, kFull},
    {kFull, kFull, kFull},
    {kFull, kFull, kFull},
}};

const char *const kNames[kDemoPresetCount] = {"Basic",  "Soap",   "Champagne", "Under Water", "Floating",
                                              "Bubbly", "Swirly", "Gathering", "Flurry",      "Pipe"};

std::array<DemoPreset, kDemoPresetCount> build_presets() {
    std::array<DemoPreset, kDemoPresetCount> presets{};
    for (int i = 0; i < kDemoPresetCount; ++i) {
        DemoPreset &preset = presets[i];
        preset.name = kNames[i];
        for (const Row &row : kRows) {
            const Value &value = row.values[i];
            if (value) preset.*row.field = *value / row.divisor;
        }
        const Rgb &bubble = kBubbleColours[i];
        const Rgb &light = kLightColours[i];
        preset.bubble_colour = {bubble[0], bubble[1], bubble[2], kFull};
        preset.light_colour = {light[0], light[1], light[2], kFull};
    }
    return presets;
}

std::string lower(std::string_view text) {
    std::string out(text);
    for (char &c : out) c = char(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

}  // namespace

const std::array<DemoPreset, kDemoPresetCount> &demo_presets() {
    static const std::array<DemoPreset, kDemoPresetCount> presets = build_presets();
    return presets;
}

const DemoPreset &demo_preset_for_list_value(long list_value) {
    if (list_value < 1 || list_value > kDemoPresetCount) list_value = 1;
    return demo_presets()[size_t(list_value - 1)];
}

int demo_preset_list_value(std::string_view name) {
    const std::string wanted = lower(name);
    for (int i = 0; i < kDemoPresetCount; ++i)
        if (lower(kNames[i]) == wanted) return i + 1;
    return 0;
}
