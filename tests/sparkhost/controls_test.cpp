// Control discovery, titles, values, callbacks and lookup against a fake plug-in.
#include "sparkhost/controls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "fake_plugin_fixture.h"

using sparkhost::Control;
using sparkhost::ControlError;
using sparkhost::ControlKind;
using sparkhost::ControlTable;
using ::testing::AllOf;
using ::testing::HasSubstr;

TEST(ControlPages, SplitNumbersIntoPagesOf29WithClipStringsApart) {
    const std::map<int, int> pages = {{0, sparkhost::kClipPage}, {5, sparkhost::kClipPage}, {6, 0},  {34, 0},
                                      {35, 1}, {92, 2}, {93, 3}, {121, 3}, {122, sparkhost::kClipPage}};
    for (auto [number, page] : pages) EXPECT_EQ(sparkhost::page_of(number), page) << number;
}

TEST(ControlDiscovery, RefusesANumberExportedUnderTwoKindsOrANullHandle) {
    SparkFloatStruct f = {1.0f, 0.0f, 2.0f, 0.1f, 0, "A: %.2f", nullptr};
    SparkIntStruct i = {1, 0, 2, 1, 0, "B: %d", nullptr};
    std::map<std::string, void *> symbols = {{"SparkFloat40", &f}, {"SparkInt40", &i}};
    auto lookup = [&](const char *name) -> void * {
        auto found = symbols.find(name);
        return found == symbols.end() ? nullptr : found->second;
    };
    EXPECT_THAT(error_of([&] { ControlTable::discover(lookup); }),
                AllOf(HasSubstr("control 40"), HasSubstr("SparkFloat40"), HasSubstr("SparkInt40")));
    EXPECT_THAT(error_of([] { ControlTable::discover(static_cast<void *>(nullptr)); }), HasSubstr("no plug-in"));
}

using ControlDiscoveryTest = FakePluginTest;

TEST_F(ControlDiscoveryTest, FindsEveryExportedStructureWithItsKindInNumberOrder) {
    std::vector<std::string> found;
    for (const Control &control : table().controls()) {
        found.push_back(control.symbol());
        EXPECT_EQ(control.structure(), dlsym(handle(), control.symbol().c_str())) << control.symbol();
    }
    const std::vector<std::string> expected = {
        "SparkString0",   "SparkPush6",     "SparkInt9",      "SparkBoolean15", "SparkFloat16",   "SparkFloat17",
        "SparkPup23",     "SparkPup33",     "SparkBoolean34", "SparkBoolean63", "SparkColor71",   "SparkFloat72",
        "SparkFloat73",   "SparkFloat74",   "SparkColor80",   "SparkBoolean93", "SparkFloat102",  "SparkFloat109"};
    EXPECT_EQ(found, expected);
    EXPECT_EQ(table().at(23).kind(), ControlKind::Pup);
}

TEST_F(ControlDiscoveryTest, NamesAndTitlesDropFormatsAndBlanksAndFallBackToKindAndNumber) {
    const struct {
        int number;
        const char *name, *title;
    } cases[] = {
        {16, "Density", "Density"},
        {9, "PreRoll", "PreRoll"},
        {109, "Light Z", "Light Z"},
        {15, "Use Birth Matte", "Use Birth Matte"},
        {6, "Restart", "Restart"},
        {23, "Growth Mode", "Growth Mode: Linear Growth"},  // a list shows its current entry
        {33, "Pup 33", "FULL"},                            // entries without a shared prefix
        {71, "BubbleColour", "BubbleColour"},              // a colour is named after its sliders
        {80, "Color 80", "Color 80"},
        {0, "String 0", "1: Background"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(table().at(c.number).name(), c.name) << c.number;
        EXPECT_EQ(table().at(c.number).title(), c.title) << c.number;
    }
    table().at(23).set_value(0);
    EXPECT_EQ(table().at(23).title(), "Growth Mode: Assorted");
    EXPECT_EQ(table().at(0).page(), sparkhost::kClipPage);
}

using ControlValueTest = FakePluginTest;

TEST_F(ControlValueTest, ValuesReadAndWriteAsDoublesByKind) {
    table().at(9).set_value(999);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 999);
    table().at(15).set_value(1);
    EXPECT_EQ(exported<SparkBooleanStruct>("SparkBoolean15").Value, 1);
    table().at(80).set_value(4294967295.0);  // the whole colour word survives the double
    EXPECT_EQ(exported<SparkColorStruct>("SparkColor80").Value, 0xFFFFFFFFu);
    EXPECT_EQ(table().at(34).value(), 1.0);
    EXPECT_FALSE(table().at(6).range());
    EXPECT_EQ(table().at(23).range()->max, 3.0);
}

