#include "sparkhost/plates/half_samples.h"

#include <immintrin.h>

#include <OpenImageIO/imageio.h>

namespace sparkhost {

namespace {

void library_to_halves(const float *from, uint16_t *to, std::size_t count) {
    OIIO::convert_pixel_values(OIIO::TypeDesc::FLOAT, from, OIIO::TypeDesc::HALF, to, int(count));
}

void library_to_floats(const uint16_t *from, float *to, std::size_t count) {
    OIIO::convert_pixel_values(OIIO::TypeDesc::HALF, from, OIIO::TypeDesc::FLOAT, to, int(count));
}

bool has_f16c() {
    static const bool has = __builtin_cpu_supports("avx") && __builtin_cpu_supports("f16c");
    return has;
}

constexpr std::size_t kLanes = 8;

__attribute__((target("avx,f16c"))) void f16c_to_halves(const float *from, uint16_t *to, std::size_t count) {
    std::size_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        const __m256 samples = _mm256_loadu_ps(from + i);
        if (_mm256_movemask_ps(_mm256_cmp_ps(samples, samples, _CMP_UNORD_Q))) {
            library_to_halves(from + i, to + i, kLanes);
            continue;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to + i), _mm256_cvtps_ph(samples, _MM_FROUND_TO_NEAREST_INT));
    }
    if (i < count) library_to_halves(from + i, to + i, count - i);
}

__attribute__((target("avx,f16c"))) void f16c_to_floats(const uint16_t *from, float *to, std::size_t count) {
    std::size_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        const __m256 samples = _mm256_cvtph_ps(_mm_loadu_si128(reinterpret_cast<const __m128i *>(from + i)));
        if (_mm256_movemask_ps(_mm256_cmp_ps(samples, samples, _CMP_UNORD_Q))) {
            library_to_floats(from + i, to + i, kLanes);
            continue;
        }
        _mm256_storeu_ps(to + i, samples);
    }
    if (i < count) library_to_floats(from + i, to + i, count - i);
}

}  // namespace

void floats_to_halves(const float *from, uint16_t *to, std::size_t count) {
    if (has_f16c())
        f16c_to_halves(from, to, count);
    else
        library_to_halves(from, to, count);
}

void halves_to_floats(const uint16_t *from, float *to, std::size_t count) {
    if (has_f16c())
        f16c_to_floats(from, to, count);
    else
        library_to_floats(from, to, count);
}

}  // namespace sparkhost
