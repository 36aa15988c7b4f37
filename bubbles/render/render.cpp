// The bubble renderer's work on one bubble: its burst decision, fade, light
// cone and glint, then its sprite shaded and blended over the output.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "bubbles/render/bubble_renderer.h"
#include "bubbles/render/shading_terms.h"

namespace {

int32_t clamp15(int64_t value) {
    if (value < 0) return 0;
    if (value > 32767) return 32767;
    return int32_t(value);
}

// FIZZLE_PLAIN_SHADING=1 shades every pixel alone with std::pow, as the
// renderer first did: the benchmarks' reference. The bytes are the same.
bool plain_shading() {
    static const bool plain = [] {
        const char *value = std::getenv("FIZZLE_PLAIN_SHADING");
        return value && std::strcmp(value, "1") == 0;
    }();
    return plain;
}

void normalise(float &x, float &y) {
    const float length = float(std::sqrt(double(x * x + y * y)));
    if (double(length) < 0.0001) return;
    x /= length;
    y /= length;
}

void normalise(float &x, float &y, float &z) {
    const float length = float(std::sqrt(double(x * x + y * y + z * z)));
    if (double(length) < 0.0001) return;
    x /= length;
    y /= length;
    z /= length;
}

}  // namespace

// The burst decision: inside the burst matte or on its last frame a bubble
// bursts with the set's probability, into an afterlife of up to afterlife.
int32_t BubbleRenderer::part_burst(const tagPARTSET *set, const tagPART *p, int32_t px, int32_t py,
                                   int32_t &counter, int32_t &burst_age) const {
    const ImageQv *burst_matte = engine_.burst_matte;
    if (set->burst_on && px >= 0 && py >= 0 && px < engine_.width && py < engine_.height) {
        const bool in_matte = burst_matte && px < burst_matte->width && py < burst_matte->height &&
                              burst_matte->rows[py][px].red >= 16384;
        if (in_matte || p->age == p->life - 1) {
            const float r = engine_.get_safe_random(counter);
            if (set->burst_prob > r) {
                const float r2 = engine_.get_safe_random(counter);
                burst_age = p->life - int32_t(1 + set->afterlife * r2);
                return 1;
            }
        }
    }
    return 0;
}

// The bubble's colour and its density faded with age, 0..32767.
void BubbleRenderer::part_fade(const tagPARTSET *set, const tagPART *p, BubbleShade &shade) const {
    int32_t red = int32_t(p->colour[0]);
    int32_t green = int32_t(p->colour[1]);
    int32_t blue = int32_t(p->colour[2]);
    const int64_t lum = (5 * int64_t(red) + 8 * int64_t(green) + 3 * int64_t(blue)) >> 4;
    int64_t density;
    switch (set->fade_mode) {
    case kFadeColourAndDensity:
        // Fades over max_age, not over the bubble's own life: kept on purpose.
        density = p->max_age ? int64_t(p->max_age - p->age) * lum / p->max_age : 0;
        break;
    case kFadeColour:
        density = lum;
        break;
    default:
        density = int64_t(float(p->max_age - p->age) * p->colour[3] / float(p->max_age));
        break;
    }
    shade.red = clamp15(red);
    shade.green = clamp15(green);
    shade.blue = clamp15(blue);
    shade.density = clamp15(density);
}

// The light cone: the light's strength at the bubble, its glint, and the
// colour and density lit by it; the glint stays -1 while the light is off.
void BubbleRenderer::part_light(const tagPARTSET *set, const tagPART *p, BubbleShade &shade) const {
    const BubbleParameters &c = engine_.parameters;
    const int32_t W = engine_.width, H = engine_.height;
    if (!(c.light_on && c.light_intensity > 0)) return;
    float light = 0.0f;
    int32_t glint = -1;
    const float sx = float(c.light_source_x * W), sy = float(c.light_source_y * H);
    const float tx = float(c.light_target_x * W), ty = float(c.light_target_y * H);
    float ax = tx - sx, ay = ty - sy;
    normalise(ax, ay);
    float bx = p->x - sx, by = p->y - sy;
    normalise(bx, by);
    float cosine = ax * bx + ay * by;
    if (cosine <= 0.0f) {
        glint = 0;
    } else {
        if (double(cosine) > 0.99999) cosine = 0.99999f;
        light = float(c.light_intensity / 100 * double(step_.cone.factor(cosine)));
        glint = int32_t(std::pow(double(cosine), c.glisten_tight) * double(light) * 32767);
    }
    shade.red = clamp15(int64_t(float((shade.red * set->light_colour[0]) >> 15) * light));
    shade.green = clamp15(int64_t(float((shade.green * set->light_colour[1]) >> 15) * light));
    shade.blue = clamp15(int64_t(float((shade.blue * set->light_colour[2]) >> 15) * light));
    shade.density = clamp15(int64_t(float(shade.density) * light));
    shade.light = light;
    shade.glint = glint;
}

