// The shading kernel compiled three times: two doubles a block with SSE2,
// four with AVX2 and eight with AVX-512, picked at run time. Each copy sits
// in a target region of its own so that its gathers and square roots are
// the instruction set's.
#include "bubbles/render/shading_terms.h"

#include <cmath>
#include <cstring>
#include <initializer_list>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

// Vectors pass between always-inlined helpers only, never across a call.
#pragma GCC diagnostic ignored "-Wpsabi"
// gcc 12 takes the intrinsics' deliberately undefined start values
// (_mm512_undefined_pd) for uninitialised reads.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

namespace {

template <int M>
struct LaneTypes {
    typedef double Doubles __attribute__((vector_size(M * sizeof(double))));
    typedef float Floats __attribute__((vector_size(M * sizeof(float))));
    typedef int32_t Ints __attribute__((vector_size(M * sizeof(int32_t))));
    typedef uint32_t Words __attribute__((vector_size(M * sizeof(uint32_t))));
    typedef int64_t Longs __attribute__((vector_size(M * sizeof(int64_t))));
};

typedef void TermsFunction(const BubbleShade &, const SpriteRun &, int, int32_t *, int32_t *);
typedef void BlendFunction(const BubbleShade &, double, const SpriteRun &, int, PixelQv *);
typedef void RowsFunction(const BubbleShade &, double, const SpriteRun &, int, int, PixelQv *const *, int);

namespace baseline {
template <int M>
using Lanes = LaneTypes<M>;
struct Isa {
    template <class Ints>
    [[gnu::always_inline]] static auto gather(const double *table, const Ints &index) {
        typename LaneTypes<sizeof(Ints) / sizeof(int32_t)>::Doubles values;
        for (unsigned i = 0; i < sizeof(Ints) / sizeof(int32_t); ++i) values[i] = table[index[i]];
        return values;
    }
    // The arguments are never negative: no errno path is taken.
    template <class Doubles>
    [[gnu::always_inline]] static Doubles root(const Doubles &v) {
        Doubles roots;
        for (unsigned i = 0; i < sizeof(Doubles) / sizeof(double); ++i) roots[i] = std::sqrt(v[i]);
        return roots;
    }
    // Blends with the generic lane code (see the AVX-512 Isa).
    static constexpr bool kChannelBlend = false;
    template <class... Args>
    static int channel_blend(const Args &...) {
        return 0;
    }
    static void copy(PixelQv *to, const PixelQv *from, int n) {
        for (int i = 0; i < n; ++i) to[i] = from[i];
    }
    template <class Ints>
    [[gnu::always_inline]] static bool none(const Ints &v) {
        uint64_t halves[sizeof(Ints) / 8];
        std::memcpy(halves, &v, sizeof halves);
        uint64_t any = 0;
        for (uint64_t half : halves) any |= half;
        return any == 0;
    }
};
#include "bubbles/render/shading_kernel.h"

void terms(const BubbleShade &c, const SpriteRun &run, int n, int32_t *lit, int32_t *high) {
    Kernel<2>::run_terms(c, run, n, lit, high);
}
void blend(const BubbleShade &c, double strength, const SpriteRun &run, int n, PixelQv *pixels) {
    Kernel<2>::run_blend(c, strength, run, n, pixels);
}
void rows(const BubbleShade &c, double strength, const SpriteRun &run, int width, int count,
          PixelQv *const *image_rows, int left) {
    Kernel<2>::run_rows(c, strength, run, width, count, image_rows, left);
}
}  // namespace baseline

#if defined(__x86_64__)
#pragma GCC push_options
#pragma GCC target("avx2")
namespace avx2 {
template <int M>
using Lanes = LaneTypes<M>;
struct Isa {
    [[gnu::always_inline]] static LaneTypes<4>::Doubles gather(const double *table, const LaneTypes<4>::Ints &index) {
        return LaneTypes<4>::Doubles(_mm256_i32gather_pd(table, __m128i(index), 8));
    }
    [[gnu::always_inline]] static LaneTypes<4>::Doubles root(const LaneTypes<4>::Doubles &v) {
        return LaneTypes<4>::Doubles(_mm256_sqrt_pd(__m256d(v)));
    }
    [[gnu::always_inline]] static bool none(const LaneTypes<4>::Ints &v) {
        return _mm_testz_si128(__m128i(v), __m128i(v));
    }
    // Blends with the generic lane code (see the AVX-512 Isa).
    static constexpr bool kChannelBlend = false;
    template <class... Args>
    static int channel_blend(const Args &...) {
        return 0;
    }
    // Four pixels a move, the last ones masked.
    [[gnu::always_inline]] static void copy(PixelQv *to, const PixelQv *from, int n) {
        for (int i = 0; i < n; i += 4) {
            const __m256i lane = _mm256_set_epi64x(3, 2, 1, 0);
            const __m256i mask = _mm256_cmpgt_epi64(_mm256_set1_epi64x(n - i), lane);
            const auto *source = reinterpret_cast<const long long *>(from + i);
            _mm256_maskstore_epi64(reinterpret_cast<long long *>(to + i), mask, _mm256_maskload_epi64(source, mask));
        }
    }
};
#include "bubbles/render/shading_kernel.h"

void terms(const BubbleShade &c, const SpriteRun &run, int n, int32_t *lit, int32_t *high) {
    Kernel<4>::run_terms(c, run, n, lit, high);
}
void blend(const BubbleShade &c, double strength, const SpriteRun &run, int n, PixelQv *pixels) {
    Kernel<4>::run_blend(c, strength, run, n, pixels);
}
void rows(const BubbleShade &c, double strength, const SpriteRun &run, int width, int count,
          PixelQv *const *image_rows, int left) {
    Kernel<4>::run_rows(c, strength, run, width, count, image_rows, left);
}
}  // namespace avx2
#pragma GCC pop_options

#pragma GCC push_options
#pragma GCC target("avx512f")
namespace avx512 {
template <int M>
using Lanes = LaneTypes<M>;
struct Isa {
    [[gnu::always_inline]] static LaneTypes<8>::Doubles gather(const double *table, const LaneTypes<8>::Ints &index) {
        return LaneTypes<8>::Doubles(_mm512_i32gather_pd(__m256i(index), table, 8));
    }
    [[gnu::always_inline]] static LaneTypes<8>::Doubles root(const LaneTypes<8>::Doubles &v) {
        return LaneTypes<8>::Doubles(_mm512_sqrt_pd(__m512d(v)));
    }
    [[gnu::always_inline]] static bool none(const LaneTypes<8>::Ints &v) {
        return _mm256_testz_si256(__m256i(v), __m256i(v));
    }
    // The blend of Kernel::blend with each pixel's four 16-bit channels in
    // 32-bit lanes of their own, four pixels a register: each lane takes the
    // same integer operations as the generic code's channel lanes.
    static constexpr bool kChannelBlend = true;
    [[gnu::always_inline]] static LaneTypes<8>::Longs channel_blend(int32_t red, int32_t green, int32_t blue,
                                                                    const LaneTypes<8>::Ints &w,
                                                                    const LaneTypes<8>::Ints &high,
                                                                    const LaneTypes<8>::Ints &coverage,
                                                                    const LaneTypes<8>::Longs &pixels) {
        const __m512i words = __m512i(pixels);
        const __m512i colour = _mm512_set_epi32(0, blue, green, red, 0, blue, green, red, 0, blue, green, red, 0,
                                                blue, green, red);
        const __m512i weights = _mm512_zextsi256_si512(__m256i(w)), highs = _mm512_zextsi256_si512(__m256i(high));
        const auto half = [&](__m256i four_pixels, int first) {
            const __m512i spread = _mm512_add_epi32(
                _mm512_set_epi32(3, 3, 3, 3, 2, 2, 2, 2, 1, 1, 1, 1, 0, 0, 0, 0), _mm512_set1_epi32(first));
            const __m512i target = _mm512_cvtepu16_epi32(four_pixels);
            const __m512i weight = _mm512_permutexvar_epi32(spread, weights);
            const __m512i rest = _mm512_sub_epi32(_mm512_set1_epi32(32768), weight);
            __m512i mixed = _mm512_srai_epi32(
                _mm512_add_epi32(_mm512_mullo_epi32(colour, weight), _mm512_mullo_epi32(target, rest)), 15);
            mixed = _mm512_mask_add_epi32(mixed, __mmask16(0x8888), target, weight);  // alpha + w
            mixed = _mm512_add_epi32(mixed, _mm512_permutexvar_epi32(spread, highs));
            return _mm512_min_epi32(_mm512_max_epi32(mixed, _mm512_setzero_si512()), _mm512_set1_epi32(32767));
        };
        const __m512i low = half(_mm512_castsi512_si256(words), 0);
        const __m512i upper = half(_mm512_extracti64x4_epi64(words, 1), 4);
        const __m512i blended =
            _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi32_epi16(low)), _mm512_cvtepi32_epi16(upper), 1);
        const __m512i covered32 = _mm512_zextsi256_si512(__m256i(coverage));
        const __mmask8 covered = __mmask8(_mm512_test_epi32_mask(covered32, covered32));
        return LaneTypes<8>::Longs(_mm512_mask_blend_epi64(covered, words, blended));
    }
    // Eight pixels a move, the last ones masked.
    [[gnu::always_inline]] static void copy(PixelQv *to, const PixelQv *from, int n) {
        for (int i = 0; i < n; i += 8) {
            const __mmask8 mask = __mmask8(n - i >= 8 ? 0xff : (1u << (n - i)) - 1);
            _mm512_mask_storeu_epi64(to + i, mask, _mm512_maskz_loadu_epi64(mask, from + i));
        }
    }
};
#include "bubbles/render/shading_kernel.h"

