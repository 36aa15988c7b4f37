// ImageQv construction and ownership.
#include <gtest/gtest.h>

#include "framework/image.h"

TEST(ImageOwnership, WrappedBlockSurvivesAndCopyOwnsItsOwn) {
    PixelQv block[6] = {};
    block[4].red = 1234;
    {
        ImageQv wrapped(3, 2, 1.0f, block, nullptr);
        EXPECT_EQ(wrapped.owns_pixels, 0);
        EXPECT_EQ(wrapped.rows[1][1].red, 1234);
        ImageQv copy(wrapped);
        EXPECT_EQ(copy.owns_pixels, 1);
        EXPECT_NE(copy.pixels, block);
        EXPECT_EQ(copy.rows[1][1].red, 1234);
    }
    EXPECT_EQ(block[4].red, 1234);
}
