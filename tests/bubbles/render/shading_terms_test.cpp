// Every vector width the processor runs shades sprite pixels to the bytes of
// the plain per-pixel formula with std::pow, for runs of every length up to
// 34, uncovered pixels left alone and lighting terms from dim to saturating.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "bubbles/render/shading_terms.h"

namespace {

int64_t clamp15(int64_t value) { return value < 0 ? 0 : value > 32767 ? 32767 : value; }

// The shading of one pixel as written before any of it was made fast.
void plain_shade(PixelQv &target, int32_t I, float nx, float ny, const BubbleShade &c) {
    float nz2 = 1 - nx * nx - ny * ny;
    if (nz2 < 0.0f) nz2 = 0.0f;
    float d = float(double(c.lx * nx + c.ly * ny) + double(c.lz) * std::sqrt(double(nz2)));
    if (d < 0.0f) d = 0.0f;
    if (d > 1.0f) d = 1.0f;
    const int64_t k = ((int64_t(c.density) * c.glint) >> 15) *
                      int64_t(I * (c.min_bright / 100 + std::pow(double(d), c.shine.exponent())));
    const int64_t h = int64_t(c.glint * std::pow(double(d), c.highlight.exponent()));
    int64_t w = k >> 15;
    if (w > 32768) w = 32768;
    const int64_t v = 32768 - w;
    target.red = uint16_t(clamp15(((c.red * w + target.red * v) >> 15) + h));
    target.green = uint16_t(clamp15(((c.green * w + target.green * v) >> 15) + h));
    target.blue = uint16_t(clamp15(((c.blue * w + target.blue * v) >> 15) + h));
    target.alpha = uint16_t(clamp15(target.alpha + w + h));
}

struct Pixels {
    std::vector<int32_t> intensity;
    std::vector<float> nx, ny;
    std::vector<double> depth;
    std::vector<PixelQv> pixels;
};

// The run with its depths half the time, as a squeezed sprite has them.
SpriteRun sprite_run(const Pixels &run, int round) {
    return SpriteRun{run.intensity.data(), run.nx.data(), run.ny.data(), round % 2 ? run.depth.data() : nullptr};
}

// A run of n sprite pixels, some uncovered, normals inside and just outside
// the unit disc, over pixels of any 16-bit value.
Pixels random_run(std::mt19937 &pick, int n) {
    std::uniform_int_distribution<int32_t> coverage(0, 32767), word(0, 65535);
    std::uniform_real_distribution<float> normal(-1.05f, 1.05f);
    Pixels run;
    for (int i = 0; i < n; ++i) {
        run.intensity.push_back(i % 5 == 3 ? 0 : coverage(pick));
        run.nx.push_back(normal(pick));
        run.ny.push_back(normal(pick));
        const float nz2 = 1 - run.nx.back() * run.nx.back() - run.ny.back() * run.ny.back();
        run.depth.push_back(std::sqrt(double(nz2 < 0.0f ? 0.0f : nz2)));
        run.pixels.push_back(
            PixelQv{uint16_t(word(pick)), uint16_t(word(pick)), uint16_t(word(pick)), uint16_t(word(pick))});
    }
    run.pixels.resize(size_t(n + kShadeBlock));
    return run;
}

BubbleShade random_shade(std::mt19937 &pick, int round) {
    std::uniform_int_distribution<int32_t> level(0, 32767);
    std::uniform_real_distribution<float> direction(-1.0f, 1.0f);
    std::uniform_real_distribution<double> exponent(1.0, 200.0), percent(0.0, 100.0);
    BubbleShade shade;
    shade.red = level(pick);
    shade.green = level(pick);
    shade.blue = level(pick);
    shade.density = round % 7 == 0 ? 0 : level(pick);
    // Up to twice full strength: a light above 100% saturates the blend.
    shade.glint = round % 3 == 0 ? 65534 : level(pick);
    float lx = direction(pick), ly = direction(pick), lz = direction(pick) * 0.5f + 0.6f;
    const float length = std::sqrt(lx * lx + ly * ly + lz * lz);
    shade.lx = lx / length;
    shade.ly = ly / length;
    shade.lz = lz / length;
    shade.min_bright = round % 4 == 0 ? 100.0 : percent(pick);
    // Whole exponents on both (the presets' case) are multiplied out, any
    // other pair goes through the logarithm.
    std::uniform_int_distribution<int> whole(1, 200);
    shade.shine = UnitPower(round % 5 == 0 ? 45.0 : round % 5 == 2 ? whole(pick) : exponent(pick));
    shade.highlight = UnitPower(round % 5 == 1 ? 1.0 : round % 5 == 2 ? whole(pick) : exponent(pick));
    return shade;
}

std::vector<ShadeVectors> vectors_here() {
    std::vector<ShadeVectors> all;
    for (ShadeVectors vectors : {ShadeVectors::Baseline, ShadeVectors::Avx2, ShadeVectors::Avx512})
        if (shade_vectors_run_here(vectors)) all.push_back(vectors);
    return all;
}

bool same(const PixelQv &a, const PixelQv &b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
}

}  // namespace

