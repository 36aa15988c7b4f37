// The host driving the real plug-in: loading, the records and buffers it
// hands over, the host functions a plug-in calls, and the frame cycle.
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "spark/spark.h"
#include "sparkhost/error.h"
#include "sparkhost/host.h"

using namespace sparkhost;

namespace sparkhost {
void PrintTo(Depth depth, std::ostream *out) { *out << (depth == Depth::Bits8 ? "8-bit" : "12-bit"); }
}  // namespace sparkhost

namespace {

Settings quiet_settings(Depth depth = Depth::Bits8) {
    Settings settings;
    settings.format = {64, 48, depth};
    settings.processors = 2;
    settings.message_sink = [](const Message &) {};
    return settings;
}

// A picture that walks through every level of its depth.
Frame ramp(const FrameFormat &format, int offset = 0) {
    Frame frame(format);
    int levels = format.max_value() + 1, n = offset;
    for (int y = 0; y < format.height; ++y)
        for (int x = 0; x < format.width; ++x)
            for (int c = 0; c < 3; ++c) frame.set_value(x, y, c, (n++ * 7) % levels);
    return frame;
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

// With Blend at 100 the result is the scene whatever the effect draws.
void blend_to_scene(Host &host) {
    for (int number = SPARK_FIRST_PAGE_CONTROL; number <= SPARK_MAX_CONTROL; ++number) {
        auto *control = static_cast<SparkFloatStruct *>(host.symbol(("SparkFloat" + std::to_string(number)).c_str()));
        if (control && control->Title && std::string(control->Title).rfind("Blend", 0) == 0) control->Value = 100.0f;
    }
}

bool has_frame_cycle(const Host &host) {
    return host.exports("SparkInitialise") && host.exports("SparkProcess");
}

}  // namespace

TEST(HostLoading, LoadsThePluginAndAsksItsClipCount) {
    Host host(quiet_settings());
    host.load(FIZZLE_PLUGIN_PATH);
    EXPECT_TRUE(host.loaded());
    EXPECT_TRUE(host.exports("SparkClips"));
    EXPECT_FALSE(host.exports("NoSuchEntryPoint"));
    EXPECT_EQ(host.clips(), 4);
    EXPECT_EQ(Host::current(), &host);
}

TEST(HostLoading, MissingOrBrokenPluginIsAnErrorNamingTheFile) {
    Host host(quiet_settings());
    try {
        host.load("/nonexistent/fizzle.spark");
        FAIL() << "expected an error";
    } catch (const Error &error) {
        EXPECT_NE(std::string(error.what()).find("/nonexistent/fizzle.spark"), std::string::npos);
    }
    EXPECT_THROW(host.load(__FILE__), Error);
    EXPECT_FALSE(host.loaded());
    EXPECT_THROW(host.clips(), Error);
}

TEST(HostLoading, RejectsProcessorCountsTheInfoRecordCannotHold) {
    Settings settings = quiet_settings();
    settings.processors = 0;
    EXPECT_THROW(Host{settings}, Error);
    settings.processors = 128;
    EXPECT_THROW(Host{settings}, Error);
}

TEST(HostRecords, InfoRecordCountsFramesFromZeroAndDescribesTheFrame) {
    Settings settings = quiet_settings(Depth::Bits12);
    settings.processors = 3;
    settings.total_frames = 100;
    settings.setup_path = "/tmp/fizzle.setup";
    Host host(settings);
    SparkInfoStruct info = host.info_record(5);
    EXPECT_EQ(info.FrameNo, 4u);
    EXPECT_EQ(info.TotalFrames, 100u);
    EXPECT_EQ(info.FrameWidth, 64);
    EXPECT_EQ(info.FrameHeight, 48);
    EXPECT_EQ(info.FrameDepth, 48);
    EXPECT_EQ(info.NumProcessors, 3);
    EXPECT_STREQ(info.SetupPath, "/tmp/fizzle.setup");
    host.settings().format.depth = Depth::Bits8;
    EXPECT_EQ(host.info_record(1).FrameDepth, 24);
}

TEST(HostRecords, GraphSetupGivesThePixelAspect) {
    Settings settings = quiet_settings();
    settings.pixel_aspect = 1.4587f;
    Host host(settings);
    host.make_current();
    SparkGraphInfoStruct graph{};
    EXPECT_NE(sparkGraphSetup(&graph), 0);
    EXPECT_EQ(graph.PixelAspectRatio, 1.4587f);
    EXPECT_EQ(graph.FrameWidth, 64);
}

TEST(HostBuffers, ServesInputsAndAClearedOutputByBufferId) {
    Settings settings = quiet_settings(Depth::Bits12);
    Host host(settings);
    host.make_current();
    Frame birth = ramp(settings.format);
    host.set_input(kBirth, birth);
    host.prepare_frame(1);

    SparkMemBufStruct record{};
    ASSERT_NE(sparkMemGetBuffer(3, &record), 0);
    EXPECT_EQ(record.BufId, 3);
    EXPECT_EQ(record.BufWidth, 64);
    EXPECT_EQ(record.BufHeight, 48);
    EXPECT_EQ(record.BufDepth, 48);
    ASSERT_EQ(record.BufSize, birth.size());
    EXPECT_EQ(std::memcmp(record.Buffer, birth.data(), birth.size()), 0);

    ASSERT_NE(sparkMemGetBuffer(1, &record), 0);
    ASSERT_EQ(record.BufSize, settings.format.bytes());
    const uint8_t *output = static_cast<const uint8_t *>(record.Buffer);
    EXPECT_EQ(std::vector<uint8_t>(output, output + record.BufSize), std::vector<uint8_t>(record.BufSize, 0));

    for (int id = 2; id <= 5; ++id) EXPECT_NE(sparkMemGetBuffer(id, &record), 0) << id;
    EXPECT_EQ(sparkMemGetBuffer(0, &record), 0);
    EXPECT_EQ(sparkMemGetBuffer(6, &record), 0);
    host.settings().unavailable_buffers = {4};
    EXPECT_EQ(sparkMemGetBuffer(4, &record), 0);
}

TEST(HostBuffers, InputOfAnotherSizeIsAnErrorNamingBothSizes) {
    Host host(quiet_settings());
    host.set_input(kScene, Frame(FrameFormat{32, 30, Depth::Bits8}));
    try {
        host.prepare_frame(1);
        FAIL() << "expected an error";
    } catch (const Error &error) {
        std::string text = error.what();
        EXPECT_NE(text.find("scene"), std::string::npos) << text;
        EXPECT_NE(text.find("32x30"), std::string::npos) << text;
        EXPECT_NE(text.find("64x48"), std::string::npos) << text;
    }
    EXPECT_THROW(host.check_inputs(1, 1), Error);
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

TEST(HostMessages, RecordsMessagesErrorsAndConfirmationsInOrder) {
    Settings settings = quiet_settings();
    std::vector<std::string> seen;
    settings.message_sink = [&](const Message &message) { seen.push_back(message.text); };
    settings.confirm_answer = false;
    Host host(settings);
    host.make_current();
    sparkMessage("hello");
    sparkError("broken");
    EXPECT_EQ(sparkMessageConfirm("Sure?"), 0);
    host.settings().confirm_answer = true;
    EXPECT_EQ(sparkMessageConfirm("Really?"), 1);

    std::vector<Message> messages = host.messages();
    ASSERT_EQ(messages.size(), 4u);
    EXPECT_EQ(messages[0].kind, Message::Kind::Message);
    EXPECT_EQ(messages[0].text, "hello");
    EXPECT_EQ(messages[1].kind, Message::Kind::Error);
    EXPECT_EQ(messages[1].text, "broken");
    EXPECT_EQ(messages[2].kind, Message::Kind::Confirm);
    EXPECT_EQ(seen, (std::vector<std::string>{"hello", "broken", "Sure?", "Really?"}));
    host.clear_messages();
    EXPECT_TRUE(host.messages().empty());
}

TEST(HostViewer, RecordsCursorAndRedrawRequests) {
    Host host(quiet_settings());
    host.make_current();
    sparkCursorBusy();
    sparkViewingCursor(SPARK_CURSOR_CAUGHT);
    sparkViewingCursor(SPARK_CURSOR_NORMAL);
    sparkViewingDraw();
    EXPECT_EQ(host.events().cursor_busy, 1);
    EXPECT_EQ(host.events().viewing_draws, 1);
    EXPECT_EQ(host.events().cursor_shapes, (std::vector<int>{SPARK_CURSOR_CAUGHT, SPARK_CURSOR_NORMAL}));
}

namespace {
std::string browsed_path;
void remember_path(char *path) { browsed_path = path; }
}  // namespace

TEST(HostFiles, FileBrowserAnswersWithTheSetPathOrCancels) {
    Settings settings = quiet_settings();
    settings.working_dir = "/data/shots";
    Host host(settings);
    host.make_current();
    char directory[SPARK_SETUP_PATH_MAX];
    sparkWorkingDir(directory);
    EXPECT_STREQ(directory, "/data/shots");

    browsed_path = "untouched";
    sparkFileBrowserDisplay(directory, "", remember_path);
    EXPECT_EQ(browsed_path, "untouched");
    host.settings().browser_answer = "/data/shots/amplitude.txt";
    sparkFileBrowserDisplay(directory, "txt", remember_path);
    EXPECT_EQ(browsed_path, "/data/shots/amplitude.txt");
    ASSERT_EQ(host.events().browses.size(), 2u);
    EXPECT_EQ(host.events().browses[1].directory, "/data/shots");
    EXPECT_EQ(host.events().browses[1].extension, "txt");
}

// The frame cycle needs SparkProcess; a plug-in built without it skips these.
class HostFrameCycle : public ::testing::TestWithParam<Depth> {};

TEST_P(HostFrameCycle, FramePushedThroughComesBackIdenticalAtFullResolution) {
    Settings settings = quiet_settings(GetParam());
    settings.proxy = 0;
    Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    if (!has_frame_cycle(host)) GTEST_SKIP() << "plug-in exports no frame cycle yet";
    Frame scene = ramp(settings.format);
    host.set_input(kScene, scene);
    host.initialise();
    blend_to_scene(host);
    for (int frame = 1; frame <= 2; ++frame) {
        std::optional<Frame> output = host.process(frame);
        ASSERT_TRUE(output) << host.last_failure();
        EXPECT_TRUE(*output == scene) << "frame " << frame;
    }
    host.uninitialise();
}

TEST_P(HostFrameCycle, RefusedBufferMakesTheFrameFail) {
    Settings settings = quiet_settings(GetParam());
    settings.unavailable_buffers = {kOutputBufferId};
    Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    if (!has_frame_cycle(host)) GTEST_SKIP() << "plug-in exports no frame cycle yet";
    host.initialise();
    EXPECT_FALSE(host.process(1));
    EXPECT_NE(host.last_failure().find("frame 1"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Depths, HostFrameCycle, ::testing::Values(Depth::Bits8, Depth::Bits12),
                         [](const auto &info) { return info.param == Depth::Bits8 ? "Bits8" : "Bits12"; });

TEST(HostStartUp, OldInterfaceVersionIsReportedAsAnError) {
    Settings settings = quiet_settings();
    settings.api_version = 3.9;
    Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    if (!host.exports("SparkInitialise")) GTEST_SKIP() << "plug-in exports no SparkInitialise yet";
    EXPECT_EQ(host.initialise(), 2u);
    bool reported = false;
    for (const Message &message : host.messages())
        reported |= message.kind == Message::Kind::Error && message.text.find("4.0") != std::string::npos;
    EXPECT_TRUE(reported);
}

TEST(HostStartUp, ProxySettingSelectsTheResolutionListEntry) {
    Settings settings = quiet_settings();
    settings.proxy = 3;
    Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    auto *list = static_cast<SparkPupStruct *>(host.symbol("SparkPup33"));
    if (!list || !has_frame_cycle(host)) GTEST_SKIP() << "plug-in exports no resolution list yet";
    host.initialise();
    host.process(1);
    EXPECT_EQ(list->Value, 3);
}
