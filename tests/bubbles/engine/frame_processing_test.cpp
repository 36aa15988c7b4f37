// One frame of the effect over images made here: requests, random tables,
// size and aspect changes, and the emitter line.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "bubbles/bubbles.h"

namespace {

// An engine with a scene, empty mattes and an output of one size.
struct FrameRig {
    FrameRig(int32_t width, int32_t height) : effect(std::make_unique<Bubbles>()) { resize(width, height); }

    void resize(int32_t width, int32_t height) {
        for (std::unique_ptr<ImageQv> *image : {&scene, &birth, &burst, &reflection, &output}) {
            *image = std::make_unique<ImageQv>(width, height, 1.0f, nullptr, nullptr);
            const uint16_t grey = image == &scene ? 8000 : 0;
            (*image)->Fill(grey, grey, grey, 32767);
            (*image)->video_scale = 1.0f;  // full resolution, as the host adapter sets it
        }
    }
    void process(double frame) {
        effect->process_frame_images(scene.get(), birth.get(), burst.get(), reflection.get(), output.get(), frame);
    }
    // Position, velocity and age of every live particle, in list order.
    std::vector<float> motion() const {
        std::vector<float> all;
        for (const tagPART *p = engine().partSet->live_list; p; p = p->next)
            all.insert(all.end(), {p->x, p->y, p->vx, p->vy, float(p->age)});
        return all;
    }
    std::vector<uint8_t> output_bytes() const {
        const auto *first = reinterpret_cast<const uint8_t *>(output->pixels);
        return std::vector<uint8_t>(first, first + size_t(output->width) * output->height * sizeof(PixelQv));
    }
    std::vector<float> table() const {
        const float *table = engine().randomTable.Whole();
        return std::vector<float>(table, table + ParticleEngine::kRandomTableSize);
    }

    std::unique_ptr<Bubbles> effect;
    ParticleEngine &engine() const { return effect->engine; }
    std::unique_ptr<ImageQv> scene, birth, burst, reflection, output;
};

struct Pixel {
    int32_t x, y;
    bool operator==(const Pixel &o) const { return x == o.x && y == o.y; }
};

std::vector<Pixel> polyline(std::vector<float> xs, std::vector<float> ys, int max_out = 64) {
    std::vector<float> out_x(size_t(max_out) + 1, -999.0f), out_y(size_t(max_out) + 1, -999.0f);
    int n = ParticleEngine::find_polyline_pixels(xs.data(), ys.data(), int(xs.size()), out_x.data(), out_y.data(),
                                                 max_out);
    EXPECT_EQ(out_x[size_t(max_out)], -999.0f) << "wrote past maxOut";
    std::vector<Pixel> pixels;
    for (int i = 0; i < n; ++i) pixels.push_back({int32_t(out_x[size_t(i)]), int32_t(out_y[size_t(i)])});
    return pixels;
}

}  // namespace

TEST(FrameProcessing, RestartEmptiesTheSetBeforeThePreRollFillsIt) {
    FrameRig used(96, 64), fresh(96, 64);
    for (int frame = 0; frame < 4; ++frame) used.process(frame);
    ASSERT_GT(used.engine().partSet->live_count, 0);

    for (FrameRig *rig : {&used, &fresh}) {
        rig->engine().parameters.preroll = 3;
        rig->engine().restartPending = 1;
        rig->engine().preRollPending = 1;
        rig->process(10);
        EXPECT_EQ(rig->engine().preRollPending, 0);
    }
    // Nothing of the earlier frames survives: the set is what a fresh one
    // holds after the same pre-roll and frame.
    EXPECT_EQ(used.motion(), fresh.motion());
    EXPECT_EQ(used.output_bytes(), fresh.output_bytes());
}

// Every frame's table comes from the seed and its number alone, except
// that a frame after a pre-roll keeps the table of the pre-roll's frame 0.
TEST(FrameProcessing, RandomTableFollowsTheFrameNumberButNotAfterAPreRoll) {
    FrameRig rig(96, 64), other(96, 64), rolled(96, 64);
    rig.process(5);
    const int32_t first_count = rig.engine().partSet->live_count;
    rig.process(5);
    EXPECT_GT(rig.engine().partSet->live_count, first_count) << "the same frame twice advances twice";
    other.process(9);
    other.process(5);
    EXPECT_EQ(other.table(), rig.table());

    rig.process(0);
    rolled.engine().parameters.preroll = 1;
    rolled.engine().preRollPending = 1;
    rolled.process(7);
    EXPECT_EQ(rolled.table(), rig.table());
}

