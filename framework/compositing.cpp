// ImageQv compositing: mixes through a matte, fades, gamma maps, cut-outs
// and negation, each fanned out over row bands.
#include <cmath>
#include <cstring>

#include "framework/image.h"
#include "framework/messages.h"

namespace {

constexpr uint32_t kFull = 32767;
constexpr int kGammaTableSize = 32768;

// The operations read a second image pixel for pixel; anything else would
// read outside its rows, so it is refused with a line saying why.
bool matches(const ImageQv &image, const ImageQv *other, const char *operation, const char *role) {
    if (!other) {
        PrintError("ImageQv::%s: no %s image given\n", operation, role);
        return false;
    }
    if (other->width != image.width || other->height != image.height) {
        PrintError("ImageQv::%s: %s image is %dx%d but this image is %dx%d\n", operation, role,
                   int(other->width), int(other->height), int(image.width), int(image.height));
        return false;
    }
    return true;
}

// 32767 - value, with out-of-scale values taken as full scale.
uint16_t inverted(uint16_t value) { return uint16_t(value < kFull ? kFull - value : 0); }

uint16_t clamp_channel(int32_t value) {
    return uint16_t(value < 0 ? 0 : value > int32_t(kFull) ? int32_t(kFull) : value);
}

// truncate(32767.0 * amount), kept inside 0..32767 so that the weight
// pair (k, 32768 - k) never wraps; NaN counts as 0.
uint32_t blend_weight(float amount) {
    double scaled = 32767.0 * amount;
    if (!(scaled > 0.0)) return 0;
    if (scaled >= double(kFull)) return kFull;
    return uint32_t(scaled);
}

// Conversion toward zero with no clamping to the channel scale, as the
// floating-point mix has it; only values no int32 can hold are pinned.
uint16_t truncate_unclamped(float value) {
    if (!(value == value)) return 0;
    if (value >= 2147483520.0f) return uint16_t(int32_t(2147483520));
    if (value <= -2147483520.0f) return uint16_t(int32_t(-2147483520));
    return uint16_t(int32_t(value));
}

}  // namespace

// ---------------------------------------------------------------------------
// Merge

void ImageQv::Merge(ImageQv *a, ImageQv *matte, bool use_matte_as_is, int with_alpha) {
    if (!matches(*this, a, "Merge", "second") || !matches(*this, matte, "Merge", "matte")) return;
    op.source = a;
    op.matte = matte;
    op.use_matte_as_is = use_matte_as_is ? 1 : 0;
    op.with_alpha = with_alpha;
    MultiProcess(&ImageQv::mp_Merge, height);
}

void ImageQv::mp_Merge(long first, long last) {
    const bool as_is = op.use_matte_as_is != 0;
    const bool with_alpha = op.with_alpha != 0;
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        const PixelQv *matte = op.matte->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            // Kept on purpose: weights on the 32767 scale with a shift of 15,
            // so a full matte keeps 32767/32768 of this image.
            uint32_t red = matte[x].red < kFull ? matte[x].red : kFull;
            uint32_t m = as_is ? red : kFull - red;
            uint32_t n = kFull - m;
            out[x].red = uint16_t((out[x].red * m + in[x].red * n) >> 15);
            out[x].green = uint16_t((out[x].green * m + in[x].green * n) >> 15);
            out[x].blue = uint16_t((out[x].blue * m + in[x].blue * n) >> 15);
            if (with_alpha) out[x].alpha = uint16_t((out[x].alpha * m + in[x].alpha * n) >> 15);
        }
    }
}

// ---------------------------------------------------------------------------
// Gamma maps

namespace {

// Input scaled by 1/32767, output by 32768, as the framework always had it;
// the store clamps the top entry back to 32767.
void build_gamma_table(int32_t *table, float gamma) {
    const float exponent = 1 / gamma;
    for (int i = 0; i < kGammaTableSize; ++i) {
        double mapped = powf(float(i * 3.051851e-5), exponent) * 32768 + 0.5;
        table[i] = mapped < 32768.0 ? int32_t(mapped) : 32768;  // NaN lands on 32768
    }
}

uint16_t gamma_lookup(const int32_t *table, uint16_t value) {
    return clamp_channel(table[value < kFull ? value : kFull]);
}

}  // namespace

