// Position, text and file-name controls.
#include <cstring>
#include <string>

#include "control_records.h"
#include "framework/controls.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;

namespace {

struct Position {
    SparkFloatStruct x = float_record(1.0f);
    SparkFloatStruct y = float_record(2.0f);
    AuxQv aux;
    PositionControlQv control;

    explicit Position(int index) {
        aux.y = &y;
        control.Bind(index, &x, &aux);
    }
};

SparkStringStruct string_record(const char *text) {
    SparkStringStruct record{};
    std::strcpy(record.Value, text);
    record.Title = "%s";
    return record;
}

}  // namespace

using PositionAndTextControls = HostLogTest;

TEST_F(PositionAndTextControls, PositionReadsBothCurvesInFractionsAndSyncCachesNothing) {
    Position position(51);
    sparkSetCurveKey(SPARK_CURVE_CONTROL, 51, 2.0f, 40.0f);
    sparkSetCurveKey(SPARK_CURVE_CONTROL, 52, 2.0f, 60.0f);
    double x, y;
    position.control.GetValue(2.0, x, y);
    EXPECT_DOUBLE_EQ(x, 0.4);
    EXPECT_DOUBLE_EQ(y, 0.6);

    position.control.cached_x = 30.0;
    position.control.Sync();
    position.control.GetValue(-1.0, x, y);
    EXPECT_DOUBLE_EQ(x, 0.3);
    EXPECT_DOUBLE_EQ(y, 0.0);
}

TEST_F(PositionAndTextControls, PositionWritesFreezesAndHidesBothEntries) {
    Position position(55);
    position.control.Disable(true);
    EXPECT_EQ(position.x.Min, 1.0f);
    EXPECT_EQ(position.x.Max, 1.0f);
    EXPECT_EQ(position.y.Min, 2.0f);
    EXPECT_EQ(position.y.Max, 2.0f);
    position.control.Disable(false);
    EXPECT_EQ(position.x.Min, -300.0f);
    EXPECT_EQ(position.y.Max, 300.0f);
    position.control.SetValue(-1.0, 0.25, 0.75);
    EXPECT_EQ(position.x.Value, 25.0f);
    EXPECT_EQ(position.y.Value, 75.0f);
    EXPECT_THAT(updates(), ElementsAre(55, 56, 55, 55, 56, 55, 55, 56));

    sparkhost::control_log().clear();
    position.control.Hide(true);
    EXPECT_THAT(calls(), ElementsAre(disable(55), disable(56)));
}

TEST_F(PositionAndTextControls, TextCopiesUntilItReadsTheHostStringInPlace) {
    SparkStringStruct host = string_record("1: Background");
    TextControlQv text;
    text.Bind(0, &host, nullptr);
    text.Sync();
    EXPECT_STREQ(text.cached, "1: Background");
    EXPECT_NE(text.cached, host.Value);

    EXPECT_EQ(text.GetValue(-1.0), host.Value);
    text.SetValue(-1.0, std::string(500, 'x').c_str());
    EXPECT_EQ(std::strlen(host.Value), size_t(SPARK_STRING_LENGTH - 1));
    EXPECT_EQ(text.cached, host.Value);
    EXPECT_THAT(updates(), ElementsAre(0));

    sparkhost::control_log().clear();
    text.Disable(true);
    EXPECT_TRUE(calls().empty());
}

TEST_F(PositionAndTextControls, FileNameLosesEveryBlankInTheHostStringToo) {
    SparkPushStruct button{"Import Amplitude File", nullptr};
    SparkStringStruct name = string_record("  my sound\t file.aiff \n");
    AuxQv aux;
    aux.text = &name;
    FileControlQv file;
    file.Bind(114, &button, &aux);
    file.Sync();
    EXPECT_STREQ(file.cached, "  my sound\t file.aiff \n");

    EXPECT_STREQ(file.GetValue(-1.0), "mysoundfile.aiff");
    EXPECT_STREQ(name.Value, "mysoundfile.aiff");

    file.SetValue(-1.0, "other.aiff");
    EXPECT_STREQ(name.Value, "other.aiff");
    file.Hide(true);
    EXPECT_THAT(calls(), ElementsAre(update(121), disable(114), disable(121)));
}
