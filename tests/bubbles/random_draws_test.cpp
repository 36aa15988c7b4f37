// Table-driven random draws: the counter, its wrap, the derived draws and
// the reports made inside the render region.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "bubbles/bubbles.h"

namespace {

// Entry i holds i / size, so a draw tells which entry it read.
std::unique_ptr<Bubbles> engine_with_index_table() {
    auto engine = std::make_unique<Bubbles>();
    for (int32_t i = 0; i < Bubbles::kRandomTableSize; ++i)
        engine->randomTable[i] = float(i) / float(Bubbles::kRandomTableSize);
    return engine;
}

int32_t entry_read(float value) { return int32_t(value * Bubbles::kRandomTableSize + 0.5f); }

}  // namespace

TEST(RandomDraws, CounterAdvancesFirstThenWrapsAfterOneBillion) {
    auto engine = engine_with_index_table();
    int32_t counter = 0;
    EXPECT_EQ(entry_read(engine->get_safe_random(counter)), 1);
    EXPECT_EQ(counter, 1);
    counter = Bubbles::kRandomTableSize - 1;
    EXPECT_EQ(entry_read(engine->get_safe_random(counter)), 0);  // the index wraps to the table
    counter = 999999999;
    EXPECT_EQ(entry_read(engine->get_safe_random(counter)), 1000000000 & (Bubbles::kRandomTableSize - 1));
    EXPECT_EQ(counter, 1000000000);
    EXPECT_EQ(entry_read(engine->get_safe_random(counter)), 0);  // the counter itself wraps
    EXPECT_EQ(counter, 0);
}

TEST(RandomDraws, DerivedDrawsMapTheTableValue) {
    auto engine = std::make_unique<Bubbles>();
    engine->randomTable[1] = 0.9999995f;
    engine->randomTable[2] = 0.999999f;
    engine->randomTable[3] = 0.25f;
    engine->randomTable[4] = 0.75f;
    int32_t counter = 0;
    EXPECT_EQ(engine->part_rand_01(counter), 0.999999f);
    EXPECT_EQ(engine->part_rand_01(counter), 0.999999f);
    EXPECT_EQ(engine->part_rand_11(counter), -0.5f);
    EXPECT_EQ(engine->part_var_1(10.0f, 2.0f, counter), 11.0f);
    EXPECT_EQ(counter, 4);
}

TEST(RandomDraws, GuardedDrawsReportInsideTheRenderRegionAndStillDraw) {
    auto engine = std::make_unique<Bubbles>();
    tagPARTSET *set = engine->partSet;
    int32_t counter = 0;
    engine->mp_region = 1;
    testing::internal::CaptureStderr();
    engine->part_var_1(1.0f, 1.0f, counter);
    engine->part_rand_01(counter);
    engine->part_rand_11(counter);
    float r, g, b, a;
    engine->part_var_col(set, r, g, b, a, counter);
    engine->get_safe_random(counter);
    const std::string reports = testing::internal::GetCapturedStderr();
    std::string expected = "part_var_1() called with MP region!\npart_rand_01() called with MP region!\n";
    // One report of its own, then five from the colour draw, which is built on it.
    for (int i = 0; i < 6; ++i) expected += "part_rand_11() called with MP region!\n";
    EXPECT_EQ(reports, expected);
    EXPECT_EQ(counter, 9);

    engine->mp_region = 0;
    testing::internal::CaptureStderr();
    engine->part_var_1(1.0f, 1.0f, counter);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(RandomDraws, CircleScattersInsideTheAspectCorrectedDiscAndRadiusZeroCostsTwoDraws) {
    auto engine = std::make_unique<Bubbles>();
    int32_t counter = 0;
    float x = 12.5f, y = -3.0f;
    engine->part_var_circle(x, y, 0.0f, counter);
    EXPECT_EQ(counter, 2);
    EXPECT_EQ(x, 12.5f);
    EXPECT_EQ(y, -3.0f);

    engine->pixel_aspect = 2.0f;
    bool moved_in_x = false;
    for (int i = 0; i < 500; ++i) {
        x = y = 0.0f;
        engine->part_var_circle(x, y, 8.0f, counter);
        EXPECT_LE(4.0f * x * x + y * y, 64.0f);
        moved_in_x |= std::abs(x) > 2.0f;
    }
    EXPECT_TRUE(moved_in_x);
    EXPECT_GT(counter, 1000);  // points outside the disc are drawn again
}

TEST(RandomDraws, VectorVariationScalesMagnitudeAndTurnsDirection) {
    auto engine = std::make_unique<Bubbles>();
    int32_t counter = 0;
    auto varied = [&](float table_value, float vx, float vy, float magnitude_var) {
        for (float &v : engine->randomTable) v = table_value;
        engine->part_var_vec(vx, vy, magnitude_var, 1.0f, 1.0f, counter);
        return std::make_pair(vx, vy);
    };
    // 0.5 draws rand11 = 0 and rand01 = 0.5; 0.75 draws rand11 = 0.5, a quarter turn.
    const auto scaled = varied(0.5f, 3.0f, 4.0f, 1.0f);
    EXPECT_NEAR(scaled.first, 4.5f, 1e-5);
    EXPECT_NEAR(scaled.second, 6.0f, 1e-5);
    EXPECT_EQ(counter, 2);
    const auto turned = varied(0.75f, 2.0f, 0.0f, 0.0f);
    EXPECT_NEAR(turned.first, 0.0f, 1e-5);
    EXPECT_NEAR(turned.second, 2.0f, 1e-5);
    // A vector too short to have a direction keeps angle 0.
    EXPECT_EQ(varied(0.75f, 0.0f, 0.0f, 1.0f), std::make_pair(0.0f, 0.0f));
}
