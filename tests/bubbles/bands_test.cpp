// The picture and the particle state do not depend on how the rows are
// split into bands, nor on the bands running at the same time.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <tuple>
#include <vector>

#include "engine_rig.h"
#include "framework/plugin.h"
#include "host/globals.h"

namespace {

class BandCount {
public:
    explicit BandCount(int32_t count) : saved_(DLnumProc) { DLnumProc = count; }
    ~BandCount() { DLnumProc = saved_; }

private:
    int32_t saved_;
};

void render_in_bands(EngineRig &rig, int32_t bands) {
    BandCount count(bands);
    rig.render();
}

// Every band on its own thread at once, as a threaded host runs them.
void render_in_threads(EngineRig &rig, int32_t bands) {
    rig.engine->part_render_begin(rig.set());
    std::vector<std::thread> workers;
    for (int32_t i = 0; i < bands; ++i) {
        const RowBand band = band_for_worker(i, rig.output->height, bands);
        workers.emplace_back([&rig, band] { rig.engine->mp_PartRender(band.first, band.last); });
    }
    for (std::thread &worker : workers) worker.join();
    rig.engine->part_render_end();
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
        c.light_source_x = 0.3;
        c.light_source_y = 0.1;
        c.light_target_x = 0.6;
        c.light_target_y = 0.9;
        c.light_spread = 120;
        c.light_z = 0.3;
    });
    for (int32_t y = 0; y < rig.burst->height; ++y)
        for (int32_t x = 0; x < rig.burst->width; ++x) {
            if (x >= rig.burst->width / 2) rig.burst->rows[y][x].red = 20000;
            rig.reflection->rows[y][x] = PixelQv{uint16_t(x * 200), uint16_t(y * 150), 9000, 32767};
        }
}

struct Frames {
    std::vector<std::vector<uint8_t>> pictures;
    std::vector<std::vector<uint8_t>> particles;
};

std::vector<uint8_t> particle_state(const tagPARTSET *set) {
    std::vector<uint8_t> state;
    for (const tagPART *p = set->live_list; p; p = p->next) {
        tagPART copy = *p;
        copy.next = nullptr;
        const auto *bytes = reinterpret_cast<const uint8_t *>(&copy);
        state.insert(state.end(), bytes, bytes + sizeof(copy));
    }
    return state;
}

// The busy scene's frames drawn in `bands` bands, in turn or each on a thread of its own.
Frames run_frames(int32_t width, int32_t height, int32_t bands, int32_t frames, bool threaded = false) {
    BandCount count(bands);
    EngineRig rig(width, height);
    set_up_busy_scene(rig);
    rig.set()->preroll = threaded;  // births and motion only: the threads draw
    const float xs[4] = {5.0f, float(width) * 0.3f, float(width) * 0.6f, float(width) - 5.0f};
    const float ys[4] = {float(height) - 10.0f, float(height) * 0.7f, float(height) * 0.5f, float(height) * 0.45f};
    Frames result;
    for (int32_t frame = 0; frame < frames; ++frame) {
        long seed = -10 * (785 + frame + 1);
        rig.engine->fill_random_table(&seed);
        rig.output->Fill(3000, 6000, 9000, 0);
        rig.engine->part_set_execute(rig.set(), xs, ys, 4, frame, 0, 0);
        if (threaded) render_in_threads(rig, bands);
        result.pictures.push_back(rig.output_bytes());
        result.particles.push_back(particle_state(rig.set()));
    }
    return result;
}

}  // namespace

TEST(Bands, BubbleStraddlingABandBoundaryOrStartingOnABandsLastRowIsDrawnIdentically) {
    const int32_t half_height = EngineRig(100, 100).set()->lumps_corrected[20]->height / 2;
    for (float y : {50.3f, float(49 + half_height)}) {  // two bands: rows 0-49 and 50-99
        EngineRig one(100, 100), two(100, 100);
        for (EngineRig *rig : {&one, &two}) {
            rig->add_particle(47.2f, y, 20);
            rig->configure([](BubbleParameters &p) { p.light_on = true; });
        }
        render_in_bands(one, 1);
        render_in_bands(two, 2);
        EXPECT_GT(one.drawn_pixels(), 0) << y;
        EXPECT_EQ(one.output_bytes(), two.output_bytes()) << y;
    }
}

TEST(Bands, FramesAreByteIdenticalForAnyNumberOfBands) {
    // The small frame has more bands than rows.
    for (auto [width, height, frames] : {std::tuple{160, 120, 10}, {60, 10, 4}}) {
        const Frames reference = run_frames(width, height, 1, frames);
        if (width == 160) {
            int32_t bursts_seen = 0;
            for (const auto &state : reference.particles)
                for (size_t at = 0; at < state.size(); at += sizeof(tagPART)) {
                    tagPART p;
                    std::memcpy(&p, state.data() + at, sizeof p);
                    bursts_seen += p.bursting;
                }
            ASSERT_GT(bursts_seen, 0) << "the scene should exercise bursting";
        }
        for (int32_t bands : {2, 3, 7, 16}) {
            const Frames banded = run_frames(width, height, bands, frames);
            for (size_t frame = 0; frame < reference.pictures.size(); ++frame) {
                EXPECT_EQ(banded.pictures[frame], reference.pictures[frame]) << bands << " bands, frame " << frame;
                EXPECT_EQ(banded.particles[frame], reference.particles[frame]) << bands << " bands, frame " << frame;
            }
        }
    }
}

TEST(Bands, ConcurrentBandsMatchOneBand) {
    const Frames reference = run_frames(160, 120, 1, 6, true);
    for (int32_t bands : {2, 3, 7}) {
        const Frames threaded = run_frames(160, 120, bands, 6, true);
        EXPECT_EQ(threaded.pictures, reference.pictures) << bands << " bands";
        EXPECT_EQ(threaded.particles, reference.particles) << bands << " bands";
    }
}
