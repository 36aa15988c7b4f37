// The simulation step: births, removal, growth, forces, turbulence and
// congregation.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "../engine_rig.h"

namespace {

// A still rig that steps without drawing and without births.
void quiet(EngineRig &rig, const std::function<void(BubbleParameters &)> &change = {}) {
    rig.make_still();
    rig.configure([&](BubbleParameters &p) {
        p.density = 0;
        if (change) change(p);
    });
    rig.set()->preroll = 1;
}

}  // namespace

TEST(Births, ImpossibleBirthsAreReportedInsteadOfRetriedForever) {
    EngineRig rig(100, 100);
    rig.make_still();
    float x = 50, y = 50;
    testing::internal::CaptureStderr();
    BubbleRenderer renderer = rig.renderer();
    rig.engine->part_set_execute(rig.set(), &x, &y, 1, 0, 1, 0, renderer);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Tried many times to create a bubble. Probability of success too low - check Birth Matte\n");
    rig.configure([](BubbleParameters &p) { p.lifetime = 0.3; });
    testing::internal::CaptureStderr();
    rig.step();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Lifetime 0.300 is too short"), std::string::npos);
    EXPECT_EQ(rig.set()->live_count, 0);
}

TEST(Births, LifeOfOneIsDrawnOnceAndRemovedInTheSameCall) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.configure([](BubbleParameters &p) { p.lifetime = p.density = 1; });
    EXPECT_EQ(rig.step(0, 50, 50), 0);
    EXPECT_EQ(rig.set()->live_list, nullptr);
    EXPECT_GT(rig.output->rows[50][50].alpha, 0);
}

// Sizes count in sprite indices: the largest, 80, is a radius of 40.5.
TEST(Growth, EachModeFollowsItsCurveToTimeMaxSize) {
    const struct {
        int mode;
        int32_t birth;
        std::vector<std::pair<int, int32_t>> size_after;  // (steps - 1, size)
    } cases[] = {
        {4, 0, {{4, 8}, {23, 38}, {24, 40}}},   // Linear: trunc(age / 25 * 40.5)
        {2, 40, {{4, 32}, {24, 0}}},            // Shrinking: trunc(40.5 - age / 25 * 40.5)
        {3, 5, {{7, 17}, {8, 19}, {29, 20}}},   // Variable: birth + linear, at most 4 x birth
        {3, 0, {{29, 0}}},                      // so born at 0, never grows
        {3, 60, {{29, 80}}},                    // the largest sprite is the last limit
        {1, 17, {{29, 17}}},                    // Assorted keeps its birth size
    };
    for (const auto &c : cases) {
        EngineRig rig(100, 100);
        quiet(rig, [&](BubbleParameters &p) { p.growth_mode = c.mode; });
        tagPART *p = rig.add_particle(50, 50, c.birth, 1000);
        std::vector<int32_t> sizes;
        for (int i = 0; i < 30; ++i) {
            rig.step();
            sizes.push_back(p->size);
        }
        for (auto [step, size] : c.size_after)
            EXPECT_EQ(sizes[size_t(step)], size) << "mode " << c.mode << " from " << c.birth << ", step " << step;
    }
}

TEST(Growth, ShrinkingBubblesAreBornAtFullSize) {
    EngineRig rig(100, 100);
    quiet(rig, [](BubbleParameters &p) {
        p.growth_mode = 2;
        p.density = 1;
    });
    rig.step();
    ASSERT_EQ(rig.set()->live_count, 1);
    EXPECT_EQ(rig.set()->live_list->size_birth, 40);  // trunc(81 / 40 * 20)
}

