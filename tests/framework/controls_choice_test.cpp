// Checkbox, list and button controls.
#include "framework/controls.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;

using ChoiceControls = HostLogTest;

TEST_F(ChoiceControls, CheckboxReadsTheSyncedStateAtAnyFrame) {
    SparkBooleanStruct host{};
    host.Value = 2;
    CheckboxControlQv box;
    box.Bind(301, &host, nullptr);
    box.Sync();
    sparkSetCurveKey(SPARK_CURVE_CONTROL, 301, 4.0f, 0.0f);
    host.Value = 0;
    EXPECT_TRUE(box.GetValue(4.0));  // no curve, no fresh read
    box.Sync();
    EXPECT_FALSE(box.GetValue(4.0));
}

TEST_F(ChoiceControls, ListNumbersItemsFromOneAndReadsAfresh) {
    SparkPupStruct host{};
    host.Value = 0;
    host.Count = 4;
    ListControlQv list;
    list.Bind(306, &host, nullptr);
    list.Sync();
    EXPECT_EQ(list.cached, 1);
    host.Value = 3;
    EXPECT_EQ(list.GetValue(-1.0), 4);  // a static read still goes to the host
    list.SetValue(-1.0, 2);
    EXPECT_EQ(host.Value, 1);
    EXPECT_THAT(updates(), ElementsAre(306));
}

TEST_F(ChoiceControls, ListAndButtonFreezeOnlyByFlagAndRefresh) {
    SparkPupStruct pup{};
    pup.Value = 2;
    pup.Count = 3;
    ListControlQv list;
    list.Bind(307, &pup, nullptr);
    SparkPushStruct push{"Restart   ", nullptr};
    ButtonControlQv button;
    button.Bind(308, &push, nullptr);
    list.Disable(true);
    list.Disable(true);
    button.Disable(true);
    EXPECT_EQ(pup.Value, 2);
    EXPECT_STREQ(push.Title, "Restart   ");
    EXPECT_THAT(calls(), ElementsAre(update(307), update(308)));
}