TEST_F(ControlValueTest, RefusedValuesNameTheControlAndLeaveItAlone) {
    EXPECT_THAT(error_of([&] { table().at(16).set_value(20000); }),
                AllOf(HasSubstr("16"), HasSubstr("Density"), HasSubstr("20000"), HasSubstr("0 to 10000")));
    const struct {
        int number;
        double value;
        const char *message;
    } cases[] = {
        {109, -1.5, "-1 to 1"},         {9, 2.5, "whole number"}, {9, 0, "1 to 1000"},
        {15, 2, "Use Birth Matte"},     {23, 4, "0 to 3"},        {80, -1, "Color 80"},
        {6, 1, "push button"},          {0, 1, "text"},           {16, std::nan(""), "finite"},
        {16, 1e300, "out of range"},    {17, 0.09, "0.1"},
    };
    for (const auto &c : cases)
        EXPECT_THAT(error_of([&] { table().at(c.number).set_value(c.value); }), HasSubstr(c.message)) << c.number;
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 20.0f);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 20);
    EXPECT_EQ(exported<SparkPupStruct>("SparkPup23").Value, 3);
    // 0.1 as a double lies just below the stored bound 0.1f: judged at float precision.
    EXPECT_NO_THROW(table().at(17).set_value(0.1));
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat17").Value, 0.1f);
}

TEST_F(ControlValueTest, TextIsWrittenWholeAndRefusedWhenTooLong) {
    Control &clip = table().at(0);
    clip.set_text("Sea");
    EXPECT_STREQ(exported<SparkStringStruct>("SparkString0").Value, "Sea");
    EXPECT_THAT(error_of([&] { clip.set_text(std::string(SPARK_STRING_LENGTH, 'x')); }), HasSubstr("too long"));
    EXPECT_EQ(clip.text(), "Sea");
    EXPECT_THROW(table().at(16).set_text("x"), ControlError);
}

TEST_F(ControlValueTest, UserChangeSetsTheValueThenCallsBackWithReasonOneUnlessRefusedOrWithoutCallback) {
    SparkInfoStruct info{};
    info.FrameNo = 7;
    EXPECT_THROW(table().at(16).set_by_user(-5, info), ControlError);
    EXPECT_EQ(log_->calls, 0);
    EXPECT_NE(table().at(16).set_by_user(35, info), nullptr);
    EXPECT_EQ(log_->calls, 1);
    EXPECT_EQ(log_->reason, SPARK_REASON_USER);
    EXPECT_EQ(log_->control, 16);
    EXPECT_EQ(log_->value_seen, 35.0);
    EXPECT_EQ(log_->frame, 7u);

    table().at(23).notify(info, 3);
    EXPECT_EQ(log_->reason, 3);
    EXPECT_EQ(log_->control, 23);

    EXPECT_EQ(table().at(80).set_by_user(0x123456, info), nullptr);
    EXPECT_EQ(table().at(0).set_text_by_user("Sky", info), nullptr);
    EXPECT_EQ(log_->calls, 2);
    EXPECT_EQ(table().at(6).press(info), nullptr);  // a callback that rendered nothing
    EXPECT_EQ(log_->calls, 3);
}

using ControlLookupTest = FakePluginTest;

TEST_F(ControlLookupTest, FindsByNumberTitleOrSymbolIgnoringCaseLowestNumberFirst) {
    const std::map<std::string, int> names = {
        {"light inten", 102}, {"  DENSITY ", 16},  {"growth mode", 23},  {"Growth Mode: Linear Growth", 23},
        {"sparkfloat109", 109}, {"bubblecolour", 71}, {"auto preview", 34}};
    for (const auto &[name, number] : names) {
        ASSERT_NE(table().find(name), nullptr) << name;
        EXPECT_EQ(table().find(name)->number(), number) << name;
    }
    EXPECT_EQ(table().find("Light Inten: 50.00"), nullptr);
    EXPECT_EQ(table().find(47), nullptr);
    ASSERT_EQ(table().find_all("Auto Preview").size(), 2u);
    EXPECT_EQ(table().find_all("Auto Preview")[1]->number(), 63);
    EXPECT_EQ(sparkhost::registered_controls()->find("Density")->structure(),
              &exported<SparkFloatStruct>("SparkFloat16"));
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
