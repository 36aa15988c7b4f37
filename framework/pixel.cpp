// PixelQv colour-space conversions: HSV and luminance in integer arithmetic.
#include "framework/pixel.h"

#include <algorithm>

namespace {

// One sextant of hue is 16383 units wide, but the sextant offsets are 32768
// and 65536 and the wrap is 6 x 16384: the uneven scale is kept on purpose,
// SetHSV inverts exactly these constants.
constexpr int32_t kSextant = 16383;
constexpr int32_t kGreenOffset = 32768;
constexpr int32_t kBlueOffset = 65536;
constexpr int32_t kHueWrap = 98304;
constexpr int32_t kSextantSquared = 268402689;  // 16383 * 16383
// The same square as a float rounds to 268402688; the divisor is that float.
constexpr float kSextantSquaredFloat = 268402689.0f;

}  // namespace

void PixelQv::GetHSV(uint16_t &hue, uint16_t &saturation, uint16_t &value) const {
    const int32_t r = red >> 1;
    const int32_t g = green >> 1;
    const int32_t b = blue >> 1;
    const int32_t max = std::max({r, g, b});
    const int32_t min = std::min({r, g, b});
    const int32_t delta = max - min;
    const int32_t s = max != 0 ? delta * kSextant / max : 0;
    int32_t h = 0;
    if (s != 0) {
        const int32_t rc = (max - r) * kSextant / delta;
        const int32_t gc = (max - g) * kSextant / delta;
        const int32_t bc = (max - b) * kSextant / delta;
        if (r == max)
            h = bc - gc;
        else if (g == max)
            h = rc - bc + kGreenOffset;
        else
            h = gc - rc + kBlueOffset;
        if (h < 0) h += kHueWrap;
    }
    hue = uint16_t((h / 6) * 2);
    saturation = uint16_t(s * 2);
    value = uint16_t(max * 2);
}

void PixelQv::SetHSV(uint16_t hue, uint16_t saturation, uint16_t value) {
    // Hues of a full circle or more wrap round to red.
    const int32_t h = (hue >> 1) & 0x3FFF;
    const int32_t s = saturation >> 1;
    const int32_t v = value >> 1;
    const int32_t hh = h * 6;
    const int32_t sector = hh >> 14;
    const int32_t f = hh - sector * kSextant;  // 16383, not 16384: the sextant width of GetHSV
    const float vf = float(v) / kSextantSquaredFloat;
    const int32_t p = (kSextant - s) * v / kSextant;
    const int32_t q = int32_t(float(kSextantSquared - s * f) * vf);
    const int32_t t = int32_t(float(kSextantSquared - (kSextant - f) * s) * vf);
    int32_t r = 0, g = 0, b = 0;
    switch (sector) {
        case 0: r = v; g = t; b = p; break;
        case 1: r = q; g = v; b = p; break;
        case 2: r = p; g = v; b = t; break;
        case 3: r = p; g = q; b = v; break;
        case 4: r = t; g = p; b = v; break;
        default: r = v; g = p; b = q; break;
    }
    red = uint16_t(r * 2);
    green = uint16_t(g * 2);
    blue = uint16_t(b * 2);
}

void PixelQv::GetLuminance(uint16_t &luminance) const {
    luminance = uint16_t((5u * red + 8u * green + 3u * blue) >> 4);
}

void PixelQv::SetLuminance(uint16_t luminance) {
    red = green = blue = luminance;
}
