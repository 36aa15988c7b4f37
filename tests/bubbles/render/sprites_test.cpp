// Sprite making, trimming, aspect correction and the byte resampler.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "bubbles/engine/particle_engine.h"

namespace {

struct LumpDeleter {
    void operator()(tagPARTLUMP *lump) const { part_lump_free(lump); }
};
using Lump = std::unique_ptr<tagPARTLUMP, LumpDeleter>;

int32_t at(const tagPARTLUMP &lump, int32_t row, int32_t column) {
    return lump.intensity[row * lump.width + column];
}

// Returns what the byte resampler makes of `in` at `out_size` samples.
std::vector<int> resampled(std::vector<uint8_t> in, size_t out_size, int mode = 1, uint8_t fill = 0) {
    std::vector<uint8_t> out(out_size, fill);
    p_resample(in.data(), out.data(), int32_t(in.size()), int32_t(out_size), 1, 1, mode);
    return std::vector<int>(out.begin(), out.end());
}

}  // namespace

TEST(Sprites, SetRunsFromAnUntrimmedFivePixelSquareToARingTrimmedEightyOne) {
    ParticleEngine engine;
    const tagPARTSET &set = *engine.partSet;
    ASSERT_EQ(set.lump_count, 81);
    for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(set.lumps[i]->width, 5) << i;  // radii clamped to 2
    // The smallest ring is touched in the middle of each side, so nothing is trimmed.
    const tagPARTLUMP &small = *set.lumps[0];
    EXPECT_GE(at(small, 0, 2), 1);
    EXPECT_EQ(at(small, 0, 0), 0);
    // The last sample of a pixel inside the disc sets its normal: for the
    // centre pixel that is the sample 3.5 samples right and down of centre.
    EXPECT_FLOAT_EQ(small.normal_x[2 * 5 + 2], 3.5f / 16.0f);
    const tagPARTLUMP &large = *set.lumps[80];
    EXPECT_EQ(large.width, 81);  // 83 before the empty ring was cut
    EXPECT_GE(at(large, 0, 40), 1);
    // The body is nearly transparent at the centre but never 0 where the disc is.
    EXPECT_EQ(at(large, 40, 40), 1);
}

TEST(AspectCorrection, SqueezesWidthAndSamplesNormalsInsideTheBorder) {
    Lump source(part_lump_create(40.5f, 1.0f, 1.0f));
    EXPECT_EQ(Lump(part_aspect_correct(source.get(), 0.9f))->width, 73);  // trunc(0.5 + 81 * 0.9)
    EXPECT_EQ(Lump(part_aspect_correct(source.get(), 0.001f))->width, 1);
    Lump copy(part_aspect_correct(source.get(), 1.0f));
    ASSERT_EQ(copy->width, 81);
    EXPECT_EQ(copy->intensity[40 * 81 + 3], source->intensity[40 * 81 + 3]);
    EXPECT_FLOAT_EQ(copy->normal_x[0], source->normal_x[1 * 81 + 1]);
}

TEST(ByteResampler, AveragesCellsByOverlapAndNearestLeavesTheLastSample) {
    EXPECT_EQ(resampled({10, 20, 30}, 2), (std::vector<int>{13, 26}));  // (10 + 20 / 2) * 2 / 3, truncated
    EXPECT_EQ(resampled({100, 200}, 4), (std::vector<int>{100, 100, 200, 200}));
    EXPECT_EQ(resampled({1, 2, 3, 4, 5, 6, 7, 8}, 4, 0, 99), (std::vector<int>{1, 3, 5, 99}));
    // Words are resized byte plane by byte plane: 0x0100 and 0x00FF give 0x007F, not 0x017F.
    const uint32_t in[2] = {0x0100, 0x00FF};
    uint32_t out[1] = {};
    ASSERT_EQ(p_resizeimage(in, 2, 1, out, 1, 1, 1), 0);
    EXPECT_EQ(out[0], 0x007Fu);
}

namespace {

// FNV-1a over a sprite's size, coverage and normals, bit for bit.
uint64_t sprite_hash(const tagPARTLUMP &lump, uint64_t hash = 0xcbf29ce484222325ull) {
    const auto mix = [&hash](const void *data, size_t bytes) {
        for (size_t i = 0; i < bytes; ++i) hash = (hash ^ static_cast<const uint8_t *>(data)[i]) * 0x100000001b3ull;
    };
    const size_t count = size_t(lump.width) * size_t(lump.height);
    mix(&lump.width, sizeof lump.width);
    mix(&lump.height, sizeof lump.height);
    mix(lump.intensity, count * sizeof(int32_t));
    mix(lump.normal_x, count * sizeof(float));
    mix(lump.normal_y, count * sizeof(float));
    return hash;
}

}  // namespace

// Every sprite the engine draws with, and a few other radii and rims, are
// pinned: the bubbles' look rests on their supersampled sums.
TEST(Sprites, EverySpriteIsTheSameBitsEveryRun) {
    ParticleEngine engine;
    uint64_t set_hash = 0xcbf29ce484222325ull;
    for (int32_t i = 0; i < engine.partSet->lump_count; ++i) set_hash = sprite_hash(*engine.partSet->lumps[i], set_hash);
    EXPECT_EQ(set_hash, 18351729141440177703ull);
    const struct {
        float radius, rim;
        uint64_t hash;
    } others[] = {{0.005f, 1.0f, 6581822714899114149ull},
                  {3.3f, 0.5f, 10028890952341234797ull},
                  {17.77f, 2.0f, 13135012427714630952ull},
                  {64.0f, 1.0f, 14633219167397181144ull}};
    for (const auto &other : others)
        EXPECT_EQ(sprite_hash(*Lump(part_lump_create(other.radius, other.rim, 1.0f))), other.hash)
            << "radius " << other.radius << " rim " << other.rim;
}
