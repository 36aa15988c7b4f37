// The light cone skips acos where the soft edge's answer is known; every
// cosine must still get the float the full formula gives, above all the
// cosines right at the edge's two ends.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "bubbles/engine/particle_engine.h"
#include "bubbles/render/light_cone.h"

namespace {

float full_formula(const LightCone &cone, float cosine) {
    const float theta = float(std::acos(double(cosine)));
    return 1 - ParticleEngine::soft_step(theta, cone.inner, cone.half);
}

bool same_bits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Cosines around `centre`, a few thousand floats either side of it.
void add_neighbourhood(std::vector<float> &cosines, double centre) {
    float below = float(centre), above = float(centre);
    for (int i = 0; i < 3000; ++i) {
        below = std::nextafter(below, 0.0f);
        above = std::nextafter(above, 1.0f);
        cosines.push_back(below);
        cosines.push_back(above);
    }
}

}  // namespace

TEST(LightCone, EveryCosineGetsTheFullFormulasFloat) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> positive(1e-6f, 0.99999f);
    // The controls' range, the presets' usual cones, a pinpoint one, and
    // cones too wide for the shortcut.
    for (double spread : {0.0, 0.005, 1.0, 30.0, 90.0, 150.0, 171.8, 172.0, 180.0, -20.0, 400.0}) {
        const LightCone cone(spread);
        std::vector<float> cosines;
        for (int i = 0; i < 20000; ++i) cosines.push_back(positive(random));
        add_neighbourhood(cosines, std::cos(double(cone.inner)));
        add_neighbourhood(cosines, std::cos(double(cone.half)));
        cosines.push_back(0.99999f);
        int mismatches = 0;
        for (float cosine : cosines)
            if (cosine > 0.0f && cosine <= 0.99999f && !same_bits(cone.factor(cosine), full_formula(cone, cosine)))
                ++mismatches;
        EXPECT_EQ(mismatches, 0) << "spread " << spread;
    }
}

TEST(LightCone, ShortcutsApplyOnlyWhereTheEdgeIsOrdered) {
    const LightCone usual(90.0);
    EXPECT_LT(usual.surely_outside, usual.surely_inside);
    EXPECT_EQ(usual.factor(0.9999f), 1.0f);
    EXPECT_EQ(usual.factor(0.01f), 0.0f);
    // A cone of no width, or wider than the shortcut's range, always takes acos.
    for (double spread : {0.0, -10.0, 179.0}) {
        const LightCone cone(spread);
        EXPECT_EQ(cone.surely_inside, 2.0) << spread;
        EXPECT_EQ(cone.surely_outside, -2.0) << spread;
    }
}
