// One pixel of the framework: four 16-bit channels on the 0..32767 scale.
#pragma once

#include <cstdint>

struct PixelQv {
    uint16_t red;
    uint16_t green;
    uint16_t blue;
    uint16_t alpha;

    void GetHSV(uint16_t &hue, uint16_t &saturation, uint16_t &value) const;
    void SetHSV(uint16_t hue, uint16_t saturation, uint16_t value);
    void GetLuminance(uint16_t &luminance) const;
    void SetLuminance(uint16_t luminance);
};

static_assert(sizeof(PixelQv) == 8, "a pixel is a plain 8-byte value");

constexpr uint16_t kFullScale = 32767;
