// The particle set: live and free bubbles, their blocks, and the parameters
// of one simulation step.
#pragma once

#include <cstdint>

#include "bubbles/render/sprite.h"

struct tagPART {
    float prev_x, prev_y;
    float x, y;
    float vx, vy;
    float colour[4];  // red, green, blue, density on the 0..32767 scale, never clamped here
    int32_t age;
    int32_t life;
    int32_t max_age;
    int32_t bursting;
    int32_t gather_state;  // 0 never inside the gather matte, 1 inside, 2 has left it
    int32_t size;
    int32_t size_prev;
    int32_t size_birth;
    tagPART *next;
};

struct tagPARTBLOB {
    tagPART *particles;
    int32_t count;
    tagPARTBLOB *next;
};

enum PartGrowthMode : int32_t {
    kGrowthAssorted = 0,
    kGrowthShrinking = 1,
    kGrowthVariable = 2,
    kGrowthLinear = 3,
};

enum PartFadeMode : int32_t {
    kFadeColourAndDensity = 0,
    kFadeColour = 1,
    kFadeDensity = 2,
};

struct tagPARTSET {
    float density_var;
    float pos_var;
    float vel_var;
    float dir_var;
    float colour_var;
    float life_var;
    float max_age_var;
    float gravity;
    float friction;
    float base_colour[4];
    int32_t light_colour[3];
    float density;
    float lifetime;
    float max_age;
    int32_t growth_mode;
    tagPART *free_list;
    tagPART *live_list;
    tagPARTBLOB *blobs;
    int32_t blob_capacity;
    int32_t blob_count;
    int32_t live_count;
    float grav_cos;
    float grav_sin;
    float bubble_size;
    float size_var;
    int32_t lump_count;
    tagPARTLUMP **lumps_corrected;
    tagPARTLUMP **lumps;
    float speed_rand;
    float speed;
    float dir_cos;
    float dir_sin;
    int32_t fade_mode;
    float mono_var;
    float swirl_dens;
    float swirl_amp;
    float swirl_max_time;
    int32_t preroll;
    float burst_prob;
    int32_t burst_on;
    int32_t congregate_on;
    float burst_extent;
    float burst_keep;
    int32_t afterlife;
    float lump_step;
    int32_t seed;
};

constexpr int32_t kPartLumpCount = 81;
