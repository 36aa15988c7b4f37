// Resamplers of the sprite aspect correction: an area-averaging byte
// resampler, a plane-by-plane resize of 32-bit words, and a bilinear float
// resize.
#include <cstdlib>
#include <cstring>

#include "bubbles/render/sprite.h"

namespace {

void resample_area(const uint8_t *src, uint8_t *dst, int32_t n, int32_t m, int32_t src_stride,
                   int32_t dst_stride, float q) {
    // The cell bounds are products of one float cell width, not k / q: the
    // two round differently and the reference frames use the products.
    const float cell = 1.0f / q;
    for (int32_t k = 0; k < m; ++k) {
        const float start = float(k) * cell;
        const float end = float(k + 1) * cell;
        if (start >= float(n)) {
            dst[size_t(k) * dst_stride] = k > 0 ? dst[size_t(k - 1) * dst_stride] : 0;
            continue;
        }
        float sum = 0.0f;
        for (int32_t i = int32_t(start); float(i) < end; ++i) {
            const float low = start > float(i) ? start : float(i);
            const float high = end < float(i + 1) ? end : float(i + 1);
            const float value = i < n ? float(src[size_t(i) * src_stride]) : 0.0f;
            sum += value * (high - low);
        }
        int32_t out = int32_t(sum * q);
        if (out > 255) out = 255;
        if (out < 0) out = 0;
        dst[size_t(k) * dst_stride] = uint8_t(out);
    }
}

void resample_nearest(const uint8_t *src, uint8_t *dst, int32_t n, int32_t m, int32_t src_stride,
                      int32_t dst_stride, float q) {
    for (int32_t k = 0; k + 1 < m; ++k) {
        int32_t i = int32_t(float(k) / q);
        if (i > n - 1) i = n - 1;
        dst[size_t(k) * dst_stride] = src[size_t(i) * src_stride];
    }
}

// Where output index i of count samples falls in a source of length n.
float source_coordinate(int32_t i, int32_t n, int32_t count) {
    float coordinate = count > 1 ? float(i) * float(n - 3) / float(count - 1) + 1 : 1.0f;
    if (coordinate > float(n - 1)) coordinate = float(n - 1);
    if (coordinate < 0.0f) coordinate = 0.0f;
    return coordinate;
}

}  // namespace

void p_resample(const uint8_t *src, uint8_t *dst, int32_t n, int32_t m, int32_t src_stride, int32_t dst_stride,
                int32_t mode) {
    if (n < 1 || m < 1) return;
    const float q = n == m ? 1.0f : float(m) / float(n);
    if (mode != 0)
        resample_area(src, dst, n, m, src_stride, dst_stride, q);
    else
        resample_nearest(src, dst, n, m, src_stride, dst_stride, q);
}

int p_resizeimage(const uint32_t *src, int32_t src_width, int32_t src_height, uint32_t *dst, int32_t dst_width,
                  int32_t dst_height, int32_t mode) {
    if (src_width < 1 || src_height < 1 || dst_width < 1 || dst_height < 1) return 0;
    if (src_width == dst_width && src_height == dst_height) {
        std::memcpy(dst, src, size_t(src_width) * size_t(src_height) * sizeof(uint32_t));
        return 0;
    }
    auto *between = static_cast<uint32_t *>(std::calloc(size_t(dst_width) * size_t(src_height), sizeof(uint32_t)));
    if (!between) return 1;
    const auto *src_bytes = reinterpret_cast<const uint8_t *>(src);
    auto *between_bytes = reinterpret_cast<uint8_t *>(between);
    auto *dst_bytes = reinterpret_cast<uint8_t *>(dst);
    for (int32_t plane = 0; plane < 4; ++plane) {
        for (int32_t y = 0; y < src_height; ++y)
            p_resample(src_bytes + size_t(y) * src_width * 4 + plane,
                       between_bytes + size_t(y) * dst_width * 4 + plane, src_width, dst_width, 4, 4, mode);
        for (int32_t x = 0; x < dst_width; ++x)
            p_resample(between_bytes + size_t(x) * 4 + plane, dst_bytes + size_t(x) * 4 + plane, src_height,
                       dst_height, dst_width * 4, dst_width * 4, mode);
    }
    std::free(between);
    return 0;
}

void p_resample(const float *src, int32_t w, int32_t h, float *dst, int32_t w2, int32_t h2) {
    if (w < 1 || h < 1 || w2 < 1 || h2 < 1) return;
    for (int32_t i = 0; i < h2; ++i) {
        const float sy = source_coordinate(i, h, h2);
        const int32_t y0 = int32_t(sy);
        const int32_t y1 = y0 + 1 < h ? y0 + 1 : y0;
        const float fy = sy - float(y0);
        const float *row0 = src + size_t(y0) * w;
        const float *row1 = src + size_t(y1) * w;
        for (int32_t j = 0; j < w2; ++j) {
            const float sx = source_coordinate(j, w, w2);
            const int32_t x0 = int32_t(sx);
            const int32_t x1 = x0 + 1 < w ? x0 + 1 : x0;
            const float fx = sx - float(x0);
            // Evaluated left to right on purpose: precomputed weights round differently.
            dst[size_t(i) * w2 + j] = row0[x0] * (1 - fx) * (1 - fy) + row0[x1] * fx * (1 - fy) +
                                      row1[x0] * (1 - fx) * fy + row1[x1] * fx * fy;
        }
    }
}
