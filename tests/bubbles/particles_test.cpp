// The simulation step: births, removal, growth, forces, turbulence and
// congregation, and the set's storage.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "engine_rig.h"

namespace {

// Sizes after each of `steps` steps of a lone particle, without rendering.
std::vector<int32_t> sizes_over_age(int growth_mode, int32_t size_birth, int steps) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.configure([&](BubbleParameters &p) {
        p.growth_mode = growth_mode;
        p.density = 0;
    });
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

std::string captured_stderr_of(const std::function<void()> &action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

}  // namespace

TEST(ParticleSet, GrowsByWholeBlocksAndRecyclesOnRestart) {
    auto engine = std::make_unique<Bubbles>();
    tagPARTSET *set = engine->part_set_create(2);
    ASSERT_TRUE(set);
    for (int i = 0; i < 5; ++i) {
        tagPART *p = engine->part_alloc(set);
        p->next = set->live_list;
        set->live_list = p;
        set->live_count += 1;
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

    const std::string report = captured_stderr_of([&] { EXPECT_EQ(engine->part_set_create(0), nullptr); });
    EXPECT_NE(report.find("at least one particle"), std::string::npos);
}

// Each point is advanced along the velocity by the share of the frame still to come.
TEST(Births, LandExactlyOnEmitterPixelsWithoutPositionVariationThenAdvance) {
    EngineRig rig(200, 100);
    rig.make_still();
    rig.configure([](BubbleParameters &p) {
        p.initial_velocity = 300;  // 3 to 6 pixels a frame
        p.vel_dir = 0;
    });
    const float xs[2] = {10, 50}, ys[2] = {20, 20};
    ASSERT_EQ(rig.engine->part_set_execute(rig.set(), xs, ys, 2, 0, 0, 0), 0);
    EXPECT_GE(rig.set()->live_count, 18);  // Density 20, +-10 %
    EXPECT_LE(rig.set()->live_count, 22);
    int32_t first_point = 0, last_point = 0;
    for (tagPART *p = rig.set()->live_list; p; p = p->next) {
        EXPECT_EQ(p->prev_y, 20.0f);
        EXPECT_GE(p->vx, 3.0f);
        EXPECT_LT(p->vx, 6.0f);
        EXPECT_EQ(p->x, p->prev_x + p->vx);
        EXPECT_EQ(p->age, 1);
        EXPECT_EQ(p->size, 1);  // Linear Growth: born at 0, one step grown
        if (p->prev_x == 50.0f) {
            ++last_point;  // born at the end of the frame
        } else {
            ++first_point;
            EXPECT_EQ(p->prev_x, 10.0f + 0.5f * p->vx);
        }
    }
    EXPECT_GT(first_point, 0);
    EXPECT_GT(last_point, 0);
}

TEST(Births, BlackBirthMatteReportsOnceAndBearsNothing) {
    EngineRig rig(100, 100);
    rig.make_still();
    float x = 50, y = 50;
    EXPECT_EQ(captured_stderr_of([&] { rig.engine->part_set_execute(rig.set(), &x, &y, 1, 0, 1, 0); }),
              "Tried many times to create a bubble. Probability of success too low - check Birth Matte\n");
    EXPECT_EQ(rig.set()->live_count, 0);
}

TEST(Births, LifeOfOneIsDrawnOnceAndRemovedInTheSameCall) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.configure([](BubbleParameters &p) { p.lifetime = p.density = 1; });
    EXPECT_EQ(rig.step(0, 50, 50), 0);
    EXPECT_EQ(rig.set()->live_count, 0);
    EXPECT_EQ(rig.set()->live_list, nullptr);
    EXPECT_GT(rig.output->rows[50][50].alpha, 0);
}

TEST(Births, LifetimeTooShortForAnyBirthIsReportedInsteadOfRetriedForever) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.configure([](BubbleParameters &p) { p.lifetime = 0.3; });
    EXPECT_NE(captured_stderr_of([&] { rig.step(); }).find("Lifetime 0.300 is too short"), std::string::npos);
    EXPECT_EQ(rig.set()->live_count, 0);
}

TEST(Births, NoCandidatePointsMeansNoStepAtAllButDensityZeroStillAges) {
    EngineRig rig(100, 100);
    tagPART *p = rig.add_particle(50, 50, 10);
    EXPECT_EQ(rig.engine->part_set_execute(rig.set(), nullptr, nullptr, 0, 0, 0, 0), 1);
    EXPECT_EQ(p->age, 0);
    EXPECT_EQ(rig.drawn_pixels(), 0);

    rig.configure([](BubbleParameters &c) { c.density = 0; });
    rig.step();
    EXPECT_EQ(rig.set()->live_count, 1);
    EXPECT_EQ(p->age, 1);
    EXPECT_GT(rig.drawn_pixels(), 0);
}

// Sizes count in sprite indices: the largest, 80, is a radius of 40.5.
TEST(Growth, EachModeFollowsItsCurveToTimeMaxSize) {
    const struct {
        int mode;
        int32_t birth;
        std::vector<std::pair<int, int32_t>> size_after;  // (steps - 1, size)
    } cases[] = {
        {4, 0, {{0, 1}, {4, 8}, {23, 38}, {24, 40}, {29, 40}}},         // Linear: trunc(age / 25 * 40.5)
        {2, 40, {{4, 32}, {24, 0}, {29, 0}}},                            // Shrinking: trunc(40.5 - age / 25 * 40.5)
        {3, 5, {{0, 6}, {4, 13}, {7, 17}, {8, 19}, {9, 20}, {29, 20}}},  // Variable: birth + linear, at most 4 x birth
        {3, 0, {{0, 0}, {29, 0}}},                                       // so born at 0, never grows
        {3, 60, {{29, 80}}},                                             // the largest sprite is the last limit
        {1, 17, {{0, 17}, {29, 17}}},                                    // Assorted keeps its birth size
    };
    for (const auto &c : cases) {
        const std::vector<int32_t> sizes = sizes_over_age(c.mode, c.birth, 30);
        for (auto [step, size] : c.size_after)
            EXPECT_EQ(sizes[size_t(step)], size) << "mode " << c.mode << " from " << c.birth << ", step " << step;
    }
}

TEST(Growth, ShrinkingBubblesAreBornAtFullSize) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.configure([](BubbleParameters &p) {
        p.growth_mode = 2;
        p.density = 1;
    });
    rig.set()->preroll = 1;
    rig.step();
    ASSERT_EQ(rig.set()->live_count, 1);
    EXPECT_EQ(rig.set()->live_list->size_birth, 40);  // trunc(81 / 40 * 20)
}

TEST(Forces, VariableGrowthGravityScalesWithBirthSize) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.configure([](BubbleParameters &p) {
        p.growth_mode = 3;
        p.density = 0;
        p.gravity_on = true;
        p.gravity = 1.0;
    });
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
        rig.make_still();
        rig.configure([&](BubbleParameters &p) {
            p.density = 0;
            p.turbulence_on = true;
            p.swirl_dens = swirl_dens;
            p.swirl_amp = 5;
            p.swirl_max_time = max_time;
        });
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
    rig.make_still();
    rig.configure([](BubbleParameters &p) {
        p.density = 0;
        p.congregate = p.friction_on = true;
        p.friction = 0.5;
        p.afterlife = 3;
    });
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