TEST(Forces, VariableGrowthGravityScalesWithBirthSize) {
    EngineRig rig(100, 100);
    quiet(rig, [](BubbleParameters &p) {
        p.growth_mode = 3;
        p.gravity_on = true;
        p.gravity = 1.0;
    });
    tagPART *small = rig.add_particle(20, 20, 0);
    tagPART *large = rig.add_particle(60, 20, 20);
    rig.step();
    EXPECT_FLOAT_EQ(small->vy, 0.5f);  // (0 * 0.025 + 0.5) x gravity
    EXPECT_FLOAT_EQ(large->vy, 1.0f);  // (20 * 0.025 + 0.5) x gravity
}

TEST(Turbulence, RunsFromSwirlDensityOfOneTenthAsStored) {
    auto velocity_after_step = [](double swirl_dens, double max_time) {
        EngineRig rig(100, 100);
        quiet(rig, [&](BubbleParameters &p) {
            p.turbulence_on = true;
            p.swirl_dens = swirl_dens;
            p.swirl_amp = 5;
            p.swirl_max_time = max_time;
        });
        tagPART *p = rig.add_particle(37.3f, 61.9f, 5);
        rig.step(7);
        return std::make_pair(p->vx, p->vy);
    };
    EXPECT_EQ(velocity_after_step(0.0999, 0), std::make_pair(0.0f, 0.0f));
    // 0.1 is stored as the float 0.100000001, just above the threshold.
    EXPECT_NE(velocity_after_step(0.1, 0), std::make_pair(0.0f, 0.0f));
    // A maximum time below 1 acts as 1.
    EXPECT_EQ(velocity_after_step(30, 0.5), velocity_after_step(30, 1.0));
}

TEST(Congregation, FrictionHoldsInsideAndLeavingShortensLife) {
    EngineRig rig(100, 100);
    quiet(rig, [](BubbleParameters &p) {
        p.congregate = p.friction_on = true;
        p.friction = 0.5;
        p.afterlife = 3;
    });
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 50; ++x) rig.burst->rows[y][x].red = 16384;
    tagPART *p = rig.add_particle(30, 50, 5, 100);
    p->vx = 10;
    rig.step();
    EXPECT_EQ(p->gather_state, 1);
    EXPECT_FLOAT_EQ(p->vx, 5.0f);  // friction applies inside the matte

    p->x = 60;  // now outside the gathering region
    rig.step();
    EXPECT_EQ(p->gather_state, 2);
    EXPECT_EQ(p->age, 97);  // life - afterlife
    EXPECT_FLOAT_EQ(p->vx, 5.0f);  // no friction outside
}

namespace {

// A render step that draws nothing and notes what it saw.
struct CountingRender final : PartRenderStep {
    void render(tagPARTSET *set) override {
        calls += 1;
        for (const tagPART *p = set->live_list; p; p = p->next) ages.push_back(p->age);
    }
    int calls = 0;
    std::vector<int32_t> ages;
};

}  // namespace

// The engine hands a drawn step's render to the caller's step between the
// births and the advance, and a pre-rolling step renders nothing.
TEST(Steps, TheRenderRunsOnceBetweenBirthsAndAdvanceAndNeverWhilePreRolling) {
    EngineRig rig(100, 100);
    rig.make_still();
    rig.configure([](BubbleParameters &p) { p.density = 2; });
    float x = 50, y = 50;
    CountingRender render;
    rig.set()->preroll = 1;
    rig.engine->part_set_execute(rig.set(), &x, &y, 1, 0, 0, 0, render);
    EXPECT_EQ(render.calls, 0);
    ASSERT_EQ(rig.set()->live_count, 2);

    rig.set()->preroll = 0;
    rig.engine->part_set_execute(rig.set(), &x, &y, 1, 1, 0, 0, render);
    EXPECT_EQ(render.calls, 1);
    // Two newborns at age 0 beside the two born in the pre-roll, aged once.
    std::sort(render.ages.begin(), render.ages.end());
    EXPECT_EQ(render.ages, (std::vector<int32_t>{0, 0, 1, 1}));
    for (const tagPART *p = rig.set()->live_list; p; p = p->next) EXPECT_GE(p->age, 1) << "advanced after the render";
}
