// Row kernels shared by the whole-frame and the banded host conversions:
// the channel scaling of each host depth and the loops over a range of rows.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "framework/image.h"

namespace conversion {

constexpr uint16_t kOpaque = 0x7FFF;

// 8-bit host: three bytes a pixel. The top bits are replicated into the low
// ones so that 255 maps to exactly 0x7FFF and back.
struct Host8 {
    using Word = uint8_t;
    static constexpr bool kKeepsLowBits = false;
    static uint16_t In(Word w) { return uint16_t((unsigned(w) << 7) | (unsigned(w) >> 1)); }
    static Word Out(uint16_t c, Word) {
        const unsigned v = unsigned(c) >> 7;
        return Word(v > 255 ? 255 : v);
    }
};

// 12-bit host: three 16-bit words a pixel, the value in the top 12 bits. The
// low 4 bits of the host's word carry nothing we read and are kept on output.
struct Host12 {
    using Word = uint16_t;
    static constexpr bool kKeepsLowBits = true;
    static uint16_t In(Word w) {
        const unsigned v = unsigned(w) >> 4;
        return uint16_t((v << 3) | (v >> 9));
    }
    static Word Out(uint16_t c, Word old) {
        unsigned v = unsigned(c) >> 3;
        if (v > 0xFFF) v = 0xFFF;
        return Word((v << 4) | (old & 0xFu));
    }
};

// Full resolution in: image rows first..last from host rows of the same
// index, `columns` pixels each.
template <class Host>
void CopyRows(const typename Host::Word *buffer, long host_width, ImageQv &image, long columns,
              long first, long last) {
    using Word = typename Host::Word;
    const size_t row_words = size_t(host_width) * 3;
    for (long y = first; y <= last; ++y) {
        const Word *source = buffer + size_t(y) * row_words;
        PixelQv *target = image.rows[y];
        for (long x = 0; x < columns; ++x, source += 3, ++target) {
            target->red = Host::In(source[0]);
            target->green = Host::In(source[1]);
            target->blue = Host::In(source[2]);
            target->alpha = kOpaque;
        }
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
    using Word = typename Host::Word;
    const size_t row_words = size_t(image.width) * 3;
    for (long y = first; y <= last; ++y) {
        Word *target = buffer + size_t(y) * row_words;
        const PixelQv *source = image.rows[y];
        for (long x = 0; x < image.width; ++x, target += 3, ++source) {
            target[0] = Host::Out(source->red, target[0]);
            target[1] = Host::Out(source->green, target[1]);
            target[2] = Host::Out(source->blue, target[2]);
        }
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
    last = std::min(last, height - 1);
    long previous_source_row = -1;
    for (long y = first; y <= last; ++y) {
        const long source_row = std::min<long>(y / s, long(image.height) - 1);
        Word *target = buffer + size_t(y) * row_words;
        // Without low bits to keep, a row that samples the same image row as
        // the one above is the same bytes.
        if (!Host::kKeepsLowBits && source_row == previous_source_row) {
            std::memcpy(target, target - row_words, row_words * sizeof(Word));
            continue;
        }
        previous_source_row = source_row;
        const PixelQv *source = image.rows[source_row];
        const PixelQv *last_column = source + (image.width - 1);
        int repeat = 0;
        for (long x = 0; x < width; ++x, target += 3) {
            target[0] = Host::Out(source->red, target[0]);
            target[1] = Host::Out(source->green, target[1]);
            target[2] = Host::Out(source->blue, target[2]);
            if (++repeat == s) {
                repeat = 0;
                if (source < last_column) ++source;
            }
        }
    }
}

}  // namespace conversion
