// Powers d^s of a shading term d in [0, 1], bracketed cheaply so that the
// shader gets the very integers std::pow would give without calling it for
// almost every pixel.
//
// Why the integers are exact. The shader truncates g(p) = I * (m + p) and
// glint * p, where p = std::pow(d, s), I and glint are non-negative and m is
// fixed. Each IEEE operation is monotone non-decreasing in its operands, so
// the computed g is monotone in p and so is its truncation. `bracket` gives
// lo <= std::pow(d, s) <= hi; when trunc(g(lo)) == trunc(g(hi)), every p in
// between, std::pow's among them, truncates to the same integer. Only when
// they differ does the shader call std::pow (a few pixels in 10^5).
//
// Why the bracket holds (u = 2^-53, s in (0, 1024], d a normal float):
//   log2 d = e + log2(c) + log1p(r) / ln 2, d = 2^e * c * (1 + r), c the
//   mantissa cut to 8 bits, 0 <= r < 2^-8. The tables are within 2u, r is
//   within 2u relative, the series to r^6 is off by under r^7 / 7 < 2^-58
//   and its evaluation by a few u * r; so log2(c(1 + r)) is within 2^-50
//   and L = e + that, |L| <= 126, within 2^-45 once its own rounding is in.
//   y = s * L is then within s * 2^-45 + 64u (for y >= -64).
//   2^y = 2^q * 2^(j/64) * exp(f ln 2), |f| <= 1/128 taken exactly (Sterbenz),
//   the series to g^5 off by under g^6 / 720 < 2^-54, the table and the
//   products within 8u in all: 2^y is within 2^-50 relative of the true
//   power of y, and the error of y adds ln 2 * (2^-35 + 2^-47).
//   So our p is within 2^-34 of d^s relative; std::pow is within an ulp of
//   it (glibc documents under one). The bracket is p * (1 -+ 2^-30): more
//   than ten times what is needed, so even a libm a million ulps off would
//   still be bracketed. Below y = -60 the power is under 2^-59 and the
//   bracket is [0, 2^-59]. d = 0 gives 0 exactly (s > 0), d = 1 gives 1.
// Anything else (other exponents, subnormal, negative or NaN d) returns
// false and the caller uses std::pow.
//
// Whole exponents n (1..1024, the presets' Shine and Highlight) skip the
// logarithm: p = d^n by repeated squaring in double, d exact. Every product
// of a multiplication tree is the exact product times (1 + e) per node,
// |e| <= u, and the tree of d^n expands to n - 1 nodes, so p is within
// (1 + u)^1023 - 1 < 2^-42 of d^n relative, as long as nothing underflows.
// Nothing does while p >= 2^-60: every partial product is at least p, all
// factors being at most 1 and rounding monotone. And if d^n >= 2^-59 every
// partial product is that large and p > 2^-60; so p < 2^-60 means
// d^n < 2^-59, the tiny bracket above.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

class UnitPower {
public:
    explicit UnitPower(double exponent = 1.0);

    double exponent() const { return s_; }
    // The exponent when it is a whole number the bracket takes by
    // multiplication (1..1024), else 0.
    uint32_t whole() const { return whole_; }

    // d^n by repeated squaring, d in [0, 1], n >= 1.
    static double whole_power(double d, uint32_t n) {
        double power = 1.0;  // 1 * d is d exactly: no rounding added
        for (;;) {
            if (n & 1u) power *= d;
            n >>= 1;
            if (!n) return power;
            d *= d;
        }
    }

    // lo <= std::pow(double(d), exponent()) <= hi, or false when d or the
    // exponent lies outside what the bracket covers.
    bool bracket(float d, double &lo, double &hi) const {
        if (!usable_) return false;
        if (d == 0.0f) {
            lo = hi = 0.0;
            return true;
        }
        uint32_t bits;
        std::memcpy(&bits, &d, sizeof bits);
        const int32_t biased = int32_t(bits >> 23);
        // Normal floats in (0, 1] only: sign bit clear, exponent 1..127.
        if (biased < 1 || biased > 127 || (biased == 127 && (bits & 0x7fffff) != 0)) return false;
        if (whole_) {
            const double p = whole_power(double(d), whole_);
            if (p < 1.0 / (double(1u << 30) * double(1u << 30))) {
                lo = 0.0;
                hi = kTinyPower;
                return true;
            }
            lo = p * (1.0 - kMargin);
            hi = p * (1.0 + kMargin);
            return true;
        }
        const double y = s_ * log2_of(bits, biased);
        if (y < -60.0) {
            lo = 0.0;
            hi = kTinyPower;
            return true;
        }
        const double p = exp2_of(y);
        lo = p * (1.0 - kMargin);
        hi = p * (1.0 + kMargin);
        return true;
    }

private:
    static constexpr double kMargin = 1.0 / (1u << 30);
    static constexpr double kTinyPower = 1.0 / (double(1u << 30) * double(1u << 29));  // 2^-59

    double log2_of(uint32_t bits, int32_t biased) const;
    double exp2_of(double y) const;

    double s_;
    bool usable_;
    uint32_t whole_;
    const struct UnitPowerTables *tables_;
};

// The tables behind UnitPower, filled once.
struct UnitPowerTables {
    double log2_cut[256];   // log2(1 + i / 256)
    double inverse_cut[256];  // 1 / (1 + i / 256)
    double exp2_step[64];   // 2^(j / 64)
    static const UnitPowerTables &get();
};

inline double UnitPower::log2_of(uint32_t bits, int32_t biased) const {
    const UnitPowerTables &t = *tables_;
    const uint32_t cut = (bits >> 15) & 0xff;
    const double low = double(bits & 0x7fff) * (1.0 / (1u << 23));  // exact
    const double r = low * t.inverse_cut[cut];
    const double series =
        r * (1.0 + r * (-1.0 / 2 + r * (1.0 / 3 + r * (-1.0 / 4 + r * (1.0 / 5 + r * (-1.0 / 6))))));
    const double log2_mantissa = t.log2_cut[cut] + series * 1.4426950408889634;
    return double(biased - 127) + log2_mantissa;
}

inline double UnitPower::exp2_of(double y) const {
    const UnitPowerTables &t = *tables_;
    // y in [-60, 0]: k nearest to 64 y (the truncation is a floor, of a
    // positive number), f = y - k / 64 exact as y and k / 64 are within a
    // factor two of each other, |f| <= 1/128 give or take an ulp.
    const int32_t k = int32_t(y * 64.0 + 4096.5) - 4096;
    const double f = y - double(k) * (1.0 / 64);
    const double g = f * 0.6931471805599453;
    const double e = 1.0 + g * (1.0 + g * (1.0 / 2 + g * (1.0 / 6 + g * (1.0 / 24 + g * (1.0 / 120)))));
    const int32_t q = k >> 6;  // floor(k / 64); k <= 0
    uint64_t scale_bits = uint64_t(int64_t(q) + 1023) << 52;
    double scale;
    std::memcpy(&scale, &scale_bits, sizeof scale);
    return scale * (t.exp2_step[k & 63] * e);
}

// int64_t(scale * (base + std::pow(double(d), power.exponent()))), the same
// integer, for scale >= 0 and base >= 0: std::pow only where the bracket
// straddles an integer.
inline int64_t truncated_power_term(double scale, double base, float d, const UnitPower &power) {
    double lo, hi;
    if (power.bracket(d, lo, hi)) {
        const int64_t low = int64_t(scale * (base + lo));
        if (low == int64_t(scale * (base + hi))) return low;
    }
    return int64_t(scale * (base + std::pow(double(d), power.exponent())));
}
