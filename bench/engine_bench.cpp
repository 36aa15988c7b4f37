// One simulation step of the bubble engine on an HD frame with about 5,000
// lit, reflecting bubbles of mixed sizes, on one and on two processors.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>

#include "bubbles/engine/particle_engine.h"
#include "bubbles/render/bubble_renderer.h"
#include "framework/image.h"
#include "framework/plugin.h"

namespace {

constexpr int32_t kWidth = 1920;
constexpr int32_t kHeight = 1080;
constexpr int32_t kBubbles = 5000;

struct Scene {
    Scene()
        : engine(std::make_unique<ParticleEngine>()),
          output(std::make_unique<ImageQv>(kWidth, kHeight, 1.0f, nullptr, nullptr)),
          matte(std::make_unique<ImageQv>(kWidth, kHeight, 1.0f, nullptr, nullptr)),
          reflection(std::make_unique<ImageQv>(kWidth, kHeight, 1.0f, nullptr, nullptr)) {
        matte->Fill(0, 0, 0, 0);
        for (int32_t y = 0; y < kHeight; ++y)
            for (int32_t x = 0; x < kWidth; ++x)
                reflection->rows[y][x] = PixelQv{uint16_t(x * 17), uint16_t(y * 30), 12000, 32767};
        engine->width = kWidth;
        engine->height = kHeight;
        engine->output_image = output.get();
        engine->birth_matte = matte.get();
        engine->burst_matte = matte.get();
        engine->reflection_image = reflection.get();
        BubbleParameters &c = engine->parameters;
        c.density = 0;  // the population stays as placed
        c.growth_mode = 1;
        c.light_on = true;
        c.light_spread = 170;
        c.light_z = 0.4;
        c.reflections_on = true;
        engine->part_info_from_spark(engine->partSet);
        engine->part_set_correct_lumps(engine->partSet, 1.0f);

        std::mt19937 pick(1234);
        std::uniform_real_distribution<float> along_x(0.0f, float(kWidth)), along_y(0.0f, float(kHeight));
        std::uniform_int_distribution<int32_t> size(0, 80), colour(8000, 32767);
        tagPARTSET *set = engine->partSet;
        for (int32_t i = 0; i < kBubbles; ++i) {
            tagPART *p = engine->part_alloc(set);
            p->x = p->prev_x = along_x(pick);
            p->y = p->prev_y = along_y(pick);
            p->colour[0] = float(colour(pick));
            p->colour[1] = float(colour(pick));
            p->colour[2] = float(colour(pick));
            p->colour[3] = 32767.0f;
            p->life = p->max_age = 5000;
            p->size = p->size_prev = p->size_birth = size(pick);
            p->next = set->live_list;
            set->live_list = p;
            set->live_count += 1;
        }
    }

    std::unique_ptr<ParticleEngine> engine;
    PluginQv bands;
    std::unique_ptr<ImageQv> output, matte, reflection;
};

void BM_PartSetExecute(benchmark::State &state) {
    const int32_t saved = frame_context.processors;
    frame_context.processors = int32_t(state.range(0));
    Scene scene;
    float emit_x = 100.0f, emit_y = 100.0f;
    for (auto _ : state) {
        state.PauseTiming();
        scene.output->Fill(4000, 8000, 12000, 0);
        state.ResumeTiming();
        BubbleRenderer renderer(scene.bands, *scene.engine, true);
        scene.engine->part_set_execute(scene.engine->partSet, &emit_x, &emit_y, 1, 0, 0, 0, renderer);
    }
    state.SetItemsProcessed(state.iterations() * scene.engine->partSet->live_count);
    state.counters["bubbles"] = scene.engine->partSet->live_count;
    frame_context.processors = saved;
}

}  // namespace

BENCHMARK(BM_PartSetExecute)->Arg(1)->Arg(2)->ArgName("processors")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

BENCHMARK_MAIN();
