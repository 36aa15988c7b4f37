// The simulation step: births, removal, growth, forces, turbulence and
// congregation, and the set's storage.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine_rig.h"

namespace {

// Sizes after each of `steps` steps of a lone particle, without rendering.
std::vector<int32_t> sizes_over_age(int growth_mode, int32_t size_birth, int steps) {
    EngineRig rig(100, 100);
    rig.engine->parameters.growth_mode = growth_mode;
    rig.engine->parameters.density = 0;
    rig.make_still();
    rig.set()->preroll = 1;
    tagPART *p = rig.add_particle(50, 50, size_birth, 1000);
    std::vector<int32_t> sizes;
    for (int i = 0; i < steps; ++i) {
        rig.step();
        EXPECT_EQ(p->size, p->size_prev);
        sizes.push_back(p->size);
    }
    return sizes;
}

}  // namespace

TEST(ParticleSet, GrowsByWholeBlocksAndRecyclesOnRestart) {
    auto engine = std::make_unique<Bubbles>();
    tagPARTSET *set = engine->part_set_create(2);
    ASSERT_TRUE(set);
    std::vector<tagPART *> taken;
    for (int i = 0; i < 5; ++i) {
        tagPART *p = engine->part_alloc(set);
        p->next = set->live_list;
        set->live_list = p;
        set->live_count += 1;
        taken.push_back(p);
    }
    EXPECT_EQ(set->blob_count, 3);
    engine->part_set_free_all(set);
    EXPECT_EQ(set->live_count, 0);
    EXPECT_EQ(set->live_list, nullptr);
    // The freed particles come back first, zeroed, before any new block.
    for (int i = 0; i < 6; ++i) {
        tagPART *p = engine->part_alloc(set);
        EXPECT_EQ(p->life, 0);
        EXPECT_EQ(p->next, nullptr);
    }
    EXPECT_EQ(set->blob_count, 3);
    engine->part_set_destroy(set);

    testing::internal::CaptureStderr();
    EXPECT_EQ(engine->part_set_create(0), nullptr);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("at least one particle"), std::string::npos);
}

TEST(Births, LandExactlyOnEmitterPixelsWithoutPositionVariation) {
    EngineRig rig(100, 100);
    rig.make_still();
    const float xs[5] = {10, 11, 12, 13, 14}, ys[5] = {20, 20, 20, 20, 20};
    ASSERT_EQ(rig.engine->part_set_execute(rig.set(), xs, ys, 5, 0, 0, 0), 0);
    EXPECT_GE(rig.set()->live_count, 18);  // Density 20, +-10 %
    EXPECT_LE(rig.set()->live_count, 22);
    int32_t count = 0;
    for (tagPART *p = rig.set()->live_list; p; p = p->next, ++count) {
        EXPECT_EQ(p->prev_y, 20.0f);
        EXPECT_EQ(p->prev_x, std::floor(p->prev_x));
        EXPECT_GE(p->prev_x, 10.0f);
        EXPECT_LE(p->prev_x, 14.0f);
        EXPECT_EQ(p->age, 1);
        EXPECT_EQ(p->size, 1);  // Linear Growth: born at 0, one step grown
    }
    EXPECT_EQ(count, rig.set()->live_count);
}

TEST(Births, LaterCandidatePointsAreAdvancedLessWithinTheFrame) {
    EngineRig rig(200, 100);
    rig.make_still();
    rig.engine->parameters.initial_velocity = 300;  // 3 to 6 pixels a frame
    rig.engine->parameters.vel_dir = 0;
    rig.refresh();
    const float xs[2] = {10, 50}, ys[2] = {20, 20};
    rig.engine->part_set_execute(rig.set(), xs, ys, 2, 0, 0, 0);
    int32_t first_point = 0, second_point = 0;
    for (tagPART *p = rig.set()->live_list; p; p = p->next) {
        EXPECT_GE(p->vx, 3.0f);
        EXPECT_LT(p->vx, 6.0f);
        if (p->prev_x == 50.0f) {
            ++second_point;  // the last point is born at the end of the frame
        } else {
            ++first_point;
            EXPECT_EQ(p->prev_x, 10.0f + 0.5f * p->vx);
        }
        EXPECT_EQ(p->x, p->prev_x + p->vx);
    }
    EXPECT_GT(first_point, 0);
    EXPECT_GT(second_point, 0);
}

