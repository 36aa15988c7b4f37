// Animation curves: interpolation, the curve host functions and writing
// animated values into the control structures.
#include "sparkhost/curves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "fake_plugin_fixture.h"

using sparkhost::Curve;

TEST(Curve, RunsLinearlyBetweenKeysAndHoldsTheEndValuesOutside) {
    Curve curve;
    EXPECT_EQ(curve.value_at(3.0f), 0.0f);  // no keys
    curve.set_key(10.0f, 100.0f);
    EXPECT_EQ(curve.value_at(-100.0f), 100.0f);  // one key holds everywhere
    curve.set_key(0.0f, 0.0f);
    curve.set_key(20.0f, 50.0f);
    const std::pair<float, float> expected[] = {{-5.0f, 0.0f},   {0.0f, 0.0f},   {2.5f, 25.0f},    {10.0f, 100.0f},
                                                {15.0f, 75.0f},  {20.0f, 50.0f}, {1000.0f, 50.0f}};
    for (auto [frame, value] : expected) EXPECT_EQ(curve.value_at(frame), value) << frame;
}

TEST(Curve, KeyAtAnExistingFrameReplacesItsValueAndKeysMustBeFinite) {
    Curve curve;
    curve.set_key(0.0f, 1.0f);
    curve.set_key(10.0f, 2.0f);
    curve.set_key(10.0f, 5.0f);
    EXPECT_EQ(curve.keys().size(), 2u);
    EXPECT_EQ(curve.value_at(5.0f), 3.0f);
    EXPECT_TRUE(curve.remove_key(10.0f));
    EXPECT_FALSE(curve.remove_key(10.0f));
    EXPECT_EQ(curve.value_at(5.0f), 1.0f);
    EXPECT_THROW(curve.set_key(std::numeric_limits<float>::infinity(), 1.0f), sparkhost::ControlError);
    EXPECT_THROW(curve.set_key(1.0f, std::nanf("")), sparkhost::ControlError);
    EXPECT_EQ(curve.keys().size(), 1u);
}

using CurveHostTest = FakePluginTest;

TEST_F(CurveHostTest, ReadWithoutACurveAnswersTheControlsValueOrZero) {
    for (auto [number, value] : {std::pair{16, 20.0f}, {102, 50.0f}, {34, 1.0f}, {47, 0.0f}})
        EXPECT_EQ(sparkGetCurveValuef(SPARK_CURVE_CONTROL, number, 5.0f), value) << number;
    sparkhost::unregister_plugin_controls();
    EXPECT_EQ(sparkGetCurveValuef(SPARK_CURVE_CONTROL, 16, 5.0f), 0.0f);
}

TEST_F(CurveHostTest, KeysSetUnderAnyKindAreReadBackThroughTheControlsCurve) {
    // The amplitude import keys the switch 93 with kind 0; reads use kind 1.
    EXPECT_EQ(sparkSetCurveKey(0, 93, 0.0f, 0.2f), 1);
    EXPECT_EQ(sparkSetCurveKey(0, 93, 4.0f, 1.0f), 1);
    EXPECT_FLOAT_EQ(sparkGetCurveValuef(SPARK_CURVE_CONTROL, 93, 1.0f), 0.4f);
    EXPECT_EQ(sparkSetCurveKey(SPARK_CURVE_CONTROL, 16, 10.0f, 40.0f), 1);
    EXPECT_EQ(sparkGetCurveValuef(SPARK_CURVE_CONTROL, 16, 0.0f), 40.0f);
    // A number that could never be a control is refused and keeps nothing.
    EXPECT_EQ(sparkSetCurveKey(0, 122, 0.0f, 1.0f), 0);
    EXPECT_EQ(sparkSetCurveKey(0, 5, std::nanf(""), 1.0f), 0);
    EXPECT_EQ(sparkhost::all_curves().size(), 2u);
}

TEST_F(CurveHostTest, ApplyingCurvesWritesEachAnimatedValueIntoItsRegisteredStructure) {
    sparkhost::set_curve_key(16, 0.0f, 10.0f);
    sparkhost::set_curve_key(16, 10.0f, 30.0f);
    sparkhost::set_curve_key(93, 0.0f, 0.0f);
    sparkhost::set_curve_key(93, 1.0f, 0.7f);
    sparkhost::set_curve_key(9, 0.0f, 2.9f);
    sparkhost::set_curve_key(23, 0.0f, 12.0f);
    sparkhost::set_curve_key(102, 0.0f, 9000.0f);
    sparkhost::set_curve_key(47, 0.0f, 1.0f);  // no control there: skipped

    sparkhost::apply_curves(5.0f);
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 20.0f);
    EXPECT_EQ(exported<SparkBooleanStruct>("SparkBoolean93").Value, 1);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 2);  // truncated, not rounded
    EXPECT_EQ(exported<SparkPupStruct>("SparkPup23").Value, 3);  // clamped, not refused
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat102").Value, 500.0f);  // clamped to its range
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat109").Value, 0.0f);  // not animated

    sparkhost::set_curve_key(9, 0.0f, -7.9f);
    sparkhost::apply_curves(0.0f);
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 10.0f);
    EXPECT_EQ(exported<SparkBooleanStruct>("SparkBoolean93").Value, 0);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 1);

    // Without registered controls there is nothing to write.
    sparkhost::unregister_plugin_controls();
    sparkhost::apply_curves(10.0f);
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 10.0f);
}
