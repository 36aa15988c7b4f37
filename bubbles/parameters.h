// The control values the bubble engine reads, in effect units, with the
// control table's defaults.
#pragma once

#include <cstdint>

// Filled from the effect's controls once per frame. Positions and "Position
// Var" are fractions of the frame (host percent / 100); colours are the
// 16-bit values (b << 7) | (b >> 1) of the colour controls; list values are
// numbered from 1, as the lists deliver them.
struct BubbleParameters {
    // Emitter and births.
    double left_x = 0.01, left_y = 0.01;
    double right_x = 0.90, right_y = 0.01;
    double position_var = 0.01;
    double density = 20.0;
    double lifetime = 200.0;
    double time_max_size = 25.0;
    bool use_birth_matte = false;
    double initial_velocity = 200.0;
    double velocity_var = 100.0;
    double vel_dir = 90.0;  // degrees

    // Size and colour.
    int growth_mode = 4;  // 1 Assorted, 2 Shrinking, 3 Variable Growth, 4 Linear Growth
    double bubble_size = 20.0;
    double size_var = 100.0;
    double colour_var = 0.0;
    double mono_var = 0.0;
    uint16_t bubble_colour[3] = {32767, 32767, 32767};
    int fade_mode = 3;  // 1 Col+Dens, 2 Colour, 3 Density

    // Forces.
    bool gravity_on = false;
    double gravity = 0.2;
    double grav_angle = 90.0;  // degrees
    bool friction_on = true;
    double friction = 0.05;
    bool turbulence_on = true;
    double swirl_dens = 60.0;
    double swirl_amp = 1.0;
    double swirl_max_time = 0.0;

    // Bursting and gathering.
    bool burst_on = false;
    double burst_probability = 50.0;
    double burst_quantity = 80.0;
    double burst_extent = 5.0;
    double afterlife = 3.0;
    bool congregate = false;

    // Light and reflections.
    bool light_on = false;
    double light_source_x = 0.50, light_source_y = 0.90;
    double light_target_x = 0.50, light_target_y = 0.01;
    double light_z = 0.0;
    double glisten_tight = 30.0;
    double light_spread = 90.0;  // degrees
    double light_intensity = 50.0;
    double min_bright = 60.0;
    double shine = 45.0;
    double highlight = 10.0;
    uint16_t light_colour[3] = {32767, 32767, 32767};
    bool reflections_on = false;
    double ref_intensity = 100.0;

    // Simulation run.
    double preroll = 20.0;  // frames simulated by a pre-roll
    double seed = 785.0;
};
