// One step of the particle simulation: births along the emitter, the
// caller's render, then ageing, motion, growth and turbulence.
#include <cmath>

#include "bubbles/engine/particle_engine.h"
#include "framework/messages.h"

namespace {

int32_t clamp_index(int32_t index, int32_t count) {
    if (index < 0) return 0;
    if (index > count - 1) return count - 1;
    return index;
}

// Channel 0 of a matte at a position truncated toward zero, or -1 when the
// position lies outside the particles' image or the matte.
int32_t matte_value(const ImageQv *matte, float x, float y, int32_t W, int32_t H) {
    const int32_t ix = int32_t(x), iy = int32_t(y);
    if (ix < 0 || iy < 0 || ix >= W || iy >= H) return -1;
    if (!matte || ix >= matte->width || iy >= matte->height) return -1;
    return matte->rows[iy][ix].red;
}

}  // namespace

int32_t ParticleEngine::part_set_execute(tagPARTSET *set, const float *xs, const float *ys, int32_t n,
                                         int32_t frame, int32_t use_birth_matte, int32_t congregate,
                                         PartRenderStep &render) {
    if (n < 1) return 1;
    if (!set || !xs || !ys) {
        PrintError("part_set_execute(): no particle set or no birth points\n");
        return 1;
    }
    int32_t counter = 0;
    part_birth(set, xs, ys, n, use_birth_matte, counter);
    if (!set->preroll) render.render(set);
    part_advance(set, frame, congregate);
    return 0;
}

void ParticleEngine::part_birth(tagPARTSET *set, const float *xs, const float *ys, int32_t n,
                                int32_t use_birth_matte, int32_t &counter) {
    const int32_t target = int32_t(0.5 + part_var_1(set->density, set->density_var, counter));
    if (target < 1) return;
    // A life that always rounds below one frame would retry candidates forever.
    if (0.5 + double(set->lifetime) + std::fabs(double(set->life_var)) < 1.0 ||
        0.5 + double(set->max_age) + std::fabs(double(set->max_age_var)) < 1.0) {
        PrintError("part_set_execute(): Lifetime %.3f is too short for any bubble to live a frame\n",
                   double(set->lifetime));
        return;
    }
    const int32_t k = set->lump_count;
    int32_t born = 0, rejected = 0;
    do {
        if (rejected > target * 10 && born < 1) {
            PrintError("Tried many times to create a bubble. Probability of success too low - check Birth Matte\n");
            return;
        }
        const int32_t life = int32_t(0.5 + part_var_1(set->lifetime, set->life_var, counter));
        const int32_t max_age = int32_t(0.5 + part_var_1(set->max_age, set->max_age_var, counter));
        if (life < 1 || max_age < 1) continue;

        int32_t i = int32_t(part_rand_01(counter) * n);
        if (i > n - 1) i = n - 1;
        float x = xs[i], y = ys[i];
        part_var_circle(x, y, set->pos_var, counter);
        const float s = set->speed * (1 + part_rand_01(counter) * set->speed_rand);
        float vx = s * set->dir_cos, vy = s * set->dir_sin;
        part_var_vec(vx, vy, set->vel_var, set->dir_var, 1, counter);

        // Later candidate points are born later within the frame.
        const float t = float(n - i - 1) / float(n);
        const float g = t * set->gravity;
        vx += g * set->grav_cos;
        vy += g * set->grav_sin;
        x += t * vx;
        y += t * vy;

        if (use_birth_matte && matte_value(birth_matte, x, y, width, height) <= 100) {
            rejected += 1;
            continue;
        }
        tagPART *p = part_alloc(set);
        if (!p) continue;
        p->life = life;
        p->max_age = max_age;
        p->x = p->prev_x = x;
        p->y = p->prev_y = y;
        p->vx = vx;
        p->vy = vy;
        p->age = 0;
        p->bursting = 0;
        p->gather_state = 0;

        switch (set->growth_mode) {
        case kGrowthAssorted: {
            float size = set->bubble_size + part_rand_11(counter) * set->size_var * set->bubble_size;
            p->size = p->size_prev = p->size_birth = clamp_index(int32_t(k / 40.0f * size), k);
            break;
        }
        case kGrowthShrinking:
            p->size = p->size_birth = clamp_index(int32_t(k / 40.0f * set->bubble_size), k);
            break;
        case kGrowthVariable: {
            // Without the k / 40 factor of Assorted, on purpose.
            float size = set->bubble_size + part_rand_11(counter) * set->size_var * set->bubble_size;
            p->size = p->size_prev = p->size_birth = clamp_index(int32_t(size), k);
            break;
        }
        default:
            break;
        }
        part_var_col(set, p->colour[0], p->colour[1], p->colour[2], p->colour[3], counter);
        p->next = set->live_list;
        set->live_list = p;
        set->live_count += 1;
        born += 1;
    } while (born < target);
}

