// The bubble renderer's band work: the plan of which bubbles each band of
// rows draws, the bands run over the processors, and the burst decisions
// applied once they have joined.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>

#include "bubbles/render/bubble_renderer.h"
#include "framework/messages.h"

BubbleRenderer::BubbleRenderer(PluginQv &bands, ParticleEngine &engine, bool drawing)
    : bands_(bands), engine_(engine), drawing_(drawing) {}

void BubbleRenderer::render(tagPARTSET *set) {
    part_render_begin(set);
    if (drawing_)
        part_render_bands();
    else
        part_render_decisions();
    part_render_end();
}

void BubbleRenderer::part_render_decisions() {
    // Rows 0..-1: every band's walk, clipped to nothing.
    mp_PartRender(0, -1);
}

void BubbleRenderer::band_of(void *renderer, int first, int last) {
    static_cast<BubbleRenderer *>(renderer)->mp_PartRender(first, last);
}

void BubbleRenderer::part_render_begin(tagPARTSET *set) {
    const BubbleParameters &c = engine_.parameters;
    step_ = StepTerms{UnitPower(c.shine), UnitPower(c.highlight), LightCone(c.light_spread)};
    engine_.mp_region = 1;
    render_set = set;
    burst_decisions.clear();
    burst_recorder_taken.store(false);
}

void BubbleRenderer::part_render_bands() {
    if (!engine_.output_image) {
        PrintError("part_set_execute(): no output image to draw the bubbles into\n");
        return;
    }
    plan_rows();
    lib_mp_exec(&bands_, &BubbleRenderer::band_of, engine_.output_image->height, this);
    planned.clear();
    rows_planned = false;
}

void BubbleRenderer::part_render_end() {
    for (const BurstDecision &decision : burst_decisions) {
        decision.particle->bursting = 1;
        decision.particle->age = decision.age;
    }
    burst_decisions.clear();
    render_set = nullptr;
    engine_.mp_region = 0;
}

// One walk of every bubble ahead of the bands, with no rows: it makes the
// burst decisions and the draws, and notes where each bubble starts in the
// draws and which rows it can touch. Each band then draws only the bubbles
// over its rows, from their noted draw, in list order as before.
void BubbleRenderer::plan_rows() {
    const tagPARTSET *set = render_set;
    planned.clear();
    rows_planned = false;
    if (!set) return;
    burst_recorder_taken.store(true);
    int32_t counter = 0;
    for (tagPART *p = set->live_list; p; p = p->next) {
        if (bands_.AbortRender()) break;
        PlannedBubble plan{p, counter, INT32_MIN, INT32_MAX};
        int32_t burst_age = 0;
        const bool bursts_now = part_render(set, p, 0, -1, counter, burst_age) != 0;
        if (bursts_now) burst_decisions.push_back(BurstDecision{p, burst_age});
        const tagPARTLUMP *lump = set->lumps_corrected && p->size >= 0 && p->size < set->lump_count
                                      ? set->lumps_corrected[p->size]
                                      : nullptr;
        if (lump) {
            const int32_t py = int32_t(0.5 + double(p->y));
            const int32_t top = py - lump->height / 2;
            const float extent = std::fabs(set->burst_extent);
            if (!p->bursting && !bursts_now && p->gather_state != 2) {
                plan.first = top;
                plan.last = top + lump->height - 1;
            } else if (extent < 1000.0f) {
                // Fragments land within (1..2) * extent of the sprite's reach.
                const int64_t reach = int64_t(2 * (lump->height + 1) * (extent + 1)) + 2;
                plan.first = int32_t(std::max<int64_t>(INT32_MIN, py - reach));
                plan.last = int32_t(std::min<int64_t>(INT32_MAX, py + reach));
            }
        }
        planned.push_back(plan);
    }
    rows_planned = true;
}

void BubbleRenderer::mp_PartRender(long first, long last) {
    const tagPARTSET *set = render_set;
    if (!set) return;
    if (rows_planned) {
        for (const PlannedBubble &plan : planned) {
            if (bands_.AbortRender()) break;
            if (plan.last < first || plan.first > last) continue;
            int32_t counter = plan.counter, burst_age = 0;
            part_render(set, plan.particle, first, last, counter, burst_age);
        }
        return;
    }
    // Every band reaches the same decisions; one band writes them down and
    // they are applied after the join, so no band sees another's writes.
    const bool recording = !burst_recorder_taken.exchange(true);
    int32_t counter = 0;
    for (tagPART *p = set->live_list; p; p = p->next) {
        if (bands_.AbortRender()) break;
        int32_t burst_age = 0;
        if (part_render(set, p, first, last, counter, burst_age) && recording)
            burst_decisions.push_back(BurstDecision{p, burst_age});
    }
}

