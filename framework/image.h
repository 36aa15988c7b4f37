// ImageQv: a block of PixelQv rows with the parameter slots its banded
// operations park their arguments in before they fork.
#pragma once

#include <cstdint>

#include "framework/pixel.h"

struct renderop_tag;  // the host's render-operation context, opaque to us

class ImageQv {
public:
    ImageQv(long width, long height, float aspect, PixelQv *block, renderop_tag *render_op);
    ImageQv(const ImageQv &other);
    ImageQv &operator=(const ImageQv &) = delete;
    ~ImageQv();

    // Sampling (Part of the pixel model): bilinear, no edge clamping.
    void PointSampleB(float x, float y, PixelQv &out) const;
    void PointSampleD(float x, float y, PixelQv &out) const;
    void PointSampleW(float x, float y, PixelQv &out) const;
    void AreaSampleStart() {}
    void AreaSampleEnd() {}
    void AreaSampleB(float x0, float y0, float x1, float y1, PixelQv &out) const;
    void AreaSampleD(float x0, float y0, float x1, float y1, PixelQv &out) const;
    void AreaSampleW(float x0, float y0, float x1, float y1, PixelQv &out) const;

    void Fill(uint16_t red, uint16_t green, uint16_t blue, uint16_t alpha);
    void FillChannel(uint16_t value, uint16_t channel);
    void ApplyLUT(const uint16_t *red, const uint16_t *green, const uint16_t *blue,
                  const uint16_t *alpha);
    int AbortRender() const { return 0; }

    // Runs member(first, last) over rows 0..rows-1 split in bands over the
    // host's processors; returns when every band is done.
    int MultiProcess(void (ImageQv::*member)(long, long), long rows);

    // Compositing and channel operations (framework/compositing.cpp).
    void Merge(ImageQv *a, ImageQv *matte, bool use_matte_as_is, int with_alpha);
    void MapGamma_RGBA(ImageQv *source, float gamma);
    void MapGamma_Alpha(ImageQv *source, float gamma);
    void ShiftIntensity(int amount);
    void CopyAlpha(ImageQv *source);
    void CopyRGB(ImageQv *source);
    void CopyR(ImageQv *source);
    void CopyG(ImageQv *source);
    void CopyB(ImageQv *source);
    void CopyLumaToChannel(ImageQv *source, int channel);
    void UseHSV(ImageQv *source);
    void ReplaceHSV(ImageQv *source);
    void CopyValues(ImageQv *source, float fr, float fg, float fb, float fa);
    void BlendBack(float amount, ImageQv *source);
    void BlendBackCol(float amount, PixelQv colour);
    void CutOut(ImageQv *source, int channel, int invert, int alpha_mode);
    void InBlend(float amount, ImageQv *source);
    void Negative(ImageQv *source);

    // Banded workers of the operations above; rows first..last inclusive.
    void mp_Merge(long first, long last);
    void mp_map_gamma_rgba(long first, long last);
    void mp_map_gamma_alpha(long first, long last);
    void mp_shift_intensity_down(long first, long last);
    void mp_shift_intensity_up(long first, long last);
    void mp_copy_alpha(long first, long last);
    void mp_copy_values(long first, long last);
    void mp_copy_rgb(long first, long last);
    void mp_copy_r(long first, long last);
    void mp_copy_g(long first, long last);
    void mp_copy_b(long first, long last);
    void mp_copy_l2c(long first, long last);
    void mp_usehsv(long first, long last);
    void mp_replacehsv(long first, long last);
    void mp_blendback(long first, long last);
    void mp_blendbackcol(long first, long last);
    void mp_cutout(long first, long last);
    void mp_negative(long first, long last);

    // Colour-difference and alpha helpers (imaging/colour_difference.cpp).
    void to_colour_diff(ImageQv *image, float *y, float *c1, float *c2, float strength);
    void from_colour_diff(ImageQv *image, float *y, float *c1, float *c2, float strength);
    void get_alpha(ImageQv *image, float *plane, float strength);
    void put_alpha(ImageQv *image, float *plane, float strength);
    float hyperb(float x, float strength);
    float invhyperb(float y, float strength);
    void FourierFilter(float *plane, int size, float cutoff, ImageQv *image, bool inverse, bool keep);

    // Declared fields, in the model's order.
    PixelQv *pixels;
    int32_t owns_pixels;
    // Scratch slots for banded operations: arguments are parked here before
    // the fork and only read by the bands. The first 16 words are zeroed.
    struct OperationParameters {
        ImageQv *source;
        ImageQv *matte;
        float amount;
        float gamma;
        float factors[4];
        int32_t channel;
        int32_t invert;
        int32_t alpha_mode;
        int32_t with_alpha;
        int32_t use_matte_as_is;
        int32_t shift;
    } op;
    PixelQv **rows;
    int32_t width;
    int32_t height;
    double scale_x;
    double scale_y;
    int32_t reserved_ints[4];
    float video_scale;
    renderop_tag *render_op;
    int32_t *owned_aux;  // gamma table of MapGamma_*, 32768 entries, made on first use
    PixelQv colour;      // working colour of BlendBackCol
};
