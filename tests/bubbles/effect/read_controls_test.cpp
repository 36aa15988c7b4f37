// The parameters the engine reads: their defaults are what the controls at
// their defaults deliver, so a unit conversion cannot go wrong on one side only.
#include "../effect_rig.h"

namespace {

using ReadControlsTest = BoundEffectTest;

}  // namespace

TEST_F(ReadControlsTest, DefaultParametersAreWhatDefaultControlsRead) {
    refresh_control_caches(*effect);
    effect->ReadControls();
    const BubbleParameters &read = effect->engine.parameters;
    const BubbleParameters defaults;
    // Host records hold floats, so the values agree to float precision.
#define SAME(field) EXPECT_FLOAT_EQ(float(read.field), float(defaults.field)) << #field;
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, parameter, ...) SAME(parameter)
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, parameter, ...) SAME(parameter)
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, parameter, ...) SAME(parameter##_x)
#define FIZZLE_POSITION_Y(n, title, value, min, max, step, parameter, channel) SAME(parameter##_y)
#define FIZZLE_SWITCH(n, title, value, member, parameter, ...) SAME(parameter)
#define FIZZLE_LIST(n, value, member, parameter, ...) SAME(parameter)
#define FIZZLE_COLOUR(n, value, member, parameter, shown) \
    for (int i = 0; i < 3; ++i) SAME(parameter[i])
#include "bubbles/controls.def"
#undef SAME
}

// A few defaults in effect units, written out by hand: the table gives 1 %,
// the third growth mode counted from 0, and a white colour word.
TEST_F(ReadControlsTest, DefaultsAreInEffectUnits) {
    const BubbleParameters defaults;
    EXPECT_DOUBLE_EQ(defaults.left_x, 0.01);
    EXPECT_DOUBLE_EQ(defaults.light_source_y, 0.90);
    EXPECT_DOUBLE_EQ(defaults.position_var, 0.01);
    EXPECT_EQ(defaults.growth_mode, 4);
    EXPECT_EQ(defaults.fade_mode, 3);
    EXPECT_TRUE(defaults.friction_on);
    EXPECT_EQ(defaults.light_colour[1], 32767);
    EXPECT_DOUBLE_EQ(defaults.friction, 0.05);
}
