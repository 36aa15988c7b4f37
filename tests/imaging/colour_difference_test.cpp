// Luma/colour-difference planes, alpha planes and the hyperbolic tone curve.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "framework/image.h"
#include "tests/framework/pixel_expect.h"

namespace {

struct Planes {
    explicit Planes(size_t count) : y(count), c1(count), c2(count) {}
    std::vector<float> y, c1, c2;
};

}  // namespace

TEST(ColourDifference, MidGreyHasNeutralC1ButC2BelowHalf) {
    ImageQv image(1, 1, 1.0f, nullptr, nullptr);
    image.Fill(16384, 16384, 16384, 0);
    Planes planes(1);
    image.to_colour_diff(&image, planes.y.data(), planes.c1.data(), planes.c2.data(), 1.0f);
    EXPECT_NEAR(planes.y[0], 0.500015f, 1e-5);
    EXPECT_NEAR(planes.c1[0], 0.5f, 1e-6);
    // The c2 weights do not add to zero: the blue-difference row is kept as it is.
    EXPECT_NEAR(planes.c2[0], 0.4929, 5e-5);
}

TEST(ColourDifference, RoundTripReturnsEveryChannelWithinOneUnitAndOutOfGamutIsClamped) {
    const PixelQv colours[] = {{0, 0, 0, 1},     {32767, 32767, 32767, 2}, {16384, 16384, 16384, 3},
                               {32767, 0, 0, 4}, {0, 32767, 0, 5},         {0, 0, 32767, 6},
                               {6553, 19660, 29490, 7}, {30000, 12000, 500, 8}, {1, 2, 3, 9}};
    for (float strength : {1.0f, 4.0f, 30.0f, 80.0f}) {
        ImageQv original(3, 3, 1.0f, nullptr, nullptr), image(3, 3, 1.0f, nullptr, nullptr);
        for (int i = 0; i < 9; ++i) original.pixels[i] = colours[i];
        Planes planes(9);
        image.Fill(0, 0, 0, 777);
        image.to_colour_diff(&original, planes.y.data(), planes.c1.data(), planes.c2.data(), strength);
        image.from_colour_diff(&image, planes.y.data(), planes.c1.data(), planes.c2.data(), strength);
        for (int i = 0; i < 9; ++i) {
            const PixelQv &a = original.pixels[i], &b = image.pixels[i];
            EXPECT_NEAR(b.red, a.red, 1) << "pixel " << i << " strength " << strength;
            EXPECT_NEAR(b.green, a.green, 1) << "pixel " << i << " strength " << strength;
            EXPECT_NEAR(b.blue, a.blue, 1) << "pixel " << i << " strength " << strength;
            EXPECT_EQ(b.alpha, 777);  // alpha untouched
        }
    }
    ImageQv image(2, 1, 1.0f, nullptr, nullptr);
    std::vector<float> y = {2.0f, -1.0f}, c1 = {1.5f, -0.5f}, c2 = {1.5f, -0.5f};
    image.from_colour_diff(&image, y.data(), c1.data(), c2.data(), 1.0f);
    EXPECT_EQ(image.rows[0][0], (PixelQv{32767, 32767, 32767, 0}));
    EXPECT_EQ(image.rows[0][1], (PixelQv{0, 0, 0, 0}));
}

TEST(AlphaPlane, FullPlaneAtUnitStrengthGivesFullAlphaAndRoundTrips) {
    ImageQv image(4, 1, 1.0f, nullptr, nullptr);
    std::vector<float> plane(4, 1.0f);
    image.Fill(1, 2, 3, 0);
    image.put_alpha(&image, plane.data(), 1.0f);
    EXPECT_EQ(image.rows[0][3], (PixelQv{1, 2, 3, 32767}));

    const uint16_t alphas[] = {0, 100, 16384, 32767};
    for (int x = 0; x < 4; ++x) image.rows[0][x].alpha = alphas[x];
    image.get_alpha(&image, plane.data(), 25.0f);
    EXPECT_LT(plane[1], 100 / 32767.0f);  // the curve pulls low values down
    image.Fill(0, 0, 0, 0);
    image.put_alpha(&image, plane.data(), 25.0f);
    for (int x = 0; x < 4; ++x) EXPECT_NEAR(image.rows[0][x].alpha, alphas[x], 1) << x;
}

TEST(ToneCurve, StrengthOneOrLessIsIdentityWithoutClampingAboveItEndsStayAndInputIsClamped) {
    ImageQv image(1, 1, 1.0f, nullptr, nullptr);
    for (float strength : {1.0f, 1.0009f, 0.5f, -3.0f})
        for (float x : {1.7f, -0.3f}) {
            EXPECT_EQ(image.hyperb(x, strength), x) << strength;
            EXPECT_EQ(image.invhyperb(x, strength), x) << strength;
        }
    for (float strength : {1.002f, 2.0f, 50.0f, 75.0f, 100.0f, 400.0f}) {
        EXPECT_NEAR(image.hyperb(0.0f, strength), 0.0f, 1e-6) << strength;
        EXPECT_NEAR(image.hyperb(1.0f, strength), 1.0f, 1e-5) << strength;
        EXPECT_EQ(image.hyperb(-2.0f, strength), image.hyperb(0.0f, strength));
        EXPECT_EQ(image.hyperb(3.0f, strength), image.hyperb(1.0f, strength));
    }
}

TEST(ToneCurve, InverseUpToStrength100AndAsymmetricAbove) {
    ImageQv image(1, 1, 1.0f, nullptr, nullptr);
    for (float strength : {1.5f, 10.0f, 50.0f, 50.5f, 75.0f, 100.0f})
        for (int i = 0; i <= 20; ++i) {
            float x = i / 20.0f;
            EXPECT_NEAR(image.invhyperb(image.hyperb(x, strength), strength), x, 2e-4)
                << "x " << x << " strength " << strength;
        }
    // Above 100 the forward curve keeps the full strength in its base while
    // the inverse stops at 100, so mid values no longer come back.
    EXPECT_GT(std::fabs(image.invhyperb(image.hyperb(0.5f, 400.0f), 400.0f) - 0.5f), 0.05f);
    EXPECT_EQ(image.invhyperb(0.3f, 400.0f), image.invhyperb(0.3f, 100.0f));
    EXPECT_NE(image.hyperb(0.7f, 400.0f), image.hyperb(0.7f, 100.0f));
}
