// The proxy setting reaches the plug-in's resolution list, which the host
// finds by its entries: no control number is the host's to know.
#include <gtest/gtest.h>

#include "spark/spark.h"
#include "sparkhost/core/host.h"

namespace {

struct Lists {
    const SparkPupStruct &resolution;
    const SparkPupStruct &growth;  // a list of other entries
};

Lists lists_of(const sparkhost::Host &host) {
    return {*static_cast<const SparkPupStruct *>(host.symbol("SparkPup33")),
            *static_cast<const SparkPupStruct *>(host.symbol("SparkPup23"))};
}

}  // namespace

TEST(HostProxy, SelectsTheEntryOfTheListOfResolutionsAndNoOtherList) {
    sparkhost::Settings settings;
    settings.proxy = 2;
    sparkhost::Host host(settings);
    host.load(FAKE_PLUGIN_PATH);  // a private copy: its lists start as exported
    const Lists lists = lists_of(host);
    const int growth_before = lists.growth.Value;
    ASSERT_EQ(lists.resolution.Value, 0);
    host.set_control(15, 1.0);
    EXPECT_EQ(lists.resolution.Value, 2);
    EXPECT_EQ(lists.growth.Value, growth_before);
    // A later change of the setting holds from the next call on.
    host.settings().proxy = 1;
    host.set_control(15, 0.0);
    EXPECT_EQ(lists.resolution.Value, 1);
}

TEST(HostProxy, UnsetLeavesThePluginsOwnChoice) {
    sparkhost::Host host;
    host.load(FAKE_PLUGIN_PATH);
    const Lists lists = lists_of(host);
    host.set_control(15, 1.0);
    EXPECT_EQ(lists.resolution.Value, 0);
}