TEST(FrameProcessing, SizeChangeMovesParticlesAndAspectChangeRebuildsSprites) {
    FrameRig rig(100, 50);
    // Still births in one place, sizes as born.
    BubbleParameters &p = rig.engine().parameters;
    p.position_var = p.initial_velocity = p.velocity_var = 0;
    p.friction_on = p.gravity_on = p.turbulence_on = false;
    p.growth_mode = 1;
    p.left_x = p.right_x = 0.1;
    rig.process(0);
    ASSERT_GT(rig.engine().partSet->live_count, 0);
    tagPART *moving = rig.engine().partSet->live_list;
    moving->vy = -2.0f;
    const tagPART before = *moving;
    rig.engine().partSet->lumps_corrected[0]->intensity[0] = 12345;

    p.density = 0;
    rig.resize(200, 100);
    rig.process(1);
    EXPECT_EQ(rig.engine().partSet->lumps_corrected[0]->intensity[0], 12345);
    // The position is rescaled before the step, which then moves it by the rescaled velocity.
    EXPECT_FLOAT_EQ(moving->prev_x, before.x * 2);
    EXPECT_FLOAT_EQ(moving->vy, -4.0f);

    const float x = moving->x;
    rig.output->scale_x = 2.0;
    rig.process(2);
    EXPECT_FLOAT_EQ(rig.engine().lumpAspect, 0.5f);
    EXPECT_NE(rig.engine().partSet->lumps_corrected[0]->intensity[0], 12345);
    EXPECT_EQ(moving->prev_x, x) << "an aspect change moves nothing";
}

TEST(FrameProcessing, RemapPicksSpritesForTheRenderScale) {
    FrameRig rig(100, 50);
    rig.process(0);
    tagPART *p = rig.engine().partSet->live_list;
    ASSERT_TRUE(p && p->next);
    tagPART *second = p->next;
    p->size_prev = 30;
    second->size_prev = 500;
    rig.engine().prevWidth = 200;
    rig.engine().prevHeight = 100;
    rig.engine().renderScale = 4.0f;
    rig.engine().remap_particles();
    EXPECT_EQ(p->size, 7);  // 30 / 4, truncated
    EXPECT_EQ(second->size, 80);  // clamped to the last sprite
}

TEST(FrameProcessing, MissingImagesLeaveEverythingAlone) {
    FrameRig rig(32, 32);
    rig.engine().restartPending = 1;
    rig.effect->process_frame_images(nullptr, nullptr, nullptr, nullptr, rig.output.get(), 0);
    rig.effect->process_frame_images(rig.scene.get(), nullptr, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(rig.engine().restartPending, 1);
    // Without mattes or a reflection the frame still runs.
    rig.effect->process_frame_images(rig.scene.get(), nullptr, nullptr, nullptr, rig.output.get(), 0);
    EXPECT_EQ(rig.engine().restartPending, 0);
}

TEST(EmitterPolyline, StepsOnePixelAtATimeAndRepeatsSharedVertices) {
    EXPECT_EQ(polyline({12.2f, 9.6f}, {3, 3}), (std::vector<Pixel>{{12, 3}, {11, 3}, {10, 3}}));
    EXPECT_EQ(polyline({0, 2}, {0, 5}), (std::vector<Pixel>{{0, 0}, {0, 1}, {1, 2}, {1, 3}, {2, 4}, {2, 5}}));
    // Ends in one pixel give it twice; joined segments repeat their shared vertex.
    EXPECT_EQ(polyline({7.4f, 7.3f}, {4.5f, 4.6f}), (std::vector<Pixel>{{7, 5}, {7, 5}}));
    EXPECT_EQ(polyline({0, 2, 2}, {0, 0, 2}),
              (std::vector<Pixel>{{0, 0}, {1, 0}, {2, 0}, {2, 0}, {2, 1}, {2, 2}}));
}

TEST(EmitterPolyline, EndsOffTheFrameAreNotClippedAndTheOutputStopsAtMaxOut) {
    // Rounded as trunc(value + 0.5): -6.2 gives -5, -5.0 gives -4.
    EXPECT_EQ(polyline({-6.2f, -5.0f}, {1, 1}), (std::vector<Pixel>{{-5, 1}, {-4, 1}}));
    EXPECT_EQ(polyline({0, 100}, {0, 0}, 4).size(), 4u);
    // A single point is passed through unrounded.
    float x = 3.7f, y = -1.2f, ox = 0, oy = 0;
    EXPECT_EQ(ParticleEngine::find_polyline_pixels(&x, &y, 1, &ox, &oy, 10), 1);
    EXPECT_EQ(ox, 3.7f);
}
