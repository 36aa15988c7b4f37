// The minimal standard generator with a 32-entry shuffle table, shared by
// ran1Qv, ran1fQv and the effects' random tables.
#pragma once

namespace random_detail {

class ShuffledMinimalStandard {
public:
    static constexpr long kMultiplier = 16807;
    static constexpr long kModulus = 2147483647;

    // A seed of 0 or below, or a generator never used, starts over.
    static bool Restarts(long seed, bool started) { return seed <= 0 || !started; }
    bool Started() const { return output_ != 0; }

    long Next(long *seed) {
        if (Restarts(*seed, Started())) {
            *seed = -*seed < 1 ? 1 : -*seed;
            for (int j = kTableSize + 7; j >= 0; --j) {
                Step(seed);
                if (j < kTableSize) table_[j] = *seed;
            }
            output_ = table_[0];
        }
        Step(seed);
        const long j = output_ / kDivisor;
        output_ = table_[j];
        table_[j] = *seed;
        return output_;
    }

    // Schrage's decomposition keeps 16807 * seed from overflowing 32 bits.
    static void Step(long *seed) {
        const long k = *seed / kQuotient;
        *seed = kMultiplier * (*seed - k * kQuotient) - kRemainder * k;
        if (*seed < 0) *seed += kModulus;
    }

    // Steps taken by a restart before its first draw.
    static constexpr int kRestartSteps = 32 + 8;

private:
    static constexpr long kQuotient = 127773;  // modulus / multiplier
    static constexpr long kRemainder = 2836;   // modulus % multiplier
    static constexpr int kTableSize = 32;
    static constexpr long kDivisor = 1 + (kModulus - 1) / kTableSize;

    long output_ = 0;
    long table_[kTableSize] = {};
};

// ran1fQv's float of a draw: never quite one.
inline float UnitFloat(long draw) {
    const float value = float(draw) * 4.656612873e-10f;
    return value > 0.99999988f ? 0.99999988f : value;
}

}  // namespace random_detail
