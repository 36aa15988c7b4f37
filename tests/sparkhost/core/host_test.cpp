// What the host hands the plug-in: packed frame words and clip frames by number.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "spark/spark.h"
#include "sparkhost/clips/default_clips.h"
#include "sparkhost/core/host.h"

using namespace sparkhost;

TEST(HostFrames, TwelveBitValuesSitInTheTopBitsOfWordsInRowsFromTheBottom) {
    Frame deep(FrameFormat{3, 2, Depth::Bits12});
    deep.set_value(1, 1, 2, 0xABC);
    uint16_t word;
    std::memcpy(&word, deep.data() + (1 * 3 + 1) * 6 + 2 * 2, 2);
    EXPECT_EQ(word, 0xABC0);
}

namespace {

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

TEST(HostFrames, GetFrameFetchesTheFrameAfterTheRecordsZeroBasedNumber) {
    Settings settings;
    settings.format = {64, 48, Depth::Bits8};
    Host host(settings);
    host.make_current();
    host.set_input(kBurst, std::make_shared<NumberedClip>());
    std::vector<uint8_t> buffer(settings.format.bytes(), 0xff);
    ASSERT_NE(sparkGetFrame(kBurst, 4, buffer.data()), 0);
    EXPECT_EQ(buffer[0], 5);
    EXPECT_EQ(buffer[1], 0);
    EXPECT_EQ(sparkGetFrame(7, 4, buffer.data()), 0);
}

namespace {

const uint8_t *shown(Host &host, int clip, SparkMemBufStruct &record) {
    record = SparkMemBufStruct{};
    if (!host.memory_buffer(clip + 2, &record)) return nullptr;
    return static_cast<const uint8_t *>(record.Buffer);
}

Frame marked(const FrameFormat &format, uint8_t mark) {
    Frame frame(format);
    frame.data()[0] = mark;
    return frame;
}

}  // namespace

// Still pictures are shown to the plug-in where their clip holds them, not
// copied into a buffer of the host's: a copy of each is 50 MB at 4K 12-bit.
TEST(HostFrames, StillInputsAreShownWhereTheirClipHoldsThem) {
    Settings settings;
    settings.format = {64, 48, Depth::Bits8};
    Host host(settings);
    host.set_input(kBirth, marked(settings.format, 7));
    host.prepare_frame(1);
    SparkMemBufStruct record;
    const uint8_t *first = shown(host, kBirth, record);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, host.input(kBirth).held(1, settings.format)->data());
    EXPECT_EQ(record.BufSize, settings.format.bytes());
    EXPECT_EQ(first[0], 7);

    // The built-in mattes too, the same storage frame after frame; the
    // moving scene is drawn into a buffer of its own.
    const uint8_t *matte = shown(host, kBurst, record);
    host.prepare_frame(2);
    EXPECT_EQ(shown(host, kBurst, record), matte);
    EXPECT_EQ(std::memcmp(matte, default_frame(kBurst, 2, settings.format).data(), settings.format.bytes()), 0);
    EXPECT_EQ(host.input(kScene).held(2, settings.format), nullptr);
    EXPECT_NE(shown(host, kScene, record), nullptr);
}

TEST(HostFrames, AReplacedStillStaysReadableUntilTheNextFrameShowsItsSuccessor) {
    Settings settings;
    settings.format = {16, 8, Depth::Bits12};
    Host host(settings);
    host.set_input(kReflection, marked(settings.format, 3));
    host.prepare_frame(1);
    host.set_input(kReflection, marked(settings.format, 9));  // frees the first clip
    SparkMemBufStruct record;
    ASSERT_NE(shown(host, kReflection, record), nullptr);
    EXPECT_EQ(shown(host, kReflection, record)[0], 3);  // still alive: the sanitizer run checks
    host.prepare_frame(1);
    EXPECT_EQ(shown(host, kReflection, record)[0], 9);

    // A new frame size reaches held pictures as it reaches buffers.
    host.settings().format = {8, 4, Depth::Bits12};
    EXPECT_THROW(host.prepare_frame(2), Error);  // the still is the old size
    host.set_input(kReflection, std::shared_ptr<ClipSource>());  // back to the built-in picture
    host.prepare_frame(2);
    ASSERT_NE(shown(host, kReflection, record), nullptr);
    EXPECT_EQ(record.BufWidth, 8);
    EXPECT_EQ(std::memcmp(record.Buffer, default_frame(kReflection, 2, host.settings().format).data(),
                          host.settings().format.bytes()),
              0);
}

// The render hands the finished picture to its writer without a copy and
// gets a written frame's storage back, which the next frame clears.
TEST(HostFrames, TakenOutputLeavesStorageThatTheNextFrameClears) {
    Settings settings;
    settings.format = {16, 8, Depth::Bits8};
    Host host(settings);
    host.make_current();
    host.prepare_frame(1);
    SparkMemBufStruct record{};
    ASSERT_NE(sparkMemGetBuffer(kOutputBufferId, &record), 0);
    static_cast<uint8_t *>(record.Buffer)[5] = 200;  // what a plug-in renders

    Frame picture = marked(settings.format, 1);  // a written frame's storage
    const uint8_t *spare = picture.data();
    host.take_output(picture);
    EXPECT_EQ(picture.data(), record.Buffer);
    EXPECT_EQ(picture.data()[5], 200);
    host.prepare_frame(2);
    EXPECT_EQ(host.output_buffer().data(), spare);
    EXPECT_EQ(host.output_buffer(), Frame(settings.format));

    Frame nothing;  // no storage to give: the next frame makes its own
    host.take_output(nothing);
    host.prepare_frame(3);
    EXPECT_EQ(host.output_buffer(), Frame(settings.format));
}