void ImageQv::MapGamma_RGBA(ImageQv *source, float gamma) {
    if (!matches(*this, source, "MapGamma_RGBA", "source")) return;
    op.source = source;
    op.gamma = gamma;
    if (!owned_aux) owned_aux = new int32_t[kGammaTableSize];
    build_gamma_table(owned_aux, gamma);
    MultiProcess(&ImageQv::mp_map_gamma_rgba, height);
}

void ImageQv::MapGamma_Alpha(ImageQv *source, float gamma) {
    if (!matches(*this, source, "MapGamma_Alpha", "source")) return;
    op.source = source;
    op.gamma = gamma;
    if (!owned_aux) owned_aux = new int32_t[kGammaTableSize];
    build_gamma_table(owned_aux, gamma);
    MultiProcess(&ImageQv::mp_map_gamma_alpha, height);
}

void ImageQv::mp_map_gamma_rgba(long first, long last) {
    const int32_t *table = owned_aux;
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            out[x].red = gamma_lookup(table, in[x].red);
            out[x].green = gamma_lookup(table, in[x].green);
            out[x].blue = gamma_lookup(table, in[x].blue);
            out[x].alpha = gamma_lookup(table, in[x].alpha);
        }
    }
}

void ImageQv::mp_map_gamma_alpha(long first, long last) {
    const int32_t *table = owned_aux;
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) out[x].alpha = gamma_lookup(table, in[x].alpha);
    }
}

// ---------------------------------------------------------------------------
// Value copies and blends

void ImageQv::CopyValues(ImageQv *source, float fr, float fg, float fb, float fa) {
    if (!source) return;
    if (!matches(*this, source, "CopyValues", "source")) return;
    if (fr == 1.0f && fg == 1.0f && fb == 1.0f && fa == 1.0f) {
        // A whole frame copied every frame: in bands, so each processor
        // copies its share instead of one copying while the others wait.
        op.source = source;
        MultiProcess(&ImageQv::mp_copy_values, height);
        return;
    }
    auto scale = [](uint16_t channel, float factor) -> uint16_t {
        float value = channel * factor;
        if (!(value > 0.0f)) return 0;
        if (value >= float(kFull)) return uint16_t(kFull);
        return uint16_t(int32_t(value));
    };
    for (int32_t y = 0; y < height; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            out[x].red = scale(in[x].red, fr);
            out[x].green = scale(in[x].green, fg);
            out[x].blue = scale(in[x].blue, fb);
            out[x].alpha = scale(in[x].alpha, fa);
        }
    }
}

void ImageQv::mp_copy_values(long first, long last) {
    for (long y = first; y <= last; ++y) std::memcpy(rows[y], op.source->rows[y], size_t(width) * sizeof(PixelQv));
}

void ImageQv::BlendBack(float amount, ImageQv *source) {
    if (!matches(*this, source, "BlendBack", "source")) return;
    op.amount = amount;
    op.source = source;
    MultiProcess(&ImageQv::mp_blendback, height);
}

void ImageQv::mp_blendback(long first, long last) {
    // Kept on purpose: the two weights add to 32768, not 32767.
    const uint32_t k = blend_weight(op.amount);
    const uint32_t w = 32768 - k;
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            out[x].red = uint16_t((in[x].red * k + out[x].red * w) >> 15);
            out[x].green = uint16_t((in[x].green * k + out[x].green * w) >> 15);
            out[x].blue = uint16_t((in[x].blue * k + out[x].blue * w) >> 15);
            out[x].alpha = uint16_t((in[x].alpha * k + out[x].alpha * w) >> 15);
        }
    }
}

void ImageQv::BlendBackCol(float amount, PixelQv blend_colour) {
    op.amount = amount;
    colour = blend_colour;
    MultiProcess(&ImageQv::mp_blendbackcol, height);
}

