// Conversion of the host's packed 8-bit and 12-bit RGB frame buffers into
// ImageQv images and back, at full resolution or at a 1/divisor proxy.
#pragma once

#include "framework/image.h"

// Host buffer in, image out. width and height are the full-resolution frame
// size. With image null a new image is made (the caller deletes it); with
// copy 0 no pixel is written. Returns null when buffer is null.
ImageQv *ConvertFromDLImage8(const void *buffer, long width, long height, double aspect,
                             int divisor, ImageQv *image, int copy);
ImageQv *ConvertFromDLImage12(const void *buffer, long width, long height, double aspect,
                              int divisor, ImageQv *image, int copy);

// A fetched frame for random frame access, either depth, copied in.
ImageQv *ConvertFetchedFrame(const void *buffer, bool deep, long width, long height, double aspect,
                             int divisor, ImageQv *image);

// Image in, host buffer out. In 12-bit the low 4 bits of each host word are kept.
void ConvertToDLImage8(const ImageQv *image, void *buffer, int width, int height, int divisor);
void ConvertToDLImage12(const ImageQv *image, void *buffer, int width, int height, int divisor);

// The proxy image's extent for a full-resolution extent: full / divisor
// rounded up to an even number.
int ProxyExtent(long full, int divisor);

// Banded forms: run inside a worker of the host's fork, each copies the rows
// of the band that belongs to the calling worker (split over `bands`).
// The proxy forms take the divisor from the image's video_scale.
void mp_copy_pixel_data(const void *buffer, ImageQv *image, int bands);
void mp_copy_pixel_data_deep12(const void *buffer, ImageQv *image, int bands);
void mp_copy_pixel_data_scale(const void *buffer, ImageQv *image, int bands, int height, int width);
void mp_copy_pixel_data_scale_deep12(const void *buffer, ImageQv *image, int bands, int height,
                                     int width);
void mp_paste_pixel_data(void *buffer, const ImageQv *image, int bands);
void mp_paste_pixel_data_deep12(void *buffer, const ImageQv *image, int bands);
void mp_paste_pixel_data_scale(void *buffer, const ImageQv *image, int bands, int height, int width);
void mp_paste_pixel_data_scale_deep12(void *buffer, const ImageQv *image, int bands, int height,
                                      int width);
