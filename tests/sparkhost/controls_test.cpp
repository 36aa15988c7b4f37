// Control discovery, titles, values, callbacks and lookup against a fake plug-in.
#include "sparkhost/controls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "fake_plugin_fixture.h"

using sparkhost::Control;
using sparkhost::ControlError;
using sparkhost::ControlKind;
using sparkhost::ControlTable;
using ::testing::AllOf;
using ::testing::HasSubstr;

namespace {

std::string error_of(const std::function<void()> &action) {
    try {
        action();
    } catch (const ControlError &error) {
        return error.what();
    }
    return "(no error)";
}

}  // namespace

TEST(ControlPages, SplitNumbersIntoPagesOf29WithClipStringsApart) {
    EXPECT_EQ(sparkhost::page_of(0), sparkhost::kClipPage);
    EXPECT_EQ(sparkhost::page_of(5), sparkhost::kClipPage);
    EXPECT_EQ(sparkhost::page_of(6), 0);
    EXPECT_EQ(sparkhost::page_of(34), 0);
    EXPECT_EQ(sparkhost::page_of(35), 1);
    EXPECT_EQ(sparkhost::page_of(92), 2);
    EXPECT_EQ(sparkhost::page_of(93), 3);
    EXPECT_EQ(sparkhost::page_of(121), 3);
    EXPECT_EQ(sparkhost::page_of(122), sparkhost::kClipPage);
}

TEST(ControlDiscovery, RefusesANumberExportedUnderTwoKinds) {
    SparkFloatStruct f = {1.0f, 0.0f, 2.0f, 0.1f, 0, "A: %.2f", nullptr};
    SparkIntStruct i = {1, 0, 2, 1, 0, "B: %d", nullptr};
    std::map<std::string, void *> symbols = {{"SparkFloat40", &f}, {"SparkInt40", &i}};
    auto lookup = [&](const char *name) -> void * {
        auto found = symbols.find(name);
        return found == symbols.end() ? nullptr : found->second;
    };
    EXPECT_THAT(error_of([&] { ControlTable::discover(lookup); }),
                AllOf(HasSubstr("control 40"), HasSubstr("SparkFloat40"), HasSubstr("SparkInt40")));
}

TEST(ControlDiscovery, NullHandleIsAnError) {
    EXPECT_THAT(error_of([] { ControlTable::discover(static_cast<void *>(nullptr)); }), HasSubstr("no plug-in"));
}

using ControlDiscoveryTest = FakePluginTest;

TEST_F(ControlDiscoveryTest, FindsEveryExportedStructureWithItsKindInNumberOrder) {
    std::vector<std::pair<int, ControlKind>> found;
    for (const Control &control : table().controls()) found.emplace_back(control.number(), control.kind());
    std::vector<std::pair<int, ControlKind>> expected = {
        {0, ControlKind::String},   {6, ControlKind::Push},     {9, ControlKind::Int},
        {15, ControlKind::Boolean}, {16, ControlKind::Float},   {17, ControlKind::Float},
        {23, ControlKind::Pup},     {33, ControlKind::Pup},     {34, ControlKind::Boolean},
        {63, ControlKind::Boolean}, {71, ControlKind::Color},   {72, ControlKind::Float},
        {73, ControlKind::Float},   {74, ControlKind::Float},   {80, ControlKind::Color},
        {93, ControlKind::Boolean}, {102, ControlKind::Float},  {109, ControlKind::Float}};
    EXPECT_EQ(found, expected);
    EXPECT_EQ(table().at(16).structure(), &exported<SparkFloatStruct>("SparkFloat16"));
    EXPECT_EQ(table().at(16).symbol(), "SparkFloat16");
}

TEST_F(ControlDiscoveryTest, TitlesDropTheValueFormatAndTrailingBlanks) {
    EXPECT_EQ(table().at(16).title(), "Density");
    EXPECT_EQ(table().at(9).title(), "PreRoll");
    EXPECT_EQ(table().at(109).title(), "Light Z");
    EXPECT_EQ(table().at(15).title(), "Use Birth Matte");
    EXPECT_EQ(table().at(6).title(), "Restart");
    EXPECT_EQ(table().at(93).name(), "Light");
}

