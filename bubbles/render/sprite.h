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

// A disc sprite of the given radius, supersampled; rim thickens its edge.
tagPARTLUMP *part_lump_create(float radius, float rim, float unused);
// A copy of lump squeezed across by factor, with its shading depths.
tagPARTLUMP *part_aspect_correct(const tagPARTLUMP *lump, float factor);
// Frees a sprite and its buffers; null is ignored.
void part_lump_free(tagPARTLUMP *lump);

// Area (mode != 0) or nearest resampling of n values at src_stride into m
// at dst_stride, byte-wise; and of whole images of 32-bit words as four
// byte planes (0 on success) or of floats bilinearly.
void p_resample(const uint8_t *src, uint8_t *dst, int32_t n, int32_t m, int32_t src_stride, int32_t dst_stride,
                int32_t mode);
int p_resizeimage(const uint32_t *src, int32_t src_width, int32_t src_height, uint32_t *dst, int32_t dst_width,
                  int32_t dst_height, int32_t mode);
void p_resample(const float *src, int32_t w, int32_t h, float *dst, int32_t w2, int32_t h2);
