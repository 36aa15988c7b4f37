// The picture and the particle state do not depend on how the rows are
// split into bands, nor on the bands running at the same time.
#include <gtest/gtest.h>

#include <thread>
#include <tuple>
#include <vector>

#include "../engine_rig.h"
#include "framework/plugin.h"

namespace {

// Every band on its own thread at once, as a threaded host runs them.
void render_in_threads(EngineRig &rig, int32_t bands) {
    BubbleRenderer renderer = rig.renderer();
    renderer.part_render_begin(rig.set());
    std::vector<std::thread> workers;
    for (int32_t i = 0; i < bands; ++i) {
        const RowBand band = band_for_worker(i, rig.output->height, bands);
        workers.emplace_back([&renderer, band] { renderer.mp_PartRender(band.first, band.last); });
    }
    for (std::thread &worker : workers) worker.join();
    renderer.part_render_end();
}

// A busy scene: births along a slanted emitter, light, reflections,
// turbulence, gravity and bursts under a half-covering matte.
void set_up_busy_scene(EngineRig &rig) {
    rig.configure([](BubbleParameters &c) {
        c.density = 40;
        c.lifetime = 12;
        c.growth_mode = 1;
        c.bubble_size = 8;
        c.size_var = 90;
        c.position_var = 0.05;
        c.initial_velocity = 400;
        c.colour_var = 30;
        c.mono_var = 10;
        c.gravity_on = c.burst_on = c.light_on = c.reflections_on = true;
        c.gravity = 0.5;
        c.burst_probability = c.burst_quantity = 60;
        c.burst_extent = 6;
        c.light_source_x = c.light_z = 0.3;
        c.light_source_y = 0.1;
        c.light_target_x = 0.6;
        c.light_target_y = 0.9;
        c.light_spread = 120;
    });
    for (int32_t y = 0; y < rig.burst->height; ++y)
        for (int32_t x = 0; x < rig.burst->width; ++x) {
            if (x >= rig.burst->width / 2) rig.burst->rows[y][x].red = 20000;
            rig.reflection->rows[y][x] = PixelQv{uint16_t(x * 200), uint16_t(y * 150), 9000, 32767};
        }
}

struct Frames {
    std::vector<std::vector<uint8_t>> pictures, particles;
    int32_t bursts = 0;
};

// The busy scene's frames, each drawn in `bands` bands on threads of their own.
Frames run_frames(int32_t width, int32_t height, int32_t bands, int32_t frames) {
    EngineRig rig(width, height);
    set_up_busy_scene(rig);
    rig.set()->preroll = 1;  // births and motion only: the threads draw
    const float xs[4] = {5.0f, float(width) * 0.3f, float(width) * 0.6f, float(width) - 5.0f};
    const float ys[4] = {float(height) - 10.0f, float(height) * 0.7f, float(height) * 0.5f, float(height) * 0.45f};
    Frames result;
    for (int32_t frame = 0; frame < frames; ++frame) {
        long seed = -10 * (785 + frame + 1);
        rig.engine->fill_random_table(&seed);
        rig.output->Fill(3000, 6000, 9000, 0);
        BubbleRenderer unused = rig.renderer();  // pre-rolling: the step draws nothing
        rig.engine->part_set_execute(rig.set(), xs, ys, 4, frame, 0, 0, unused);
        render_in_threads(rig, bands);
        result.pictures.push_back(rig.output_bytes());
        std::vector<uint8_t> state;
        for (const tagPART *p = rig.set()->live_list; p; p = p->next) {
            tagPART copy = *p;
            copy.next = nullptr;
            const auto *bytes = reinterpret_cast<const uint8_t *>(&copy);
            state.insert(state.end(), bytes, bytes + sizeof(copy));
            result.bursts += p->bursting;
        }
        result.particles.push_back(state);
    }
    return result;
}

}  // namespace

// The small frame has more bands than rows.
TEST(Bands, FramesAndParticlesAreByteIdenticalForAnyNumberOfConcurrentBands) {
    for (auto [width, height, frames] : {std::tuple{160, 120, 8}, {60, 10, 4}}) {
        const Frames reference = run_frames(width, height, 1, frames);
        ASSERT_TRUE(width != 160 || reference.bursts > 0) << "the scene should exercise bursting";
        for (int32_t bands : {2, 3, 16}) {
            const Frames banded = run_frames(width, height, bands, frames);
            EXPECT_EQ(banded.pictures, reference.pictures) << bands << " bands";
            EXPECT_EQ(banded.particles, reference.particles) << bands << " bands";
        }
    }
}