void terms(const BubbleShade &c, const SpriteRun &run, int n, int32_t *lit, int32_t *high) {
    Kernel<8>::run_terms(c, run, n, lit, high);
}
void blend(const BubbleShade &c, double strength, const SpriteRun &run, int n, PixelQv *pixels) {
    Kernel<8>::run_blend(c, strength, run, n, pixels);
}
void rows(const BubbleShade &c, double strength, const SpriteRun &run, int width, int count,
          PixelQv *const *image_rows, int left) {
    Kernel<8>::run_rows(c, strength, run, width, count, image_rows, left);
}
}  // namespace avx512
#pragma GCC pop_options
#endif

TermsFunction *terms_function(ShadeVectors vectors) {
#if defined(__x86_64__)
    if (vectors == ShadeVectors::Avx512) return avx512::terms;
    if (vectors == ShadeVectors::Avx2) return avx2::terms;
#endif
    return baseline::terms;
}

RowsFunction *rows_function(ShadeVectors vectors) {
#if defined(__x86_64__)
    if (vectors == ShadeVectors::Avx512) return avx512::rows;
    if (vectors == ShadeVectors::Avx2) return avx2::rows;
#endif
    return baseline::rows;
}

BlendFunction *blend_function(ShadeVectors vectors) {
#if defined(__x86_64__)
    if (vectors == ShadeVectors::Avx512) return avx512::blend;
    if (vectors == ShadeVectors::Avx2) return avx2::blend;
#endif
    return baseline::blend;
}

