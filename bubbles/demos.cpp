// Bubbles::DemosCB: loads the preset chosen in the "Demos" list into the
// controls and asks for a fresh start.
#include "bubbles/bubbles.h"
#include "bubbles/presets.h"

namespace {

using Value = DemoPreset::Value;

// Numeric controls take the value at the callback's time; lists, switches
// and colours are written as the current value (-1.0).
void write(IntegerControlQv &control, const Value &value, double time) {
    if (value) control.SetValue(time, long(*value));
}

void write(FloatControlQv &control, const Value &value, double time) {
    if (value) control.SetValue(time, *value);
}

void write(SizeControlQv &control, const Value &value, double time) {
    if (value) control.SetValue(time, *value);
}

void write(PositionControlQv &control, const Value &x, const Value &y, double time) {
    if (x && y) control.SetValue(time, *x, *y);
}

void write(ListControlQv &control, const Value &value) {
    if (value) control.SetValue(-1.0, long(*value));
}

void write(CheckboxControlQv &control, const Value &value) {
    if (value) control.SetValue(-1.0, int(*value));
}

void write(ColourControlQv &control, const std::array<uint16_t, 4> &colour) {
    control.SetValue(-1.0, colour[0], colour[1], colour[2], colour[3]);
}

}  // namespace

void Bubbles::DemosCB(ControlQv &, double time) {
    // Whatever the list says, choosing a demo empties the set at the next frame.
    restartPending = 1;
    BubblesInfo &c = info;
    const DemoPreset &p = demo_preset_for_list_value(c.demos.GetValue(-1.0));

    write(c.preRoll, p.preroll, time);
    write(c.seed, p.seed, time);
    write(c.left, p.left_x, p.left_y, time);
    write(c.right, p.right_x, p.right_y, time);
    write(c.positionVar, p.position_var, time);
    write(c.density, p.density, time);
    write(c.lifetime, p.lifetime, time);
    write(c.timeMaxSize, p.time_max_size, time);
    write(c.useBirthMatte, p.use_birth_matte);
    write(c.initialVelocity, p.initial_velocity, time);
    write(c.velocityVar, p.velocity_var, time);
    write(c.velDir, p.vel_dir, time);
    write(c.growthMode, p.growth_mode);
    write(c.bubbleSize, p.bubble_size, time);
    write(c.bubbleSizeVar, p.bubble_size_var, time);
    write(c.colourVar, p.colour_var, time);
    write(c.monoVar, p.mono_var, time);
    write(c.bubbleColour, p.bubble_colour);
    write(c.fadeMode, p.fade_mode);
    write(c.gravityOn, p.gravity_on);
    write(c.gravity, p.gravity, time);
    write(c.gravAngle, p.grav_angle, time);
    write(c.frictionOn, p.friction_on);
    write(c.friction, p.friction, time);
    write(c.turbulenceOn, p.turbulence_on);
    write(c.swirlDens, p.swirl_dens, time);
    write(c.swirlAmp, p.swirl_amp, time);
    write(c.swirlMaxTime, p.swirl_max_time, time);
    write(c.burstOn, p.burst_on);
    write(c.burstProbability, p.burst_probability, time);
    write(c.burstQuantity, p.burst_quantity, time);
    write(c.burstExtent, p.burst_extent, time);
    write(c.afterlife, p.afterlife, time);
    write(c.congregate, p.congregate);
    write(c.lightOn, p.light_on);
    write(c.lightSource, p.light_source_x, p.light_source_y, time);
    write(c.lightTarget, p.light_target_x, p.light_target_y, time);
    write(c.lightZ, p.light_z, time);
    write(c.glistenTight, p.glisten_tight, time);
    write(c.lightSpread, p.light_spread, time);
    write(c.lightIntensity, p.light_intensity, time);
    write(c.minBright, p.min_bright, time);
    write(c.shine, p.shine, time);
    write(c.highlight, p.highlight, time);
    write(c.lightColour, p.light_colour);
    write(c.reflectionsOn, p.reflections_on);
    write(c.refIntensity, p.ref_intensity, time);
}
