// One frame's bubble renderer: the effect makes one per frame, as a render
// makes its processor, and hands it to the engine's steps. It holds what a
// render alone needs (the band plan and the burst decisions) so none of it
// outlives the frame.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "bubbles/engine/particle_engine.h"
#include "bubbles/render/bubble_shade.h"
#include "bubbles/render/light_cone.h"
#include "framework/image.h"
#include "framework/plugin.h"

class BubbleRenderer final : public PartRenderStep {
public:
    // bands: the effect whose processors run the render bands. drawing
    // false: the render only walks every bubble's decisions and draws,
    // writing no pixel, as a simulated frame needs.
    BubbleRenderer(PluginQv &bands, ParticleEngine &engine, bool drawing);
    BubbleRenderer(const BubbleRenderer &) = delete;
    BubbleRenderer &operator=(const BubbleRenderer &) = delete;

    // The render of one step: begin, the bands (or the decisions alone),
    // then end, which applies the bursts decided.
    void render(tagPARTSET *set) override;

    // The three stages, so that a caller may run the bands its own way.
    void part_render_begin(tagPARTSET *set);
    void part_render_bands();
    // One band without rows walks every bubble's decisions and draws, so the
    // bursts and the random counters come out as in a drawn frame.
    void part_render_decisions();
    void part_render_end();
    // One band of rows, first..last inclusive.
    void mp_PartRender(long first, long last);

    // Decides but never writes the particle: returns 1 and the bubble's new
    // age when the bubble bursts now; draws its rows of first..last.
    int32_t part_render(const tagPARTSET *set, const tagPART *particle, long first, long last, int32_t &counter,
                        int32_t &burst_age);
    void part_anti_aliased_lump(const SpritePlacement &at, const BubbleShade &shade) const;
    // Scatters the sprite's pixels outwards by up to extent, keeping a share
    // of them; the draws advance counter the same in every band.
    void part_exploding_lump(const SpritePlacement &at, const BubbleShade &shade, float extent, float keep,
                             int32_t &counter) const;

private:
    // A burst decided during the render, applied once the bands have joined.
    struct BurstDecision {
        tagPART *particle;
        int32_t age;
    };
    // A bubble as the bands see it: where it starts in the frame's draws and
    // the rows it can touch (all rows when unsure).
    struct PlannedBubble {
        tagPART *particle;
        int32_t counter;
        int32_t first;
        int32_t last;
    };
    void plan_rows();
    static void band_of(void *renderer, int first, int last);

    // The pieces of part_render.
    int32_t part_burst(const tagPARTSET *set, const tagPART *p, int32_t px, int32_t py, int32_t &counter,
                       int32_t &burst_age) const;
    void part_fade(const tagPARTSET *set, const tagPART *p, BubbleShade &shade) const;
    void part_light(const tagPARTSET *set, const tagPART *p, BubbleShade &shade) const;
    void part_light_direction(int32_t px, int32_t py, BubbleShade &shade) const;
    void part_shade_terms(BubbleShade &shade) const;

    // Blends one sprite pixel of coverage I and normal (nx, ny) into target.
    static void shade_pixel(PixelQv &target, int32_t I, float nx, float ny, const BubbleShade &shade);
    // The same with the pixel's lit term k and highlight h worked out.
    static void blend_pixel(PixelQv &target, int32_t I, float nx, float ny, const BubbleShade &shade, int64_t k,
                            int64_t h);

    // What every bubble of a step shares, from the controls at its start.
    struct StepTerms {
        UnitPower shine;
        UnitPower highlight;
        LightCone cone;
    };

    PluginQv &bands_;
    ParticleEngine &engine_;
    const bool drawing_;
    std::vector<PlannedBubble> planned;
    bool rows_planned = false;
    tagPARTSET *render_set = nullptr;
    std::atomic<bool> burst_recorder_taken{false};
    std::vector<BurstDecision> burst_decisions;
    StepTerms step_;
};
