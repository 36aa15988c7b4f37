// The lit and highlight terms in gcc vectors: two doubles a block with SSE2,
// four with AVX2, eight with AVX-512, picked at run time.
#include "bubbles/shading_terms.h"

#include <cmath>
#include <cstring>
#include <initializer_list>


// Vectors pass between always-inlined helpers only, never across a call.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace {

template <int M>
struct Lanes {
    typedef double Doubles __attribute__((vector_size(M * sizeof(double))));
    typedef int64_t Longs __attribute__((vector_size(M * sizeof(int64_t))));
    typedef float Floats __attribute__((vector_size(M * sizeof(float))));
    typedef int32_t Ints __attribute__((vector_size(M * sizeof(int32_t))));
    typedef uint32_t Words __attribute__((vector_size(M * sizeof(uint32_t))));
};

template <class Vector, class T>
[[gnu::always_inline]] inline Vector load(const T *values) {
    Vector vector;
    std::memcpy(&vector, values, sizeof vector);
    return vector;
}

// Each lane as the scalar shader and UnitPower::bracket compute it; Sqrt is
// the processor's correctly rounded square root of a block.
template <int M, class Sqrt>
struct Terms {
    using Doubles = typename Lanes<M>::Doubles;
    using Longs = typename Lanes<M>::Longs;
    using Floats = typename Lanes<M>::Floats;
    using Ints = typename Lanes<M>::Ints;
    using Words = typename Lanes<M>::Words;

    // log2(d) for lanes holding a normal float in (0, 1] (others: anything).
    [[gnu::always_inline]] static Doubles log2_of(const Words &bits, const UnitPowerTables &t) {
        const Words cut = (bits >> 15) & 0xffu;
        const Doubles low = __builtin_convertvector(Ints(bits & 0x7fffu), Doubles) * (1.0 / (1u << 23));
        Doubles log2_cut, inverse_cut;
        for (int i = 0; i < M; ++i) {
            log2_cut[i] = t.log2_cut[cut[i]];
            inverse_cut[i] = t.inverse_cut[cut[i]];
        }
        const Doubles r = low * inverse_cut;
        const Doubles series =
            r * (1.0 + r * (-1.0 / 2 + r * (1.0 / 3 + r * (-1.0 / 4 + r * (1.0 / 5 + r * (-1.0 / 6))))));
        const Doubles log2_mantissa = log2_cut + series * 1.4426950408889634;
        return __builtin_convertvector(Ints(bits >> 23) - 127, Doubles) + log2_mantissa;
    }

    // 2^y for y in [-60, 0].
    [[gnu::always_inline]] static Doubles exp2_of(const Doubles &y, const UnitPowerTables &t) {
        const Ints k = __builtin_convertvector(y * 64.0 + 4096.5, Ints) - 4096;
        const Doubles f = y - __builtin_convertvector(k, Doubles) * (1.0 / 64);
        const Doubles g = f * 0.6931471805599453;
        const Doubles e = 1.0 + g * (1.0 + g * (1.0 / 2 + g * (1.0 / 6 + g * (1.0 / 24 + g * (1.0 / 120)))));
        const Longs scale_bits = (__builtin_convertvector(k >> 6, Longs) + 1023) << 52;
        Doubles scale, step;
        std::memcpy(&scale, &scale_bits, sizeof scale);
        for (int i = 0; i < M; ++i) step[i] = t.exp2_step[k[i] & 63];
        return scale * (step * e);
    }

    // The bracket of d^s in [lo, hi] from y = s log2 d; `zero` lanes had d = 0.
    [[gnu::always_inline]] static void bracket(const Doubles &y, const Longs &zero, const UnitPowerTables &t,
                                               Doubles &lo, Doubles &hi) {
        const Longs tiny = y < -60.0;
        const Doubles p = exp2_of(tiny ? Doubles{} : y, t);
        constexpr double margin = 1.0 / (1u << 30);
        constexpr double tiny_power = 1.0 / (double(1u << 30) * double(1u << 29));
        lo = tiny | zero ? Doubles{} : p * (1.0 - margin);
        hi = zero ? Doubles{} : tiny ? Doubles{} + tiny_power : p * (1.0 + margin);
    }