TEST_F(ControlDiscoveryTest, ListShowsItsCurrentEntryAndIsNamedByTheSharedPrefix) {
    Control &growth = table().at(23);
    EXPECT_EQ(growth.title(), "Growth Mode: Linear Growth");
    EXPECT_EQ(growth.name(), "Growth Mode");
    growth.set_value(0);
    EXPECT_EQ(growth.title(), "Growth Mode: Assorted");
    // Entries without a shared prefix: named by kind and number.
    EXPECT_EQ(table().at(33).name(), "Pup 33");
    EXPECT_EQ(table().at(33).title(), "FULL");
}

TEST_F(ControlDiscoveryTest, ColourIsNamedAfterItsSlidersOrByNumber) {
    EXPECT_EQ(table().at(71).title(), "BubbleColour");
    EXPECT_EQ(table().at(80).title(), "Color 80");
}

TEST_F(ControlDiscoveryTest, ClipStringShowsItsText) {
    EXPECT_EQ(table().at(0).title(), "1: Background");
    EXPECT_EQ(table().at(0).name(), "String 0");
    EXPECT_EQ(table().at(0).page(), sparkhost::kClipPage);
}

using ControlValueTest = FakePluginTest;

TEST_F(ControlValueTest, ValuesReadAndWriteAsDoublesByKind) {
    table().at(16).set_value(35.5);
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 35.5f);
    table().at(9).set_value(999);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 999);
    table().at(15).set_value(1);
    EXPECT_EQ(exported<SparkBooleanStruct>("SparkBoolean15").Value, 1);
    table().at(23).set_value(2);
    EXPECT_EQ(exported<SparkPupStruct>("SparkPup23").Value, 2);
    table().at(80).set_value(4294967295.0);
    EXPECT_EQ(exported<SparkColorStruct>("SparkColor80").Value, 0xFFFFFFFFu);

    EXPECT_EQ(table().at(16).value(), 35.5);
    EXPECT_EQ(table().at(34).value(), 1.0);
    EXPECT_EQ(table().at(71).value(), 4294967295.0);
    EXPECT_FALSE(table().at(6).range());
    EXPECT_EQ(table().at(23).range()->max, 3.0);
}

TEST_F(ControlValueTest, RefusedValuesNameTheControlAndLeaveItAlone) {
    EXPECT_THAT(error_of([&] { table().at(16).set_value(20000); }),
                AllOf(HasSubstr("16"), HasSubstr("Density"), HasSubstr("20000"), HasSubstr("0 to 10000")));
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 20.0f);

    EXPECT_THAT(error_of([&] { table().at(109).set_value(-1.5); }), HasSubstr("-1 to 1"));
    EXPECT_THAT(error_of([&] { table().at(9).set_value(2.5); }), HasSubstr("whole number"));
    EXPECT_THAT(error_of([&] { table().at(9).set_value(0); }), HasSubstr("1 to 1000"));
    EXPECT_THAT(error_of([&] { table().at(15).set_value(2); }), HasSubstr("Use Birth Matte"));
    EXPECT_THAT(error_of([&] { table().at(23).set_value(4); }), HasSubstr("0 to 3"));
    EXPECT_THAT(error_of([&] { table().at(80).set_value(-1); }), HasSubstr("Color 80"));
    EXPECT_THAT(error_of([&] { table().at(6).set_value(1); }), HasSubstr("push button"));
    EXPECT_THAT(error_of([&] { table().at(0).set_value(1); }), HasSubstr("text"));
    EXPECT_THAT(error_of([&] { table().at(16).set_value(std::nan("")); }), HasSubstr("finite"));
    EXPECT_THAT(error_of([&] { table().at(16).set_value(1e300); }), HasSubstr("out of range"));
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 20);
    EXPECT_EQ(exported<SparkPupStruct>("SparkPup23").Value, 3);
}

TEST_F(ControlValueTest, FloatBoundsAreJudgedAtFloatPrecision) {
    // 0.1 as a double lies just below the stored bound 0.1f.
    EXPECT_NO_THROW(table().at(17).set_value(0.1));
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat17").Value, 0.1f);
    EXPECT_THROW(table().at(17).set_value(0.09), ControlError);
}

TEST_F(ControlValueTest, TextIsWrittenWholeAndRefusedWhenTooLong) {
    Control &clip = table().at(0);
    clip.set_text("Sea");
    EXPECT_EQ(clip.text(), "Sea");
    EXPECT_STREQ(exported<SparkStringStruct>("SparkString0").Value, "Sea");
    EXPECT_THAT(error_of([&] { clip.set_text(std::string(SPARK_STRING_LENGTH, 'x')); }), HasSubstr("too long"));
    EXPECT_EQ(clip.text(), "Sea");
    EXPECT_THROW(table().at(16).set_text("x"), ControlError);
}