// Unit vector from the bubble's pixel towards the light source.
void BubbleRenderer::part_light_direction(int32_t px, int32_t py, BubbleShade &shade) const {
    const BubbleParameters &c = engine_.parameters;
    float lx = float(c.light_source_x * engine_.width - px);
    float ly = float(c.light_source_y * engine_.height - py);
    float lz = float(c.light_z * engine_.width);
    normalise(lx, ly, lz);
    shade.lx = lx;
    shade.ly = ly;
    shade.lz = lz;
}

// The lighting terms of the controls and the frame every pixel reads.
void BubbleRenderer::part_shade_terms(BubbleShade &shade) const {
    const BubbleParameters &c = engine_.parameters;
    const ImageQv *reflection_image = engine_.reflection_image;
    shade.min_bright = c.min_bright;
    shade.shine = step_.shine;
    shade.highlight = step_.highlight;
    if (c.reflections_on && reflection_image && reflection_image->width > 0 && reflection_image->height > 0)
        shade.reflection = reflection_image;
    shade.ref_intensity = c.ref_intensity;
    shade.frame_width = engine_.width;
    shade.frame_height = engine_.height;
}

int32_t BubbleRenderer::part_render(const tagPARTSET *set, const tagPART *p, long first, long last,
                                    int32_t &counter, int32_t &burst_age) {
    const int32_t px = int32_t(0.5 + double(p->x));
    const int32_t py = int32_t(0.5 + double(p->y));
    const int32_t bursts_now = part_burst(set, p, px, py, counter, burst_age);
    const int32_t bursting = bursts_now ? 1 : p->bursting;

    // Every band walks every bubble for the decisions and draws above; a
    // whole sprite outside this band's rows draws nothing here, and the
    // shading below needs no draws, so it is skipped.
    const bool whole_sprite = !bursting && p->gather_state != 2;
    if (whole_sprite && set->lumps_corrected && p->size >= 0 && p->size < set->lump_count) {
        const tagPARTLUMP *lump = set->lumps_corrected[p->size];
        const int32_t top = lump ? py - lump->height / 2 : 0;
        if (lump && (top > last || top + lump->height - 1 < first)) return bursts_now;
    }

    BubbleShade shade;
    part_fade(set, p, shade);
    part_light(set, p, shade);
    part_light_direction(px, py, shade);

    // A bubble with no density, no glint and nothing reflected leaves every
    // pixel as it was and draws no fragments: skip its sprite.
    if (shade.density == 0 && shade.glint <= 0 && (shade.light == 0.0f || !engine_.parameters.reflections_on))
        return bursts_now;
    if (!set->lumps_corrected || p->size < 0 || p->size >= set->lump_count) return bursts_now;
    const tagPARTLUMP *lump = set->lumps_corrected[p->size];
    if (!lump || !engine_.output_image) return bursts_now;

    part_shade_terms(shade);
    const SpritePlacement at{engine_.output_image, lump, px, py, first, last};
    if (!bursting && p->gather_state != 2)
        part_anti_aliased_lump(at, shade);
    else
        part_exploding_lump(at, shade, set->burst_extent, set->burst_keep, counter);
    return bursts_now;
}

