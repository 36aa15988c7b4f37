// Integer, float and size controls: units, static and animated reads, host
// writes, hiding and freezing.
#include "control_records.h"
#include "framework/controls.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;

namespace {

SparkIntStruct int_record(int value, int min, int max) {
    SparkIntStruct record{};
    record.Value = value;
    record.Min = min;
    record.Max = max;
    record.Title = "I: %d";
    return record;
}

}  // namespace

using NumericControls = HostLogTest;

TEST_F(NumericControls, IntegerStaticReadKeepsLastSyncAnimatedReadTruncatesCurve) {
    SparkIntStruct host = int_record(7, 1, 1000);
    IntegerControlQv control;
    control.Bind(41, &host, nullptr);
    control.Sync();
    host.Value = 9;
    EXPECT_EQ(control.GetValue(-1.0), 7);
    sparkSetCurveKey(SPARK_CURVE_CONTROL, 41, 6.0f, -12.7f);
    EXPECT_EQ(control.GetValue(6.0), -12);
    control.SetValue(-1.0, 42);
    EXPECT_EQ(host.Value, 42);
    EXPECT_EQ(control.GetValue(-1.0), 42);
    EXPECT_THAT(updates(), ElementsAre(41));
}

TEST_F(NumericControls, SizeDividesTwiceOnStaticReadOnceOnAnimatedRead) {
    SparkFloatStruct host = float_record(50.0f, 0.0f, 300.0f);
    SizeControlQv size;
    size.Bind(45, &host, nullptr);
    size.Sync();
    EXPECT_DOUBLE_EQ(size.GetValue(-1.0), 0.005);
    sparkSetCurveKey(SPARK_CURVE_CONTROL, 45, 3.0f, 50.0f);
    EXPECT_DOUBLE_EQ(size.GetValue(3.0), 0.5);
    size.SetValue(-1.0, 0.25);
    EXPECT_EQ(host.Value, 25.0f);
}

TEST_F(NumericControls, DisableFreezesRangeOnceAndEnableRestoresTheBoundRange) {
    SparkFloatStruct host = float_record(10.0f, -300.0f, 300.0f);
    FloatControlQv control;
    control.Bind(46, &host, nullptr);
    control.Disable(false);  // unchanged state: no host call
    host.Value = 12.0f;
    control.Disable(true);
    host.Value = 20.0f;
    control.Disable(true);  // the range stays frozen at the first value
    EXPECT_EQ(host.Min, 12.0f);
    EXPECT_EQ(host.Max, 12.0f);
    control.Disable(false);
    EXPECT_EQ(host.Min, -300.0f);
    EXPECT_THAT(updates(), ElementsAre(46, 46));

    SparkIntStruct integer_host = int_record(3, 0, 100);
    AuxQv aux;
    aux.has_range = true;
    aux.range[0] = 1;
    aux.range[1] = 50;
    IntegerControlQv integer;
    integer.Bind(47, &integer_host, &aux);
    integer.Disable(true);
    integer.Disable(false);
    EXPECT_EQ(integer_host.Min, 1);  // the range given at binding, not the one found there
    EXPECT_EQ(integer_host.Max, 50);
}
