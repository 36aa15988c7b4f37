// PixelQv HSV and luminance.
#include <gtest/gtest.h>

#include <cstdlib>

#include "framework/pixel.h"

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

TEST(PixelHsv, PrimariesLandOnTheirSextants) {
    Hsv red = hsv_of(32767, 0, 0);
    EXPECT_EQ(red.hue, 0);
    EXPECT_EQ(red.saturation, 32766);
    EXPECT_EQ(red.value, 32766);
    EXPECT_EQ(hsv_of(0, 32767, 0).hue, 10922);
    EXPECT_EQ(hsv_of(0, 0, 32767).hue, 21844);
    Hsv grey = hsv_of(20000, 20000, 20000);
    EXPECT_EQ(grey.hue, 0);
    EXPECT_EQ(grey.saturation, 0);
    EXPECT_EQ(grey.value, 20000);
}

TEST(PixelHsv, TiesGoToTheChannelTestedFirst) {
    // Red then green then blue: cyan takes the green branch (rc - bc + 32768 =
    // 49151) rather than the blue one (gc - rc + 65536 = 49153).
    EXPECT_EQ(hsv_of(0, 32767, 32767).hue, 16382);
    EXPECT_EQ(hsv_of(32767, 32767, 0).hue, 5460);
}

TEST(PixelHsv, NegativeHueWrapsBelowFullCircle) {
    // Red maximum with blue above green: h = bc - gc < 0, wrapped by 98304.
    Hsv magenta_red = hsv_of(32767, 0, 16384);
    // r=16383 g=0 b=8192: gc = 16383, bc = 8191 -> h = -8192 + 98304 = 90112.
    EXPECT_EQ(magenta_red.hue, 2 * (90112 / 6));
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

TEST(PixelHsv, SetHsvPrimariesAreExact) {
    PixelQv pixel{0, 0, 0, 7};
    pixel.SetHSV(0, 32766, 32766);
    EXPECT_EQ(pixel.red, 32766);
    EXPECT_EQ(pixel.green, 0);
    EXPECT_EQ(pixel.blue, 0);
    pixel.SetHSV(10922, 32766, 32766);
    EXPECT_EQ(pixel.green, 32766);
    EXPECT_LE(pixel.red, 4);
    EXPECT_EQ(pixel.blue, 0);
    pixel.SetHSV(0, 0, 20000);  // no saturation: grey at the value
    EXPECT_EQ(pixel.red, 20000);
    EXPECT_EQ(pixel.green, 20000);
    EXPECT_EQ(pixel.blue, 20000);
    EXPECT_EQ(pixel.alpha, 7);
}

TEST(PixelHsv, SetHsvWorksInSinglePrecision) {
    // Worked through with float products and the float 16383^2 = 268402688;
    // double arithmetic would give one channel of each 2 lower.
    struct Case {
        uint16_t h, s, v, r, g, b;
    } cases[] = {{31963, 10785, 10924, 10924, 7328, 7858},
                 {3173, 3832, 29906, 29906, 28440, 26408},
                 {30096, 27250, 12221, 12220, 2056, 7026}};
    for (const Case &c : cases) {
        PixelQv pixel{0, 0, 0, 0};
        pixel.SetHSV(c.h, c.s, c.v);
        EXPECT_EQ(pixel.red, c.r) << c.h;
        EXPECT_EQ(pixel.green, c.g) << c.h;
        EXPECT_EQ(pixel.blue, c.b) << c.h;
    }
}

TEST(PixelLuminance, WeightsFiveEightThreeSixteenthsIgnoringAlpha) {
    uint16_t luminance = 0;
    PixelQv{32767, 32767, 32767, 0}.GetLuminance(luminance);
    EXPECT_EQ(luminance, 32767);
    PixelQv{16, 0, 0, 32767}.GetLuminance(luminance);
    EXPECT_EQ(luminance, 5);
    PixelQv{0, 16, 0, 0}.GetLuminance(luminance);
    EXPECT_EQ(luminance, 8);
    PixelQv{0, 0, 16, 0}.GetLuminance(luminance);
    EXPECT_EQ(luminance, 3);
    // Full 16-bit channels do not overflow the 32-bit sum.
    PixelQv{65535, 65535, 65535, 0}.GetLuminance(luminance);
    EXPECT_EQ(luminance, 65535);

    PixelQv pixel{1, 2, 3, 4};
    pixel.SetLuminance(900);
    EXPECT_EQ(pixel.red, 900);
    EXPECT_EQ(pixel.green, 900);
    EXPECT_EQ(pixel.blue, 900);
    EXPECT_EQ(pixel.alpha, 4);
}
