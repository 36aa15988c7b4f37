// Banded host conversions: each worker of the host's fork copies its own
// band of rows, split as the framework's multiprocessing splits them.
#include <cmath>

#include "framework/plugin.h"
#include "host/adapter/conversion.h"
#include "host/adapter/conversion_rows.h"

using conversion::Host12;
using conversion::Host8;

namespace {

RowBand my_band(long rows, int bands) { return band_for_worker(current_worker_index(), rows, bands); }

int divisor_of(const ImageQv &image) {
    const int s = int(std::lround(image.video_scale));
    return s < 1 ? 1 : s;
}

template <class Host>
void copy_band(const void *buffer, ImageQv *image, int bands) {
    if (!buffer || !image) return;
    const RowBand band = my_band(image->height, bands);
    conversion::CopyRows<Host>(static_cast<const typename Host::Word *>(buffer), image->width,
                               *image, image->width, band.first, band.last);
}

// Unlike the whole-frame proxy copy, a host row past the end reads the last
// row, and alpha is 0x7FFF at both depths.
template <class Host>
void copy_scale_band(const void *buffer, ImageQv *image, int bands, int height, int width) {
    if (!buffer || !image) return;
    const RowBand band = my_band(image->height, bands);
    conversion::CopyProxyRows<Host>(static_cast<const typename Host::Word *>(buffer), width,
                                    height, divisor_of(*image), *image, band.first, band.last,
                                    conversion::kOpaque, true);
}

template <class Host>
void paste_band(void *buffer, const ImageQv *image, int bands) {
    if (!buffer || !image) return;
    const RowBand band = my_band(image->height, bands);
    conversion::PasteRows<Host>(*image, static_cast<typename Host::Word *>(buffer), band.first,
                                band.last);
}

template <class Host>
void paste_scale_band(void *buffer, const ImageQv *image, int bands, int height, int width) {
    if (!buffer || !image) return;
    const RowBand band = my_band(height, bands);
    conversion::PasteProxyRows<Host>(*image, static_cast<typename Host::Word *>(buffer), width,
                                     height, divisor_of(*image), band.first, band.last);
}

}  // namespace

void mp_copy_pixel_data(const void *buffer, ImageQv *image, int bands) {
    copy_band<Host8>(buffer, image, bands);
}

void mp_copy_pixel_data_deep12(const void *buffer, ImageQv *image, int bands) {
    copy_band<Host12>(buffer, image, bands);
}

void mp_copy_pixel_data_scale(const void *buffer, ImageQv *image, int bands, int height, int width) {
    copy_scale_band<Host8>(buffer, image, bands, height, width);
}

void mp_copy_pixel_data_scale_deep12(const void *buffer, ImageQv *image, int bands, int height,
                                     int width) {
    copy_scale_band<Host12>(buffer, image, bands, height, width);
}

void mp_paste_pixel_data(void *buffer, const ImageQv *image, int bands) {
    paste_band<Host8>(buffer, image, bands);
}

void mp_paste_pixel_data_deep12(void *buffer, const ImageQv *image, int bands) {
    paste_band<Host12>(buffer, image, bands);
}

void mp_paste_pixel_data_scale(void *buffer, const ImageQv *image, int bands, int height, int width) {
    paste_scale_band<Host8>(buffer, image, bands, height, width);
}

void mp_paste_pixel_data_scale_deep12(void *buffer, const ImageQv *image, int bands, int height,
                                      int width) {
    paste_scale_band<Host12>(buffer, image, bands, height, width);
}