ShadeVectors widest_shade_vectors() {
    for (ShadeVectors vectors : {ShadeVectors::Avx512, ShadeVectors::Avx2})
        if (shade_vectors_run_here(vectors)) return vectors;
    return ShadeVectors::Baseline;
}

const ShadeVectors kWidest = widest_shade_vectors();

}  // namespace

bool shade_vectors_run_here(ShadeVectors vectors) {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (vectors == ShadeVectors::Avx512) return __builtin_cpu_supports("avx512f");
    if (vectors == ShadeVectors::Avx2) return __builtin_cpu_supports("avx2");
    return true;
#else
    return vectors == ShadeVectors::Baseline;
#endif
}

bool shading_terms_cover(const BubbleShade &shade) {
    const double base = shade.min_bright / 100;
    const double strength = double((int64_t(shade.density) * shade.glint) >> 15);
    // Both terms below 2^31 with room for the bracket (32767 * (base + 1.01)),
    // and the blend weight strength * lit below 2^53.
    return shade.glint >= 0 && shade.glint < (1 << 30) && base >= 0.0 && base < 65000.0 &&
           strength * 32767 * (base + 1.01) < 9007199254740992.0 && shade.shine.exponent() > 0.0 &&
           shade.shine.exponent() <= 1024.0 && shade.highlight.exponent() > 0.0 &&
           shade.highlight.exponent() <= 1024.0;
}

void shading_terms(const BubbleShade &shade, const SpriteRun &run, int n, int32_t *lit, int32_t *high) {
    terms_function(kWidest)(shade, run, n, lit, high);
}

void shading_terms_with(ShadeVectors vectors, const BubbleShade &shade, const SpriteRun &run, int n, int32_t *lit,
                        int32_t *high) {
    terms_function(vectors)(shade, run, n, lit, high);
}

void shade_run(const BubbleShade &shade, const SpriteRun &run, int n, PixelQv *pixels) {
    shade_run_with(kWidest, shade, run, n, pixels);
}

void shade_run_with(ShadeVectors vectors, const BubbleShade &shade, const SpriteRun &run, int n, PixelQv *pixels) {
    const double strength = double((int64_t(shade.density) * shade.glint) >> 15);
    blend_function(vectors)(shade, strength, run, n, pixels);
}

void shade_rows(const BubbleShade &shade, const SpriteRun &run, int width, int rows, PixelQv *const *image_rows,
                int left) {
    shade_rows_with(kWidest, shade, run, width, rows, image_rows, left);
}

void shade_rows_with(ShadeVectors vectors, const BubbleShade &shade, const SpriteRun &run, int width, int rows,
                     PixelQv *const *image_rows, int left) {
    const double strength = double((int64_t(shade.density) * shade.glint) >> 15);
    rows_function(vectors)(shade, strength, run, width, rows, image_rows, left);
}
