// The lazily made table of uniform numbers, and the generator's seed jump.
#include "framework/random_table.h"

using random_detail::ShuffledMinimalStandard;

namespace {

// Entries made at a time: a frame's handful of first reads then takes one
// lock, and a band that reads past the end waits only a few microseconds.
constexpr int32_t kMadeAtOnce = 4096;

// (a * b) mod m for a, b in [0, m): exact in 64 bits as m < 2^31.
long multiply_mod(long a, long b) { return long((int64_t(a) * int64_t(b)) % ShuffledMinimalStandard::kModulus); }

long power_mod(long base, long exponent) {
    long result = 1;
    for (; exponent > 0; exponent >>= 1) {
        if (exponent & 1) result = multiply_mod(result, base);
        base = multiply_mod(base, base);
    }
    return result;
}

// Where the seed stands after `draws` draws from `stream`, without making
// them all. Once the seed lies in 1 .. 2^31 - 2 and the stream has started,
// every draw is one Schrage step, which is multiplication by 16807 modulo
// 2^31 - 1 and stays in that range; the draws before that (a restart, a seed
// past the modulus from a huge frame number, a restart that lands on zero)
// are made one by one.
long seed_after_draws(long seed, ShuffledMinimalStandard stream, long draws) {
    const auto settled = [&] { return seed >= 1 && seed < ShuffledMinimalStandard::kModulus && stream.Started(); };
    for (; draws > 0 && !settled(); --draws) stream.Next(&seed);
    if (draws == 0) return seed;
    return multiply_mod(seed, power_mod(ShuffledMinimalStandard::kMultiplier, draws));
}

}  // namespace

RandomTableQv::RandomTableQv() : values_(new float[kSize]) {}

void RandomTableQv::Refill(long *seed) {
    const bool restarts = ShuffledMinimalStandard::Restarts(*seed, stream_.Started());
    // Continuing needs the generator where the last entry left it.
    if (!restarts) MakeUpTo(kSize);
    std::lock_guard<std::mutex> lock(making_);
    seed_ = *seed;
    *seed = seed_after_draws(*seed, stream_, kSize);
    made_.store(0, std::memory_order_release);
}

float *RandomTableQv::Whole() {
    MakeUpTo(kSize);
    return values_.get();
}

void RandomTableQv::MakeUpTo(int32_t count) const {
    std::lock_guard<std::mutex> lock(making_);
    const int32_t made = made_.load(std::memory_order_relaxed);
    if (count <= made) return;
    int32_t end = made + kMadeAtOnce > count ? made + kMadeAtOnce : count;
    if (end > kSize) end = kSize;
    float *values = values_.get();
    for (int32_t i = made; i < end; ++i) values[i] = random_detail::UnitFloat(stream_.Next(&seed_));
    made_.store(end, std::memory_order_release);
}
