// Luma/colour-difference and alpha planes of an ImageQv, with the
// hyperbolic tone curve applied on the way out and undone on the way back.
#include <cmath>

#include "framework/image.h"
#include "framework/messages.h"

namespace {

constexpr double kChannelToUnit = 3.051851e-5;  // 1/32767

bool usable(const ImageQv *image, const void *plane, const char *operation) {
    if (!image) {
        PrintError("ImageQv::%s: no image given\n", operation);
        return false;
    }
    if (!plane && image->width > 0 && image->height > 0) {
        PrintError("ImageQv::%s: no plane given\n", operation);
        return false;
    }
    return true;
}

float unit_clamp(float value) { return value < 0.0f ? 0.0f : value > 1.0f ? 1.0f : value; }

double unit_clamp(double value) { return value < 0.0 ? 0.0 : value > 1.0 ? 1.0 : value; }

// truncate(value * 32767 + 0.5); the result stays on the channel scale
// whatever the plane holds (NaN gives 0).
uint16_t to_channel(double unit) {
    double scaled = unit * 32767 + 0.5;
    if (!(scaled > 0.0)) return 0;
    if (scaled >= 32767.0) return 32767;
    return uint16_t(scaled);
}

}  // namespace

float ImageQv::hyperb(float x, float strength) {
    if (strength - 1 < 0.001) return x;
    const float c = unit_clamp(x);
    const float a = 1 / strength;
    const float base = (1 / ((1 - c) * (strength - a) + a) - a) / (strength - a);
    if (strength > 50) {
        // Kept on purpose: the base above uses the unclamped strength while
        // the exponent (and invhyperb) stop at 100.
        const float capped = strength < 100 ? strength : 100;
        return powf(base, float(1 + (capped - 50) * 0.03));
    }
    return base;
}

float ImageQv::invhyperb(float y, float strength) {
    if (strength - 1 < 0.001) return y;
    float c = unit_clamp(y);
    float k = strength;
    if (strength > 50) {
        k = strength < 100 ? strength : 100;
        c = powf(c, float(1 / (1 + (k - 50) * 0.03)));
    }
    const float a = 1 / k;
    return 1 - (1 / (c * (k - a) + a) - a) / (k - a);
}

void ImageQv::to_colour_diff(ImageQv *image, float *y, float *c1, float *c2, float strength) {
    if (!usable(image, y, "to_colour_diff") || !usable(image, c1, "to_colour_diff") ||
        !usable(image, c2, "to_colour_diff"))
        return;
    size_t index = 0;
    for (int32_t row = 0; row < image->height; ++row) {
        const PixelQv *in = image->rows[row];
        for (int32_t x = 0; x < image->width; ++x, ++index) {
            const float r = float(in[x].red * kChannelToUnit);
            const float g = float(in[x].green * kChannelToUnit);
            const float b = float(in[x].blue * kChannelToUnit);
            y[index] = hyperb(float(0.299 * r + 0.587 * g + 0.114 * b), strength);
            c1[index] = float(0.5 * r - 0.418688 * g - 0.081312 * b + 0.5);
            // Kept on purpose: not the textbook blue-difference row; it reuses
            // the green weight of c1 and its weights do not add to zero.
            c2[index] = float(-0.213267 * r - 0.418688 * g + 0.617689 * b + 0.5);
        }
    }
}

void ImageQv::from_colour_diff(ImageQv *image, float *y, float *c1, float *c2, float strength) {
    if (!usable(image, y, "from_colour_diff") || !usable(image, c1, "from_colour_diff") ||
        !usable(image, c2, "from_colour_diff"))
        return;
    size_t index = 0;
    for (int32_t row = 0; row < image->height; ++row) {
        PixelQv *out = image->rows[row];
        for (int32_t x = 0; x < image->width; ++x, ++index) {
            const float luma = invhyperb(y[index], strength);
            const float v = c1[index] - 0.5f;
            const float u = c2[index] - 0.5f;
            out[x].red = to_channel(unit_clamp(luma + 1.402 * v));
            out[x].green = to_channel(unit_clamp(0.996036 * luma - 0.714136 * v - 0.277836 * u));
            out[x].blue = to_channel(unit_clamp(1.020408 * luma + 1.430612 * u));
        }
    }
}

void ImageQv::get_alpha(ImageQv *image, float *plane, float strength) {
    if (!usable(image, plane, "get_alpha")) return;
    size_t index = 0;
    for (int32_t row = 0; row < image->height; ++row) {
        const PixelQv *in = image->rows[row];
        for (int32_t x = 0; x < image->width; ++x, ++index)
            plane[index] = hyperb(in[x].alpha / 32767.0f, strength);
    }
}

void ImageQv::put_alpha(ImageQv *image, float *plane, float strength) {
    if (!usable(image, plane, "put_alpha")) return;
    size_t index = 0;
    for (int32_t row = 0; row < image->height; ++row) {
        PixelQv *out = image->rows[row];
        for (int32_t x = 0; x < image->width; ++x, ++index)
            out[x].alpha = to_channel(invhyperb(plane[index], strength));
    }
}

// Offered to effects with its full signature; it filters nothing.
void ImageQv::FourierFilter(float *, int, float, ImageQv *, bool, bool) {}
