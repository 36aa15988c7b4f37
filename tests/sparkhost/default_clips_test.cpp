// The built-in input pictures never change.
#include <gtest/gtest.h>

#include <cstdint>

#include "sparkhost/default_clips.h"
#include "sparkhost/host.h"

using namespace sparkhost;

// Reference renders are made over these pictures: a change here changes
// every reference frame, so it must be deliberate and regenerate them.
TEST(DefaultClips, PicturesAreTheSameBytesEveryRun) {
    const FrameFormat small8{96, 60, Depth::Bits8}, small12{96, 60, Depth::Bits12};
    const struct {
        int clip, frame;
        FrameFormat format;
        uint64_t hash;
    } cases[] = {
        {kScene, 2, small8, 7163179135960982060ull},       {kScene, 1, small12, 6839729674711373577ull},
        {kBirth, 1, small8, 7269332297702123109ull},       {kBurst, 1, small12, 7562997308327233221ull},
        {kReflection, 1, small8, 12925030606290499473ull},
    };
    for (const auto &c : cases) {
        const Frame frame = default_frame(c.clip, c.frame, c.format);
        uint64_t hash = 0xcbf29ce484222325ull;  // FNV-1a
        for (uint8_t byte : frame.bytes()) hash = (hash ^ byte) * 0x100000001b3ull;
        EXPECT_EQ(hash, c.hash) << clip_name(c.clip) << " frame " << c.frame << " " << c.format.describe();
    }
}
