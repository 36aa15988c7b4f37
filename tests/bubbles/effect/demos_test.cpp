// Choosing a demo preset: every value lands in the control it belongs to and
// reaches the engine, dashes leave the user's values, and a restart follows.
#include <cmath>
#include <functional>
#include <vector>

#include "bubbles/presets.h"
#include "../effect_rig.h"

namespace {

// One preset value and where the engine reads it back.
struct Landing {
    const char *what;
    DemoPreset::Value DemoPreset::*value;
    std::function<double(const BubbleParameters &)> read;
};

#define LANDS_IN(field, parameter) \
    Landing { #field, &DemoPreset::field, [](const BubbleParameters &p) { return double(p.parameter); } }
#define LANDS(field) LANDS_IN(field, field)

const std::vector<Landing> &landings() {
    static const std::vector<Landing> all = {
        LANDS(preroll), LANDS(seed), LANDS(left_x), LANDS(left_y), LANDS(right_x), LANDS(right_y),
        LANDS(position_var), LANDS(density), LANDS(lifetime), LANDS(time_max_size), LANDS(use_birth_matte),
        LANDS(initial_velocity), LANDS(velocity_var), LANDS(vel_dir), LANDS(growth_mode), LANDS(bubble_size),
        LANDS(size_var), LANDS(colour_var), LANDS(mono_var), LANDS(fade_mode),
        LANDS(gravity_on), LANDS(gravity), LANDS(grav_angle), LANDS(friction_on), LANDS(friction),
        LANDS(turbulence_on), LANDS(swirl_dens), LANDS(swirl_amp), LANDS(swirl_max_time), LANDS(burst_on),
        LANDS(burst_probability), LANDS(burst_quantity), LANDS(burst_extent), LANDS(afterlife), LANDS(congregate),
        LANDS(light_on), LANDS(light_source_x), LANDS(light_source_y), LANDS(light_target_x),
        LANDS(light_target_y), LANDS(light_z), LANDS(glisten_tight), LANDS(light_spread), LANDS(light_intensity),
        LANDS(min_bright), LANDS(shine), LANDS(highlight), LANDS(reflections_on), LANDS(ref_intensity),
    };
    return all;
}

#undef LANDS
#undef LANDS_IN

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
        effect->engine.restartPending = 0;
        choose(value - 1);
        EXPECT_EQ(effect->engine.restartPending, 1);
        EXPECT_EQ(effect->engine.preRollPending, 0);
        const BubbleParameters &p = effect->engine.parameters;
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
