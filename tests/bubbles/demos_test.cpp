// Choosing a demo preset: every value lands in the control it belongs to and
// reaches the engine, dashes leave the user's values, and a restart follows.
#include <cmath>
#include <functional>
#include <vector>

#include "bubbles/presets.h"
#include "effect_rig.h"

namespace {

// One preset value and where the engine reads it back.
struct Landing {
    const char *what;
    DemoPreset::Value DemoPreset::*value;
    std::function<double(const BubbleParameters &)> read;
};

const std::vector<Landing> &landings() {
    using P = BubbleParameters;
    static const std::vector<Landing> all = {
        {"PreRoll", &DemoPreset::preroll, [](const P &p) { return p.preroll; }},
        {"Seed", &DemoPreset::seed, [](const P &p) { return p.seed; }},
        {"Left X", &DemoPreset::left_x, [](const P &p) { return p.left_x; }},
        {"Left Y", &DemoPreset::left_y, [](const P &p) { return p.left_y; }},
        {"Right X", &DemoPreset::right_x, [](const P &p) { return p.right_x; }},
        {"Right Y", &DemoPreset::right_y, [](const P &p) { return p.right_y; }},
        {"Position Var", &DemoPreset::position_var, [](const P &p) { return p.position_var; }},
        {"Density", &DemoPreset::density, [](const P &p) { return p.density; }},
        {"Lifetime", &DemoPreset::lifetime, [](const P &p) { return p.lifetime; }},
        {"TimeMaxSize", &DemoPreset::time_max_size, [](const P &p) { return p.time_max_size; }},
        {"Use Birth Matte", &DemoPreset::use_birth_matte, [](const P &p) { return double(p.use_birth_matte); }},
        {"Initial Velocity", &DemoPreset::initial_velocity, [](const P &p) { return p.initial_velocity; }},
        {"Velocity Var", &DemoPreset::velocity_var, [](const P &p) { return p.velocity_var; }},
        {"Vel Dir", &DemoPreset::vel_dir, [](const P &p) { return p.vel_dir; }},
        {"Growth Mode", &DemoPreset::growth_mode, [](const P &p) { return double(p.growth_mode); }},
        {"Bubble Size", &DemoPreset::bubble_size, [](const P &p) { return p.bubble_size; }},
        {"Bubble Size Var", &DemoPreset::bubble_size_var, [](const P &p) { return p.size_var; }},
        {"ColourVar", &DemoPreset::colour_var, [](const P &p) { return p.colour_var; }},
        {"MonoVar", &DemoPreset::mono_var, [](const P &p) { return p.mono_var; }},
        {"Fade Mode", &DemoPreset::fade_mode, [](const P &p) { return double(p.fade_mode); }},
        {"Gravity switch", &DemoPreset::gravity_on, [](const P &p) { return double(p.gravity_on); }},
        {"Gravity", &DemoPreset::gravity, [](const P &p) { return p.gravity; }},
        {"GravAngle", &DemoPreset::grav_angle, [](const P &p) { return p.grav_angle; }},
        {"Friction switch", &DemoPreset::friction_on, [](const P &p) { return double(p.friction_on); }},
        {"Friction", &DemoPreset::friction, [](const P &p) { return p.friction; }},
        {"Turbulence", &DemoPreset::turbulence_on, [](const P &p) { return double(p.turbulence_on); }},
        {"SwirlDens", &DemoPreset::swirl_dens, [](const P &p) { return p.swirl_dens; }},
        {"SwirlAmp", &DemoPreset::swirl_amp, [](const P &p) { return p.swirl_amp; }},
        {"SwlMaxTim", &DemoPreset::swirl_max_time, [](const P &p) { return p.swirl_max_time; }},
        {"Bubbles Burst", &DemoPreset::burst_on, [](const P &p) { return double(p.burst_on); }},
        {"Burst Probability", &DemoPreset::burst_probability, [](const P &p) { return p.burst_probability; }},
        {"Burst Quantity", &DemoPreset::burst_quantity, [](const P &p) { return p.burst_quantity; }},
        {"Burst Extent", &DemoPreset::burst_extent, [](const P &p) { return p.burst_extent; }},
        {"Afterlife", &DemoPreset::afterlife, [](const P &p) { return p.afterlife; }},
        {"Congregate", &DemoPreset::congregate, [](const P &p) { return double(p.congregate); }},
        {"Light", &DemoPreset::light_on, [](const P &p) { return double(p.light_on); }},
        {"Light Source X", &DemoPreset::light_source_x, [](const P &p) { return p.light_source_x; }},
        {"Light Source Y", &DemoPreset::light_source_y, [](const P &p) { return p.light_source_y; }},
        {"Light Target X", &DemoPreset::light_target_x, [](const P &p) { return p.light_target_x; }},
        {"Light Target Y", &DemoPreset::light_target_y, [](const P &p) { return p.light_target_y; }},
        {"Light Z", &DemoPreset::light_z, [](const P &p) { return p.light_z; }},
        {"Glisten Tight", &DemoPreset::glisten_tight, [](const P &p) { return p.glisten_tight; }},
        {"Light Spread", &DemoPreset::light_spread, [](const P &p) { return p.light_spread; }},
        {"Light Inten", &DemoPreset::light_intensity, [](const P &p) { return p.light_intensity; }},
        {"Min. Bright", &DemoPreset::min_bright, [](const P &p) { return p.min_bright; }},
        {"Shine", &DemoPreset::shine, [](const P &p) { return p.shine; }},
        {"Highlight", &DemoPreset::highlight, [](const P &p) { return p.highlight; }},
        {"Reflections", &DemoPreset::reflections_on, [](const P &p) { return double(p.reflections_on); }},
        {"Ref Intensity", &DemoPreset::ref_intensity, [](const P &p) { return p.ref_intensity; }},
    };
    return all;
}

// The 15-bit channel the engine reads for a preset component.
uint16_t engine_channel(uint16_t component) {
    const int byte = component >> 7;
    return uint16_t((byte << 7) | (byte >> 1));
}

class Demos : public BoundEffectTest {
protected:
    // As the host adapter does when the user picks list entry `host_value`
    // (counted from 0), then the per-frame refresh.
    void choose(int host_value) {
        SparkPup29.Value = host_value;
        effect->info.demos.Sync();
        effect->DemosCB(effect->info.demos, double(host_value + 1));
        refresh_control_caches(*effect);
        effect->ReadControls();
    }
};

}  // namespace

