// Looking up the "Demos" presets by list value and by name.
#include <gtest/gtest.h>

#include "bubbles/presets.h"

TEST(DemoPresets, ListValuesOutsideOneToTenLoadBasic) {
    EXPECT_STREQ(demo_preset_for_list_value(10).name, "Pipe");
    for (long outside : {0L, 11L, -1L}) EXPECT_STREQ(demo_preset_for_list_value(outside).name, "Basic");

    EXPECT_EQ(demo_preset_list_value("under water"), 4);
    EXPECT_EQ(demo_preset_list_value("Fizzy"), 0);
}
