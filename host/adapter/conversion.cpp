// Host frame buffers into ImageQv images and back, whole frames.
#include "host/adapter/conversion.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "framework/pixel_blocks.h"
#include "framework/plugin.h"
#include "host/adapter/conversion_rows.h"
#include "host/adapter/globals.h"
#include "spark/spark.h"

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

// Below this many rows a fork costs more than it saves.
constexpr long kSmallestSplitRows = 64;

// Rows are independent, so large conversions are split over the host's
// processors like any banded work; the result is the same for any split.
template <class Body>
void for_row_bands(long rows, const Body &body) {
    const long workers = DLnumProc > 1 ? DLnumProc : 1;
    if (workers == 1 || rows < kSmallestSplitRows) {
        body(0, rows - 1);
        return;
    }
    struct Job {
        const Body *body;
        long rows;
        long workers;
    } job{&body, rows, workers};
    sparkMpFork(
        [](void *job_pointer, void *, void *, void *) {
            const Job &j = *static_cast<const Job *>(job_pointer);
            const RowBand band = band_for_worker(current_worker_index(), j.rows, j.workers);
            (*j.body)(band.first, band.last);
        },
        4, &job, nullptr, nullptr, reinterpret_cast<void *>(intptr_t(workers)));
}

template <class Host>
ImageQv *ConvertFrom(const void *buffer, long width, long height, double aspect, int divisor,
                     ImageQv *image, int copy, uint16_t proxy_alpha) {
    if (!buffer) return nullptr;
    const int s = divisor < 1 ? 1 : divisor;
    width = std::max(0L, width);
    height = std::max(0L, height);
    if (!image) {
        if (s == 1 && copy) {
            // Every pixel is about to be written: no need to clear the block first.
            image = new ImageQv(width, height, 1.0f, AcquirePixels(size_t(width) * size_t(height), false),
                                nullptr);
            image->owns_pixels = 1;
        } else if (s == 1) {
            // Cleared in bands, each processor its share, rather than by one.
            const size_t count = size_t(width) * size_t(height);
            image = new ImageQv(width, height, 1.0f, AcquirePixels(count, false), nullptr);
            image->owns_pixels = 1;
            ImageQv &cleared = *image;
            for_row_bands(height, [&](long first, long last) {
                for (long y = first; y <= last; ++y) std::memset(cleared.rows[y], 0, size_t(width) * sizeof(PixelQv));
            });
        }
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
        for_row_bands(rows, [&](long first, long last) {
            conversion::CopyRows<Host>(words, width, *image, columns, first, last);
        });
    } else {
        for_row_bands(image->height, [&](long first, long last) {
            conversion::CopyProxyRows<Host>(words, width, height, s, *image, first, last, proxy_alpha,
                                            false);
        });
    }
    return image;
}

template <class Host>
void ConvertTo(const ImageQv *image, void *buffer, int width, int height, int divisor) {
    if (!image || !buffer) return;
    const int s = divisor < 1 ? 1 : divisor;
    auto *words = static_cast<typename Host::Word *>(buffer);
    if (s == 1) {
        for_row_bands(image->height, [&](long first, long last) {
            conversion::PasteRows<Host>(*image, words, first, last);
        });
    } else {
        for_row_bands(height, [&](long first, long last) {
            conversion::PasteProxyRows<Host>(*image, words, width, height, s, first, last);
        });
    }
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

ImageQv *ConvertFetchedFrame(const void *buffer, bool deep, long width, long height, double aspect,
                             int divisor, ImageQv *image) {
    if (deep) return ConvertFromDLImage12(buffer, width, height, aspect, divisor, image, 1);
    return ConvertFromDLImage8(buffer, width, height, aspect, divisor, image, 1);
}

void ConvertToDLImage8(const ImageQv *image, void *buffer, int width, int height, int divisor) {
    ConvertTo<Host8>(image, buffer, width, height, divisor);
}

void ConvertToDLImage12(const ImageQv *image, void *buffer, int width, int height, int divisor) {
    ConvertTo<Host12>(image, buffer, width, height, divisor);
}
