// SyncControls and the switch callbacks: which controls the effect shows
// for each combination of its switches.
#include "../effect_rig.h"

namespace {

using SyncControlsTest = BoundEffectTest;

const int kLightControls[] = {100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 98, 94, 95, 96, 97};

}  // namespace

// "Ref Intensity" needs Light and Reflections; Quantity, Extent and Afterlife
// need Burst or Congregate, "Burst Probability" needs Burst alone.
TEST_F(SyncControlsTest, ControlsShownByTwoSwitchesFollowEveryCombination) {
    const struct {
        uint8_t light, reflections, burst, congregate;
    } cases[] = {{0, 1, 0, 1}, {1, 0, 1, 0}, {1, 1, 0, 0}, {0, 0, 1, 1}, {1, 1, 0, 1}};
    for (const auto &c : cases) {
        SparkBoolean93.Value = c.light;
        SparkBoolean98.Value = c.reflections;
        SparkBoolean49.Value = c.burst;
        SparkBoolean54.Value = c.congregate;
        effect->SyncControls();
        SCOPED_TRACE(::testing::Message() << int(c.light) << int(c.reflections) << int(c.burst) << int(c.congregate));
        EXPECT_EQ(shown(99), c.light && c.reflections);
        for (int number : kLightControls) EXPECT_EQ(shown(number), c.light == 1) << number;
        EXPECT_EQ(shown(50), c.burst == 1);
        for (int number : {51, 52, 53}) EXPECT_EQ(shown(number), c.burst || c.congregate) << number;
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
}
