// ImageQv construction, ownership, sampling and fills.
#include <gtest/gtest.h>

#include <vector>

#include "framework/image.h"
#include "pixel_expect.h"

namespace {

using P = PixelQv;
const PixelQv kClear{0, 0, 0, 0};

}  // namespace

TEST(ImageOwnership, WrappedBlockSurvivesAndCopyOwnsItsOwn) {
    PixelQv block[6] = {};
    block[4].red = 1234;
    {
        ImageQv wrapped(3, 2, 1.0f, block, nullptr);
        EXPECT_EQ(wrapped.owns_pixels, 0);
        ImageQv copy(wrapped);
        EXPECT_EQ(copy.owns_pixels, 1);
        EXPECT_NE(copy.pixels, block);
        EXPECT_EQ(copy.rows[1][1].red, 1234);
    }
    EXPECT_EQ(block[4].red, 1234);
}

TEST(ImageConstruction, AspectIsIgnoredAndVideoScaleFollowsWidth) {
    ImageQv image(37, 5, 2.5f, nullptr, nullptr);
    EXPECT_EQ(image.scale_x, 1.0);
    EXPECT_FLOAT_EQ(image.video_scale, float(720.0 / 37));
}

TEST(ImageConstruction, FrameSizedBlockReusedAfterAnImageStillStartsAtZero) {
    // 1920x1080 blocks are kept for reuse; a new image must not see old pixels.
    {
        ImageQv dirty(1920, 1080, 1.0f, nullptr, nullptr);
        dirty.Fill(1, 2, 3, 4);
    }
    ImageQv fresh(1920, 1080, 1.0f, nullptr, nullptr);
    for (int y = 0; y < 1080; y += 7)
        for (int x = 0; x < 1920; x += 13) ASSERT_EQ(fresh.rows[y][x], kClear);
}

TEST(ImageSampling, MixesInFixedPointAndOutsideNeighboursFadeToTransparentBlack) {
    ImageQv image(3, 2, 1.0f, nullptr, nullptr);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            image.rows[y][x] = P{uint16_t(1000 * (x + 1)), uint16_t(100 * (y + 1)), 32767, uint16_t(16000 + x)};
    auto at = [&image](float x, float y) {
        PixelQv out{1, 1, 1, 1};
        image.PointSampleB(x, y, out);
        return out;
    };
    EXPECT_EQ(at(1.5f, 0.5f), (P{2500, 150, 32767, 16001}));  // alpha interpolates too
    EXPECT_EQ(at(0.25f, 0.0f).red, 1250);                      // weights 24576 and 8192
    // Only (0,0) is inside, with the fourth weight 8192: a quarter of it.
    EXPECT_EQ(at(-0.5f, -0.5f), (P{250, 25, 32767 / 4, 4000}));
    EXPECT_EQ(at(1e30f, -1e30f), kClear);
    PixelQv area;
    image.AreaSampleStart();
    image.AreaSampleW(0.5f, 0.5f, 2.0f, 1.0f, area);
    image.AreaSampleEnd();
    EXPECT_EQ(area, at(1.25f, 0.75f));  // the area sample takes its centre point
}

TEST(ImageFill, FillChannelAndLutIgnoreBadArguments) {
    ImageQv image(5, 4, 1.0f, nullptr, nullptr);
    image.Fill(100, 200, 3, 7);
    image.FillChannel(65535, 2);
    image.FillChannel(77, 4);  // no such channel: nothing changes
    std::vector<uint16_t> invert(65536), half(65536), keep(65536), zero(65536, 0);
    for (int i = 0; i < 65536; ++i) {
        invert[i] = uint16_t(32767 - (i & 0x7FFF));
        half[i] = uint16_t(i / 2);
        keep[i] = uint16_t(i);
    }
    image.ApplyLUT(invert.data(), half.data(), keep.data(), zero.data());
    EXPECT_EQ(image.rows[1][1], (P{32667, 100, 65535, 0}));
    image.ApplyLUT(invert.data(), nullptr, keep.data(), zero.data());  // refused
    EXPECT_EQ(image.rows[0][0], (P{32667, 100, 65535, 0}));
}
