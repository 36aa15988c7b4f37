// The shader's powers: the bracket holds std::pow's value for every float of
// a binade and for floats spread over all of (0, 1], and the shading terms
// built on it are std::pow's integers, near integer boundaries included.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "bubbles/render/unit_power.h"

namespace {

float float_of(uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

uint32_t bits_of(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// Checks the bracket for floats from first to last, every step-th; returns
// how many failed (and reports the first few).
long bracket_failures(const UnitPower &power, float first, float last, uint32_t step) {
    long failures = 0;
    for (uint32_t bits = bits_of(first); bits <= bits_of(last); bits += step) {
        const float d = float_of(bits);
        double lo, hi;
        if (!power.bracket(d, lo, hi)) {
            if (++failures < 4) ADD_FAILURE() << "no bracket for " << d << " ^ " << power.exponent();
            continue;
        }
        const double exact = std::pow(double(d), power.exponent());
        if (!(lo <= exact && exact <= hi) && ++failures < 4)
            ADD_FAILURE() << d << " ^ " << power.exponent() << " = " << exact << " outside [" << lo << ", " << hi
                          << "]";
    }
    return failures;
}

}  // namespace

// 45 is taken by multiplication, 45.5 through the logarithm.
TEST(UnitPower, BracketHoldsForEveryFloatFromAHalfToOne) {
    EXPECT_EQ(bracket_failures(UnitPower(45.0), 0.5f, 1.0f, 1), 0);
    EXPECT_EQ(bracket_failures(UnitPower(45.5), 0.5f, 1.0f, 1), 0);
}

TEST(UnitPower, WholeExponentsAreMultipliedUpToTheLongestTree) {
    EXPECT_EQ(UnitPower(45.0).whole(), 45u);
    EXPECT_EQ(UnitPower(1024.0).whole(), 1024u);
    for (double exponent : {0.5, 1.3, 45.00001, 1025.0}) EXPECT_EQ(UnitPower(exponent).whole(), 0u) << exponent;
    // Every whole exponent of the controls' range, and the longest tree,
    // over all of (0, 1]: the products' rounding stays inside the bracket,
    // and tiny powers land in [0, 2^-59].
    const float smallest_normal = std::numeric_limits<float>::min();
    for (int exponent = 1; exponent <= 200; ++exponent)
        ASSERT_EQ(bracket_failures(UnitPower(exponent), smallest_normal, 1.0f, 65521), 0) << exponent;
    EXPECT_EQ(bracket_failures(UnitPower(1023.0), 0.9f, 1.0f, 1), 0);
}

TEST(UnitPower, BracketHoldsAcrossTheWholeRangeForManyExponents) {
    const float smallest_normal = std::numeric_limits<float>::min();
    for (double exponent : {1.0, 1.3, 2.3, 9.0, 17.25, 31.7, 45.0, 110.5, 187.9, 200.0, 1024.0})
        EXPECT_EQ(bracket_failures(UnitPower(exponent), smallest_normal, 1.0f, 4093), 0) << exponent;
}

TEST(UnitPower, EndsAndWhatItLeavesToStdPow) {
    double lo, hi;
    ASSERT_TRUE(UnitPower(45.0).bracket(0.0f, lo, hi));
    EXPECT_EQ(lo, 0.0);
    EXPECT_EQ(hi, 0.0);
    ASSERT_TRUE(UnitPower(45.0).bracket(1.0f, lo, hi));
    EXPECT_LE(lo, 1.0);
    EXPECT_GE(hi, 1.0);
    for (double exponent : {0.0, -2.0, 1024.5, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(UnitPower(exponent).bracket(0.5f, lo, hi)) << exponent;
    const UnitPower power(45.0);
    for (float d : {-0.5f, std::nextafter(1.0f, 2.0f), std::numeric_limits<float>::denorm_min(),
                    std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
        EXPECT_FALSE(power.bracket(d, lo, hi)) << d;
}

// The shading's integers against std::pow's, for random pixels and for
// pixels found right at an integer boundary, where the bracket straddles.
TEST(UnitPower, ShadingTermsAreStdPowsIntegers) {
    std::mt19937 pick(20261125);
    std::uniform_int_distribution<int32_t> coverage(1, 32767);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::uniform_real_distribution<double> exponent(1.0, 200.0), percent(0.0, 100.0);
    for (int round = 0; round < 200; ++round) {
        const UnitPower power(round % 10 == 0 ? double(1 + round % 7) : exponent(pick));
        const double base = round % 5 == 0 ? 1.0 : percent(pick) / 100;
        for (int sample = 0; sample < 2000; ++sample) {
            const double scale = coverage(pick);
            const float d = sample % 4 == 0 ? float(std::pow(unit(pick), 1.0 / power.exponent())) : unit(pick);
            const double exact = std::pow(double(d), power.exponent());
            ASSERT_EQ(truncated_power_term(scale, base, d, power), int64_t(scale * (base + exact)))
                << scale << " * (" << base << " + " << d << " ^ " << power.exponent() << ")";
            // The float next to an integer boundary of the highlight term.
            const double wanted = (std::floor(scale * exact) + 1) / scale;
            const float near = float(std::pow(wanted, 1.0 / power.exponent()));
            for (float at : {std::nextafter(near, 0.0f), near, std::nextafter(near, 1.0f)}) {
                if (!(at >= 0.0f && at <= 1.0f)) continue;
                ASSERT_EQ(truncated_power_term(scale, 0.0, at, power),
                          int64_t(scale * std::pow(double(at), power.exponent())))
                    << scale << " * " << at << " ^ " << power.exponent();
            }
        }
    }
}

// Powers of two land exactly on integers: the bracket straddles them and
// std::pow decides.
TEST(UnitPower, ExactIntegersGoToStdPow) {
    int straddled = 0;
    for (int exponent = 1; exponent <= 8; ++exponent) {
        const UnitPower power(exponent);
        for (int halvings = 1; halvings * exponent <= 14; ++halvings) {
            const float d = std::ldexp(1.0f, -halvings);
            const double scale = std::ldexp(1.0, halvings * exponent);
            double lo, hi;
            ASSERT_TRUE(power.bracket(d, lo, hi));
            if (int64_t(scale * lo) != int64_t(scale * hi)) ++straddled;
            EXPECT_EQ(truncated_power_term(scale, 0.0, d, power), 1) << d << " ^ " << exponent;
            EXPECT_EQ(truncated_power_term(scale, 0.5, d, power), int64_t(scale * 0.5) + 1);
        }
    }
    EXPECT_GT(straddled, 0);
}
