// The built-in input pictures: what each shows, and that they never change.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>

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

TEST(DefaultClips, SceneIsColourfulTexturedAndMovesFromFrameToFrame) {
    Frame first = default_frame(kScene, 1, small8), second = default_frame(kScene, 2, small8);
    EXPECT_TRUE(first != second);
    EXPECT_TRUE(first == default_frame(kScene, 1, small8));
    int distinct_rows = 0;
    for (int y = 1; y < small8.height; ++y)
        distinct_rows += first.value(10, y, 0) != first.value(10, y - 1, 0);
    EXPECT_GT(distinct_rows, small8.height / 2);
    EXPECT_NE(first.value(40, 30, 0), first.value(40, 30, 2));  // not grey
}

TEST(DefaultClips, BirthMatteIsWhiteAcrossTheBottomTenthOnly) {
    Frame matte = default_frame(kBirth, 1, small8);  // 60 rows: rows 0..5 white
    for (int x : {0, 47, 95}) {
        EXPECT_TRUE(white(matte, x, 0));
        EXPECT_TRUE(white(matte, x, 5));
        EXPECT_EQ(matte.value(x, 6, 0), 0);
        EXPECT_EQ(matte.value(x, 59, 1), 0);
    }
}

TEST(DefaultClips, BurstMatteIsASoftDiscInTheUpperMiddle) {
    Frame matte = default_frame(kBurst, 1, small8);
    EXPECT_TRUE(white(matte, 48, 40));   // centre: half way across, two thirds up
    EXPECT_EQ(matte.value(48, 10, 0), 0);  // below it
    EXPECT_EQ(matte.value(0, 59, 0), 0);
    int soft = 0;
    for (int x = 48; x < 96; ++x) soft += matte.value(x, 40, 0) > 0 && !white(matte, x, 40);
    EXPECT_GE(soft, 2);
}

TEST(DefaultClips, ReflectionIsColourful) {
    Frame picture = default_frame(kReflection, 1, small8);
    int coloured = 0;
    for (int x = 0; x < small8.width; x += 8) {
        int r = picture.value(x, 20, 0), g = picture.value(x, 20, 1), b = picture.value(x, 20, 2);
        coloured += std::max({r, g, b}) - std::min({r, g, b}) > 40;
    }
    EXPECT_GE(coloured, 8);
}

TEST(DefaultClips, HostUsesThemForInputsNotGiven) {
    Settings settings;
    settings.format = small8;
    Host host(settings);
    EXPECT_TRUE(host.input(kBirth).frame(3, small8) == default_frame(kBirth, 3, small8));
    EXPECT_TRUE(host.input(kScene).frame(3, small8) == default_frame(kScene, 3, small8));
    EXPECT_EQ(host.input(kBurst).describe(), "built-in burst");
}
