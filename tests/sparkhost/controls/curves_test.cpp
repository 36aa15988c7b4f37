// Animation curves: interpolation, the curve host functions and writing
// animated values into the control structures.
#include "sparkhost/controls/curves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "sparkhost/fake_plugin_fixture.h"

TEST(Curve, RunsLinearlyBetweenKeysAndHoldsTheEndValuesOutside) {
    sparkhost::Curve curve;
    EXPECT_EQ(curve.value_at(3.0f), 0.0f);  // no keys
    curve.set_key(0.0f, 0.0f);
    curve.set_key(20.0f, 50.0f);
    curve.set_key(10.0f, 7.0f);
    curve.set_key(10.0f, 100.0f);  // replaces the key at that frame
    const std::pair<float, float> expected[] = {{-5.0f, 0.0f}, {2.5f, 25.0f}, {15.0f, 75.0f}, {1000.0f, 50.0f}};
    for (auto [frame, value] : expected) EXPECT_EQ(curve.value_at(frame), value) << frame;
}

using CurveHostTest = FakePluginTest;

TEST_F(CurveHostTest, KeysSetUnderAnyKindAreReadBackThroughTheControlsCurve) {
    EXPECT_EQ(sparkGetCurveValuef(SPARK_CURVE_CONTROL, 102, 5.0f), 50.0f);  // no curve: the control's value
    // The amplitude import keys the switch 93 with kind 0; reads use kind 1.
    EXPECT_EQ(sparkSetCurveKey(0, 93, 0.0f, 0.2f), 1);
    EXPECT_EQ(sparkSetCurveKey(0, 93, 4.0f, 1.0f), 1);
    EXPECT_FLOAT_EQ(sparkGetCurveValuef(SPARK_CURVE_CONTROL, 93, 1.0f), 0.4f);
    // A number that could never be a control, or a key that is not a number, keeps nothing.
    EXPECT_EQ(sparkSetCurveKey(0, 122, 0.0f, 1.0f), 0);
    EXPECT_EQ(sparkSetCurveKey(0, 5, std::nanf(""), 1.0f), 0);
    EXPECT_EQ(sparkhost::all_curves().size(), 1u);
}

TEST_F(CurveHostTest, ApplyingCurvesWritesEachAnimatedValueIntoItsStructure) {
    sparkhost::set_curve_key(16, 0.0f, 10.0f);
    sparkhost::set_curve_key(16, 10.0f, 30.0f);
    sparkhost::set_curve_key(93, 0.0f, 0.7f);
    sparkhost::set_curve_key(9, 0.0f, 2.9f);
    sparkhost::set_curve_key(23, 0.0f, 12.0f);
    sparkhost::set_curve_key(47, 0.0f, 1.0f);  // no control there: skipped
    sparkhost::apply_curves(5.0f);
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 20.0f);
    EXPECT_EQ(exported<SparkBooleanStruct>("SparkBoolean93").Value, 1);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 2);   // truncated, not rounded
    EXPECT_EQ(exported<SparkPupStruct>("SparkPup23").Value, 3);  // clamped, not refused
}
