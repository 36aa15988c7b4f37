// Table-driven random draws: the counter, its wrap, the clamp of the unit
// draw and the cost of a scatter in a circle.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "bubbles/engine/particle_engine.h"

TEST(RandomDraws, CounterWrapsAfterOneBillionAndUnitDrawStaysBelowOne) {
    auto engine = std::make_unique<ParticleEngine>();
    // Entry i holds i / size, so a draw tells which entry it read.
    float *table = engine->randomTable.Whole();
    constexpr int32_t size = ParticleEngine::kRandomTableSize;
    for (int32_t i = 0; i < size; ++i) table[i] = float(i) / float(size);
    auto entry_read = [&](int32_t &counter) {
        return int32_t(engine->get_safe_random(counter) * ParticleEngine::kRandomTableSize + 0.5f);
    };
    int32_t counter = ParticleEngine::kRandomTableSize - 1;
    EXPECT_EQ(entry_read(counter), 0);  // the index wraps to the table
    counter = 999999999;
    EXPECT_EQ(entry_read(counter), 1000000000 & (ParticleEngine::kRandomTableSize - 1));
    EXPECT_EQ(entry_read(counter), 0);  // the counter itself wraps
    EXPECT_EQ(counter, 0);
    // The unit draw stops just below one.
    table[1] = 0.9999995f;
    EXPECT_EQ(engine->part_rand_01(counter), 0.999999f);
}

TEST(RandomDraws, CircleScattersInsideTheAspectCorrectedDiscAndRadiusZeroCostsTwoDraws) {
    auto engine = std::make_unique<ParticleEngine>();
    int32_t counter = 0;
    float x = 12.5f, y = -3.0f;
    engine->part_var_circle(x, y, 0.0f, counter);
    EXPECT_EQ(counter, 2);
    EXPECT_EQ(x, 12.5f);

    engine->pixel_aspect = 2.0f;
    bool moved_in_x = false;
    for (int i = 0; i < 200; ++i) {
        x = y = 0.0f;
        engine->part_var_circle(x, y, 8.0f, counter);
        EXPECT_LE(4.0f * x * x + y * y, 64.0f);
        moved_in_x |= std::abs(x) > 2.0f;
    }
    EXPECT_TRUE(moved_in_x);
}
