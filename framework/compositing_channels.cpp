// ImageQv channel operations: single-channel copies, luminance into a
// channel and HSV transfer, each fanned out over row bands.
#include "framework/image.h"
#include "framework/messages.h"

namespace {

bool same_size(const ImageQv &image, const ImageQv *source, const char *operation) {
    if (!source) {
        PrintError("ImageQv::%s: no source image given\n", operation);
        return false;
    }
    if (source->width != image.width || source->height != image.height) {
        PrintError("ImageQv::%s: source image is %dx%d but this image is %dx%d\n", operation,
                   int(source->width), int(source->height), int(image.width), int(image.height));
        return false;
    }
    return true;
}

}  // namespace

// Kept as an empty operation: intensity shifting never changed a pixel, but
// its parameter slot and workers are part of the image's interface.
void ImageQv::ShiftIntensity(int amount) {
    op.shift = amount;
    if (amount < 0) MultiProcess(&ImageQv::mp_shift_intensity_down, height);
    else if (amount > 0) MultiProcess(&ImageQv::mp_shift_intensity_up, height);
}

void ImageQv::mp_shift_intensity_down(long, long) {}
void ImageQv::mp_shift_intensity_up(long, long) {}

void ImageQv::CopyAlpha(ImageQv *source) {
    if (!same_size(*this, source, "CopyAlpha")) return;
    op.source = source;
    MultiProcess(&ImageQv::mp_copy_alpha, height);
}

void ImageQv::CopyRGB(ImageQv *source) {
    if (!same_size(*this, source, "CopyRGB")) return;
    op.source = source;
    MultiProcess(&ImageQv::mp_copy_rgb, height);
}

void ImageQv::CopyR(ImageQv *source) {
    if (!same_size(*this, source, "CopyR")) return;
    op.source = source;
    MultiProcess(&ImageQv::mp_copy_r, height);
}

void ImageQv::CopyG(ImageQv *source) {
    if (!same_size(*this, source, "CopyG")) return;
    op.source = source;
    MultiProcess(&ImageQv::mp_copy_g, height);
}

void ImageQv::CopyB(ImageQv *source) {
    if (!same_size(*this, source, "CopyB")) return;
    op.source = source;
    MultiProcess(&ImageQv::mp_copy_b, height);
}

void ImageQv::mp_copy_alpha(long first, long last) {
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) out[x].alpha = in[x].alpha;
    }
}

void ImageQv::mp_copy_rgb(long first, long last) {
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            out[x].red = in[x].red;
            out[x].green = in[x].green;
            out[x].blue = in[x].blue;
        }
    }
}

void ImageQv::mp_copy_r(long first, long last) {
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) out[x].red = in[x].red;
    }
}

void ImageQv::mp_copy_g(long first, long last) {
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) out[x].green = in[x].green;
    }
}

void ImageQv::mp_copy_b(long first, long last) {
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) out[x].blue = in[x].blue;
    }
}

void ImageQv::CopyLumaToChannel(ImageQv *source, int channel) {
    if (!same_size(*this, source, "CopyLumaToChannel")) return;
    op.source = source;
    op.channel = channel;
    MultiProcess(&ImageQv::mp_copy_l2c, height);
}

void ImageQv::mp_copy_l2c(long first, long last) {
    // A channel number outside 0..3 writes nothing, by design.
    uint16_t PixelQv::*target;
    switch (op.channel) {
    case 0: target = &PixelQv::red; break;
    case 1: target = &PixelQv::green; break;
    case 2: target = &PixelQv::blue; break;
    case 3: target = &PixelQv::alpha; break;
    default: return;
    }
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x)
            out[x].*target = uint16_t((5u * in[x].red + 8u * in[x].green + 3u * in[x].blue) >> 4);
    }
}

void ImageQv::UseHSV(ImageQv *source) {
    if (!same_size(*this, source, "UseHSV")) return;
    op.source = source;
    MultiProcess(&ImageQv::mp_usehsv, height);
}

void ImageQv::mp_usehsv(long first, long last) {
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            uint16_t hue, saturation, value;
            in[x].GetHSV(hue, saturation, value);
            out[x] = PixelQv{hue, saturation, value, in[x].alpha};
        }
    }
}

void ImageQv::ReplaceHSV(ImageQv *source) {
    if (!same_size(*this, source, "ReplaceHSV")) return;
    op.source = source;
    MultiProcess(&ImageQv::mp_replacehsv, height);
}

void ImageQv::mp_replacehsv(long first, long last) {
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            const PixelQv from = in[x];  // the source may be this image itself
            out[x].SetHSV(from.red, from.green, from.blue);
            out[x].alpha = from.alpha;
        }
    }
}
