// The host driving the real plug-in: loading, entry points, buffers, messages.
#include <gtest/gtest.h>

#include <cstring>

#include "spark/spark.h"
#include "sparkhost/error.h"
#include "sparkhost/host.h"

using namespace sparkhost;

namespace {

Settings small_settings(Depth depth = Depth::Bits8) {
    Settings settings;
    settings.format = {64, 48, depth};
    settings.processors = 2;
    settings.message_sink = [](const Message &) {};
    return settings;
}

}  // namespace

TEST(HostLoading, LoadsThePluginAndAsksItsClipCount) {
    Host host(small_settings());
    host.load(FIZZLE_PLUGIN_PATH);
    EXPECT_TRUE(host.loaded());
    EXPECT_TRUE(host.exports("SparkClips"));
    EXPECT_FALSE(host.exports("NoSuchEntryPoint"));
    EXPECT_EQ(host.clips(), 4);
    EXPECT_EQ(Host::current(), &host);
}

TEST(HostLoading, MissingOrBrokenPluginIsAnErrorNamingTheFile) {
    Host host(small_settings());
    try {
        host.load("/nonexistent/fizzle.spark");
        FAIL() << "expected an error";
    } catch (const Error &error) {
        EXPECT_NE(std::string(error.what()).find("/nonexistent/fizzle.spark"), std::string::npos);
    }
    EXPECT_THROW(host.load(__FILE__), Error);
    EXPECT_FALSE(host.loaded());
}