    [[gnu::always_inline]] static void run(const BubbleShade &c, const int32_t *intensity, const float *normal_x, const float *normal_y,
                    int n, int32_t *lit, int32_t *high) {
        const UnitPowerTables &t = UnitPowerTables::get();
        const double base = c.min_bright / 100, glint = c.glint;
        const double shine = c.shine.exponent(), highlight = c.highlight.exponent();
        for (int x = 0; x < n; x += M) {
            // The last block reads the first pixels again rather than past the run.
            const int at = x + M <= n ? x : (n >= M ? n - M : 0);
            const int lanes = n >= M ? M : n;
            Floats nx{}, ny{};
            Ints coverage{};
            if (lanes == M) {
                nx = load<Floats>(normal_x + at);
                ny = load<Floats>(normal_y + at);
                coverage = load<Ints>(intensity + at);
            } else {
                for (int i = 0; i < lanes; ++i) nx[i] = normal_x[i], ny[i] = normal_y[i], coverage[i] = intensity[i];
            }
            Floats nz2 = 1.0f - nx * nx - ny * ny;
            nz2 = nz2 < 0.0f ? Floats{} : nz2;
            const Doubles depth = Sqrt()(__builtin_convertvector(nz2, Doubles));
            Floats d = __builtin_convertvector(
                __builtin_convertvector(c.lx * nx + c.ly * ny, Doubles) + double(c.lz) * depth, Floats);
            d = d < 0.0f ? Floats{} : d;
            d = d > 1.0f ? Floats{} + 1.0f : d;

            Words bits;
            std::memcpy(&bits, &d, sizeof bits);
            const Words biased = bits >> 23;
            // Normal floats in (0, 1], or zero of either sign; the rest to std::pow.
            const Ints zero32 = (bits & 0x7fffffffu) == 0u;
            const Ints usable32 = ((biased >= 1u) & (biased <= 126u)) | (bits == 0x3f800000u) | zero32;
            const Longs zero = __builtin_convertvector(zero32, Longs);
            const Doubles log2_d = log2_of(usable32 & ~zero32 ? bits : Words{} + 0x3f800000u, t);
            Doubles lo, hi, glint_lo, glint_hi;
            bracket(shine * log2_d, zero, t, lo, hi);
            bracket(highlight * log2_d, zero, t, glint_lo, glint_hi);
            const Doubles scale = __builtin_convertvector(coverage, Doubles);
            const Ints lit_lo = __builtin_convertvector(scale * (base + lo), Ints);
            const Ints lit_hi = __builtin_convertvector(scale * (base + hi), Ints);
            const Ints high_lo = __builtin_convertvector(glint * (0.0 + glint_lo), Ints);
            const Ints high_hi = __builtin_convertvector(glint * (0.0 + glint_hi), Ints);
            const Ints settled = usable32 & (lit_lo == lit_hi) & (high_lo == high_hi);
            for (int i = 0; i < lanes; ++i) {
                if (settled[i]) {
                    lit[at + i] = lit_lo[i];
                    high[at + i] = high_lo[i];
                } else {
                    lit[at + i] = int32_t(int64_t(coverage[i] * (base + std::pow(double(d[i]), shine))));
                    high[at + i] = int32_t(int64_t(c.glint * std::pow(double(d[i]), highlight)));
                }
            }
        }
    }
};

// Lane by lane: the arguments are never negative, so no errno path is taken.
struct PlainSqrt {
    template <class Doubles>
    [[gnu::always_inline]] Doubles operator()(const Doubles &v) const {
        Doubles root;
        for (unsigned i = 0; i < sizeof v / sizeof v[0]; ++i) root[i] = std::sqrt(v[i]);
        return root;
    }
};

typedef void TermsFunction(const BubbleShade &, const int32_t *, const float *, const float *, int, int32_t *,
                           int32_t *);

void terms_baseline(const BubbleShade &c, const int32_t *intensity, const float *nx, const float *ny, int n,
                    int32_t *lit, int32_t *high) {
    Terms<2, PlainSqrt>::run(c, intensity, nx, ny, n, lit, high);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void terms_avx2(const BubbleShade &c, const int32_t *intensity, const float *nx,
                                                const float *ny, int n, int32_t *lit, int32_t *high) {
    Terms<4, PlainSqrt>::run(c, intensity, nx, ny, n, lit, high);
}

__attribute__((target("avx512f"))) void terms_avx512(const BubbleShade &c, const int32_t *intensity,
                                                     const float *nx, const float *ny, int n, int32_t *lit,
                                                     int32_t *high) {
    Terms<8, PlainSqrt>::run(c, intensity, nx, ny, n, lit, high);
}
#endif

TermsFunction *terms_function(ShadeVectors vectors) {
#if defined(__x86_64__)
    if (vectors == ShadeVectors::Avx512) return terms_avx512;
    if (vectors == ShadeVectors::Avx2) return terms_avx2;
#endif
    return terms_baseline;
}

ShadeVectors widest_shade_vectors() {
    for (ShadeVectors vectors : {ShadeVectors::Avx512, ShadeVectors::Avx2})
        if (shade_vectors_run_here(vectors)) return vectors;
    return ShadeVectors::Baseline;
}

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
    // Both terms below 2^31 with room for the bracket: 32767 * (base + 1.01).
    return shade.glint >= 0 && shade.glint < (1 << 30) && base >= 0.0 && base < 65000.0 &&
           shade.shine.exponent() > 0.0 && shade.shine.exponent() <= 1024.0 && shade.highlight.exponent() > 0.0 &&
           shade.highlight.exponent() <= 1024.0;
}

void shading_terms(const BubbleShade &shade, const int32_t *intensity, const float *normal_x, const float *normal_y,
                   int n, int32_t *lit, int32_t *high) {
    static TermsFunction *const function = terms_function(widest_shade_vectors());
    function(shade, intensity, normal_x, normal_y, n, lit, high);
}

void shading_terms_with(ShadeVectors vectors, const BubbleShade &shade, const int32_t *intensity,
                        const float *normal_x, const float *normal_y, int n, int32_t *lit, int32_t *high) {
    terms_function(vectors)(shade, intensity, normal_x, normal_y, n, lit, high);
}
