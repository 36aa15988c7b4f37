// ImageQv sampling: bilinear point samples in 15-bit fixed point.
#include <cmath>

#include "framework/image.h"

void ImageQv::PointSampleB(float x, float y, PixelQv &out) const {
    // Far outside (or not a number) every neighbour is outside anyway; this
    // also keeps the integer conversions below in range.
    if (!(x > -2.0f && x < float(width) + 1.0f && y > -2.0f && y < float(height) + 1.0f)) {
        out = PixelQv{0, 0, 0, 0};
        return;
    }
    const int32_t x0 = int32_t(std::floor(x));
    const int32_t y0 = int32_t(std::floor(y));
    const int32_t fx = int32_t((x - float(x0)) * 32768.0f);
    const int32_t fy = int32_t((y - float(y0)) * 32768.0f);
    const int32_t gx = 32768 - fx;
    const int32_t gy = 32768 - fy;
    const int32_t w00 = (gx * gy) >> 15;
    const int32_t w10 = (fx * gy) >> 15;
    const int32_t w01 = (gx * fy) >> 15;
    // The fourth weight takes the rounding loss so the four add up to exactly 32768.
    const int32_t w11 = 32768 - (w00 + w10 + w01);

    uint32_t sum[4] = {0, 0, 0, 0};
    auto add = [&](int32_t column, int32_t row, int32_t weight) {
        // No clamping to the edge: outside neighbours are transparent black.
        if (column < 0 || column >= width || row < 0 || row >= height) return;
        const PixelQv &p = rows[row][column];
        sum[0] += uint32_t(weight) * p.red;
        sum[1] += uint32_t(weight) * p.green;
        sum[2] += uint32_t(weight) * p.blue;
        sum[3] += uint32_t(weight) * p.alpha;
    };
    add(x0, y0, w00);
    add(x0 + 1, y0, w10);
    add(x0, y0 + 1, w01);
    add(x0 + 1, y0 + 1, w11);
    out.red = uint16_t(sum[0] >> 15);
    out.green = uint16_t(sum[1] >> 15);
    out.blue = uint16_t(sum[2] >> 15);
    out.alpha = uint16_t(sum[3] >> 15);
}

void ImageQv::PointSampleD(float x, float y, PixelQv &out) const { PointSampleB(x, y, out); }

void ImageQv::PointSampleW(float x, float y, PixelQv &out) const { PointSampleB(x, y, out); }

// Area samples read the rectangle's centre; nothing is averaged over the area.
void ImageQv::AreaSampleB(float x0, float y0, float x1, float y1, PixelQv &out) const {
    PointSampleB(float((x0 + x1) * 0.5), float((y0 + y1) * 0.5), out);
}

void ImageQv::AreaSampleD(float x0, float y0, float x1, float y1, PixelQv &out) const {
    AreaSampleB(x0, y0, x1, y1, out);
}

void ImageQv::AreaSampleW(float x0, float y0, float x1, float y1, PixelQv &out) const {
    AreaSampleB(x0, y0, x1, y1, out);
}
