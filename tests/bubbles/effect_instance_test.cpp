// The effect instance: its controls and their bindings, the request
// callbacks and the per-frame reading of controls.
#include <set>

#include "effect_rig.h"

namespace {

using EffectInstance = BoundEffectTest;

}  // namespace

TEST_F(EffectInstance, SixtyTwoControlsAllBoundButTheFourthButtonOfEachGroup) {
    std::set<ControlQv *> distinct;
    int unbound = 0;
    for (ControlQv *control : effect->info.controls()) {
        ASSERT_NE(control, nullptr);
        distinct.insert(control);
        unbound += !control->bound();
    }
    EXPECT_EQ(distinct.size(), 62u);
    EXPECT_EQ(unbound, 3);
    const BubblesInfo &info = effect->info;
    for (const ButtonControlQv *group : {info.restart, info.restartPreRoll, info.doPreRoll})
        EXPECT_FALSE(group[3].bound());
    EXPECT_EQ(info.restart[2].index, 64);
    EXPECT_EQ(info.restartPreRoll[1].index, 36);
    EXPECT_EQ(info.doPreRoll[0].index, 8);
    EXPECT_EQ(info.bubbleColour.sliders[2], &SparkFloat74);
    EXPECT_EQ(info.lightColour.sliders[0], &SparkFloat95);
    EXPECT_EQ(info.lightTarget.y_record, &SparkFloat108);
    EXPECT_EQ(info.emitterLine.x2_record, &SparkFloat18);
    EXPECT_EQ(info.coneEditor.record, &SparkFloat103);
}

TEST_F(EffectInstance, RestartPreRollRaisesBothLevelRequests) {
    Bubbles &e = *effect;
    e.RestartPreRollCB(e.info.restartPreRoll[2], 0);
    e.RestartPreRollCB(e.info.restartPreRoll[0], 0);
    EXPECT_EQ(e.restartPending, 1);
    EXPECT_EQ(e.preRollPending, 1);
}

// Lists arrive numbered from 1, positions and "Position Var" as fractions,
// colours as 15-bit components, everything else as the host holds it.
TEST_F(EffectInstance, RefreshConvertsEachKindOfHostValue) {
    SparkPup23.Value = 2;
    SparkPup75.Value = 0;
    SparkFloat17.Value = 50.0f;
    SparkFloat11.Value = 25.0f;
    SparkFloat12.Value = -75.0f;
    SparkFloat107.Value = 150.0f;
    SparkColor71.Value = 0x00FF8000u;
    SparkFloat16.Value = 40.0f;
    SparkInt14.Value = 7;
    SparkBoolean44.Value = 2;
    SparkFloat46.Value = 270.0f;
    refresh_control_caches(*effect);
    effect->ReadControls();
    const BubbleParameters &p = effect->parameters;
    EXPECT_EQ(p.growth_mode, 3);
    EXPECT_EQ(p.fade_mode, 1);
    EXPECT_DOUBLE_EQ(p.position_var, 0.5);
    EXPECT_DOUBLE_EQ(p.left_x, 0.25);
    EXPECT_DOUBLE_EQ(p.left_y, -0.75);
    EXPECT_DOUBLE_EQ(p.light_target_x, 1.5);
    EXPECT_EQ(p.bubble_colour[0], 0);
    EXPECT_EQ(p.bubble_colour[1], 16448);
    EXPECT_EQ(p.bubble_colour[2], 32767);
    EXPECT_EQ(effect->info.bubbleColour.cached[3], 0x7FFF);
    EXPECT_DOUBLE_EQ(p.density, 40.0);
    EXPECT_DOUBLE_EQ(p.time_max_size, 7.0);
    EXPECT_TRUE(p.gravity_on);
    EXPECT_DOUBLE_EQ(p.grav_angle, 270.0);
}
