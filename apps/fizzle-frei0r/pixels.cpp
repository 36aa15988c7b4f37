// Picture conversions, row by row with the rows turned over.
#include "pixels.h"

void rgba_to_frame(const uint32_t *rgba, sparkhost::Frame &frame) {
    const int width = frame.width(), height = frame.height();
    const auto *source = reinterpret_cast<const uint8_t *>(rgba);
    for (int y = 0; y < height; ++y) {
        const uint8_t *in = source + size_t(height - 1 - y) * size_t(width) * 4;
        uint8_t *out = frame.row(y);
        for (int x = 0; x < width; ++x, in += 4, out += 3) {
            out[0] = in[0];
            out[1] = in[1];
            out[2] = in[2];
        }
    }
}

void frame_to_rgba(const sparkhost::Frame &frame, const uint32_t *alpha_from, uint32_t *rgba) {
    const int width = frame.width(), height = frame.height();
    const auto *alpha = reinterpret_cast<const uint8_t *>(alpha_from);
    auto *target = reinterpret_cast<uint8_t *>(rgba);
    for (int y = 0; y < height; ++y) {
        const size_t offset = size_t(height - 1 - y) * size_t(width) * 4;
        const uint8_t *in = frame.row(y);
        uint8_t *out = target + offset;
        const uint8_t *a = alpha + offset;
        for (int x = 0; x < width; ++x, in += 3, out += 4, a += 4) {
            out[0] = in[0];
            out[1] = in[1];
            out[2] = in[2];
            out[3] = a[3];
        }
    }
}