TEST(Births, PositionVariationScattersWithinItsRadius) {
    EngineRig rig(200, 100);
    rig.make_still();
    rig.engine->parameters.position_var = 0.05;  // 10 pixels on a 200-pixel frame
    rig.engine->parameters.density = 200;
    rig.refresh();
    EXPECT_FLOAT_EQ(rig.set()->pos_var, 10.0f);
    float emit_x = 100, emit_y = 50;
    rig.engine->part_set_execute(rig.set(), &emit_x, &emit_y, 1, 0, 0, 0);
    float farthest = 0;
    for (tagPART *p = rig.set()->live_list; p; p = p->next) {
        const float d = std::hypot(p->prev_x - 100.0f, p->prev_y - 50.0f);
        EXPECT_LE(d, 10.0f);
        farthest = std::fmax(farthest, d);
    }
    EXPECT_GT(farthest, 5.0f);
}

TEST(Births, BlackBirthMatteReportsOnceAndBearsNothing) {
    EngineRig rig(100, 100);
    rig.make_still();
    float x = 50, y = 50;
    testing::internal::CaptureStderr();
    rig.engine->part_set_execute(rig.set(), &x, &y, 1, 0, 1, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Tried many times to create a bubble. Probability of success too low - check Birth Matte\n");
    EXPECT_EQ(rig.set()->live_count, 0);
}

TEST(Births, BirthMatteConfinesBirthsToItsBrightPart) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.engine->parameters.density = 100;
    rig.refresh();
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 30; ++x) rig.birth->rows[y][x].red = 101;
    std::vector<float> xs, ys;
    for (int i = 0; i < 100; ++i) {
        xs.push_back(float(i));
        ys.push_back(40.0f);
    }
    rig.engine->part_set_execute(rig.set(), xs.data(), ys.data(), 100, 0, 1, 0);
    EXPECT_GE(rig.set()->live_count, 90);
    for (tagPART *p = rig.set()->live_list; p; p = p->next) EXPECT_LT(p->prev_x, 30.0f);
}

TEST(Births, LifeOfOneIsDrawnOnceAndRemovedInTheSameCall) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.engine->parameters.lifetime = 1;
    rig.engine->parameters.density = 1;
    rig.refresh();
    EXPECT_EQ(rig.step(0, 50, 50), 0);
    EXPECT_EQ(rig.set()->live_count, 0);
    EXPECT_EQ(rig.set()->live_list, nullptr);
    EXPECT_GT(count_changed_pixels(*rig.output, 0, 0, 0, 0), 0);
    EXPECT_GT(rig.output->rows[50][50].alpha, 0);
}

TEST(Births, LifetimeTooShortForAnyBirthIsReportedInsteadOfRetriedForever) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.engine->parameters.lifetime = 0.3;
    rig.refresh();
    testing::internal::CaptureStderr();
    rig.step();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Lifetime 0.300 is too short"), std::string::npos);
    EXPECT_EQ(rig.set()->live_count, 0);
}

TEST(Births, NoCandidatePointsMeansNoStepAtAll) {
    EngineRig rig(100, 100);
    tagPART *p = rig.add_particle(50, 50, 10);
    EXPECT_EQ(rig.engine->part_set_execute(rig.set(), nullptr, nullptr, 0, 0, 0, 0), 1);
    EXPECT_EQ(p->age, 0);
    EXPECT_EQ(count_changed_pixels(*rig.output, 0, 0, 0, 0), 0);

    // Density 0 bears nothing but still draws and ages.
    rig.engine->parameters.density = 0;
    rig.refresh();
    rig.step();
    EXPECT_EQ(rig.set()->live_count, 1);
    EXPECT_EQ(p->age, 1);
    EXPECT_GT(count_changed_pixels(*rig.output, 0, 0, 0, 0), 0);
}

TEST(Growth, LinearGrowsToFullSizeAtTimeMaxSize) {
    const std::vector<int32_t> sizes = sizes_over_age(4, 0, 30);
    EXPECT_EQ(sizes[0], 1);    // trunc(1 / 25 * 40.5)
    EXPECT_EQ(sizes[4], 8);    // age 5
    EXPECT_EQ(sizes[23], 38);  // age 24
    EXPECT_EQ(sizes[24], 40);  // age 25: full size
    EXPECT_EQ(sizes[29], 40);
}

TEST(Growth, ShrinkingStartsFullAndReachesZeroAtTimeMaxSize) {
    EngineRig rig(100, 100);
    rig.engine->parameters.growth_mode = 2;
    rig.engine->parameters.density = 1;
    rig.make_still();
    rig.set()->preroll = 1;
    rig.step();
    ASSERT_EQ(rig.set()->live_count, 1);
    EXPECT_EQ(rig.set()->live_list->size_birth, 40);  // trunc(81 / 40 * 20)

    const std::vector<int32_t> sizes = sizes_over_age(2, 40, 30);
    EXPECT_EQ(sizes[4], 32);  // trunc(40.5 - 8)
    EXPECT_EQ(sizes[24], 0);
    EXPECT_EQ(sizes[29], 0);
}

