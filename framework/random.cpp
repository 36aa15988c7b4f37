// The framework's pseudo-random generators. Their state is process-wide and
// unguarded: call them only from the host's thread, never from banded work.
#include "framework/random.h"

#include <cmath>
#include <cstdint>

#include "framework/minimal_standard.h"

int randQv(long &seed) {
    const uint32_t next = uint32_t(seed) * 214013u + 2531011u;
    seed = long(int32_t(next));
    return int((next >> 16) & 0x7fff);
}

namespace {

using random_detail::ShuffledMinimalStandard;
using random_detail::UnitFloat;

// Separate states: drawing floats must not disturb the integer stream.
ShuffledMinimalStandard integer_stream;
ShuffledMinimalStandard float_stream;

}  // namespace

long ran1Qv(long *seed) { return integer_stream.Next(seed); }

float ran1fQv(long *seed) { return UnitFloat(float_stream.Next(seed)); }

void ran1fQvFill(long *seed, float *out, long count) {
    ShuffledMinimalStandard stream = float_stream;
    long local_seed = *seed;
    for (long i = 0; i < count; ++i) out[i] = UnitFloat(stream.Next(&local_seed));
    *seed = local_seed;
    float_stream = stream;
}

namespace {

// Three linear congruential generators shuffled through a 97-entry table.
struct ThreeCongruential {
    static constexpr long kM1 = 259200, kA1 = 7141, kC1 = 54773;
    static constexpr long kM2 = 134456, kA2 = 8121, kC2 = 28411;
    static constexpr long kM3 = 243000, kA3 = 4561, kC3 = 51349;
    static constexpr int kTableSize = 97;

    long ix1 = 0, ix2 = 0, ix3 = 0;
    float table[kTableSize + 1] = {};  // entries 1..97
    bool started = false;

    float Combined() const { return float((ix1 + ix2 * 7.4373775e-6) * 3.8580247e-6); }
    void Step12() {
        ix1 = (kA1 * ix1 + kC1) % kM1;
        ix2 = (kA2 * ix2 + kC2) % kM2;
    }

    float Next(long *seed) {
        if (*seed < 0 || !started) {
            started = true;
            ix1 = (kC1 - *seed) % kM1;
            ix1 = (kA1 * ix1 + kC1) % kM1;
            ix2 = ix1 % kM2;
            ix1 = (kA1 * ix1 + kC1) % kM1;
            ix3 = ix1 % kM3;
            for (int j = 1; j <= kTableSize; ++j) {
                Step12();
                table[j] = Combined();
            }
            *seed = 1;
        }
        Step12();
        ix3 = (kA3 * ix3 + kC3) % kM3;
        long j = 1 + (kTableSize * ix3) / kM3;
        if (j > kTableSize || j < 1) j = 1;
        const float result = table[j];
        table[j] = Combined();
        return result;
    }
};

ThreeCongruential three_congruential;

bool spare_held = false;
float spare = 0.0f;

}  // namespace

float ran2Qv(long *seed) { return three_congruential.Next(seed); }

float gasdevQv(long *seed) {
    if (spare_held) {
        spare_held = false;
        return spare;
    }
    float x1, x2, r;
    do {
        x1 = float(2.0 * ran2Qv(seed) - 1.0);
        x2 = float(2.0 * ran2Qv(seed) - 1.0);
        r = x1 * x1 + x2 * x2;
    } while (r >= 1.0f);  // a zero radius is not rejected, as the generator always had it
    const float fac = float(std::sqrt(-2.0 * std::log(r) / r));
    spare = x1 * fac;
    spare_held = true;
    return x2 * fac;
}
