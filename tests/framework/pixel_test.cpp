// PixelQv HSV and luminance.
#include <gtest/gtest.h>

#include "framework/pixel.h"
#include "pixel_expect.h"

TEST(PixelHsv, TiesGoToTheFirstTestedChannelAndNegativeHueWraps) {
    struct Case {
        uint16_t r, g, b, hue;
    } cases[] = {
        {0, 0, 32767, 21844},
        // Red, then green, then blue: cyan takes the green branch (rc - bc +
        // 32768 = 49151) rather than the blue one (gc - rc + 65536 = 49153).
        {0, 32767, 32767, 16382},
        // Red maximum with blue above green: h = bc - gc < 0, wrapped by 98304.
        {32767, 0, 16384, 2 * (90112 / 6)},
    };
    for (const Case &c : cases) {
        PixelQv pixel{c.r, c.g, c.b, 0};
        uint16_t h, s, v;
        pixel.GetHSV(h, s, v);
        EXPECT_EQ(h, c.hue) << c.r << "," << c.g << "," << c.b;
    }
    PixelQv red{32767, 0, 0, 0};
    uint16_t h, s, v;
    red.GetHSV(h, s, v);
    EXPECT_TRUE(s == 32766 && v == 32766) << s << " " << v;
}

TEST(PixelHsv, SetHsvWorksInSinglePrecisionAndKeepsAlpha) {
    // Worked through with float products and the float 16383^2 = 268402688;
    // double arithmetic gives one channel of each 2 lower.
    struct Case {
        uint16_t h, s, v, r, g, b;
    } cases[] = {{0, 0, 20000, 20000, 20000, 20000},
                 {31963, 10785, 10924, 10924, 7328, 7858},
                 {3173, 3832, 29906, 29906, 28440, 26408},
                 {30096, 27250, 12221, 12220, 2056, 7026}};
    for (const Case &c : cases) {
        PixelQv pixel{0, 0, 0, 7};
        pixel.SetHSV(c.h, c.s, c.v);
        EXPECT_EQ(pixel, (PixelQv{c.r, c.g, c.b, 7})) << "hue " << c.h;
    }
}

TEST(PixelLuminance, WeightsFiveEightThreeSixteenthsWithoutOverflow) {
    uint16_t luminance = 0;
    PixelQv{16, 16, 0, 32767}.GetLuminance(luminance);
    EXPECT_EQ(luminance, 13);  // 5 + 8, alpha ignored
    PixelQv{65535, 65535, 65535, 0}.GetLuminance(luminance);
    EXPECT_EQ(luminance, 65535);
    PixelQv pixel{1, 2, 3, 4};
    pixel.SetLuminance(900);
    EXPECT_EQ(pixel, (PixelQv{900, 900, 900, 4}));
}
