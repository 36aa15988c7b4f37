// Sprite making, trimming, aspect correction and the byte resampler.
#include <gtest/gtest.h>

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

TEST(Sprites, SetRunsFromAnUntrimmedFivePixelSquareToARingTrimmedEightyOne) {
    Bubbles engine;
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
    Lump source(Bubbles::part_lump_create(40.5f, 1.0f, 1.0f));
    EXPECT_EQ(Lump(Bubbles::part_aspect_correct(source.get(), 0.9f))->width, 73);  // trunc(0.5 + 81 * 0.9)
    EXPECT_EQ(Lump(Bubbles::part_aspect_correct(source.get(), 0.001f))->width, 1);
    Lump copy(Bubbles::part_aspect_correct(source.get(), 1.0f));
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
    ASSERT_EQ(Bubbles::p_resizeimage(in, 2, 1, out, 1, 1, 1), 0);
    EXPECT_EQ(out[0], 0x007Fu);
}
