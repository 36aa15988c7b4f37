// Random draws of the particle engine: reads of the frame's table through a
// caller's counter, so that a frame replays from its seed alone.
#include <cmath>

#include "bubbles/engine/particle_engine.h"
#include "framework/messages.h"

namespace {

constexpr int32_t kCounterWrap = 1000000000;

float table_draw(const RandomTableQv &table, int32_t &counter) {
    ++counter;
    if (counter > kCounterWrap) counter = 0;
    return table.Entry(counter & (ParticleEngine::kRandomTableSize - 1));
}

}  // namespace

float ParticleEngine::get_safe_random(int32_t &counter) const { return table_draw(randomTable, counter); }

float ParticleEngine::part_rand_01(int32_t &counter) const {
    if (mp_region) PrintError("part_rand_01() called with MP region!\n");
    float r = table_draw(randomTable, counter);
    if (double(r) > 0.999999) return 0.999999f;
    return r;
}

float ParticleEngine::part_rand_11(int32_t &counter) const {
    if (mp_region) PrintError("part_rand_11() called with MP region!\n");
    double r = table_draw(randomTable, counter);
    return float(2.0 * r - 1.0);
}

float ParticleEngine::part_var_1(float base, float variation, int32_t &counter) const {
    if (mp_region) PrintError("part_var_1() called with MP region!\n");
    double r = table_draw(randomTable, counter);
    return float(double(base) + (2.0 * r - 1.0) * double(variation));
}

void ParticleEngine::part_var_circle(float &x, float &y, float radius, int32_t &counter) const {
    const float x0 = x, y0 = y;
    const float P = pixel_aspect;
    // No point lies within a negative distance: scatter over its size instead.
    if (radius < 0.0f) radius = -radius;
    float d = radius + 1;
    while (d > radius) {
        x = x0 + radius * part_rand_11(counter);
        y = y0 + radius * part_rand_11(counter);
        d = float(std::sqrt(double((P * P) * ((x - x0) * (x - x0)) + (y - y0) * (y - y0))));
    }
}

void ParticleEngine::part_var_vec(float &vx, float &vy, float magnitude_var, float angle_var, float scale,
                           int32_t &counter) const {
    const float P = pixel_aspect, R = render_aspect;
    float m = float(std::sqrt(double(vx * vx / (P * P) + vy * vy / (R * R))) * double(scale));
    float a = 0.0f;
    if (std::fabs(double(m)) >= 1e-5) a = float(std::atan2(double(vy * P), double(vx * P)));
    a = float(3.141592 * double(part_rand_11(counter)) * double(angle_var) + double(a));
    m = m + part_rand_01(counter) * magnitude_var * m;
    vx = float(std::cos(double(a)) * double(m));
    vy = float(std::sin(double(a)) * double(m) * double(P));
}

void ParticleEngine::part_var_col(const tagPARTSET *set, float &r, float &g, float &b, float &a,
                           int32_t &counter) const {
    r = set->base_colour[0] + part_rand_11(counter) * set->colour_var * 32767;
    g = set->base_colour[1] + part_rand_11(counter) * set->colour_var * 32767;
    b = set->base_colour[2] + part_rand_11(counter) * set->colour_var * 32767;
    a = set->base_colour[3] + part_rand_11(counter) * set->colour_var * 32767;
    float k = part_rand_11(counter) * set->mono_var * 32767;
    r += k;
    g += k;
    b += k;
    a += k;
}
