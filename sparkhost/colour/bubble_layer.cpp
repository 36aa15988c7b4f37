// The bubbles layer: recovered from two renders, converted, composited.
#include "sparkhost/colour/bubble_layer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "sparkhost/core/error.h"

namespace sparkhost {

namespace {

bool empty_pixel(const float *pixel) {
    return pixel[0] == 0.0f && pixel[1] == 0.0f && pixel[2] == 0.0f && pixel[3] == 0.0f;
}

}  // namespace

int layer_grey_level(Depth depth) { return depth == Depth::Bits12 ? 1024 : 64; }

Frame constant_frame(const FrameFormat &format, int level) {
    Frame frame(format);
    if (level == 0) return frame;
    if (format.depth == Depth::Bits8) {
        std::fill(frame.bytes().begin(), frame.bytes().end(), uint8_t(level));
        return frame;
    }
    for (int y = 0; y < format.height; ++y)
        for (int x = 0; x < format.width; ++x)
            for (int c = 0; c < 3; ++c) frame.set_value(x, y, c, level);
    return frame;
}

namespace {

// Channel c of pixel x of a host row: a byte, or a word's top 12 bits.
inline int level_at(const uint8_t *row, int x, int c, bool twelve) {
    if (!twelve) return row[3 * x + c];
    uint16_t word;
    std::memcpy(&word, row + 6 * x + 2 * c, 2);
    return word >> 4;
}

}  // namespace

PlateImage layer_from_renders(const Frame &over_black, const Frame &over_grey) {
    PlateImage layer;
    layer_from_renders(over_black, over_grey, layer);
    return layer;
}

namespace {

// One layer pixel from the pixel over black and over grey.
void layer_pixel(const int black[3], const int over[3], int top, int grey, float scale, float *out) {
    // The grey that came through, in levels: summed over the channels that
    // did not clamp, else the most any channel shows.
    int passed = 0, channels = 0, most = 0;
    for (int c = 0; c < 3; ++c) {
        most = std::max(most, over[c] - black[c]);
        if (over[c] < top) {
            passed += over[c] - black[c];
            ++channels;
        }
        out[c] = float(black[c]) * scale;
    }
    const float through = channels ? float(passed) / float(channels * grey) : float(most) / float(grey);
    out[3] = 1.0f - std::clamp(through, 0.0f, 1.0f);
}

// Pixels at a time are first compared as bytes with black and with the grey:
// most of a frame has no bubble, and that is found at memory speed.
constexpr int kBlock = 32;

}  // namespace

void layer_from_renders(const Frame &over_black, const Frame &over_grey, PlateImage &layer) {
    const FrameFormat &format = over_black.format();
    if (over_grey.format() != format) throw Error("layer renders differ in format");
    if (layer.width != format.width || layer.height != format.height || layer.channels != 4)
        layer = PlateImage(format.width, format.height, 4);
    const bool twelve = format.depth == Depth::Bits12;
    const int top = format.max_value();
    const int grey = layer_grey_level(format.depth);
    const float scale = 1.0f / float(top);
    const std::size_t pixel_bytes = std::size_t(format.bytes_per_pixel());
    const Frame grey_block = constant_frame(FrameFormat{kBlock, 1, format.depth}, grey);
    const std::vector<uint8_t> black_block(pixel_bytes * kBlock, 0);
    for (int file_row = 0; file_row < format.height; ++file_row) {
        const int y = format.height - 1 - file_row;
        const uint8_t *black_row = over_black.row(y);
        const uint8_t *grey_row = over_grey.row(y);
        float *out = layer.row(file_row);
        for (int x = 0; x < format.width;) {
            const int block = std::min(kBlock, format.width - x);
            const std::size_t bytes = pixel_bytes * std::size_t(block);
            if (std::memcmp(black_row + pixel_bytes * std::size_t(x), black_block.data(), bytes) == 0 &&
                std::memcmp(grey_row + pixel_bytes * std::size_t(x), grey_block.data(), bytes) == 0) {
                std::fill(out + 4 * std::size_t(x), out + 4 * std::size_t(x + block), 0.0f);
                x += block;
                continue;
            }
            for (const int end = x + block; x < end; ++x) {
                int black[3], over[3];
                for (int c = 0; c < 3; ++c) {
                    black[c] = level_at(black_row, x, c, twelve);
                    over[c] = level_at(grey_row, x, c, twelve);
                }
                float *pixel = out + 4 * std::size_t(x);
                // No bubble: the layer is 0.
                if ((black[0] | black[1] | black[2]) == 0 && over[0] == grey && over[1] == grey && over[2] == grey)
                    std::fill(pixel, pixel + 4, 0.0f);
                else
                    layer_pixel(black, over, top, grey, scale, pixel);
            }
        }
    }
}

namespace {

// Splits a premultiplied pixel into the bubble's own colour, straight and at
// most 1 in each channel, and the light it adds beyond its coverage:
// colour = alpha × straight + light. Returns the channels with light, a bit
// each, since a conversion need not keep 0 at 0.
int split_light(float *pixel, float *light) {
    const float alpha = pixel[3];
    int channels = 0;
    for (int c = 0; c < 3; ++c) {
        if (alpha > 0.0f && pixel[c] <= alpha) {
            pixel[c] /= alpha;
            light[c] = 0.0f;
        } else {
            light[c] = alpha > 0.0f ? pixel[c] - alpha : pixel[c];
            pixel[c] = alpha > 0.0f ? 1.0f : 0.0f;
            if (light[c] != 0.0f) channels |= 1 << c;
        }
    }
    light[3] = 0.0f;
    return channels;
}

}  // namespace

namespace {

// Whether `count` layer pixels are all +0 in every channel, compared as bytes
// (a -0 takes the pixel-by-pixel way, which treats it as empty too).
bool all_zero(const float *pixels, int count) {
    static const float zeros[4 * kBlock] = {};
    return std::memcmp(pixels, zeros, sizeof(float) * 4 * std::size_t(count)) == 0;
}

}  // namespace

void convert_layer(PlateImage &layer, const ColourConversion &conversion) {
    if (conversion.identity()) return;
    if (layer.channels != 4) throw Error("a layer has four channels");
    std::vector<float> light(std::size_t(layer.width) * 4);
    std::vector<uint8_t> lit(std::size_t(layer.width));
    for (int y = 0; y < layer.height; ++y) {
        float *row = layer.row(y);
        // Runs of pixels with something in them go to the conversion
        // together: most of a frame is empty and stays exactly 0.
        int x = 0;
        while (x < layer.width) {
            const int block = std::min(kBlock, layer.width - x);
            if (all_zero(row + 4 * x, block)) {
                x += block;
                continue;
            }
            if (empty_pixel(row + 4 * x)) {
                ++x;
                continue;
            }
            const int first = x;
            bool any_light = false;
            for (; x < layer.width && !empty_pixel(row + 4 * x); ++x) {
                lit[x] = split_light(row + 4 * x, &light[4 * std::size_t(x)]);
                any_light = any_light || lit[x] != 0;
            }
            const std::size_t count = std::size_t(x - first);
            conversion.apply(row + 4 * first, count, 4);
            if (any_light) conversion.apply(&light[4 * std::size_t(first)], count, 4);
            // The colour is premultiplied again; the light is added as light
            // over black, so a highlight where coverage is small stays as
            // bright as it looked and never goes through the curve divided by
            // that small coverage.
            for (int at = first; at < x; ++at) {
                float *pixel = row + 4 * at;
                const float *added = &light[4 * std::size_t(at)];
                for (int c = 0; c < 3; ++c) {
                    pixel[c] = pixel[3] > 0.0f ? pixel[c] * pixel[3] : 0.0f;
                    if (lit[at] & (1 << c)) pixel[c] += added[c];
                }
            }
        }
    }
}

void composite_over(const PlateImage &layer, PlateImage &plate) { composite_over(layer, plate, plate); }

void composite_over(const PlateImage &layer, const PlateImage &plate, PlateImage &out) {
    if (layer.width != plate.width || layer.height != plate.height || layer.channels != 4)
        throw Error("the layer is " + std::to_string(layer.width) + "x" + std::to_string(layer.height) +
                    " but the plate " + std::to_string(plate.width) + "x" + std::to_string(plate.height));
    if (&out != &plate) out = plate;  // storage reused when it has the size
    const int channels = plate.channels;
    const int blended = std::min(channels, 4);
    const std::size_t count = std::size_t(plate.width) * std::size_t(plate.height);
    const float *over = layer.pixels.data();
    float *to = out.pixels.data();
    for (std::size_t i = 0; i < count;) {
        const int block = int(std::min<std::size_t>(kBlock, count - i));
        if (all_zero(over + 4 * i, block)) {
            i += std::size_t(block);
            continue;
        }
        for (const std::size_t end = i + std::size_t(block); i < end; ++i) {
            const float *pixel = over + 4 * i;
            if (empty_pixel(pixel)) continue;
            float *under = to + std::size_t(channels) * i;
            const float through = 1.0f - pixel[3];
            for (int c = 0; c < blended; ++c) under[c] = pixel[c] + under[c] * through;
        }
    }
}

std::size_t count_non_finite(const PlateImage &plate) {
    std::size_t found = 0;
    for (const float sample : plate.pixels) found += !std::isfinite(sample);
    return found;
}

}  // namespace sparkhost
