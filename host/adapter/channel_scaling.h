// Channel scaling between the host's 8-bit and 12-bit words and the
// framework's 15-bit channels, one value at a time and eight at a time.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "framework/pixel.h"

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

}  // namespace conversion
