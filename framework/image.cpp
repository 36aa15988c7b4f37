// ImageQv construction, destruction and fills.
#include "framework/image.h"

#include <cstdlib>
#include <cstring>

#include "framework/messages.h"

namespace {

// Blocks start at 0 in every channel, so nothing downstream can depend on
// stale memory (proxy conversions leave some rows unwritten).
PixelQv *allocate_pixels(long width, long height) {
    size_t count = width > 0 && height > 0 ? size_t(width) * size_t(height) : 0;
    return static_cast<PixelQv *>(std::calloc(count ? count : 1, sizeof(PixelQv)));
}

void build_rows(ImageQv &image) {
    image.rows = new PixelQv *[image.height > 0 ? image.height : 1];
    for (int32_t y = 0; y < image.height; ++y) image.rows[y] = image.pixels + size_t(y) * image.width;
}

}  // namespace

ImageQv::ImageQv(long w, long h, float /*aspect: accepted and ignored*/, PixelQv *block,
                 renderop_tag *context) {
    std::memset(&op, 0, sizeof(op));
    std::memset(reserved_ints, 0, sizeof(reserved_ints));
    colour = PixelQv{0, 0, 0, 0};
    scale_x = scale_y = 1.0;
    width = int32_t(w);
    height = int32_t(h);
    video_scale = float(720.0 / double(width));
    render_op = context;
    owned_aux = nullptr;
    if (block) {
        pixels = block;
        owns_pixels = 0;
    } else {
        pixels = allocate_pixels(w, h);
        owns_pixels = 1;
    }
    build_rows(*this);
}

ImageQv::ImageQv(const ImageQv &other) {
    std::memset(&op, 0, sizeof(op));
    colour = PixelQv{0, 0, 0, 0};
    width = other.width;
    height = other.height;
    scale_x = other.scale_x;
    scale_y = other.scale_y;
    std::memcpy(reserved_ints, other.reserved_ints, sizeof(reserved_ints));
    video_scale = other.video_scale;
    render_op = other.render_op;
    owned_aux = nullptr;
    pixels = allocate_pixels(width, height);
    if (width > 0 && height > 0)
        std::memcpy(pixels, other.pixels, size_t(width) * size_t(height) * sizeof(PixelQv));
    owns_pixels = 1;
    build_rows(*this);
}

ImageQv::~ImageQv() {
    if (owns_pixels) std::free(pixels);
    delete[] rows;
    delete[] owned_aux;
}

void ImageQv::Fill(uint16_t red, uint16_t green, uint16_t blue, uint16_t alpha) {
    if (width <= 0 || height <= 0) return;
    PixelQv *row0 = rows[0];
    for (int32_t x = 0; x < width; ++x) row0[x] = PixelQv{red, green, blue, alpha};
    for (int32_t y = 1; y < height; ++y) std::memcpy(rows[y], row0, size_t(width) * sizeof(PixelQv));
}

void ImageQv::FillChannel(uint16_t value, uint16_t channel) {
    if (channel > 3) return;
    for (int32_t y = 0; y < height; ++y) {
        PixelQv *pixel = rows[y];
        for (int32_t x = 0; x < width; ++x, ++pixel) {
            switch (channel) {
                case 0: pixel->red = value; break;
                case 1: pixel->green = value; break;
                case 2: pixel->blue = value; break;
                default: pixel->alpha = value; break;
            }
        }
    }
}

void ImageQv::ApplyLUT(const uint16_t *red, const uint16_t *green, const uint16_t *blue,
                       const uint16_t *alpha) {
    if (!red || !green || !blue || !alpha) {
        PrintError("ImageQv::ApplyLUT: all four channel tables are required; image left unchanged\n");
        return;
    }
    for (int32_t y = 0; y < height; ++y) {
        PixelQv *pixel = rows[y];
        for (int32_t x = 0; x < width; ++x, ++pixel) {
            pixel->red = red[pixel->red];
            pixel->green = green[pixel->green];
            pixel->blue = blue[pixel->blue];
            pixel->alpha = alpha[pixel->alpha];
        }
    }
}
