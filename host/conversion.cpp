// Host frame buffers into ImageQv images and back, whole frames.
#include "host/conversion.h"

#include <algorithm>

#include "host/conversion_rows.h"

using conversion::Host12;
using conversion::Host8;

int ProxyExtent(long full, int divisor) {
    if (full <= 0) return 0;
    const int s = divisor < 1 ? 1 : divisor;
    const long even = (full / s) & ~1L;
    const long truncated = long(float(full) / float(s));
    return int(truncated > even ? even + 2 : even);
}

namespace {

template <class Host>
ImageQv *ConvertFrom(const void *buffer, long width, long height, double aspect, int divisor,
                     ImageQv *image, int copy, uint16_t proxy_alpha) {
    if (!buffer) return nullptr;
    const int s = divisor < 1 ? 1 : divisor;
    width = std::max(0L, width);
    height = std::max(0L, height);
    if (!image) {
        if (s == 1)
            image = new ImageQv(width, height, 1.0f, nullptr, nullptr);
        else
            image = new ImageQv(ProxyExtent(width, s), ProxyExtent(height, s), float(s), nullptr,
                                nullptr);
    }
    image->scale_x = aspect;
    image->scale_y = 1.0;
    // Effects scale their sizes by video_scale, so in a proxy they work in proxy units.
    image->video_scale = float(s);
    if (!copy) return image;

    const auto *words = static_cast<const typename Host::Word *>(buffer);
    if (s == 1) {
        const long rows = std::min<long>(image->height, height);
        const long columns = std::min<long>(image->width, width);
        conversion::CopyRows<Host>(words, width, *image, columns, 0, rows - 1);
    } else {
        conversion::CopyProxyRows<Host>(words, width, height, s, *image, 0, image->height - 1,
                                        proxy_alpha, false);
    }
    return image;
}

template <class Host>
void ConvertTo(const ImageQv *image, void *buffer, int width, int height, int divisor) {
    if (!image || !buffer) return;
    const int s = divisor < 1 ? 1 : divisor;
    auto *words = static_cast<typename Host::Word *>(buffer);
    if (s == 1)
        conversion::PasteRows<Host>(*image, words, 0, long(image->height) - 1);
    else
        conversion::PasteProxyRows<Host>(*image, words, width, height, s, 0, long(height) - 1);
}

}  // namespace

ImageQv *ConvertFromDLImage8(const void *buffer, long width, long height, double aspect,
                             int divisor, ImageQv *image, int copy) {
    return ConvertFrom<Host8>(buffer, width, height, aspect, divisor, image, copy,
                              conversion::kOpaque);
}

// The 12-bit proxy marks alpha 0xFFFF where every other path uses 0x7FFF;
// the asymmetry is kept as it has always been.
ImageQv *ConvertFromDLImage12(const void *buffer, long width, long height, double aspect,
                              int divisor, ImageQv *image, int copy) {
    return ConvertFrom<Host12>(buffer, width, height, aspect, divisor, image, copy, 0xFFFF);
}

void ConvertToDLImage8(const ImageQv *image, void *buffer, int width, int height, int divisor) {
    ConvertTo<Host8>(image, buffer, width, height, divisor);
}

void ConvertToDLImage12(const ImageQv *image, void *buffer, int width, int height, int divisor) {
    ConvertTo<Host12>(image, buffer, width, height, divisor);
}