TEST_F(ControlValueTest, AnimatedValuesAreClampedAndTruncatedNotRefused) {
    table().at(16).assign_clamped(99999);
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 10000.0f);
    table().at(9).assign_clamped(-7.9);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 1);
    table().at(9).assign_clamped(7.9);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 7);
    table().at(93).assign_clamped(0.25);
    EXPECT_EQ(exported<SparkBooleanStruct>("SparkBoolean93").Value, 1);
    table().at(23).assign_clamped(12);
    EXPECT_EQ(exported<SparkPupStruct>("SparkPup23").Value, 3);
}

TEST_F(ControlValueTest, UserChangeSetsTheValueThenCallsBackWithReasonOne) {
    SparkInfoStruct info{};
    info.FrameNo = 7;
    unsigned long *result = table().at(16).set_by_user(35, info);
    EXPECT_EQ(log_->calls, 1);
    EXPECT_EQ(log_->reason, SPARK_REASON_USER);
    EXPECT_EQ(log_->control, 16);
    EXPECT_EQ(log_->value_seen, 35.0);
    EXPECT_EQ(log_->frame, 7u);
    EXPECT_NE(result, nullptr);

    table().at(23).notify(info, 3);
    EXPECT_EQ(log_->reason, 3);
    EXPECT_EQ(log_->control, 23);
}

TEST_F(ControlValueTest, RefusedUserChangeCallsNoCallback) {
    SparkInfoStruct info{};
    EXPECT_THROW(table().at(16).set_by_user(-5, info), ControlError);
    EXPECT_EQ(log_->calls, 0);
}

TEST_F(ControlValueTest, ControlWithoutCallbackAnswersNull) {
    SparkInfoStruct info{};
    EXPECT_EQ(table().at(80).set_by_user(0x123456, info), nullptr);
    EXPECT_EQ(table().at(0).set_text_by_user("Sky", info), nullptr);
    EXPECT_EQ(log_->calls, 0);
    EXPECT_EQ(table().at(6).press(info), nullptr);
    EXPECT_EQ(log_->calls, 1);
}

using ControlLookupTest = FakePluginTest;

TEST_F(ControlLookupTest, FindsByNumberTitleOrSymbolIgnoringCase) {
    EXPECT_EQ(table().find("light inten")->number(), 102);
    EXPECT_EQ(table().find("  DENSITY ")->number(), 16);
    EXPECT_EQ(table().find("growth mode")->number(), 23);
    EXPECT_EQ(table().find("Growth Mode: Linear Growth")->number(), 23);
    EXPECT_EQ(table().find("sparkfloat109")->number(), 109);
    EXPECT_EQ(table().find("bubblecolour")->number(), 71);
    EXPECT_EQ(table().find("Light Inten: 50.00"), nullptr);
    EXPECT_EQ(table().find(47), nullptr);
    EXPECT_EQ(table().find(102)->name(), "Light Inten");
}

TEST_F(ControlLookupTest, RepeatedTitleFindsTheLowestNumberFirst) {
    EXPECT_EQ(table().find("auto preview")->number(), 34);
    ASSERT_EQ(table().find_all("Auto Preview").size(), 2u);
    EXPECT_EQ(table().find_all("Auto Preview")[1]->number(), 63);
}

TEST_F(ControlLookupTest, UnknownNumbersAndNamesAreErrorsThatHelp) {
    EXPECT_THAT(error_of([&] { table().at(47); }), HasSubstr("no control 47"));
    EXPECT_THAT(error_of([&] { table().at(500); }), HasSubstr("0 to 121"));
    EXPECT_THAT(error_of([&] { table().at("light intn"); }),
                AllOf(HasSubstr("\"light intn\""), HasSubstr("did you mean \"Light Inten\"")));
    EXPECT_THAT(error_of([&] { table().at("densty"); }), HasSubstr("did you mean \"Density\""));
    EXPECT_THAT(error_of([&] { table().at("zebra crossing"); }), ::testing::Not(HasSubstr("did you mean")));
    EXPECT_EQ(table().closest_name("matte"), "Use Birth Matte");
}

TEST_F(ControlLookupTest, RegistryHoldsTheLoadedPluginsControls) {
    ASSERT_NE(sparkhost::registered_controls(), nullptr);
    EXPECT_EQ(sparkhost::registered_controls()->find("Density")->structure(),
              &exported<SparkFloatStruct>("SparkFloat16"));
}
