// Sprite rendering, trimming, aspect correction and the resamplers.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "bubbles/bubbles.h"

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
    Bubbles::p_resample(in.data(), out.data(), int32_t(in.size()), int32_t(out_size), 1, 1, mode);
    return std::vector<int>(out.begin(), out.end());
}

}  // namespace

TEST(Sprites, SmallestRadiusKeepsItsFivePixelSquareWithEmptyCorners) {
    Lump lump(Bubbles::part_lump_create(2.0f, 1.0f, 1.0f));
    ASSERT_TRUE(lump);
    EXPECT_EQ(lump->width, 5);
    EXPECT_EQ(lump->height, 5);
    // The ring is touched in the middle of each side, so nothing is trimmed.
    EXPECT_GE(at(*lump, 0, 2), 1);
    EXPECT_GE(at(*lump, 2, 0), 1);
    EXPECT_EQ(at(*lump, 0, 0), 0);
    EXPECT_EQ(at(*lump, 4, 4), 0);
    // The last sample of a pixel inside the disc sets its normal: for the
    // centre pixel that is the sample 3.5 samples right and down of centre.
    EXPECT_FLOAT_EQ(lump->normal_x[2 * 5 + 2], 3.5f / 16.0f);
    EXPECT_FLOAT_EQ(lump->normal_y[2 * 5 + 2], 3.5f / 16.0f);
}

TEST(Sprites, LargestRadiusLosesItsEmptyOuterRing) {
    Lump lump(Bubbles::part_lump_create(40.5f, 1.0f, 1.0f));
    ASSERT_TRUE(lump);
    EXPECT_EQ(lump->width, 81);  // 83 before the empty ring was cut
    EXPECT_EQ(lump->height, 81);
    EXPECT_GE(at(*lump, 0, 40), 1);
    EXPECT_EQ(at(*lump, 0, 0), 0);
    // The body is nearly transparent at the centre but never 0 where the disc is.
    EXPECT_EQ(at(*lump, 40, 40), 1);
    // The rim peaks near full scale; normals point outwards.
    EXPECT_GT(*std::max_element(lump->intensity + 40 * 81, lump->intensity + 41 * 81), 30000);
    EXPECT_GT(lump->normal_x[40 * 81 + 80], 0.9f);
    EXPECT_LT(lump->normal_y[0 * 81 + 40], -0.9f);
}

TEST(Sprites, SetHoldsEightyOneSizesFromRadiusTwoUp) {
    Bubbles engine;
    tagPARTSET *set = engine.partSet;
    ASSERT_TRUE(set);
    EXPECT_EQ(set->lump_count, 81);
    for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(set->lumps[i]->width, 5) << i;  // radii clamped to 2
    EXPECT_EQ(set->lumps[80]->width, 81);
}

TEST(AspectCorrection, UnitFactorCopiesCoverageAndSamplesNormalsInsideTheBorder) {
    Lump source(Bubbles::part_lump_create(6.0f, 1.0f, 1.0f));
    Lump copy(Bubbles::part_aspect_correct(source.get(), 1.0f));
    ASSERT_TRUE(copy);
    ASSERT_EQ(copy->width, source->width);
    ASSERT_EQ(copy->height, source->height);
    const int32_t w = source->width, h = source->height;
    for (int32_t i = 0; i < w * h; ++i) EXPECT_EQ(copy->intensity[i], source->intensity[i]);
    EXPECT_FLOAT_EQ(copy->normal_x[0], source->normal_x[1 * w + 1]);
    EXPECT_FLOAT_EQ(copy->normal_y[(h - 1) * w + (w - 1)], source->normal_y[(h - 2) * w + (w - 2)]);
}

TEST(AspectCorrection, SqueezesWidthAndKeepsHeight) {
    Lump source(Bubbles::part_lump_create(40.5f, 1.0f, 1.0f));
    Lump narrow(Bubbles::part_aspect_correct(source.get(), 0.9f));
    ASSERT_TRUE(narrow);
    EXPECT_EQ(narrow->width, 73);  // trunc(0.5 + 81 * 0.9)
    EXPECT_EQ(narrow->height, 81);
    Lump wide(Bubbles::part_aspect_correct(source.get(), 1.5f));
    EXPECT_EQ(wide->width, 122);
    Lump sliver(Bubbles::part_aspect_correct(source.get(), 0.001f));
    EXPECT_EQ(sliver->width, 1);
}

TEST(ByteResampler, AveragesCellsByOverlapAndNearestLeavesTheLastSample) {
    EXPECT_EQ(resampled({10, 20, 30, 40}, 2), (std::vector<int>{15, 35}));
    EXPECT_EQ(resampled({10, 20, 30}, 2), (std::vector<int>{13, 26}));  // (10 + 20 / 2) * 2 / 3, truncated
    EXPECT_EQ(resampled({100, 200}, 4), (std::vector<int>{100, 100, 200, 200}));
    EXPECT_EQ(resampled({1, 2, 3, 4, 5, 6, 7, 8}, 4, 0, 99), (std::vector<int>{1, 3, 5, 99}));
}

TEST(ByteResampler, ResizesWordsPlaneByPlane) {
    // 0x0100 and 0x00FF averaged byte by byte give 0x007F, not 0x017F.
    const uint32_t in[2] = {0x0100, 0x00FF};
    uint32_t out[1] = {};
    ASSERT_EQ(Bubbles::p_resizeimage(in, 2, 1, out, 1, 1, 1), 0);
    EXPECT_EQ(out[0], 0x007Fu);
    // Rows then columns: a 2 x 2 block becomes its mean.
    const uint32_t block[4] = {100, 200, 300 & 0xFF, 40};
    uint32_t mean[1] = {};
    Bubbles::p_resizeimage(block, 2, 2, mean, 1, 1, 1);
    EXPECT_EQ(mean[0], uint32_t((150 + 42) / 2));
}

TEST(FloatResampler, InterpolatesInsideTheBorderAndClampsTinySources) {
    float source[16];
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 4; ++x) source[y * 4 + x] = float(x + 10 * y);
    float out[16] = {};
    Bubbles::p_resample(source, 4, 4, out, 4, 4);
    EXPECT_FLOAT_EQ(out[0], 11.0f);
    EXPECT_FLOAT_EQ(out[15], 22.0f);
    EXPECT_NEAR(out[1], 11.0f + 1.0f / 3.0f, 1e-5);
    EXPECT_NEAR(out[4], 11.0f + 10.0f / 3.0f, 1e-5);

    const float single = 7.0f;
    float spread[3] = {};
    Bubbles::p_resample(&single, 1, 1, spread, 3, 1);
    for (float v : spread) EXPECT_FLOAT_EQ(v, 7.0f);
}
