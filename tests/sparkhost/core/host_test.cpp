// What the host hands the plug-in: packed frame words and clip frames by number.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "spark/spark.h"
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
