// Gradient noise, its gradient table, the fixed start-up tables and the smooth step.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "bubbles/bubbles.h"

TEST(GradientNoise, IsZeroOnEveryLatticePoint) {
    auto engine = std::make_unique<Bubbles>();
    for (int x = -3; x <= 3; ++x)
        for (int y = -2; y <= 2; ++y)
            for (int z : {-300, -1, 0, 1, 7, 255, 256, 1000})
                EXPECT_EQ(engine->gnoise(float(x), float(y), float(z)), 0.0f) << x << " " << y << " " << z;
}

TEST(GradientNoise, LatticeCornerIsTheDotProductWithItsGradient) {
    auto engine = std::make_unique<Bubbles>();
    // perm[0] = 225, perm[225] = 79, perm[79] = 218 in the fixed permutation.
    const float *g = engine->unitVectors[218];
    EXPECT_FLOAT_EQ(engine->glattice(0, 0, 0, 0.5f, -0.25f, 2.0f), g[0] * 0.5f + g[1] * -0.25f + g[2] * 2.0f);
    // Indices wrap to the byte.
    EXPECT_EQ(engine->glattice(256, -256, 512, 0.3f, 0.1f, 0.2f), engine->glattice(0, 0, 0, 0.3f, 0.1f, 0.2f));
}

TEST(StartupTables, AreUnitVectorsAndUniformNumbersSameForEveryInstance) {
    auto first = std::make_unique<Bubbles>();
    auto second = std::make_unique<Bubbles>();
    EXPECT_EQ(std::memcmp(first->unitVectors, second->unitVectors, sizeof(first->unitVectors)), 0);
    EXPECT_EQ(std::memcmp(first->randomTable, second->randomTable, sizeof(first->randomTable)), 0);
    double sum = 0.0;
    for (float v : first->randomTable) {
        ASSERT_GE(v, 0.0f);
        ASSERT_LT(v, 1.0f);
        sum += v;
    }
    EXPECT_NEAR(sum / Bubbles::kRandomTableSize, 0.5, 0.01);
    for (const auto &g : first->unitVectors)
        EXPECT_NEAR(double(g[0]) * g[0] + double(g[1]) * g[1] + double(g[2]) * g[2], 1.0, 1e-5);

    // Reseeding rebuilds the same table; another seed gives another one.
    first->gradientTabInit(-665);
    EXPECT_EQ(std::memcmp(first->unitVectors, second->unitVectors, sizeof(first->unitVectors)), 0);
    first->gradientTabInit(-666);
    EXPECT_NE(std::memcmp(first->unitVectors, second->unitVectors, sizeof(first->unitVectors)), 0);
}

TEST(SoftStep, ClampsOutsideTheEdgesAndEasesBetween) {
    EXPECT_EQ(Bubbles::soft_step(-1.0f, 0.0f, 2.0f), 0.0f);
    EXPECT_EQ(Bubbles::soft_step(3.0f, 0.0f, 2.0f), 1.0f);
    EXPECT_FLOAT_EQ(Bubbles::soft_step(1.0f, 0.0f, 2.0f), 0.5f);
    EXPECT_FLOAT_EQ(Bubbles::soft_step(0.5f, 0.0f, 2.0f), 0.15625f);
    // A cone of zero width is a hard edge.
    EXPECT_EQ(Bubbles::soft_step(0.1f, 0.0f, 0.0f), 1.0f);
}
