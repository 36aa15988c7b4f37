// Frame buffers: the packed layouts and the rounding between depths.
#include <gtest/gtest.h>

#include <cstring>

#include "sparkhost/frame.h"

using namespace sparkhost;

TEST(FrameLayout, PacksRowsFromTheBottomWithValuesInTheTopTwelveBits) {
    Frame deep(FrameFormat{3, 2, Depth::Bits12});
    ASSERT_EQ(deep.size(), 3u * 2 * 6);
    deep.set_value(1, 1, 2, 0xABC);
    uint16_t word;
    std::memcpy(&word, deep.data() + (1 * 3 + 1) * 6 + 2 * 2, 2);
    EXPECT_EQ(word, 0xABC0);
    EXPECT_EQ(deep.value(1, 1, 2), 0xABC);

    Frame shallow(FrameFormat{3, 2, Depth::Bits8});
    ASSERT_EQ(shallow.size(), 3u * 2 * 3);
    shallow.set_value(2, 0, 1, 77);
    EXPECT_EQ(shallow.data()[2 * 3 + 1], 77);
}

TEST(FrameDepths, WideningAndRoundingBackAreExactAtEveryLevel) {
    for (int v = 0; v < 256; ++v) ASSERT_EQ(quantize16(widen_to16(v, Depth::Bits8), Depth::Bits8), v);
    for (int v = 0; v < 4096; ++v) ASSERT_EQ(quantize16(widen_to16(v, Depth::Bits12), Depth::Bits12), v);
    EXPECT_EQ(widen_to16(255, Depth::Bits8), 65535);
    EXPECT_EQ(widen_to16(4095, Depth::Bits12), 65535);
    EXPECT_EQ(quantize16(32768, Depth::Bits8), 128);
}
