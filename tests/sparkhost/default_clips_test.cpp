// The built-in input pictures: what each shows, and that they never change.
#include <gtest/gtest.h>

#include <cstdint>

#include "sparkhost/default_clips.h"
#include "sparkhost/host.h"

using namespace sparkhost;

namespace {

uint64_t fnv1a(const Frame &frame) {
    uint64_t hash = 0xcbf29ce484222325ull;
    for (uint8_t byte : frame.bytes()) hash = (hash ^ byte) * 0x100000001b3ull;
    return hash;
}

const FrameFormat small8{96, 60, Depth::Bits8};

bool white(const Frame &frame, int x, int y) {
    return frame.value(x, y, 0) == frame.format().max_value();
}

}  // namespace

// Reference renders are made over these pictures: a change here changes
// every reference frame, so it must be deliberate and regenerate them.
TEST(DefaultClips, PicturesAreTheSameBytesEveryRun) {
    const FrameFormat small12{96, 60, Depth::Bits12};
    struct Case {
        int clip, frame;
        FrameFormat format;
        uint64_t hash;
    };
    const Case cases[] = {
        {kScene, 1, small8, 4907454914302683445ull},  {kScene, 2, small8, 7163179135960982060ull},
        {kScene, 1, small12, 6839729674711373577ull}, {kBirth, 1, small8, 7269332297702123109ull},
        {kBurst, 1, small12, 7562997308327233221ull}, {kReflection, 1, small8, 12925030606290499473ull},
    };
    for (const Case &c : cases) {
        uint64_t hash = fnv1a(default_frame(c.clip, c.frame, c.format));
        EXPECT_EQ(hash, c.hash) << clip_name(c.clip) << " frame " << c.frame << " "
                                << c.format.describe();
    }
}

TEST(DefaultClips, BirthMatteIsTheBottomTenthAndBurstASoftDiscInTheUpperMiddle) {
    Frame birth = default_frame(kBirth, 1, small8);  // 60 rows: rows 0..5 white
    for (int x : {0, 47, 95}) {
        EXPECT_TRUE(white(birth, x, 0) && white(birth, x, 5)) << x;
        EXPECT_EQ(birth.value(x, 6, 0) + birth.value(x, 59, 1), 0) << x;
    }
    Frame burst = default_frame(kBurst, 1, small8);
    EXPECT_TRUE(white(burst, 48, 40));  // centre: half way across, two thirds up
    EXPECT_EQ(burst.value(48, 10, 0) + burst.value(0, 59, 0), 0);
    int soft = 0;
    for (int x = 48; x < 96; ++x) soft += burst.value(x, 40, 0) > 0 && !white(burst, x, 40);
    EXPECT_GE(soft, 2);
}

TEST(DefaultClips, HostUsesThemForInputsNotGiven) {
    Settings settings;
    settings.format = small8;
    Host host(settings);
    EXPECT_TRUE(host.input(kBirth).frame(3, small8) == default_frame(kBirth, 3, small8));
    EXPECT_EQ(host.input(kBurst).describe(), "built-in burst");
}
