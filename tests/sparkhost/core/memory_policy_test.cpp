// How many frames the queues around a render may hold.
#include <gtest/gtest.h>

#include "sparkhost/core/memory_policy.h"

using namespace sparkhost;

TEST(MemoryPolicy, QueuesHoldFewerFramesAsFramesGrowButNeverNone) {
    const FrameFormat uhd_deep{3840, 2160, Depth::Bits12};  // 50 MB a frame
    const FrameFormat uhd{3840, 2160, Depth::Bits8};         // 25 MB
    const FrameFormat hd_deep{1920, 1080, Depth::Bits12};    // 12 MB
    EXPECT_EQ(frames_in_flight(uhd_deep, 2), 1);
    EXPECT_EQ(frames_in_flight(uhd_deep, 3), 1);
    EXPECT_EQ(frames_in_flight(uhd, 3), 2);
    EXPECT_EQ(frames_in_flight(hd_deep, 3), 3);
    EXPECT_EQ(frames_in_flight(hd_deep, 2), 2);
    EXPECT_EQ(frames_in_flight(FrameFormat{16000, 16000, Depth::Bits12}, 2), 1);
    EXPECT_EQ(frames_in_flight(FrameFormat{0, 0, Depth::Bits8}, 2), 2);
    EXPECT_EQ(frames_in_flight(hd_deep, 0), 1);
}
