// The built-in moving scene, drawn a block of pixels at a time.
#include "sparkhost/clips/default_scene.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

// Blocks of pixels are gcc vector types, and the helpers take and return
// them by value. gcc warns that such calls change the ABI where a vector is
// wider than the baseline's registers, but every helper is inlined into a
// row function below and none crosses a library boundary. gcc reports it as
// it emits the functions, up to the end of the file, so it stays off here.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace sparkhost {

namespace {

// The widest block drawn: the per-column and per-row arrays are padded to
// a multiple of it.
constexpr int kWidestBlock = 16;

// The width rounded up to whole blocks of the widest.
std::size_t padded_width(int width) { return std::size_t(width + kWidestBlock - 1) / kWidestBlock * kWidestBlock; }

// What the scene's pixels take from their column, for the width rounded up
// to whole blocks; the columns past the edge are drawn and not kept.
struct SceneColumns {
    std::vector<double> u, wave_u;  // u, and u * 1.5
    std::vector<double> check[2];   // the checker's shade on even and odd rows
    std::vector<uint32_t> grain;    // x * 0x8da6b343u, the column's part of the grain hash
};

// What the scene's pixels take from their row and the frame.
struct SceneRow {
    double half_v;                  // v * 0.5
    double base_r, base_g, base_b;  // the blue-to-green gradient
    double wave_shift, band_shift;  // t * 0.01 and t * 0.02
    const double *check;            // the row's SceneColumns::check
    uint32_t grain_key;             // y * 0xd8163841u ^ frame * 0xcb1ab31fu
};

// a + b wrapping past 2^31, as the scene has always been drawn: 3 * frame
// passes it from frame 715827883 on.
int wrapping_sum(int a, int b) { return int(uint32_t(a) + uint32_t(b)); }

// Works out the per-column values once for a frame.
SceneColumns scene_columns(int number, int width, int cell) {
    const std::size_t padded = padded_width(width);
    SceneColumns columns;
    for (auto *values : {&columns.u, &columns.wave_u, &columns.check[0], &columns.check[1]}) values->resize(padded);
    columns.grain.resize(padded);
    const int shift = int(3u * uint32_t(number));
    for (int x = 0; x < int(padded); ++x) {
        columns.u[x] = (x + 0.5) / width;
        columns.wave_u[x] = columns.u[x] * 1.5;
        const bool odd = (wrapping_sum(x, shift) / cell) & 1;
        columns.check[0][x] = odd ? 0.035 : -0.015;
        columns.check[1][x] = odd ? -0.015 : 0.035;
        columns.grain[x] = uint32_t(x) * 0x8da6b343u;
    }
    return columns;
}

// gcc vector types of N lanes.
template <int N>
struct Vectors {
    typedef double Doubles __attribute__((vector_size(N * sizeof(double))));
    typedef int64_t Masks __attribute__((vector_size(N * sizeof(int64_t))));
    typedef int32_t Ints __attribute__((vector_size(N * sizeof(int32_t))));
    typedef uint32_t Words __attribute__((vector_size(N * sizeof(uint32_t))));
    typedef uint64_t Longs __attribute__((vector_size(N * sizeof(uint64_t))));
};

// Loads a vector from an array padded to whole blocks.
template <class Vector, class T>
[[gnu::always_inline]] inline Vector load(const T *values) {
    Vector block;
    std::memcpy(&block, values, sizeof block);
    return block;
}

// Lanes First, First + 1... of v, as many as I... counts.
template <int First, class Vector, std::size_t... I>
[[gnu::always_inline]] inline auto lanes(const Vector &v, std::index_sequence<I...>) {
    return __builtin_shufflevector(v, v, (First + int(I))...);
}

// Stores a vector into an array padded to whole blocks.
template <class Vector, class T>
[[gnu::always_inline]] inline void store(T *values, const Vector &block) {
    std::memcpy(values, &block, sizeof block);
}

// A row's channels as to16() gives them, for the width rounded up to whole
// blocks.
struct RowScratch {
    explicit RowScratch(std::size_t padded) : red(padded), green(padded), blue(padded) {}
    std::vector<int32_t> red, green, blue;
};

// The scene's colours N pixels at a time. Each lane does the per-pixel
// formula's IEEE operations in its order (no fused multiply-add:
// -ffp-contract=off), so the values are those of one pixel at a time.
// Everything is forced inline into the row functions, which are compiled
// for the instruction set whose registers hold N doubles; a copy compiled
// for narrower ones would split the vectors lane by lane.
template <int N>
struct Colours {
    using Doubles = typename Vectors<N>::Doubles;
    using Masks = typename Vectors<N>::Masks;
    using Ints = typename Vectors<N>::Ints;
    using Words = typename Vectors<N>::Words;

