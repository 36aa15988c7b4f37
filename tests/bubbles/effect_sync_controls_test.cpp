// SyncControls and the switch callbacks: which controls the effect shows
// for each combination of its switches and lists.
#include <vector>

#include "effect_rig.h"

namespace {

using SyncControlsTest = BoundEffectTest;

const int kLightControls[] = {100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 98, 94, 95, 96, 97};

}  // namespace

TEST_F(SyncControlsTest, DefaultsHideGravityBurstLightAndReflectionControls) {
    effect->SyncControls();
    for (int number : {45, 46, 50, 51, 52, 53, 99}) EXPECT_FALSE(shown(number)) << number;
    for (int number : kLightControls) EXPECT_FALSE(shown(number)) << number;
    for (int number : {43, 39, 40, 41, 14}) EXPECT_TRUE(shown(number)) << number;
    EXPECT_TRUE(effect->info.gravity.hidden);
    EXPECT_FALSE(effect->info.friction.hidden);
}

TEST_F(SyncControlsTest, EachForceSwitchGovernsItsOwnControls) {
    const struct {
        SparkBooleanStruct &flag;
        std::vector<int> dependants;
    } switches[] = {{SparkBoolean44, {45, 46}}, {SparkBoolean42, {43}}, {SparkBoolean38, {39, 40, 41}}};
    for (const auto &sw : switches) {
        for (uint8_t value : {1, 0}) {
            sw.flag.Value = value;
            effect->SyncControls();
            for (int number : sw.dependants) EXPECT_EQ(shown(number), value == 1) << number;
        }
    }
}

TEST_F(SyncControlsTest, RefIntensityNeedsBothLightAndReflections) {
    const struct {
        uint8_t light, reflections;
        bool shown;
    } cases[] = {{0, 0, false}, {0, 1, false}, {1, 0, false}, {1, 1, true}, {0, 1, false}, {1, 1, true}};
    for (const auto &c : cases) {
        SparkBoolean93.Value = c.light;
        SparkBoolean98.Value = c.reflections;
        effect->SyncControls();
        EXPECT_EQ(shown(99), c.shown) << int(c.light) << int(c.reflections);
        for (int number : kLightControls) EXPECT_EQ(shown(number), c.light == 1) << number;
    }
}

TEST_F(SyncControlsTest, SharedBurstControlsFollowBurstOrCongregate) {
    const struct {
        uint8_t burst, congregate;
        bool probability, shared;
    } cases[] = {{0, 0, false, false}, {0, 1, false, true}, {1, 0, true, true}, {1, 1, true, true}};
    for (const auto &c : cases) {
        SparkBoolean49.Value = c.burst;
        SparkBoolean54.Value = c.congregate;
        effect->SyncControls();
        EXPECT_EQ(shown(50), c.probability) << int(c.burst) << int(c.congregate);
        for (int number : {51, 52, 53}) EXPECT_EQ(shown(number), c.shared) << number;
    }
}

// A switch's callback applies that switch's rule and no other.
TEST_F(SyncControlsTest, CongregateCallbackLeavesTheBurstProbabilityAlone) {
    effect->SyncControls();
    SparkBoolean49.Value = 1;
    SparkBoolean54.Value = 1;
    sparkhost::control_log().clear();
    effect->DoCongregateCB(effect->info.congregate, 1.0);
    for (int number : {51, 52, 53}) EXPECT_TRUE(shown(number)) << number;
    for (const sparkhost::ControlCall &call : sparkhost::control_log().calls()) EXPECT_NE(call.control, 50);

    effect->DoBubblesBurstCB(effect->info.burstOn, 1.0);
    EXPECT_TRUE(shown(50));
}

TEST_F(SyncControlsTest, LightCallbackAlsoSettlesRefIntensity) {
    SparkBoolean98.Value = 1;
    SparkBoolean93.Value = 1;
    effect->DoLightCB(effect->info.lightOn, 1.0);
    EXPECT_TRUE(shown(99));
    SparkBoolean93.Value = 0;
    effect->DoLightCB(effect->info.lightOn, 0.0);
    EXPECT_FALSE(shown(99));
    EXPECT_FALSE(shown(98));
}