TEST_F(Demos, EveryPresetValueReachesTheEngine) {
    for (int value = 1; value <= kDemoPresetCount; ++value) {
        const DemoPreset &preset = demo_preset_for_list_value(value);
        SCOPED_TRACE(preset.name);
        effect->restartPending = 0;
        choose(value - 1);
        EXPECT_EQ(effect->restartPending, 1);
        EXPECT_EQ(effect->preRollPending, 0);
        const BubbleParameters &p = effect->parameters;
        for (const Landing &landing : landings()) {
            const DemoPreset::Value &wanted = preset.*landing.value;
            if (!wanted) continue;
            // Host controls hold floats, in percent where the preset holds fractions.
            EXPECT_NEAR(landing.read(p), *wanted, 1e-5 * (1 + std::fabs(*wanted))) << landing.what;
        }
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(p.bubble_colour[i], engine_channel(preset.bubble_colour[size_t(i)])) << "bubble " << i;
            EXPECT_EQ(p.light_colour[i], engine_channel(preset.light_colour[size_t(i)])) << "light " << i;
        }
    }
}

TEST_F(Demos, HostSeesPercentListsFromZeroAndPackedColours) {
    choose(1);  // Soap
    EXPECT_FLOAT_EQ(SparkFloat11.Value, 11.8f);
    EXPECT_FLOAT_EQ(SparkFloat17.Value, 5.9f);
    EXPECT_EQ(SparkPup23.Value, 1);  // "Growth Mode: Shrinking"
    EXPECT_EQ(SparkInt9.Value, 72);
    EXPECT_EQ(SparkColor71.Value & 0xFFFFFFu, 174u | 228u << 8 | 255u << 16);
    EXPECT_FLOAT_EQ(SparkFloat74.Value, 100.0f);
    EXPECT_EQ(SparkBoolean44.Value, 1);
}

TEST_F(Demos, DashesKeepTheUsersValues) {
    choose(5);  // Bubbly sets the burst values
    EXPECT_FLOAT_EQ(SparkFloat50.Value, 38.0f);
    SparkFloat43.Value = 0.5f;
    choose(0);  // Basic leaves them, but switches bursting off
    EXPECT_FLOAT_EQ(SparkFloat50.Value, 38.0f);
    EXPECT_EQ(SparkBoolean49.Value, 0);
    EXPECT_FLOAT_EQ(SparkFloat43.Value, 0.038f);

    SparkBoolean54.Value = 1;
    choose(6);  // Swirly leaves Congregate alone
    EXPECT_EQ(SparkBoolean54.Value, 1);
}

TEST_F(Demos, SamePresetTwiceRestartsTwiceWithTheSameValues) {
    choose(3);
    const float density = SparkFloat16.Value, lifetime = SparkFloat13.Value;
    effect->restartPending = 0;
    SparkFloat16.Value = 99.0f;
    choose(3);
    EXPECT_EQ(effect->restartPending, 1);
    EXPECT_EQ(SparkFloat16.Value, density);
    EXPECT_EQ(SparkFloat13.Value, lifetime);
}

TEST_F(Demos, ListValuesBeyondTheEntriesLoadBasic) {
    for (int outside : {10, -1}) {
        choose(3);
        choose(outside);
        EXPECT_EQ(SparkInt9.Value, 60) << outside;
        EXPECT_FLOAT_EQ(SparkFloat12.Value, 1.6f) << outside;
    }
}
