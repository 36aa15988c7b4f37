// The built-in input pictures never change.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "sparkhost/clips/default_clips.h"
#include "sparkhost/clips/default_scene.h"
#include "sparkhost/core/host.h"

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
        // Odd sizes, either depth: the still pictures' short cuts (per row,
        // per column, black far from the disc) must not show.
        {kBurst, 1, {333, 101, Depth::Bits8}, 12700446956232943310ull},
        {kBurst, 1, {41, 250, Depth::Bits12}, 6654435619312497017ull},
        {kReflection, 1, {333, 101, Depth::Bits12}, 13999820477852612071ull},
        {kReflection, 1, {7, 3, Depth::Bits8}, 10419918354936577053ull},
        {kBirth, 1, {333, 101, Depth::Bits12}, 13494580463147487552ull},
        {kBirth, 1, {5, 9, Depth::Bits8}, 288825597995668520ull},
        // The scene is drawn block by block across each row: widths that
        // leave a partial block, the full size, and frame numbers up to the
        // largest --frames takes, where (x + 3 * frame) wraps past 2^31.
        {kScene, 1, {333, 101, Depth::Bits8}, 9253678721557132603ull},
        {kScene, 37, {333, 101, Depth::Bits12}, 18028980263076979250ull},
        {kScene, 2, {7, 3, Depth::Bits12}, 10507726193891031062ull},
        {kScene, 1000, {7, 3, Depth::Bits8}, 6031924192232879793ull},
        {kScene, 37, {1, 1, Depth::Bits8}, 1591259517546091409ull},
        {kScene, 1000, {1, 1, Depth::Bits12}, 2542848435750345488ull},
        {kScene, 1000, {1920, 1080, Depth::Bits8}, 140382439793514593ull},
        {kScene, 2, {1920, 1080, Depth::Bits12}, 15521184666582317921ull},
        {kScene, 999999999, {333, 101, Depth::Bits8}, 3447880398344469340ull},
        {kScene, 999999999, {41, 250, Depth::Bits12}, 16826070016998459081ull},
    };
    const auto hash_of = [](const Frame &frame) {
        uint64_t hash = 0xcbf29ce484222325ull;  // FNV-1a
        for (uint8_t byte : frame.bytes()) hash = (hash ^ byte) * 0x100000001b3ull;
        return hash;
    };
    for (const auto &c : cases) {
        const std::string name = std::string(clip_name(c.clip)) + " frame " + std::to_string(c.frame) + " " +
                                 c.format.describe();
        EXPECT_EQ(hash_of(default_frame(c.clip, c.frame, c.format)), c.hash) << name;
        // Other processors draw the scene with other vectors.
        for (SceneVectors vectors : {SceneVectors::Baseline, SceneVectors::Avx2, SceneVectors::Avx512}) {
            if (c.clip != kScene || !runs_here(vectors)) continue;
            Frame frame;
            draw_scene(c.frame, c.format, frame, vectors);
            EXPECT_EQ(hash_of(frame), c.hash) << name << " with vectors " << int(vectors);
        }
    }
}
