// A pre-rendered bubble sprite: coverage and surface normal per pixel.
#pragma once

#include <cstdint>

struct tagPARTLUMP {
    int32_t width;
    int32_t height;
    int32_t *intensity;  // width x height, 0..32767, at least 1 where the disc touches
    float *normal_x;     // dx / R, 0 outside the disc
    float *normal_y;     // dy / R, 0 outside the disc
    // sqrt(double(max(0, 1 - nx*nx - ny*ny))) per pixel, the shader's
    // depth of the normal, made with the squeezed copies; null elsewhere.
    double *depth;
};

// Frees a sprite and its buffers; null is ignored.
void part_lump_free(tagPARTLUMP *lump);