void ParticleEngine::part_advance(tagPARTSET *set, int32_t frame, int32_t congregate) {
    const int32_t k = set->lump_count;
    const float full = k / 40.0f * set->bubble_size;
    float sz = 0.0f;  // Variable Growth's size weight, carried from particle to particle
    const bool stirring = double(set->swirl_dens) > 0.1;
    NoisePlane planes[2];
    if (stirring) {
        const float nt = float(double(set->swirl_dens * float(frame)) / 25.0);
        planes[0] = noise_plane(nt);
        planes[1] = noise_plane(float(nt + 4.35));
    }
    tagPART *previous = nullptr;
    for (tagPART *p = set->live_list; p;) {
        tagPART *next = p->next;
        p->age += 1;
        if (p->age >= p->life || p->age >= p->max_age) {
            if (previous)
                previous->next = next;
            else
                set->live_list = next;
            p->next = set->free_list;
            set->free_list = p;
            set->live_count -= 1;
            p = next;
            continue;
        }

        const float f = part_friction(set, p, congregate);
        float g = set->gravity;
        if (set->growth_mode == kGrowthVariable) {
            sz = float(p->size_birth * 0.025);
            g = float((sz + 0.5) * set->gravity);
        }

        p->prev_x = p->x;
        p->prev_y = p->y;
        p->vx = p->vx - f * p->vx + g * set->grav_cos;
        p->x += p->vx;
        p->vy = p->vy - f * p->vy + g * set->grav_sin;
        p->y += p->vy;

        part_grow(set, p, full);
        if (stirring) part_stir(set, p, planes, sz);
        previous = p;
        p = next;
    }
}

// The set's friction, or none outside the gathering region, where a bubble
// that leaves it after being inside starts its afterlife.
float ParticleEngine::part_friction(const tagPARTSET *set, tagPART *p, int32_t congregate) const {
    float f = set->friction;
    if (congregate) {
        const int32_t gather = matte_value(burst_matte, p->x, p->y, width, height);
        if (gather < 0) {
            f = 0.0f;
        } else if (gather < 16384) {
            f = 0.0f;
            if (p->gather_state == 1) {
                p->gather_state = 2;
                p->age = p->life - set->afterlife;
            }
        } else {
            p->gather_state = 1;
        }
    }
    return f;
}

// The sprite index of a growing bubble at its new age.
void ParticleEngine::part_grow(const tagPARTSET *set, tagPART *p, float full) const {
    const int32_t k = set->lump_count;
    const float time_max_size = float(parameters.time_max_size);
    float u = float(p->age) / time_max_size;
    if (u > 1.0f) u = 1.0f;
    switch (set->growth_mode) {
    case kGrowthShrinking:
        p->size = p->size_prev = clamp_index(int32_t(full - float(int32_t(u * full))), k);
        break;
    case kGrowthVariable: {
        int32_t index = int32_t(u * full) + p->size_birth;
        if (index < 0) index = 0;
        if (index > 4 * p->size_birth) index = 4 * p->size_birth;
        p->size = p->size_prev = clamp_index(index, k);
        break;
    }
    case kGrowthLinear:
        p->size = p->size_prev = clamp_index(int32_t(u * full), k);
        break;
    default:
        break;
    }
}

// Turbulence: the noise field's push, ramped in over the bubble's first
// frames and weakened for big bubbles of Variable Growth (sz).
// planes: the noise field at the step's two times, nt and nt + 4.35.
void ParticleEngine::part_stir(tagPARTSET *set, tagPART *p, const NoisePlane (&planes)[2], float sz) const {
    const float nx = p->x / float(width) * set->swirl_dens;
    const float ny = p->y / float(height) * set->swirl_dens;
    if (set->swirl_max_time < 1.0f) set->swirl_max_time = 1.0f;
    float ramp = float(p->age) / set->swirl_max_time;
    if (ramp > 1.0f) ramp = 1.0f;
    const float a = float(double(ramp) * (1 - 1.5 * sz) * double(set->swirl_amp));
    p->vx += a * gnoise(planes[0], nx, ny) / pixel_aspect;
    p->vy += a * gnoise(planes[1], float(nx + 3.14), float(ny + 2.71));
}
