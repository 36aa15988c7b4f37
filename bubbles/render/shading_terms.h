// The lit and highlight terms of a run of sprite pixels, several pixels at a
// time: for each pixel the integers the per-pixel shader would compute,
//   lit  = int64_t(I * (min_bright / 100 + pow(d, shine)))
//   high = int64_t(glint * pow(d, highlight)),
// d being the pixel's lighting term. Each lane does the scalar shader's
// operations in its order; the powers are bracketed as UnitPower does
// (unit_power.h) and std::pow settles the rare lanes the bracket leaves open.
#pragma once

#include <cstdint>

#include "bubbles/render/bubble_shade.h"
#include "framework/pixel.h"

// Processor features the terms are computed with; the widest one the
// processor runs is used.
enum class ShadeVectors { Baseline, Avx2, Avx512 };

bool shade_vectors_run_here(ShadeVectors vectors);

// Pixels per call at most, and the padding a pixel buffer of shade_run
// needs past its last pixel (the widest block).
constexpr int kShadeRun = 1024;
constexpr int kShadeBlock = 8;

// Whether shading_terms() covers this bubble: the light on, the exponents
// in UnitPower's range and the terms small enough for 32-bit lanes.
bool shading_terms_cover(const BubbleShade &shade);

// A run of sprite pixels: coverage, normal and, when the sprite has them,
// the normals' depths (null: worked out).
struct SpriteRun {
    const int32_t *intensity;
    const float *normal_x;
    const float *normal_y;
    const double *depth;
};

// lit[i], high[i] for the first n <= kShadeRun pixels of the run; pixels of
// intensity 0 get unspecified terms.
void shading_terms(const BubbleShade &shade, const SpriteRun &run, int n, int32_t *lit, int32_t *high);
// The same with the given vectors, for the tests.
void shading_terms_with(ShadeVectors vectors, const BubbleShade &shade, const SpriteRun &run, int n, int32_t *lit,
                        int32_t *high);

// Shades and blends the first n <= kShadeRun pixels of the run over
// pixels[i], exactly as shade_pixel, for a bubble that shading_terms_cover()
// accepts and without a reflection. pixels has room for kShadeBlock - 1
// more, which it may rewrite unchanged.
void shade_run(const BubbleShade &shade, const SpriteRun &run, int n, PixelQv *pixels);
// shade_run over `rows` whole sprite rows of `width` pixels, rows * width <=
// kShadeRun, drawn at column `left` of the image rows image_rows[0..rows):
// the rows are copied together with vector moves, shaded and copied back.
void shade_rows(const BubbleShade &shade, const SpriteRun &run, int width, int rows, PixelQv *const *image_rows,
                int left);
void shade_rows_with(ShadeVectors vectors, const BubbleShade &shade, const SpriteRun &run, int width, int rows,
                     PixelQv *const *image_rows, int left);
void shade_run_with(ShadeVectors vectors, const BubbleShade &shade, const SpriteRun &run, int n, PixelQv *pixels);
