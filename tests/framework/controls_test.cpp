// What every control shares: hiding all the entries it holds, and showing a
// change of its disabled flag only when bound and only once.
#include "control_records.h"
#include "framework/controls.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using SharedControls = HostLogTest;

TEST_F(SharedControls, HidingCoversEveryEntryTheControlHolds) {
    SparkColorStruct word{0, nullptr};
    SparkFloatStruct red = float_record(1.0f), green = float_record(2.0f), blue = float_record(3.0f);
    AuxQv colour_aux;
    colour_aux.sliders[0] = &red;
    colour_aux.sliders[1] = &green;
    colour_aux.sliders[2] = &blue;
    ColourControlQv colour;
    colour.Bind(410, &word, &colour_aux);
    colour.Hide(true);

    SparkPushStruct button{"Import", nullptr};
    SparkStringStruct name{};
    AuxQv file_aux;
    file_aux.text = &name;
    FileControlQv file;
    file.Bind(114, &button, &file_aux);
    file.Hide(false);

    SparkIntStruct count{};
    IntegerControlQv integer;
    integer.Bind(20, &count, nullptr);
    integer.Hide(true);

    CheckboxControlQv never_bound;
    never_bound.Hide(true);
    EXPECT_EQ(never_bound.hidden, 1);
    EXPECT_THAT(calls(), ElementsAre(disable(410), disable(411), disable(412), disable(413),
                                     enable(114), enable(121), disable(20)));
}

TEST_F(SharedControls, OnlyABoundControlWhoseFlagChangesTellsTheHost) {
    SparkBooleanStruct box_record{};
    box_record.Title = "On";
    CheckboxControlQv box;
    box.Bind(30, &box_record, nullptr);
    box.Disable(true);
    box.Disable(true);
    box.Disable(false);

    SparkStringStruct text_record{};
    TextControlQv text;
    text.Bind(31, &text_record, nullptr);
    text.Disable(true);  // flagged only: the text entry stays as it is
    EXPECT_EQ(text.disabled, 1);

    FloatControlQv never_bound;
    never_bound.Disable(true);
    EXPECT_EQ(never_bound.disabled, 1);
    EXPECT_THAT(updates(), ElementsAre(30, 30));
}