TEST(ShadingTerms, EveryWidthBlendsThePlainFormulasBytes) {
    std::mt19937 pick(7);
    for (int round = 0; round < 300; ++round) {
        const BubbleShade shade = random_shade(pick, round);
        ASSERT_TRUE(shading_terms_cover(shade));
        const int n = 1 + round % 34;
        const Pixels run = random_run(pick, n);
        std::vector<PixelQv> expected = run.pixels;
        for (int i = 0; i < n; ++i)
            if (run.intensity[i] != 0) plain_shade(expected[i], run.intensity[i], run.nx[i], run.ny[i], shade);
        for (ShadeVectors vectors : vectors_here()) {
            std::vector<PixelQv> got = run.pixels;
            shade_run_with(vectors, shade, sprite_run(run, round), n, got.data());
            for (int i = 0; i < n; ++i)
                ASSERT_TRUE(same(got[i], expected[i]))
                    << "width " << int(vectors) << " round " << round << " pixel " << i << " of " << n;
        }
    }
}

TEST(ShadingTerms, EveryWidthGivesThePlainTerms) {
    std::mt19937 pick(11);
    for (int round = 0; round < 300; ++round) {
        const BubbleShade shade = random_shade(pick, round);
        const int n = 1 + round % 34;
        const Pixels run = random_run(pick, n);
        for (ShadeVectors vectors : vectors_here()) {
            std::vector<int32_t> lit(static_cast<size_t>(n)), high(static_cast<size_t>(n));
            shading_terms_with(vectors, shade, sprite_run(run, round), n, lit.data(), high.data());
            for (int i = 0; i < n; ++i) {
                if (run.intensity[i] == 0) continue;
                float nz2 = 1 - run.nx[i] * run.nx[i] - run.ny[i] * run.ny[i];
                if (nz2 < 0.0f) nz2 = 0.0f;
                float d = float(double(shade.lx * run.nx[i] + shade.ly * run.ny[i]) +
                                double(shade.lz) * std::sqrt(double(nz2)));
                d = d < 0.0f ? 0.0f : d > 1.0f ? 1.0f : d;
                ASSERT_EQ(lit[i], int64_t(run.intensity[i] * (shade.min_bright / 100 +
                                                              std::pow(double(d), shade.shine.exponent()))));
                ASSERT_EQ(high[i], int64_t(shade.glint * std::pow(double(d), shade.highlight.exponent())));
            }
        }
    }
}

TEST(ShadingTerms, CoversOnlyWhatFitsItsLanes) {
    BubbleShade shade;
    shade.glint = 32767;
    shade.density = 32767;
    shade.min_bright = 100;
    shade.shine = UnitPower(45);
    shade.highlight = UnitPower(9);
    EXPECT_TRUE(shading_terms_cover(shade));
    BubbleShade unlit = shade;
    unlit.glint = -1;
    EXPECT_FALSE(shading_terms_cover(unlit));
    BubbleShade flat = shade;
    flat.shine = UnitPower(0);
    EXPECT_FALSE(shading_terms_cover(flat));
    BubbleShade blinding = shade;
    blinding.glint = 1 << 30;
    EXPECT_FALSE(shading_terms_cover(blinding));
}

// A sprite drawn over image rows gets, in its columns, the bytes of one run
// over its copied rows, for every width; the columns beside it and the rows
// around it keep theirs, whatever the width's remainder over the vectors.
TEST(ShadingTerms, SpriteRowsAreShadedInPlaceAndNothingBesideThem) {
    std::mt19937 pick(13);
    for (int round = 0; round < 60; ++round) {
        const BubbleShade shade = random_shade(pick, round * 5 + 2);
        const int width = 1 + round % 19, rows = 1 + round % 7, left = round % 5, stride = width + 9;
        const Pixels sprite = random_run(pick, width * rows);
        const Pixels image = random_run(pick, stride * (rows + 2));
        std::vector<PixelQv> expected = sprite.pixels;
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < width; ++x) expected[size_t(y * width + x)] = image.pixels[size_t((y + 1) * stride + left + x)];
        shade_run_with(ShadeVectors::Baseline, shade, sprite_run(sprite, round), width * rows, expected.data());
        for (ShadeVectors vectors : vectors_here()) {
            std::vector<PixelQv> got = image.pixels;
            std::vector<PixelQv *> row_pointers;
            for (int y = 0; y < rows; ++y) row_pointers.push_back(got.data() + (y + 1) * stride);
            shade_rows_with(vectors, shade, sprite_run(sprite, round), width, rows, row_pointers.data(), left);
            for (int i = 0; i < stride * (rows + 2); ++i) {
                const int y = i / stride - 1, x = i % stride - left;
                const bool inside = y >= 0 && y < rows && x >= 0 && x < width;
                ASSERT_TRUE(same(got[size_t(i)], inside ? expected[size_t(y * width + x)] : image.pixels[size_t(i)]))
                    << "width " << int(vectors) << " round " << round << " pixel " << i;
            }
        }
    }
}