    // floor() for |t| < 2^51: adding and taking away 1.5 * 2^52 rounds t to
    // the nearest whole number, exactly, as the doubles from 2^52 to 2^53
    // are the whole numbers; then one down where that is above t. (-0.0
    // comes out +0.0, as it did from truncating through int64.)
    [[gnu::always_inline]] static Doubles floor(const Doubles &t) {
        const Doubles nearest = (t + 0x1.8p52) - 0x1.8p52;
        return nearest > t ? nearest - 1.0 : nearest;
    }

    // std::fabs(): the sign bit cleared.
    [[gnu::always_inline]] static Doubles fabs(const Doubles &t) { return Doubles(Masks(t) & INT64_MAX); }

    // A triangle wave with period 1 between 0 and 1.
    [[gnu::always_inline]] static Doubles triangle(const Doubles &t) {
        const Doubles f = t - floor(t);
        return 1.0 - fabs(2.0 * f - 1.0);
    }

    // Whether any lane is set, the halves folded together in registers.
    [[gnu::always_inline]] static bool any(const Masks &set) {
        if constexpr (N == 2) {
            return (set[0] | set[1]) != 0;
        } else {
            constexpr auto half = std::make_index_sequence<N / 2>();
            return Colours<N / 2>::any(lanes<0>(set, half) | lanes<N / 2>(set, half));
        }
    }

    // smoothstep(0.75, 0.95, ridge), its clamp comparison for comparison.
    // +0.0 where ridge <= 0.75: the scene adds the band to sums that are
    // positive, where adding +0.0 leaves them as they are, as the one pixel
    // at a time drawing that skips the band there does.
    [[gnu::always_inline]] static Doubles band(const Doubles &ridge) {
        const Doubles zero{}, one = zero + 1.0, low = (ridge - 0.75) / (0.95 - 0.75);
        const Doubles t = low < 0.0 ? zero : 1.0 < low ? one : low;
        return t * t * (3.0 - 2.0 * t);
    }

    // Grain from an integer hash, in -1..1: `across` holds the column's part
    // of the hash, `key` the row's and the frame's.
    [[gnu::always_inline]] static Doubles grain(const Words &across, uint32_t key) {
        Words h = across ^ key;
        h ^= h >> 15;
        h *= 0x2c1b3c6du;
        h ^= h >> 12;
        // Below 2^16, so converting it as signed is exact.
        return __builtin_convertvector(Ints(h & 0xffffu), Doubles) / 32767.5 - 1.0;
    }

    // to16() of a channel: the scene's channels lie between 0.01 and 0.81
    // (the largest sum being 0.40 + 0.15 + 0.20 + 0.035 + 0.025 for blue),
    // so its clamp to 0..1 never acts, and the rounded value 0.5..65535.5
    // truncated through int32 is the uint16_t conversion.
    [[gnu::always_inline]] static Ints to16(const Doubles &channel) {
        return __builtin_convertvector(channel * 65535.0 + 0.5, Ints);
    }

    // One row of the scene's colours, as to16() gives them.
    [[gnu::always_inline]] static void row(const SceneColumns &columns, const SceneRow &row, int width,
                                           RowScratch &scratch) {
        // Held in registers: the scratch stores could alias them otherwise.
        const SceneRow here = row;
        const double *u = columns.u.data(), *wave_u = columns.wave_u.data();
        const uint32_t *grain_across = columns.grain.data();
        int32_t *red = scratch.red.data(), *green = scratch.green.data(), *blue = scratch.blue.data();
        for (int x = 0; x < width; x += N) {
            const Doubles wave = triangle(load<Doubles>(wave_u + x) + here.half_v + here.wave_shift);
            Doubles r = here.base_r + 0.30 * wave * wave;
            Doubles g = here.base_g + 0.10 * (1.0 - wave);
            const Doubles ridge = triangle((load<Doubles>(u + x) + here.half_v) * 4.0 - here.band_shift);
            // Most blocks lie wholly outside the bands, where band() is +0.0.
            const Doubles bands = any(ridge > 0.75) ? band(ridge) : Doubles{};
            r += 0.12 * bands;
            g += 0.18 * bands;
            Doubles b = here.base_b + 0.20 * bands;
            const Doubles check = load<Doubles>(here.check + x);
            r += check;
            g += check;
            b += check;
            const Doubles noise = 0.025 * grain(load<Words>(grain_across + x), here.grain_key);
            store(red + x, to16(r + noise));
            store(green + x, to16(g + noise));
            store(blue + x, to16(b + noise));
        }
    }
};

// A row's pixels M at a time, from the channels Colours::row() leaves.
template <int M>
struct Pixels {
    using Words = typename Vectors<M>::Words;
    using Longs = typename Vectors<M / 2>::Longs;
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "pixels are written as 64-bit words, low bytes first");

