// The host driving the real plug-in: loading, the buffers it hands over,
// and the errors for bad plug-ins, inputs and refused buffers.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "spark/spark.h"
#include "sparkhost/error.h"
#include "sparkhost/host.h"

using namespace sparkhost;

namespace {

Settings quiet_settings(Depth depth = Depth::Bits8) {
    Settings settings;
    settings.format = {64, 48, depth};
    settings.processors = 2;
    settings.message_sink = [](const Message &) {};
    return settings;
}

std::string error_of(const std::function<void()> &action) {
    try {
        action();
    } catch (const Error &error) {
        return error.what();
    }
    return "(no error)";
}

// Serves a frame whose first byte is the frame number asked for.
class NumberedClip : public ClipSource {
public:
    Frame frame(int number, const FrameFormat &format) override {
        Frame frame(format);
        frame.data()[0] = uint8_t(number);
        return frame;
    }
    void check(int, int, const FrameFormat &) override {}
    std::string describe() const override { return "numbered"; }
};

}  // namespace

TEST(HostLoading, MissingOrBrokenPluginOrBadProcessorCountIsAnError) {
    Host host(quiet_settings());
    EXPECT_NE(error_of([&] { host.load("/nonexistent/fizzle.spark"); }).find("/nonexistent/fizzle.spark"),
              std::string::npos);
    EXPECT_THROW(host.load(__FILE__), Error);
    EXPECT_FALSE(host.loaded());
    EXPECT_FALSE(host.exports("SparkClips"));
    EXPECT_THROW(host.clips(), Error);
    for (int processors : {0, 128}) {  // more than the info record can hold
        Settings settings = quiet_settings();
        settings.processors = processors;
        EXPECT_THROW(Host{settings}, Error) << processors;
    }
}

TEST(HostBuffers, ServesInputsByBufferIdAndRefusesOthers) {
    Settings settings = quiet_settings(Depth::Bits12);
    Host host(settings);
    host.make_current();
    Frame birth(settings.format);
    for (size_t i = 0; i < birth.size(); ++i) birth.data()[i] = uint8_t(i * 7);
    host.set_input(kBirth, birth);
    host.prepare_frame(1);

    SparkMemBufStruct record{};
    ASSERT_NE(sparkMemGetBuffer(3, &record), 0);
    EXPECT_EQ(record.BufId, 3);
    EXPECT_EQ(record.BufDepth, 48);
    ASSERT_EQ(record.BufSize, birth.size());
    EXPECT_EQ(std::memcmp(record.Buffer, birth.data(), birth.size()), 0);
    EXPECT_EQ(sparkMemGetBuffer(0, &record), 0);
    EXPECT_EQ(sparkMemGetBuffer(6, &record), 0);
    host.settings().unavailable_buffers = {4};
    EXPECT_EQ(sparkMemGetBuffer(4, &record), 0);
}

TEST(HostBuffers, InputOfAnotherSizeIsAnErrorNamingBothSizes) {
    Host host(quiet_settings());
    host.set_input(kScene, Frame(FrameFormat{32, 30, Depth::Bits8}));
    const std::string text = error_of([&] { host.prepare_frame(1); });
    for (const char *part : {"scene", "32x30", "64x48"}) EXPECT_NE(text.find(part), std::string::npos) << text;
    EXPECT_THROW(host.prepare_frame(0), Error);
}

TEST(HostBuffers, GetFrameFetchesTheFrameAfterTheRecordsZeroBasedNumber) {
    Host host(quiet_settings());
    host.make_current();
    host.set_input(kBurst, std::make_shared<NumberedClip>());
    std::vector<uint8_t> buffer(host.settings().format.bytes(), 0xff);
    ASSERT_NE(sparkGetFrame(kBurst, 4, buffer.data()), 0);
    EXPECT_EQ(buffer[0], 5);
    EXPECT_EQ(buffer[1], 0);
    EXPECT_EQ(sparkGetFrame(7, 4, buffer.data()), 0);
    EXPECT_EQ(sparkGetFrame(kBurst, -1, buffer.data()), 0);
}

TEST(HostBuffers, RefusedOutputBufferFailsTheFrameNamingIt) {
    Settings settings = quiet_settings();
    settings.unavailable_buffers = {kOutputBufferId};
    Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    host.initialise();
    EXPECT_FALSE(host.process(1));
    EXPECT_NE(host.last_failure().find("frame 1"), std::string::npos) << host.last_failure();
}
