// The shading kernel alone: a bubble's squeezed sprite shaded and blended
// over its pixels, as the renderer does for every intact lit bubble without
// a reflection, per vector width, with the presets' whole exponents (Shine
// 45, Highlight 9) and with fractional ones. Reports pixels a second.
// Sprite 10 is the "Basic" preset's typical bubble at 1080p, 40 a large one.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

#include "bubbles/engine/particle_engine.h"
#include "bubbles/render/shading_terms.h"

namespace {

struct Sprites {
    Sprites() : engine(std::make_unique<ParticleEngine>()) {
        engine->part_set_correct_lumps(engine->partSet, 1.0f);
    }
    const tagPARTLUMP *lump(int index) const { return engine->partSet->lumps_corrected[index]; }
    std::unique_ptr<ParticleEngine> engine;
};

BubbleShade shade_with(double shine, double highlight) {
    BubbleShade shade;
    shade.red = 30000;
    shade.green = 28000;
    shade.blue = 25000;
    shade.density = 20000;
    shade.glint = 30000;
    shade.light = 0.9f;
    const float lx = -0.6f, ly = 0.5f, lz = 0.62f;
    const float length = std::sqrt(lx * lx + ly * ly + lz * lz);
    shade.lx = lx / length;
    shade.ly = ly / length;
    shade.lz = lz / length;
    shade.min_bright = 100;
    shade.shine = UnitPower(shine);
    shade.highlight = UnitPower(highlight);
    return shade;
}

// Arguments: sprite index, vector width (ShadeVectors), 1 for whole exponents.
void BM_ShadeRun(benchmark::State &state) {
    static const Sprites sprites;
    const tagPARTLUMP *lump = sprites.lump(int(state.range(0)));
    const auto vectors = ShadeVectors(state.range(1));
    if (!shade_vectors_run_here(vectors)) {
        state.SkipWithError("the processor lacks these vectors");
        return;
    }
    const BubbleShade shade = state.range(2) ? shade_with(45, 9) : shade_with(45.3, 9.7);
    const int n = lump->width * lump->height;
    if (n > kShadeRun) {
        state.SkipWithError("sprite larger than one run");
        return;
    }
    const SpriteRun run{lump->intensity, lump->normal_x, lump->normal_y, lump->depth};
    std::vector<PixelQv> pixels(size_t(n + kShadeBlock), PixelQv{9000, 12000, 15000, 4000});
    for (auto _ : state) {
        shade_run_with(vectors, shade, run, n, pixels.data());
        benchmark::DoNotOptimize(pixels.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * n);
}

}  // namespace

BENCHMARK(BM_ShadeRun)
    ->ArgsProduct({{10, 28}, {0, 1, 2}, {1, 0}})
    ->ArgNames({"sprite", "vectors", "whole"});

BENCHMARK_MAIN();