void ImageQv::mp_blendbackcol(long first, long last) {
    const uint32_t k = blend_weight(op.amount);
    const uint32_t w = 32768 - k;
    const uint32_t r = colour.red * k, g = colour.green * k, b = colour.blue * k, a = colour.alpha * k;
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        for (int32_t x = 0; x < width; ++x) {
            out[x].red = uint16_t((r + out[x].red * w) >> 15);
            out[x].green = uint16_t((g + out[x].green * w) >> 15);
            out[x].blue = uint16_t((b + out[x].blue * w) >> 15);
            out[x].alpha = uint16_t((a + out[x].alpha * w) >> 15);
        }
    }
}

void ImageQv::InBlend(float amount, ImageQv *source) {
    if (!matches(*this, source, "InBlend", "source")) return;
    const float keep = 1 - amount;
    for (int32_t y = 0; y < height; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            out[x].red = truncate_unclamped(in[x].red * amount + out[x].red * keep);
            out[x].green = truncate_unclamped(in[x].green * amount + out[x].green * keep);
            out[x].blue = truncate_unclamped(in[x].blue * amount + out[x].blue * keep);
            out[x].alpha = truncate_unclamped(in[x].alpha * amount + out[x].alpha * keep);
        }
    }
}

// ---------------------------------------------------------------------------
// Cut-out and negative

void ImageQv::CutOut(ImageQv *source, int channel, int invert, int alpha_mode) {
    if (!matches(*this, source, "CutOut", "source")) return;
    if (channel < 0 || channel > 4) {
        PrintError("ImageQv::CutOut: matte channel %d is not one of 0..4\n", channel);
        return;
    }
    op.source = source;
    op.channel = channel;
    op.invert = invert;
    op.alpha_mode = alpha_mode;
    MultiProcess(&ImageQv::mp_cutout, height);
}

void ImageQv::mp_cutout(long first, long last) {
    const int channel = op.channel;
    const bool invert = op.invert != 0;
    const int alpha_mode = op.alpha_mode;
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            uint32_t m;
            switch (channel) {
            case 0: m = in[x].red; break;
            case 1: m = in[x].green; break;
            case 2: m = in[x].blue; break;
            case 3: m = in[x].alpha; break;
            default: m = (5u * in[x].red + 8u * in[x].green + 3u * in[x].blue) >> 4; break;
            }
            if (m > kFull) m = kFull;
            uint32_t k = invert ? kFull - m : m;
            out[x].red = uint16_t((out[x].red * k) >> 15);
            out[x].green = uint16_t((out[x].green * k) >> 15);
            out[x].blue = uint16_t((out[x].blue * k) >> 15);
            switch (alpha_mode) {
            case 0: out[x].alpha = uint16_t((k * out[x].alpha) >> 15); break;
            case 1: out[x].alpha = uint16_t(k); break;
            case 2:
            case 3: out[x].alpha = uint16_t((k * in[x].alpha) >> 15); break;
            default: break;
            }
        }
    }
}

void ImageQv::Negative(ImageQv *source) {
    if (source) {
        if (!matches(*this, source, "Negative", "source")) return;
        op.source = source;
        MultiProcess(&ImageQv::mp_negative, height);
        // Kept on purpose: callers rely on the flag this leaves behind
        // to decide who frees the block.
        owns_pixels = 0;
        return;
    }
    ImageQv *copy = new ImageQv(*this);
    op.source = copy;
    MultiProcess(&ImageQv::mp_negative, height);
    delete copy;
    op.source = nullptr;
    owns_pixels = 1;
}

void ImageQv::mp_negative(long first, long last) {
    for (long y = first; y <= last; ++y) {
        PixelQv *out = rows[y];
        const PixelQv *in = op.source->rows[y];
        for (int32_t x = 0; x < width; ++x) {
            out[x].red = inverted(in[x].red);
            out[x].green = inverted(in[x].green);
            out[x].blue = inverted(in[x].blue);
            out[x].alpha = inverted(in[x].alpha);
        }
    }
}
