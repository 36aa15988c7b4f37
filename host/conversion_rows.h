// Row kernels shared by the whole-frame and the banded host conversions:
// the channel scaling of each host depth and the loops over a range of rows.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

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

// Whole rows go through a scratch row of 16-bit words, one per host
// channel, so that the scaling runs eight channels at a time; spreading the
// words into pixels and back is then one 8-byte move per pixel.
typedef uint16_t Words8 __attribute__((vector_size(16)));
typedef uint8_t Bytes8 __attribute__((vector_size(8)));
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "pixels are moved as 64-bit words with red in the low bits");

// Scratch row for `width` pixels: three words each, plus the slack that the
// 8-byte moves of the last pixel reach into.
inline std::vector<uint16_t> ScratchRow(long width) {
    return std::vector<uint16_t>(size_t(width > 0 ? width : 0) * 3 + 4);
}

inline void ScaleIn(const uint8_t *host, uint16_t *words, size_t count) {
    size_t k = 0;
    for (; k + 8 <= count; k += 8) {
        Bytes8 b;
        std::memcpy(&b, host + k, sizeof b);
        Words8 w = __builtin_convertvector(b, Words8);
        w = (w << 7) | (w >> 1);
        std::memcpy(words + k, &w, sizeof w);
    }
    for (; k < count; ++k) words[k] = Host8::In(host[k]);
}

inline void ScaleIn(const uint16_t *host, uint16_t *words, size_t count) {
    size_t k = 0;
    for (; k + 8 <= count; k += 8) {
        Words8 w;
        std::memcpy(&w, host + k, sizeof w);
        w = w >> 4;
        w = (w << 3) | (w >> 9);
        std::memcpy(words + k, &w, sizeof w);
    }
    for (; k < count; ++k) words[k] = Host12::In(host[k]);
}

inline void ScaleOut(const uint16_t *words, uint8_t *host, size_t count) {
    const Words8 limit = {255, 255, 255, 255, 255, 255, 255, 255};
    size_t k = 0;
    for (; k + 8 <= count; k += 8) {
        Words8 w;
        std::memcpy(&w, words + k, sizeof w);
        w = w >> 7;
        const Words8 over = Words8(w > limit);
        w = (w & ~over) | (limit & over);
        Bytes8 b = __builtin_convertvector(w, Bytes8);
        std::memcpy(host + k, &b, sizeof b);
    }
    for (; k < count; ++k) host[k] = Host8::Out(words[k], 0);
}

inline void ScaleOut(const uint16_t *words, uint16_t *host, size_t count) {
    const Words8 limit = {0xFFF, 0xFFF, 0xFFF, 0xFFF, 0xFFF, 0xFFF, 0xFFF, 0xFFF};
    const Words8 low_bits = {0xF, 0xF, 0xF, 0xF, 0xF, 0xF, 0xF, 0xF};
    size_t k = 0;
    for (; k + 8 <= count; k += 8) {
        Words8 w, old;
        std::memcpy(&w, words + k, sizeof w);
        std::memcpy(&old, host + k, sizeof old);
        w = w >> 3;
        const Words8 over = Words8(w > limit);
        w = (w & ~over) | (limit & over);
        w = (w << 4) | (old & low_bits);
        std::memcpy(host + k, &w, sizeof w);
    }
    for (; k < count; ++k) host[k] = Host12::Out(words[k], host[k]);
}

// Three words a pixel into pixels with the given alpha.
inline void SpreadToPixels(const uint16_t *words, PixelQv *row, long columns, uint16_t alpha) {
    const uint64_t alpha_bits = uint64_t(alpha) << 48;
    for (long x = 0; x < columns; ++x) {
        uint64_t pixel;
        std::memcpy(&pixel, words + 3 * x, sizeof pixel);
        pixel = (pixel & 0x0000FFFFFFFFFFFFull) | alpha_bits;
        std::memcpy(row + x, &pixel, sizeof pixel);
    }
}

// Pixels into three words each; every move's alpha is overwritten by the next.
inline void GatherFromPixels(const PixelQv *row, uint16_t *words, long columns) {
    for (long x = 0; x < columns; ++x) std::memcpy(words + 3 * x, row + x, sizeof(PixelQv));
}

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
