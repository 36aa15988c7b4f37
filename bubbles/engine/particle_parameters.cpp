// Conversion of the control values into the particle set's per-step
// parameters.
#include <cmath>

#include "bubbles/engine/particle_engine.h"

void ParticleEngine::part_info_from_spark(tagPARTSET *set) {
    const BubbleParameters &c = parameters;
    // A divisor below 1 only comes from an image that was never given a
    // proxy scale; it means full resolution.
    const int32_t D = scale_divisor < 1 ? 1 : scale_divisor;
    const float P = pixel_aspect;
    const float aspect = render_aspect / P;

    set->density_var = float(c.density / 10);
    set->pos_var = float(width * c.position_var * P);
    set->vel_var = float(c.velocity_var / 100);
    set->dir_var = 0.0f;
    set->colour_var = float(c.colour_var / 100);
    set->life_var = float(c.lifetime / 10);
    set->max_age_var = 0.0f;
    set->gravity = c.gravity_on ? float(c.gravity / D * aspect) : 0.0f;
    set->friction = c.friction_on ? float(c.friction) : 0.0f;
    for (int i = 0; i < 3; ++i) {
        set->base_colour[i] = float(c.bubble_colour[i]);
        set->light_colour[i] = int32_t(c.light_colour[i]);
    }
    set->base_colour[3] = 32767.0f;
    set->density = float(c.density);
    set->lifetime = float(c.lifetime);
    set->max_age = 5000.0f;
    set->growth_mode = c.growth_mode - 1;
    set->grav_cos = float(std::cos(c.grav_angle * 0.017453292522222223));
    set->grav_sin = float(std::sin(c.grav_angle * 0.017453292522222223) / aspect);
    set->bubble_size = float(c.bubble_size / D);
    set->size_var = float(c.size_var / 100);
    set->speed_rand = 1.0f;
    set->speed = float(c.initial_velocity / (100 * D) * aspect);
    // Kept on purpose: the direction uses 3.14159 where gravity uses the full constant.
    set->dir_cos = float(std::cos(c.vel_dir * 3.14159 / 180));
    set->dir_sin = float(std::sin(c.vel_dir * 3.14159 / 180));
    set->fade_mode = c.fade_mode - 1;
    set->mono_var = float(c.mono_var / 100);
    set->swirl_dens = c.turbulence_on ? float(c.swirl_dens) : 0.0f;
    set->swirl_amp = c.turbulence_on ? float(c.swirl_amp / D) : 0.0f;
    set->swirl_max_time = c.turbulence_on ? float(c.swirl_max_time) : 0.0f;
    set->burst_prob = float(c.burst_probability / 100);
    set->burst_on = c.burst_on ? 1 : 0;
    set->congregate_on = c.congregate ? 1 : 0;
    set->burst_extent = float(c.burst_extent / 10);
    set->burst_keep = float(1 - c.burst_quantity / 100);
    set->afterlife = int32_t(c.afterlife);
}
