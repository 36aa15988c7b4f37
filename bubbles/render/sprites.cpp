// Bubble sprites: one supersampled disc per size with coverage and surface
// normals, and its copy squeezed to the output's pixel aspect.
#include <cmath>
#include <cstdlib>
#include <vector>

#include "bubbles/render/sprite.h"

namespace {

tagPARTLUMP *allocate_lump(int32_t width, int32_t height) {
    auto *lump = static_cast<tagPARTLUMP *>(std::calloc(1, sizeof(tagPARTLUMP)));
    if (!lump) return nullptr;
    lump->width = width;
    lump->height = height;
    size_t count = size_t(width) * size_t(height);
    lump->intensity = static_cast<int32_t *>(std::calloc(count, sizeof(int32_t)));
    lump->normal_x = static_cast<float *>(std::calloc(count, sizeof(float)));
    lump->normal_y = static_cast<float *>(std::calloc(count, sizeof(float)));
    if (!lump->intensity || !lump->normal_x || !lump->normal_y) {
        part_lump_free(lump);
        return nullptr;
    }
    return lump;
}

bool outer_ring_is_empty(const tagPARTLUMP *lump) {
    const int32_t w = lump->width, h = lump->height;
    for (int32_t x = 0; x < w; ++x)
        if (lump->intensity[x] || lump->intensity[(h - 1) * w + x]) return false;
    for (int32_t y = 0; y < h; ++y)
        if (lump->intensity[y * w] || lump->intensity[y * w + w - 1]) return false;
    return true;
}

// The sprite without its outer ring of pixels.
tagPARTLUMP *interior_of(const tagPARTLUMP *lump) {
    const int32_t w = lump->width - 2, h = lump->height - 2;
    tagPARTLUMP *inner = allocate_lump(w, h);
    if (!inner) return nullptr;
    for (int32_t y = 0; y < h; ++y) {
        for (int32_t x = 0; x < w; ++x) {
            size_t from = size_t(y + 1) * lump->width + size_t(x + 1), to = size_t(y) * w + size_t(x);
            inner->intensity[to] = lump->intensity[from];
            inner->normal_x[to] = lump->normal_x[from];
            inner->normal_y[to] = lump->normal_y[from];
        }
    }
    return inner;
}

// The sprite, or its interior when its outer ring stayed empty.
tagPARTLUMP *trimmed(tagPARTLUMP *lump) {
    if (lump->width <= 2 || !outer_ring_is_empty(lump)) return lump;
    tagPARTLUMP *inner = interior_of(lump);
    part_lump_free(lump);
    return inner;
}

}  // namespace

void part_lump_free(tagPARTLUMP *lump) {
    if (!lump) return;
    std::free(lump->intensity);
    std::free(lump->normal_x);
    std::free(lump->normal_y);
    std::free(lump->depth);
    std::free(lump);
}

