// A bubble engine with its images, ready for one simulation step in a test.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "bubbles/engine/particle_engine.h"
#include "bubbles/render/bubble_renderer.h"
#include "framework/image.h"
#include "framework/plugin.h"

struct EngineRig {
    EngineRig(int32_t width, int32_t height);

    // Quiet parameters: no motion, no turbulence, no variation.
    void make_still();
    // Changes parameters, then refreshes the set.
    void configure(const std::function<void(BubbleParameters &)> &change) {
        change(engine->parameters);
        refresh();
    }
    // Converts the parameters into the set, as the frame cycle does.
    void refresh() { engine->part_info_from_spark(set()); }
    tagPARTSET *set() { return engine->partSet; }

    // A live particle at (x, y) with the given sprite index, white, fully dense.
    tagPART *add_particle(float x, float y, int32_t size, int32_t life = 100);
    // Draws the live particles in as many bands as frame_context.processors says.
    void render();
    // One step with a single emitter point.
    int32_t step(int32_t frame = 0, float emit_x = 10, float emit_y = 10);
    // The output's pixels as bytes, for exact comparisons.
    std::vector<uint8_t> output_bytes() const;
    // Pixels of the output that are no longer transparent black.
    int32_t drawn_pixels() const;

    // A renderer for one step, its bands run as the effect runs them.
    BubbleRenderer renderer(bool drawing = true) { return BubbleRenderer(bands, *engine, drawing); }

    std::unique_ptr<ParticleEngine> engine;
    PluginQv bands;
    std::unique_ptr<ImageQv> output, birth, burst, reflection;
};
