// Checkbox (with radio groups), list and button controls.
#include <vector>

#include "framework/controls.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;

namespace {

SparkBooleanStruct boolean_record(uint8_t value) {
    SparkBooleanStruct record{};
    record.Value = value;
    record.Title = "Switch   ";
    return record;
}

}  // namespace

using ChoiceControls = HostLogTest;

TEST_F(ChoiceControls, CheckboxReadsTheSyncedStateAtAnyFrame) {
    SparkBooleanStruct host = boolean_record(2);
    CheckboxControlQv box;
    box.Bind(301, &host, nullptr);
    box.Sync();
    EXPECT_TRUE(box.GetValue(-1.0));
    sparkSetCurveKey(SPARK_CURVE_CONTROL, 301, 4.0f, 0.0f);
    host.Value = 0;
    EXPECT_TRUE(box.GetValue(4.0));  // no curve, no fresh read
    box.Sync();
    EXPECT_FALSE(box.GetValue(4.0));
}

TEST_F(ChoiceControls, SwitchingOnARadioMemberSwitchesTheOthersOffALoneBoxOnlyItself) {
    SparkBooleanStruct a = boolean_record(0), b = boolean_record(1), c = boolean_record(1);
    RadioGroupQv group{{{302, &a}, {303, &b}, {304, &c}}};  // may list the box itself
    AuxQv aux;
    aux.group = &group;
    CheckboxControlQv box, lone;
    box.Bind(302, &a, &aux);
    box.SetValue(-1.0, 1);
    EXPECT_THAT((std::vector<int>{a.Value, b.Value, c.Value}), ElementsAre(1, 0, 0));
    EXPECT_TRUE(box.GetValue(-1.0));
    EXPECT_THAT(updates(), ElementsAre(302, 303, 304));

    sparkhost::control_log().clear();
    b.Value = 1;
    box.SetValue(-1.0, 0);  // switching off leaves the others alone
    EXPECT_THAT((std::vector<int>{a.Value, b.Value}), ElementsAre(0, 1));
    SparkBooleanStruct alone = boolean_record(0);
    lone.Bind(305, &alone, nullptr);
    lone.SetValue(-1.0, 1);
    EXPECT_EQ(alone.Value, 1);
    EXPECT_THAT(updates(), ElementsAre(302, 305));
}

TEST_F(ChoiceControls, ListNumbersItemsFromOneAndReadsAfresh) {
    SparkPupStruct host{};
    host.Value = 0;
    host.Count = 4;
    host.Titles[0] = "Growth Mode: Assorted  ";
    ListControlQv list;
    list.Bind(306, &host, nullptr);
    list.Sync();
    EXPECT_EQ(list.cached, 1);
    host.Value = 3;
    EXPECT_EQ(list.GetValue(-1.0), 4);  // a static read still goes to the host
    EXPECT_EQ(list.cached, 4);

    list.SetValue(-1.0, 2);
    EXPECT_EQ(host.Value, 1);
    EXPECT_EQ(list.cached, 2);
    EXPECT_THAT(updates(), ElementsAre(306));
}

TEST_F(ChoiceControls, ListAndButtonFreezeOnlyByFlagAndRefresh) {
    SparkPupStruct pup{};
    pup.Value = 2;
    pup.Count = 3;
    ListControlQv list;
    list.Bind(307, &pup, nullptr);
    SparkPushStruct push{"Restart   ", nullptr};
    ButtonControlQv button, unbound;
    button.Bind(308, &push, nullptr);

    list.Disable(true);
    list.Disable(true);
    button.Disable(true);
    button.Disable(false);
    unbound.Hide(true);  // a button without a host button only keeps the flags
    unbound.Disable(true);
    EXPECT_TRUE(unbound.hidden && unbound.disabled);
    EXPECT_EQ(pup.Value, 2);
    EXPECT_STREQ(push.Title, "Restart   ");
    EXPECT_THAT(calls(), ElementsAre(update(307), update(308), update(308)));
}
