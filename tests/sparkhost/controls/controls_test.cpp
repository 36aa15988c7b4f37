// Control pages, titles, refused values and user changes against a fake plug-in.
#include "sparkhost/controls/controls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

#include "sparkhost/fake_plugin_fixture.h"

using ::testing::HasSubstr;

TEST(ControlPages, SplitNumbersIntoPagesOf29WithClipStringsApart) {
    const std::pair<int, int> pages[] = {{5, sparkhost::kClipPage}, {6, 0}, {34, 0}, {35, 1}, {121, 3},
                                         {122, sparkhost::kClipPage}};
    for (auto [number, page] : pages) EXPECT_EQ(sparkhost::page_of(number), page) << number;
}

using ControlTest = FakePluginTest;

TEST_F(ControlTest, TitlesDropFormatsAndBlanksAndFallBackToKindAndNumber) {
    const struct {
        int number;
        const char *name, *title;
    } cases[] = {
        {15, "Use Birth Matte", "Use Birth Matte"},
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
}

TEST_F(ControlTest, RefusedValuesNameTheProblemAndLeaveTheControlAlone) {
    const struct {
        int number;
        double value;
        const char *message;
    } cases[] = {
        {16, 20000, "0 to 10000"}, {9, 2.5, "whole number"}, {6, 1, "push button"},
        {16, std::nan(""), "finite"}, {16, 1e300, "out of range"}, {17, 0.09, "0.1"},
    };
    for (const auto &c : cases)
        EXPECT_THAT(error_of([&] { table().at(c.number).set_value(c.value); }), HasSubstr(c.message)) << c.number;
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 20.0f);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 20);
    // 0.1 as a double lies just below the stored bound 0.1f: judged at float precision.
    EXPECT_NO_THROW(table().at(17).set_value(0.1));
    table().at(80).set_value(4294967295.0);  // the whole colour word survives the double
    EXPECT_EQ(exported<SparkColorStruct>("SparkColor80").Value, 0xFFFFFFFFu);
}

TEST_F(ControlTest, UserChangeSetsTheValueThenCallsBackWithReasonOneUnlessRefused) {
    SparkInfoStruct info{};
    info.FrameNo = 7;
    EXPECT_THROW(table().at(16).set_by_user(-5, info), sparkhost::ControlError);
    EXPECT_EQ(log_->calls, 0);
    EXPECT_NE(table().at(16).set_by_user(35, info), nullptr);
    EXPECT_EQ(log_->calls, 1);
    EXPECT_EQ(log_->reason, SPARK_REASON_USER);
    EXPECT_EQ(log_->value_seen, 35.0);
    EXPECT_EQ(log_->frame, 7u);
}
