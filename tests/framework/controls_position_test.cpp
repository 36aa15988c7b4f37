// Position controls: a point on two entries, in fractions of the frame.
#include "control_records.h"
#include "framework/controls.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;

using PositionControls = HostLogTest;

TEST_F(PositionControls, PositionReadsBothCurvesInFractionsSyncCachesNothingRefreshDoes) {
    SparkFloatStruct x_host = float_record(1.0f), y_host = float_record(2.0f);
    AuxQv aux;
    aux.y = &y_host;
    PositionControlQv position;
    position.Bind(51, &x_host, &aux);
    sparkSetCurveKey(SPARK_CURVE_CONTROL, 52, 2.0f, 60.0f);
    double x, y;
    position.GetValue(2.0, x, y);
    EXPECT_DOUBLE_EQ(y, 0.6);

    position.cached_x = 30.0;
    position.Sync();
    position.GetValue(-1.0, x, y);
    EXPECT_DOUBLE_EQ(x, 0.3);
    EXPECT_DOUBLE_EQ(y, 0.0);
    // The adapter's per-frame refresh is what fills the cache, as fractions.
    position.Refresh();
    EXPECT_DOUBLE_EQ(position.cached_x, 0.01);
    EXPECT_DOUBLE_EQ(position.cached_y, 0.02);

    position.Disable(true);
    EXPECT_EQ(y_host.Max, 2.0f);
    position.SetValue(-1.0, 0.25, 0.75);
    EXPECT_EQ(y_host.Value, 75.0f);
    position.Hide(true);
    EXPECT_THAT(calls(), ElementsAre(update(51), update(52), update(51), update(51), update(52),
                                     disable(51), disable(52)));
}