void BubbleRenderer::shade_pixel(PixelQv &target, int32_t I, float nx, float ny, const BubbleShade &shade) {
    const BubbleShade &c = shade;
    int64_t k, h;
    if (c.glint < 0) {
        k = int64_t(c.density) * I;
        h = 0;
    } else {
        float nz2 = 1 - nx * nx - ny * ny;
        if (nz2 < 0.0f) nz2 = 0.0f;
        float d = float(double(c.lx * nx + c.ly * ny) + double(c.lz) * std::sqrt(double(nz2)));
        if (d < 0.0f) d = 0.0f;
        if (d > 1.0f) d = 1.0f;
        if (plain_shading()) {
            k = ((int64_t(c.density) * c.glint) >> 15) *
                int64_t(I * (c.min_bright / 100 + std::pow(double(d), c.shine.exponent())));
            h = int64_t(c.glint * std::pow(double(d), c.highlight.exponent()));
        } else {
            // The two powers without std::pow for almost every pixel, the same
            // integers (the argument is in unit_power.h); 0 + p is p exactly.
            k = ((int64_t(c.density) * c.glint) >> 15) * truncated_power_term(I, c.min_bright / 100, d, c.shine);
            h = truncated_power_term(c.glint, 0.0, d, c.highlight);
        }
    }
    blend_pixel(target, I, nx, ny, shade, k, h);
}

void BubbleRenderer::blend_pixel(PixelQv &target, int32_t I, float nx, float ny, const BubbleShade &shade, int64_t k,
                          int64_t h) {
    const BubbleShade &c = shade;
    int64_t ref_red = 0, ref_green = 0, ref_blue = 0, ref_lum = 0;
    if (const ImageQv *reflection = shade.reflection) {
        const float half_w = float(shade.frame_width) / 2, half_h = float(shade.frame_height) / 2;
        int32_t column = int32_t(nx * half_w + half_w);
        int32_t row = int32_t(ny * half_h + half_h);
        if (column > reflection->width - 1) column = reflection->width - 1;
        if (column < 0) column = 0;
        if (row > reflection->height - 1) row = reflection->height - 1;
        if (row < 0) row = 0;
        const PixelQv &seen = reflection->rows[row][column];
        ref_red = clamp15((int64_t(seen.red * c.ref_intensity / 100 * double(c.light)) * I) >> 15);
        ref_green = clamp15((int64_t(seen.green * c.ref_intensity / 100 * double(c.light)) * I) >> 15);
        ref_blue = clamp15((int64_t(seen.blue * c.ref_intensity / 100 * double(c.light)) * I) >> 15);
        ref_lum = (5 * ref_red + 8 * ref_green + 3 * ref_blue) >> 4;
    }
    int64_t w = k >> 15;
    if (w > 32768) w = 32768;
    const int64_t v = 32768 - w;
    target.red = uint16_t(clamp15(ref_red + ((c.red * w + target.red * v) >> 15) + h));
    target.green = uint16_t(clamp15(ref_green + ((c.green * w + target.green * v) >> 15) + h));
    target.blue = uint16_t(clamp15(ref_blue + ((c.blue * w + target.blue * v) >> 15) + h));
    target.alpha = uint16_t(clamp15(ref_lum + target.alpha + w + h));
}

