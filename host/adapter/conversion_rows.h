// Row kernels shared by the whole-frame and the banded host conversions:
// the loops that copy a range of rows between host buffers and images.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "framework/image.h"
#include "host/adapter/channel_scaling.h"

namespace conversion {

// Full resolution in: image rows first..last from host rows of the same
// index, `columns` pixels each.
template <class Host>
void CopyRows(const typename Host::Word *buffer, long host_width, ImageQv &image, long columns,
              long first, long last) {
    if (columns <= 0) return;
    const size_t row_words = size_t(host_width) * 3;
    std::vector<uint16_t> scratch = ScratchRow(columns);
    for (long y = first; y <= last; ++y) {
        ScaleIn(buffer + size_t(y) * row_words, scratch.data(), size_t(columns) * 3);
        SpreadToPixels(scratch.data(), image.rows[y], columns, kOpaque);
    }
}

// Proxy in: image row j point-samples host row s/2 + j*s, columns 0, s, 2s...
// Rows are centred in their block but columns start at 0: the offset
// between the axes is deliberate. With clamp_rows a host row past the end
// reads the last row; without, such image rows are left as they are.
template <class Host>
void CopyProxyRows(const typename Host::Word *buffer, long width, long height, int s,
                   ImageQv &image, long first, long last, uint16_t alpha, bool clamp_rows) {
    using Word = typename Host::Word;
    if (width <= 0 || height <= 0) return;
    const long half = s / 2;
    // Columns run while s/2 + k*s stays inside the host row.
    long columns = width > half ? (width - half + s - 1) / s : 0;
    columns = std::min<long>(columns, image.width);
    const size_t row_words = size_t(width) * 3;
    const size_t step = size_t(s) * 3;
    last = std::min<long>(last, long(image.height) - 1);
    for (long j = first; j <= last; ++j) {
        long host_row = half + j * s;
        if (host_row >= height) {
            if (!clamp_rows) break;
            host_row = height - 1;
        }
        const Word *source = buffer + size_t(host_row) * row_words;
        PixelQv *target = image.rows[j];
        for (long k = 0; k < columns; ++k, source += step, ++target) {
            target->red = Host::In(source[0]);
            target->green = Host::In(source[1]);
            target->blue = Host::In(source[2]);
            target->alpha = alpha;
        }
    }
}

// Full resolution out: the image's own width drives the host row length.
template <class Host>
void PasteRows(const ImageQv &image, typename Host::Word *buffer, long first, long last) {
    if (image.width <= 0) return;
    const size_t row_words = size_t(image.width) * 3;
    std::vector<uint16_t> scratch = ScratchRow(image.width);
    for (long y = first; y <= last; ++y) {
        GatherFromPixels(image.rows[y], scratch.data(), image.width);
        ScaleOut(scratch.data(), buffer + size_t(y) * row_words, row_words);
    }
}

// Proxy out: host rows first..last, each host pixel from image pixel
// (x / s, y / s) clamped to the image, so each proxy pixel fills an s x s
// block and the last row and column repeat when the proxy was rounded down.
template <class Host>
void PasteProxyRows(const ImageQv &image, typename Host::Word *buffer, long width, long height,
                    int s, long first, long last) {
    using Word = typename Host::Word;
    if (image.width <= 0 || image.height <= 0 || width <= 0) return;
    const size_t row_words = size_t(width) * 3;
    std::vector<uint16_t> scratch = ScratchRow(width);
    last = std::min(last, height - 1);
    long previous_source_row = -1;
    const Word *previous_host_row = nullptr;
    for (long y = first; y <= last; ++y) {
        const long source_row = std::min<long>(y / s, long(image.height) - 1);
        Word *target = buffer + size_t(y) * row_words;
        // Without low bits to keep, a row that samples the same image row as
        // the one above is the same bytes.
        if (!Host::kKeepsLowBits && source_row == previous_source_row) {
            std::memcpy(target, previous_host_row, row_words * sizeof(Word));
            continue;
        }
        if (source_row != previous_source_row) {
            // The image row widened to host width: each pixel repeated s times.
            const PixelQv *source = image.rows[source_row];
            const PixelQv *last_column = source + (image.width - 1);
            int repeat = 0;
            for (long x = 0; x < width; ++x) {
                std::memcpy(scratch.data() + 3 * x, source, sizeof(PixelQv));
                if (++repeat == s) {
                    repeat = 0;
                    if (source < last_column) ++source;
                }
            }
            previous_source_row = source_row;
        }
        ScaleOut(scratch.data(), target, row_words);
        previous_host_row = target;
    }
}

}  // namespace conversion