    // quantize16(): a 16-bit channel rounded to 0..top.
    [[gnu::always_inline]] static Words quantize(const Words &word, uint32_t top) {
        return (word * top + 32767u) / 65535u;
    }

    // Lanes First to First + M / 2 of a and b taken in turn: a b a b...
    template <int First, std::size_t... I>
    [[gnu::always_inline]] static Words interleave(const Words &a, const Words &b, std::index_sequence<I...>) {
        return __builtin_shufflevector(a, b, (First + int(I) / 2 + int(I) % 2 * M)...);
    }

    // Writes 64-bit words 6 bytes apart: each runs 2 bytes over, which the
    // next word, or the next block, overwrites.
    [[gnu::always_inline]] static void put_sixes(uint8_t *out, const Longs &words) {
        for (int k = 0; k < M / 2; ++k) std::memcpy(out + 6 * k, &words[k], 8);
    }

    // Writes a block that has a pixel after it in the row.
    [[gnu::always_inline]] static void put_block(uint8_t *out, const Words &r, const Words &g, const Words &b,
                                                 bool deep) {
        if (deep) {
            // A pixel's three words in a 64-bit lane: red, green, then blue.
            const Words red_green = r << 4 | g << 20, blue = b << 4;
            constexpr auto all = std::make_index_sequence<M>();
            put_sixes(out, Longs(interleave<0>(red_green, blue, all)));
            put_sixes(out + 3 * M, Longs(interleave<M / 2>(red_green, blue, all)));
        } else {
            // Two pixels' three bytes in each 64-bit lane.
            const Longs pairs = Longs(r | g << 8 | b << 16);
            put_sixes(out, (pairs & 0xffffffu) | (pairs >> 8 & 0xffffff000000u));
        }
    }

    // Writes the first n pixels of a block, one level at a time, so that
    // nothing is written past the row.
    [[gnu::always_inline]] static void put_last(uint8_t *out, const Words &r, const Words &g, const Words &b, int n,
                                                bool deep) {
        for (int i = 0; i < n; ++i)
            for (uint32_t level : {r[i], g[i], b[i]}) {
                if (deep) {
                    const uint16_t word = uint16_t(level << 4);
                    std::memcpy(out, &word, 2);
                    out += 2;
                } else {
                    *out++ = uint8_t(level);
                }
            }
    }

    // Writes the row's pixels into the frame's row `out`: three bytes each,
    // or three 16-bit words with the 12-bit values in their top bits.
    [[gnu::always_inline]] static void row(const RowScratch &scratch, int width, bool deep, uint8_t *out) {
        const uint32_t top = deep ? 4095 : 255;
        const int32_t *red = scratch.red.data(), *green = scratch.green.data(), *blue = scratch.blue.data();
        const int pixel = deep ? 6 : 3;
        for (int x = 0; x < width; x += M) {
            const Words r = quantize(load<Words>(red + x), top), g = quantize(load<Words>(green + x), top),
                        b = quantize(load<Words>(blue + x), top);
            if (x + M >= width) {
                put_last(out + x * pixel, r, g, b, width - x, deep);
                return;
            }
            put_block(out + x * pixel, r, g, b, deep);
        }
    }
};

// The largest |argument| Colours::floor() is given: an int frame number
// times 0.02 for the light bands, plus (u + v * 0.5) * 4 from the pixel's
// place, u being under kWidestBlock in the padding columns of a narrow frame.
static_assert(2147483648.0 * 0.02 + (kWidestBlock + 1) * 4.0 < 0x1p51, "Colours::floor() is exact below 2^51");

