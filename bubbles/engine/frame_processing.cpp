// One frame of the engine: sprite and particle caches, the frame's random
// table, restart and pre-roll requests, the emitter line and the step.
#include <cmath>
#include <cstdlib>

#include "bubbles/engine/particle_engine.h"

namespace {

int32_t rounded_to_pixel(float value) { return int32_t(value + 0.5); }

int sign_of(int32_t value) { return (value > 0) - (value < 0); }

}  // namespace

int ParticleEngine::find_polyline_pixels(const float *xs, const float *ys, int n, float *outX, float *outY,
                                         int maxOut) {
    if (n < 1 || maxOut < 1) return 0;
    if (n == 1) {
        outX[0] = xs[0];
        outY[0] = ys[0];
        return 1;
    }
    int stored = 0;
    auto store = [&](int32_t x, int32_t y) {
        if (stored >= maxOut) return;
        outX[stored] = float(x);
        outY[stored] = float(y);
        ++stored;
    };
    for (int k = 0; k + 1 < n; ++k) {
        const int32_t x0 = rounded_to_pixel(xs[k]), y0 = rounded_to_pixel(ys[k]);
        const int32_t x1 = rounded_to_pixel(xs[k + 1]), y1 = rounded_to_pixel(ys[k + 1]);
        const int32_t dx = std::abs(x1 - x0), dy = std::abs(y1 - y0);
        const bool steep = dy > dx;
        const int32_t long_extent = steep ? dy : dx;
        const int32_t short_extent = steep ? dx : dy;
        if (long_extent == 0) {
            // A collapsed segment still offers its pixel twice, as the two
            // end points of any other segment would.
            store(x0, y0);
            store(x0, y0);
            continue;
        }
        const int step_x = sign_of(x1 - x0), step_y = sign_of(y1 - y0);
        int32_t x = x0, y = y0;
        int32_t error = -long_extent;
        for (int32_t i = 0; i <= long_extent; ++i) {
            store(x, y);
            error += 2 * short_extent;
            if (error > 0) {
                if (steep)
                    x += step_x;
                else
                    y += step_y;
                error -= 2 * long_extent;
            }
            if (steep)
                y += step_y;
            else
                x += step_x;
        }
    }
    return stored;
}

void ParticleEngine::remap_particles() {
    const float ratio_x = float(prevWidth) / float(frameWidth);
    const float ratio_y = float(prevHeight) / float(frameHeight);
    const int32_t last_sprite = partSet->lump_count - 1;
    for (tagPART *p = partSet->live_list; p; p = p->next) {
        p->prev_x = p->prev_x / ratio_x;
        p->prev_y = p->prev_y / ratio_y;
        p->x = p->x / ratio_x;
        p->y = p->y / ratio_y;
        p->vx = p->vx / ratio_x;
        p->vy = p->vy / ratio_y;
        int32_t size = int32_t(float(p->size_prev) / renderScale);
        if (size < 0) size = 0;
        if (size > last_sprite) size = last_sprite;
        p->size = size;
    }
}

bool ParticleEngine::match_output(const ImageQv *output) {
    frameWidth = output->width;
    frameHeight = output->height;
    ratioA = float(output->scale_x);
    ratioB = float(output->scale_y);
    const float aspect = ratioB / ratioA;
    // An empty proxy frame has nothing to draw, and remapping to or from a
    // zero size would lose every particle's position.
    if (frameWidth < 1 || frameHeight < 1) return false;

    renderScale = output->video_scale;

    if (std::fabs(aspect - lumpAspect) > 1e-5) {
        // On failure lumpAspect stays, so the next frame tries again.
        if (!part_set_correct_lumps(partSet, aspect)) return false;
        lumpAspect = aspect;
    }

    const bool size_changed = frameWidth != prevWidth || frameHeight != prevHeight;
    if (!firstFrame && size_changed) remap_particles();
    if (firstFrame || size_changed) {
        firstFrame = 0;
        prevWidth = frameWidth;
        prevHeight = frameHeight;
    }
    return true;
}

bool ParticleEngine::prepare_frame(ImageQv *birth, ImageQv *burst, ImageQv *reflection, ImageQv *output,
                                   double frame) {
    if (!output || !partSet || !match_output(output)) return false;
    pixel_aspect = ratioA;
    render_aspect = ratioB;
    scale_divisor = int32_t(renderScale) < 1 ? 1 : int32_t(renderScale);
    width = frameWidth;
    height = frameHeight;
    birth_matte = birth;
    burst_matte = burst;
    reflection_image = reflection;
    output_image = output;

    long seed_word = -long((parameters.seed + frame + 1.0) * 10.0);
    fill_random_table(&seed_word);
    partSet->seed = int32_t(seed_word);
    return true;
}

void ParticleEngine::step_frame(double frame, PartRenderStep &render) {
    const float emitter_x[2] = {float(frameWidth * parameters.left_x), float(frameWidth * parameters.right_x)};
    const float emitter_y[2] = {float(frameHeight * parameters.left_y), float(frameHeight * parameters.right_y)};
    const long seed = long(parameters.seed);
    const int32_t preroll_steps = int32_t(parameters.preroll);
    part_info_from_spark(partSet);

    if (restartPending) {
        restartPending = 0;
        part_set_free_all(partSet);
    }

    if (preRollPending) {
        partSet->preroll = 1;
        for (int32_t i = 0; i < preroll_steps; ++i) {
            // The tables of frames 0 .. PreRoll - 1, whatever frame is asked for.
            long seed_word = -((seed + i) * 10 + 10);
            fill_random_table(&seed_word);
            partSet->seed = int32_t(seed_word);
            run_step(emitter_x, emitter_y, i, render);
        }
        preRollPending = 0;
        partSet->preroll = 0;
    }
    run_step(emitter_x, emitter_y, int32_t(frame), render);
}

// One step from the emitter line's pixels; a line with none steps nothing.
void ParticleEngine::run_step(const float *emitter_x, const float *emitter_y, int32_t frame,
                              PartRenderStep &render) {
    float birth_x[kMaxBirthPositions];
    float birth_y[kMaxBirthPositions];
    const int32_t use_birth_matte = parameters.use_birth_matte ? 1 : 0;
    const int32_t congregate = parameters.congregate ? 1 : 0;
    const int count = find_polyline_pixels(emitter_x, emitter_y, 2, birth_x, birth_y, kMaxBirthPositions);
    if (count >= 1) part_set_execute(partSet, birth_x, birth_y, count, frame, use_birth_matte, congregate, render);
}
