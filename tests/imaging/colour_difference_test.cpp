// Luma/colour-difference planes, alpha planes and the hyperbolic tone curve.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "framework/image.h"
#include "tests/framework/pixel_expect.h"

TEST(ColourDifference, MidGreyHasNeutralC1ButC2BelowHalf) {
    ImageQv image(1, 1, 1.0f, nullptr, nullptr);
    image.Fill(16384, 16384, 16384, 0);
    float y, c1, c2;
    image.to_colour_diff(&image, &y, &c1, &c2, 1.0f);
    EXPECT_NEAR(y, 0.500015f, 1e-5);
    EXPECT_NEAR(c1, 0.5f, 1e-6);
    // The c2 weights do not add to zero: the blue-difference row is kept as it is.
    EXPECT_NEAR(c2, 0.4929, 5e-5);
}

TEST(ColourDifference, RoundTripReturnsEveryChannelWithinOneUnitAndOutOfGamutIsClamped) {
    const PixelQv colours[] = {{0, 0, 0, 1}, {32767, 32767, 32767, 2}, {0, 0, 32767, 3},
                               {6553, 19660, 29490, 4}, {30000, 12000, 500, 5}, {1, 2, 3, 6}};
    for (float strength : {1.0f, 80.0f}) {
        ImageQv original(3, 2, 1.0f, nullptr, nullptr), image(3, 2, 1.0f, nullptr, nullptr);
        for (int i = 0; i < 6; ++i) original.pixels[i] = colours[i];
        std::vector<float> y(6), c1(6), c2(6);
        image.Fill(0, 0, 0, 777);
        image.to_colour_diff(&original, y.data(), c1.data(), c2.data(), strength);
        image.from_colour_diff(&image, y.data(), c1.data(), c2.data(), strength);
        for (int i = 0; i < 6; ++i) {
            const PixelQv &a = original.pixels[i], &b = image.pixels[i];
            EXPECT_TRUE(std::abs(b.red - a.red) <= 1 && std::abs(b.green - a.green) <= 1 &&
                        std::abs(b.blue - a.blue) <= 1 && b.alpha == 777)  // alpha untouched
                << "pixel " << i << " strength " << strength << ": " << ::testing::PrintToString(b);
        }
    }
    ImageQv image(2, 1, 1.0f, nullptr, nullptr);
    std::vector<float> y = {2.0f, -1.0f}, c1 = {1.5f, -0.5f}, c2 = {1.5f, -0.5f};
    image.from_colour_diff(&image, y.data(), c1.data(), c2.data(), 1.0f);
    EXPECT_EQ(image.rows[0][0], (PixelQv{32767, 32767, 32767, 0}));
    EXPECT_EQ(image.rows[0][1], (PixelQv{0, 0, 0, 0}));
}

TEST(AlphaPlane, RoundTripsThroughTheToneCurve) {
    ImageQv image(4, 1, 1.0f, nullptr, nullptr);
    std::vector<float> plane(4);
    const uint16_t alphas[] = {0, 100, 16384, 32767};
    for (int x = 0; x < 4; ++x) image.rows[0][x].alpha = alphas[x];
    image.get_alpha(&image, plane.data(), 25.0f);
    EXPECT_LT(plane[1], 100 / 32767.0f);  // the curve pulls low values down
    image.Fill(1, 2, 3, 0);
    image.put_alpha(&image, plane.data(), 25.0f);
    for (int x = 0; x < 4; ++x) EXPECT_NEAR(image.rows[0][x].alpha, alphas[x], 1) << x;
}

TEST(ToneCurve, StrengthOneOrLessIsIdentityWithoutClampingAboveItInputIsClamped) {
    ImageQv image(1, 1, 1.0f, nullptr, nullptr);
    EXPECT_EQ(image.hyperb(1.7f, 1.0009f), 1.7f);
    EXPECT_EQ(image.invhyperb(-0.3f, -3.0f), -0.3f);
    EXPECT_NEAR(image.hyperb(1.0f, 1.002f), 1.0f, 1e-5);
    EXPECT_EQ(image.hyperb(-2.0f, 50.0f), image.hyperb(0.0f, 50.0f));
    EXPECT_EQ(image.hyperb(3.0f, 400.0f), image.hyperb(1.0f, 400.0f));
}

TEST(ToneCurve, InverseUpToStrength100AndAsymmetricAbove) {
    ImageQv image(1, 1, 1.0f, nullptr, nullptr);
    for (float strength : {1.5f, 50.0f, 50.5f, 100.0f})
        for (int i = 0; i <= 20; ++i) {
            float x = i / 20.0f;
            EXPECT_NEAR(image.invhyperb(image.hyperb(x, strength), strength), x, 2e-4)
                << "x " << x << " strength " << strength;
        }
    // Above 100 the forward curve keeps the full strength in its base while
    // the inverse stops at 100, so mid values no longer come back.
    EXPECT_GT(std::fabs(image.invhyperb(image.hyperb(0.5f, 400.0f), 400.0f) - 0.5f), 0.05f);
    EXPECT_EQ(image.invhyperb(0.3f, 400.0f), image.invhyperb(0.3f, 100.0f));
}
