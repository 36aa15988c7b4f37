// The scene drawn in vectors is the plain per-pixel formula's bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "sparkhost/clips/default_scene.h"

using namespace sparkhost;

namespace {

// The scene one pixel at a time, as it was first drawn.
Frame plain_scene(int number, const FrameFormat &format) {
    const auto triangle = [](double t) {
        const double whole = double(int64_t(t)), f = t - (whole > t ? whole - 1.0 : whole);
        return 1.0 - std::fabs(2.0 * f - 1.0);
    };
    const auto to16 = [](double v) { return uint16_t(std::clamp(v, 0.0, 1.0) * 65535.0 + 0.5); };
    Frame frame(format);
    const int cell = std::max(format.height / 12, 2);
    const double t = number;
    for (int y = 0; y < format.height; ++y)
        for (int x = 0; x < format.width; ++x) {
            const double u = (x + 0.5) / format.width, v = (y + 0.5) / format.height;
            const double wave = triangle(u * 1.5 + v * 0.5 + t * 0.01);
            double r = 0.05 + 0.05 * v + 0.30 * wave * wave, g = 0.35 - 0.15 * v + 0.10 * (1.0 - wave);
            double b = 0.40 + 0.15 * v;
            const double ridge = triangle((u + v * 0.5) * 4.0 - t * 0.02);
            if (ridge > 0.75) {
                const double s = std::clamp((ridge - 0.75) / (0.95 - 0.75), 0.0, 1.0), band = s * s * (3.0 - 2.0 * s);
                r += 0.12 * band;
                g += 0.18 * band;
                b += 0.20 * band;
            }
            // x + 3 * frame and y + frame wrap past 2^31.
            const int column = int(uint32_t(x) + 3u * uint32_t(number)), row = int(uint32_t(y) + uint32_t(number));
            const double check = ((column / cell) ^ (row / cell)) & 1 ? 0.035 : -0.015;
            uint32_t h = uint32_t(x) * 0x8da6b343u ^ uint32_t(y) * 0xd8163841u ^ uint32_t(number) * 0xcb1ab31fu;
            h ^= h >> 15;
            h *= 0x2c1b3c6du;
            h ^= h >> 12;
            const double noise = 0.025 * (double(h & 0xffff) / 32767.5 - 1.0);
            frame.set_rgb16(x, y, to16(r + check + noise), to16(g + check + noise), to16(b + check + noise));
        }
    return frame;
}

}  // namespace

// Every width up to past two of the widest blocks, so each vector width
// ends its rows on every partial block, at frames where the column and row
// sums wrap.
TEST(DefaultScene, EveryVectorWidthDrawsThePlainFormulasBytes) {
    for (int number : {1, 37, 715827883, 2147483647})
        for (Depth depth : {Depth::Bits8, Depth::Bits12})
            for (int width = 1; width <= 34; ++width)
                for (int height : {1, 3, 26}) {
                    const FrameFormat format{width, height, depth};
                    const Frame plain = plain_scene(number, format);
                    for (SceneVectors vectors : {SceneVectors::Baseline, SceneVectors::Avx2, SceneVectors::Avx512}) {
                        if (!runs_here(vectors)) continue;
                        Frame drawn;
                        draw_scene(number, format, drawn, vectors);
                        ASSERT_EQ(drawn, plain) << "frame " << number << " " << format.describe() << " with vectors "
                                                << int(vectors);
                    }
                }
}