tagPARTLUMP *part_lump_create(float radius, float rim, float /*unused*/) {
    float r = radius;
    if (double(r) < 0.01) r = 0.01f;
    int32_t s = int32_t(16.0 / double(r));
    if (s < 4) s = 4;
    if (s > 16) s = 16;
    const int32_t half = int32_t(std::ceil(double(r)));
    const int32_t size = 2 * half + 1;
    tagPARTLUMP *lump = allocate_lump(size, size);
    if (!lump) return nullptr;

    const float Rs = s * r;
    const float Ri = float(double(Rs) - double(s * rim * r / 40) * 0.5);
    const float k = 1 / (Rs - Ri);
    const int32_t N = size * s;
    const double c = 0.5 * (N - 1);
    const int32_t samples_per_pixel = s * s;

    // Per sample row or column: its offset from the centre, its part of the
    // normal and the pixel it falls in.
    const size_t count = static_cast<size_t>(N);
    std::vector<float> offset(count), normal(count);
    std::vector<int32_t> pixel(count);
    for (int32_t j = 0; j < N; ++j) {
        offset[size_t(j)] = float(j - c);
        normal[size_t(j)] = offset[size_t(j)] / Rs;
        pixel[size_t(j)] = j / s;
    }
    // A sample's value depends on its distance from the centre alone, and the
    // distance on |dx| and |dy| alone: samples mirrored about the centre have
    // offsets of exactly opposite sign. So the value is worked out once for a
    // quarter of the samples, with the very same arithmetic, and looked up.
    const int32_t folded = (N + 1) / 2;
    const auto fold = [N](int32_t index) { return index < N - 1 - index ? index : N - 1 - index; };
    struct Sample {
        int32_t contribution;
        uint8_t counts;  // within the disc's outer radius
        uint8_t normal;  // strictly inside it, where the sample sets the normal
    };
    std::vector<Sample> quarter(size_t(folded) * size_t(folded));
    for (int32_t i = 0; i < folded; ++i) {
        const float dy = offset[size_t(i)];
        for (int32_t j = 0; j < folded; ++j) {
            const float dx = offset[size_t(j)];
            const float d = float(std::sqrt(double(dx * dx + dy * dy)));
            Sample &sample = quarter[size_t(i) * size_t(folded) + size_t(j)];
            if (d > Rs) continue;
            const float p = powf(d / Rs, 2.3f);
            const float e = 1 - std::fabs(d - Ri) * std::fabs(k) + p;
            float v = p + (e > 0.0f ? e : 0.0f);
            if (v > 1.0f) v = 1.0f;
            sample = {int32_t(v * 32767), 1, uint8_t(d < Rs)};
        }
    }
    // Summed in the samples' own order: the floor at samples_per_pixel after
    // every addition makes the sum depend on it.
    for (int32_t i = 0; i < N; ++i) {
        const Sample *samples = quarter.data() + size_t(fold(i)) * size_t(folded);
        const size_t row = size_t(i / s) * size;
        int32_t *intensity_row = lump->intensity + row;
        float *nx_row = lump->normal_x + row;
        float *ny_row = lump->normal_y + row;
        for (int32_t j = 0; j < N; ++j) {
            const Sample &sample = samples[fold(j)];
            if (!sample.counts) continue;
            const int32_t column = pixel[size_t(j)];
            int32_t &accumulator = intensity_row[column];
            accumulator += sample.contribution;
            if (accumulator < samples_per_pixel) accumulator = samples_per_pixel;
            if (sample.normal) {
                nx_row[column] = normal[size_t(j)];
                ny_row[column] = normal[size_t(i)];
            }
        }
    }
    for (int32_t i = 0; i < size * size; ++i) lump->intensity[i] /= samples_per_pixel;

    return trimmed(lump);
}

tagPARTLUMP *part_aspect_correct(const tagPARTLUMP *lump, float factor) {
    if (!lump) return nullptr;
    int32_t new_width = int32_t(0.5 + double(float(lump->width * factor)));
    if (new_width < 1) new_width = 1;
    int32_t new_height = lump->height < 1 ? 1 : lump->height;
    tagPARTLUMP *corrected = allocate_lump(new_width, new_height);
    if (!corrected) return nullptr;
    // The coverage words are 32-bit, filtered as four byte planes.
    if (p_resizeimage(reinterpret_cast<const uint32_t *>(lump->intensity), lump->width, lump->height,
                      reinterpret_cast<uint32_t *>(corrected->intensity), new_width, new_height, 1)) {
        part_lump_free(corrected);
        return nullptr;
    }
    p_resample(lump->normal_x, lump->width, lump->height, corrected->normal_x, new_width, new_height);
    p_resample(lump->normal_y, lump->width, lump->height, corrected->normal_y, new_width, new_height);
    // Every bubble drawn with this sprite takes the same square roots.
    const size_t count = size_t(new_width) * size_t(new_height);
    corrected->depth = static_cast<double *>(std::malloc(count * sizeof(double)));
    if (!corrected->depth) {
        part_lump_free(corrected);
        return nullptr;
    }
    for (size_t i = 0; i < count; ++i) {
        const float nx = corrected->normal_x[i], ny = corrected->normal_y[i];
        float nz2 = 1 - nx * nx - ny * ny;
        if (nz2 < 0.0f) nz2 = 0.0f;
        corrected->depth[i] = std::sqrt(double(nz2));
    }
    return corrected;
}