// Placement is decided against the whole image, never the band, so a bubble
// is drawn the same however the rows are split; the band only clips writes.
void BubbleRenderer::part_anti_aliased_lump(const SpritePlacement &at, const BubbleShade &shade) const {
    const tagPARTLUMP *lump = at.lump;
    ImageQv *image = at.image;
    const int32_t W = shade.frame_width, px = at.px, py = at.py;
    const int32_t w = lump->width, h = lump->height;
    const int32_t rows = image->height;
    if (px + w / 2 < 0 || px - w / 2 >= W || py + h / 2 < 0 || py - h / 2 >= rows - 1) return;
    const int32_t left = px - w / 2, top = py - h / 2;
    const int32_t columns = W < image->width ? W : image->width;
    long row_begin = top > at.first ? top : at.first;
    long row_end = top + h - 1 < at.last ? top + h - 1 : at.last;
    if (row_begin < 0) row_begin = 0;
    if (row_end > rows - 1) row_end = rows - 1;
    if (shade.glint >= 0 && shading_terms_cover(shade) && !plain_shading()) {
        // The lit and highlight terms a run of pixels at a time, then each
        // pixel blended as shade_pixel would.
        const int64_t strength = (int64_t(shade.density) * shade.glint) >> 15;
        const int32_t first_column = left < 0 ? -left : 0;
        const int32_t end_column = columns - left < w ? columns - left : w;
        int32_t lit[kShadeRun], high[kShadeRun];
        const auto run_at = [lump](size_t at) {
            return SpriteRun{lump->intensity + at, lump->normal_x + at, lump->normal_y + at,
                             lump->depth ? lump->depth + at : nullptr};
        };
        const auto blend_run = [&](long y, int32_t from, int32_t n, const int32_t *lit_run, const int32_t *high_run) {
            const size_t at = size_t(y - top) * size_t(w) + size_t(from);
            PixelQv *out = image->rows[y] + left + from;
            for (int32_t i = 0; i < n; ++i) {
                const int32_t I = lump->intensity[at + i];
                if (I == 0) continue;
                blend_pixel(out[i], I, lump->normal_x[at + i], lump->normal_y[at + i], shade, strength * lit_run[i],
                            high_run[i]);
            }
        };
        const long rows_drawn = row_end - row_begin + 1;
        if (first_column == 0 && end_column == w && rows_drawn * w <= kShadeRun) {
            // Small sprites, the common case, in one run over their rows.
            const size_t at = size_t(row_begin - top) * size_t(w);
            const int n = int(rows_drawn * w);
            if (!shade.reflection) {
                shade_rows(shade, run_at(at), w, int(rows_drawn), image->rows + row_begin, left);
                return;
            }
            shading_terms(shade, run_at(at), n, lit, high);
            for (long y = row_begin; y <= row_end; ++y)
                blend_run(y, 0, w, lit + (y - row_begin) * w, high + (y - row_begin) * w);
        } else {
            for (long y = row_begin; y <= row_end; ++y)
                for (int32_t from = first_column; from < end_column; from += kShadeRun) {
                    const int32_t n = end_column - from < kShadeRun ? end_column - from : kShadeRun;
                    const size_t at = size_t(y - top) * size_t(w) + size_t(from);
                    shading_terms(shade, run_at(at), n, lit, high);
                    blend_run(y, from, n, lit, high);
                }
        }
        return;
    }
    for (long y = row_begin; y <= row_end; ++y) {
        const size_t sprite_row = size_t(y - top) * size_t(w);
        PixelQv *out = image->rows[y];
        for (int32_t sc = 0; sc < w; ++sc) {
            const int32_t x = left + sc;
            if (x < 0 || x >= columns) continue;
            const int32_t I = lump->intensity[sprite_row + sc];
            if (I == 0) continue;
            shade_pixel(out[x], I, lump->normal_x[sprite_row + sc], lump->normal_y[sprite_row + sc], shade);
        }
    }
}

void BubbleRenderer::part_exploding_lump(const SpritePlacement &at, const BubbleShade &shade, float extent, float keep,
                                  int32_t &counter) const {
    const tagPARTLUMP *lump = at.lump;
    ImageQv *image = at.image;
    const int32_t W = shade.frame_width, px = at.px, py = at.py;
    const int32_t w = lump->width, h = lump->height;
    const int32_t rows = image->height;
    if (px + w / 2 < 0 || px - w / 2 >= W || py + h / 2 < 0 || py - h / 2 > rows - 1) return;
    const int32_t left = px - w / 2, top = py - h / 2;
    const int32_t columns = W < image->width ? W : image->width;
    for (int32_t sr = 0; sr < h; ++sr) {
        for (int32_t sc = 0; sc < w; ++sc) {
            const size_t at_sprite = size_t(sr) * size_t(w) + size_t(sc);
            const int32_t I = lump->intensity[at_sprite];
            if (((int64_t(shade.density) * I) >> 15) <= 10) continue;
            // Drawn before the band test: every band walks the same draws.
            const float r = engine_.get_safe_random(counter);
            if (2 * (double(r) - 0.5) <= double(keep)) continue;
            const float f = engine_.get_safe_random(counter) + 1;
            const int32_t tx = int32_t(float(left + sc - px) * f * extent + float(px));
            const int32_t ty = int32_t(f * float(top + sr - py) * extent + float(py));
            if (tx < 0 || tx >= columns || ty < at.first || ty > at.last || ty < 0 || ty >= rows) continue;
            shade_pixel(image->rows[ty][tx], I, lump->normal_x[at_sprite], lump->normal_y[at_sprite], shade);
        }
    }
}
