// PixelQv HSV and luminance.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "framework/pixel.h"
#include "pixel_expect.h"

namespace {

struct Hsv {
    uint16_t hue, saturation, value;
};

Hsv hsv_of(uint16_t r, uint16_t g, uint16_t b) {
    PixelQv pixel{r, g, b, 0};
    Hsv out{};
    pixel.GetHSV(out.hue, out.saturation, out.value);
    return out;
}

}  // namespace

TEST(PixelHsv, PrimariesLandOnTheirSextantsTiesGoToTheFirstTestedChannel) {
    struct Case {
        uint16_t r, g, b, hue;
    } cases[] = {
        {32767, 0, 0, 0}, {0, 32767, 0, 10922}, {0, 0, 32767, 21844}, {20000, 20000, 20000, 0},
        // Red, then green, then blue: cyan takes the green branch (rc - bc +
        // 32768 = 49151) rather than the blue one (gc - rc + 65536 = 49153).
        {0, 32767, 32767, 16382}, {32767, 32767, 0, 5460},
        // Red maximum with blue above green: h = bc - gc < 0, wrapped by 98304.
        {32767, 0, 16384, 2 * (90112 / 6)},
    };
    for (const Case &c : cases) EXPECT_EQ(hsv_of(c.r, c.g, c.b).hue, c.hue) << c.r << "," << c.g << "," << c.b;
    Hsv red = hsv_of(32767, 0, 0), grey = hsv_of(20000, 20000, 20000);
    EXPECT_EQ(red.saturation, 32766);
    EXPECT_EQ(red.value, 32766);
    EXPECT_EQ(grey.saturation, 0);
    EXPECT_EQ(grey.value, 20000);
}

TEST(PixelHsv, SetHsvInvertsGetHsvWithinAFewUnits) {
    int worst = 0;
    for (int r = 0; r <= 32767; r += 1637)
        for (int g = 0; g <= 32767; g += 2113)
            for (int b = 0; b <= 32767; b += 2999) {
                PixelQv pixel{uint16_t(r), uint16_t(g), uint16_t(b), 1234};
                uint16_t h, s, v;
                pixel.GetHSV(h, s, v);
                PixelQv back = pixel;
                back.SetHSV(h, s, v);
                EXPECT_EQ(back.alpha, 1234);
                worst = std::max({worst, std::abs(back.red - (r & ~1)), std::abs(back.green - (g & ~1)),
                                  std::abs(back.blue - (b & ~1))});
            }
    // The hue keeps only one unit in six of its sextant scale; 12 of 32767
    // is the worst this sweep meets, and it must not grow.
    EXPECT_LE(worst, 12);
}

TEST(PixelHsv, SetHsvIsExactForPrimariesAndGreyAndWorksInSinglePrecision) {
    // The last three were worked through with float products and the float
    // 16383^2 = 268402688; double arithmetic gives one channel of each 2 lower.
    struct Case {
        uint16_t h, s, v, r, g, b;
    } cases[] = {{0, 32766, 32766, 32766, 0, 0},
                 {0, 0, 20000, 20000, 20000, 20000},
                 {31963, 10785, 10924, 10924, 7328, 7858},
                 {3173, 3832, 29906, 29906, 28440, 26408},
                 {30096, 27250, 12221, 12220, 2056, 7026}};
    for (const Case &c : cases) {
        PixelQv pixel{0, 0, 0, 7};
        pixel.SetHSV(c.h, c.s, c.v);
        EXPECT_EQ(pixel, (PixelQv{c.r, c.g, c.b, 7})) << "hue " << c.h;
    }
}

TEST(PixelLuminance, WeightsFiveEightThreeSixteenthsIgnoringAlpha) {
    struct Case {
        PixelQv pixel;
        uint16_t luminance;
    } cases[] = {{{32767, 32767, 32767, 0}, 32767}, {{16, 0, 0, 32767}, 5}, {{0, 16, 0, 0}, 8},
                 {{0, 0, 16, 0}, 3},
                 {{65535, 65535, 65535, 0}, 65535}};  // full 16-bit channels do not overflow the sum
    for (const Case &c : cases) {
        uint16_t luminance = 0;
        c.pixel.GetLuminance(luminance);
        EXPECT_EQ(luminance, c.luminance) << ::testing::PrintToString(c.pixel);
    }
    PixelQv pixel{1, 2, 3, 4};
    pixel.SetLuminance(900);
    EXPECT_EQ(pixel, (PixelQv{900, 900, 900, 4}));
}