typedef void RowFunction(const SceneColumns &, const SceneRow &, int, bool, RowScratch &, uint8_t *);

// Two doubles a block: SSE2, which every x86-64 has.
void scene_row_baseline(const SceneColumns &columns, const SceneRow &row, int width, bool deep, RowScratch &scratch,
                        uint8_t *out) {
    Colours<2>::row(columns, row, width, scratch);
    Pixels<4>::row(scratch, width, deep, out);
}

#if defined(__x86_64__)
// Four doubles a block, for processors with AVX2.
__attribute__((target("avx2"))) void scene_row_avx2(const SceneColumns &columns, const SceneRow &row, int width,
                                                    bool deep, RowScratch &scratch, uint8_t *out) {
    Colours<4>::row(columns, row, width, scratch);
    Pixels<8>::row(scratch, width, deep, out);
}

// Eight doubles a block, for processors with AVX-512.
__attribute__((target("avx512f"))) void scene_row_avx512(const SceneColumns &columns, const SceneRow &row, int width,
                                                         bool deep, RowScratch &scratch, uint8_t *out) {
    Colours<8>::row(columns, row, width, scratch);
    Pixels<16>::row(scratch, width, deep, out);
}
#endif

// The row function drawing with `vectors`.
RowFunction *scene_row(SceneVectors vectors) {
#if defined(__x86_64__)
    if (vectors == SceneVectors::Avx512) return scene_row_avx512;
    if (vectors == SceneVectors::Avx2) return scene_row_avx2;
#endif
    return scene_row_baseline;
}

// The widest vectors this processor runs.
SceneVectors widest_vectors() {
    for (SceneVectors vectors : {SceneVectors::Avx512, SceneVectors::Avx2})
        if (runs_here(vectors)) return vectors;
    return SceneVectors::Baseline;
}

// Deep water: a blue-to-green gradient, a slow colour wave, drifting light
// bands, a moving checker texture and grain, all shifting with the frame.
// What depends only on the row or the column is worked out once for it.
// Each pixel's colour is, in this order of operations:
//   wave = triangle(u * 1.5 + v * 0.5 + t * 0.01)
//   ridge = triangle((u + v * 0.5) * 4 - t * 0.02)
//   band = ridge > 0.75 ? smoothstep(0.75, 0.95, ridge) : none
//   r = 0.05 + 0.05 v + 0.30 wave^2 + 0.12 band + check + noise
//   g = 0.35 - 0.15 v + 0.10 (1 - wave) + 0.18 band + check + noise
//   b = 0.40 + 0.15 v + 0.20 band + check + noise
void draw_scene_with(RowFunction *row_function, int number, const FrameFormat &format, Frame &into) {
    into.reshape(format);
    const int cell = std::max(format.height / 12, 2);
    const double t = number;
    const bool deep = format.depth == Depth::Bits12;
    const SceneColumns columns = scene_columns(number, format.width, cell);
    RowScratch scratch(padded_width(format.width));
    for (int y = 0; y < format.height; ++y) {
        const double v = (y + 0.5) / format.height;
        const int row_odd = (wrapping_sum(y, number) / cell) & 1;
        const SceneRow row{v * 0.5,
                           0.05 + 0.05 * v,
                           0.35 - 0.15 * v,
                           0.40 + 0.15 * v,
                           t * 0.01,
                           t * 0.02,
                           columns.check[row_odd].data(),
                           uint32_t(y) * 0xd8163841u ^ uint32_t(number) * 0xcb1ab31fu};
        row_function(columns, row, format.width, deep, scratch, into.row(y));
    }
}

}  // namespace

bool runs_here(SceneVectors vectors) {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (vectors == SceneVectors::Avx512) return __builtin_cpu_supports("avx512f");
    if (vectors == SceneVectors::Avx2) return __builtin_cpu_supports("avx2");
    return true;
#else
    return vectors == SceneVectors::Baseline;
#endif
}

void draw_scene(int number, const FrameFormat &format, Frame &into) {
    static RowFunction *const row_function = scene_row(widest_vectors());
    draw_scene_with(row_function, number, format, into);
}

void draw_scene(int number, const FrameFormat &format, Frame &into, SceneVectors vectors) {
    draw_scene_with(scene_row(vectors), number, format, into);
}

}  // namespace sparkhost
