// The built-in moving scene.
#include "sparkhost/default_scene.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace sparkhost {

namespace {

struct Colour {
    double r, g, b;
};

double smoothstep(double edge0, double edge1, double x) {
    double t = std::clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

uint16_t to16(double v) { return uint16_t(std::clamp(v, 0.0, 1.0) * 65535.0 + 0.5); }

// Grain from an integer hash, in -1..1.
double grain(uint32_t x, uint32_t y, uint32_t frame) {
    uint32_t h = x * 0x8da6b343u ^ y * 0xd8163841u ^ frame * 0xcb1ab31fu;
    h ^= h >> 15;
    h *= 0x2c1b3c6du;
    h ^= h >> 12;
    return double(h & 0xffff) / 32767.5 - 1.0;
}

// floor() for the arguments the scene gives (|t| far below 2^63), without a
// library call: truncation, one down for negative non-integers. Exact, so
// the pictures stay the same bytes.
double floor_exact(double t) {
    double whole = double(int64_t(t));
    return whole > t ? whole - 1.0 : whole;
}

double triangle_exact(double t) {
    double f = t - floor_exact(t);
    return 1.0 - std::fabs(2.0 * f - 1.0);
}

// Rounds a channel of the shaded colour as the still pictures are rounded.
inline int channel_level(double channel, Depth depth) { return quantize16(to16(channel), depth); }

inline uint8_t *put_level(uint8_t *out, int value, bool deep) {
    if (!deep) {
        *out = uint8_t(value);
        return out + 1;
    }
    uint16_t word = uint16_t(value << 4);
    std::memcpy(out, &word, 2);
    return out + 2;
}

}  // namespace

// Deep water: a blue-to-green gradient, a slow colour wave, drifting light
// bands, a moving checker texture and grain, all shifting with the frame.
// Drawn for every frame of a render, so what depends only on the row or the
// column is worked out once per row or column; each pixel's arithmetic is
// the plain per-pixel formula's, operation for operation, so the bytes are
// the same.
void draw_scene(int number, const FrameFormat &format, Frame &into) {
    into.reshape(format);
    const int cell = std::max(format.height / 12, 2);
    const double t = number;
    const bool deep = format.depth == Depth::Bits12;
    const double wave_shift = t * 0.01, band_shift = t * 0.02;
    std::vector<double> us(std::size_t(format.width)), wave_us(us.size());
    std::vector<uint8_t> column_odd(us.size());
    for (int x = 0; x < format.width; ++x) {
        us[x] = (x + 0.5) / format.width;
        wave_us[x] = us[x] * 1.5;
        column_odd[x] = uint8_t(((x + number * 3) / cell) & 1);
    }
    for (int y = 0; y < format.height; ++y) {
        const double v = (y + 0.5) / format.height;
        const double half_v = v * 0.5;
        const Colour base{0.05 + 0.05 * v, 0.35 - 0.15 * v, 0.40 + 0.15 * v};
        const int row_odd = ((y + number) / cell) & 1;
        uint8_t *out = into.row(y);
        for (int x = 0; x < format.width; ++x) {
            Colour c = base;
            const double wave = triangle_exact(wave_us[x] + half_v + wave_shift);
            c.r += 0.30 * wave * wave;
            c.g += 0.10 * (1.0 - wave);
            // smoothstep(0.75, 0.95, ...) is exactly 0 up to 0.75, and adding
            // 0 changes nothing: most pixels skip it.
            const double ridge = triangle_exact((us[x] + half_v) * 4.0 - band_shift);
            if (ridge > 0.75) {
                const double band = smoothstep(0.75, 0.95, ridge);
                c.r += 0.12 * band;
                c.g += 0.18 * band;
                c.b += 0.20 * band;
            }
            const double check = (column_odd[x] ^ row_odd) ? 0.035 : -0.015;
            c.r += check;
            c.g += check;
            c.b += check;
            const double noise = 0.025 * grain(uint32_t(x), uint32_t(y), uint32_t(number));
            out = put_level(out, channel_level(c.r + noise, format.depth), deep);
            out = put_level(out, channel_level(c.g + noise, format.depth), deep);
            out = put_level(out, channel_level(c.b + noise, format.depth), deep);
        }
    }
}

}  // namespace sparkhost
