// Bubbles::ReadControls: the controls' per-frame caches into the parameters
// the particle engine reads.
#include "bubbles/bubbles.h"

namespace {

void copy_colour(const ColourControlQv &control, uint16_t (&out)[3]) {
    for (int i = 0; i < 3; ++i) out[i] = static_cast<uint16_t>(control.cached[i]);
}

}  // namespace

// Static reads (frame -1): the values the host adapter refreshed for this
// frame. Positions and "Position Var" come straight from their caches, which
// already hold fractions of the frame.
void Bubbles::ReadControls() {
    BubblesInfo &c = info;
    BubbleParameters &p = parameters;
    constexpr double kStatic = -1.0;

    p.left_x = c.left.cached_x;
    p.left_y = c.left.cached_y;
    p.right_x = c.right.cached_x;
    p.right_y = c.right.cached_y;
    p.position_var = c.positionVar.cached;
    p.density = c.density.GetValue(kStatic);
    p.lifetime = c.lifetime.GetValue(kStatic);
    p.time_max_size = double(c.timeMaxSize.GetValue(kStatic));
    p.use_birth_matte = c.useBirthMatte.GetValue(kStatic);
    p.initial_velocity = c.initialVelocity.GetValue(kStatic);
    p.velocity_var = c.velocityVar.GetValue(kStatic);
    p.vel_dir = c.velDir.GetValue(kStatic);

    p.growth_mode = int(c.growthMode.GetValue(kStatic));
    p.bubble_size = c.bubbleSize.GetValue(kStatic);
    p.size_var = c.bubbleSizeVar.GetValue(kStatic);
    p.colour_var = c.colourVar.GetValue(kStatic);
    p.mono_var = c.monoVar.GetValue(kStatic);
    copy_colour(c.bubbleColour, p.bubble_colour);
    p.fade_mode = int(c.fadeMode.GetValue(kStatic));

    p.gravity_on = c.gravityOn.GetValue(kStatic);
    p.gravity = c.gravity.GetValue(kStatic);
    p.grav_angle = c.gravAngle.GetValue(kStatic);
    p.friction_on = c.frictionOn.GetValue(kStatic);
    p.friction = c.friction.GetValue(kStatic);
    p.turbulence_on = c.turbulenceOn.GetValue(kStatic);
    p.swirl_dens = c.swirlDens.GetValue(kStatic);
    p.swirl_amp = c.swirlAmp.GetValue(kStatic);
    p.swirl_max_time = c.swirlMaxTime.GetValue(kStatic);

    p.burst_on = c.burstOn.GetValue(kStatic);
    p.burst_probability = c.burstProbability.GetValue(kStatic);
    p.burst_quantity = c.burstQuantity.GetValue(kStatic);
    p.burst_extent = c.burstExtent.GetValue(kStatic);
    p.afterlife = double(c.afterlife.GetValue(kStatic));
    p.congregate = c.congregate.GetValue(kStatic);

    p.light_on = c.lightOn.GetValue(kStatic);
    p.light_source_x = c.lightSource.cached_x;
    p.light_source_y = c.lightSource.cached_y;
    p.light_target_x = c.lightTarget.cached_x;
    p.light_target_y = c.lightTarget.cached_y;
    p.light_z = c.lightZ.GetValue(kStatic);
    p.glisten_tight = c.glistenTight.GetValue(kStatic);
    p.light_spread = c.lightSpread.GetValue(kStatic);
    p.light_intensity = c.lightIntensity.GetValue(kStatic);
    p.min_bright = c.minBright.GetValue(kStatic);
    p.shine = c.shine.GetValue(kStatic);
    p.highlight = c.highlight.GetValue(kStatic);
    copy_colour(c.lightColour, p.light_colour);
    p.reflections_on = c.reflectionsOn.GetValue(kStatic);
    p.ref_intensity = c.refIntensity.GetValue(kStatic);

    p.preroll = double(c.preRoll.GetValue(kStatic));
    p.seed = double(c.seed.GetValue(kStatic));
}