TEST(Growth, VariableGrowthIsCappedAtFourTimesItsBirthSize) {
    const std::vector<int32_t> from_five = sizes_over_age(3, 5, 30);
    EXPECT_EQ(from_five[0], 6);
    EXPECT_EQ(from_five[4], 13);
    EXPECT_EQ(from_five[7], 17);  // trunc(8 / 25 * 40.5) = 12, + 5
    EXPECT_EQ(from_five[8], 19);
    EXPECT_EQ(from_five[9], 20);  // 21 capped at 4 x 5
    EXPECT_EQ(from_five[29], 20);
    for (int32_t size : sizes_over_age(3, 0, 30)) EXPECT_EQ(size, 0);  // born at 0, never grows
    EXPECT_EQ(sizes_over_age(3, 60, 30)[29], 80);  // the largest sprite is the last limit
}

TEST(Growth, AssortedKeepsItsBirthSize) {
    for (int32_t size : sizes_over_age(1, 17, 30)) EXPECT_EQ(size, 17);
}

TEST(Forces, VariableGrowthGravityScalesWithBirthSize) {
    EngineRig rig(100, 100);
    rig.engine->parameters.growth_mode = 3;
    rig.engine->parameters.density = 0;
    rig.make_still();
    rig.engine->parameters.gravity_on = true;
    rig.engine->parameters.gravity = 1.0;
    rig.refresh();
    rig.set()->preroll = 1;
    tagPART *small = rig.add_particle(20, 20, 0);
    tagPART *large = rig.add_particle(60, 20, 20);
    rig.step();
    EXPECT_FLOAT_EQ(small->vy, 0.5f);  // (0 * 0.025 + 0.5) x gravity
    EXPECT_FLOAT_EQ(large->vy, 1.0f);  // (20 * 0.025 + 0.5) x gravity
    EXPECT_FLOAT_EQ(large->y, 21.0f);
}

TEST(Turbulence, RunsFromSwirlDensityOfOneTenthAsStored) {
    auto velocity_after_step = [](double swirl_dens, double max_time, float *set_max_time = nullptr) {
        EngineRig rig(100, 100);
        rig.engine->parameters.density = 0;
        rig.make_still();
        rig.engine->parameters.turbulence_on = true;
        rig.engine->parameters.swirl_dens = swirl_dens;
        rig.engine->parameters.swirl_amp = 5;
        rig.engine->parameters.swirl_max_time = max_time;
        rig.refresh();
        rig.set()->preroll = 1;
        tagPART *p = rig.add_particle(37.3f, 61.9f, 5);
        rig.step(7);
        if (set_max_time) *set_max_time = rig.set()->swirl_max_time;
        return std::make_pair(p->vx, p->vy);
    };
    EXPECT_EQ(velocity_after_step(0.0999, 0), std::make_pair(0.0f, 0.0f));
    // 0.1 is stored as the float 0.100000001, just above the threshold.
    EXPECT_NE(velocity_after_step(0.1, 0), std::make_pair(0.0f, 0.0f));
    // A maximum time below 1 acts as 1, and the set keeps the 1.
    float kept = 0;
    EXPECT_EQ(velocity_after_step(30, 0.5, &kept), velocity_after_step(30, 1.0));
    EXPECT_EQ(kept, 1.0f);
    EXPECT_NE(velocity_after_step(30, 4.0), velocity_after_step(30, 1.0));
}

TEST(Congregation, FrictionHoldsInsideAndLeavingShortensLife) {
    EngineRig rig(100, 100);
    rig.engine->parameters.density = 0;
    rig.make_still();
    rig.engine->parameters.congregate = true;
    rig.engine->parameters.friction_on = true;
    rig.engine->parameters.friction = 0.5;
    rig.engine->parameters.afterlife = 3;
    rig.refresh();
    rig.set()->preroll = 1;
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 50; ++x) rig.burst->rows[y][x].red = 16384;
    tagPART *p = rig.add_particle(30, 50, 5, 100);
    p->vx = 10;
    rig.step();
    EXPECT_EQ(p->gather_state, 1);
    EXPECT_FLOAT_EQ(p->vx, 5.0f);  // friction applies inside the matte
    EXPECT_EQ(p->age, 1);

    p->x = 60;  // now outside the gathering region
    rig.step();
    EXPECT_EQ(p->gather_state, 2);
    EXPECT_EQ(p->age, 97);  // life - afterlife
    EXPECT_FLOAT_EQ(p->vx, 5.0f);  // no friction outside
    EXPECT_FLOAT_EQ(p->x, 65.0f);

    rig.step();
    rig.step();
    EXPECT_EQ(rig.set()->live_count, 1);
    rig.step();  // age reaches life
    EXPECT_EQ(rig.set()->live_count, 0);
}
