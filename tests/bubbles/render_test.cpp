// Drawing one bubble: fade modes, the light cone, reflections, bursting
// and fragments.
#include <gtest/gtest.h>

#include "engine_rig.h"

namespace {

void render(EngineRig &rig) {
    rig.engine->part_render_begin(rig.set());
    rig.engine->part_render_bands();
    rig.engine->part_render_end();
}

// The sprite pixel of greatest coverage, as an image position for a bubble at (px, py).
struct BrightestPixel {
    int32_t x, y, intensity;
};
BrightestPixel brightest(const tagPARTLUMP &lump, int32_t px, int32_t py) {
    BrightestPixel best{0, 0, -1};
    for (int32_t r = 0; r < lump.height; ++r)
        for (int32_t c = 0; c < lump.width; ++c)
            if (lump.intensity[r * lump.width + c] > best.intensity)
                best = {px - lump.width / 2 + c, py - lump.height / 2 + r, lump.intensity[r * lump.width + c]};
    return best;
}

void light_from_centre_downwards(EngineRig &rig) {
    BubbleParameters &p = rig.engine->parameters;
    p.light_on = true;
    p.light_source_x = 0.5;
    p.light_source_y = 0.5;
    p.light_target_x = 0.5;
    p.light_target_y = 1.0;
    p.light_spread = 20;
    rig.refresh();
}

}  // namespace

TEST(Rendering, UnlitBubbleBlendsItsColourByDensityTimesCoverage) {
    EngineRig rig(100, 100);
    tagPART *p = rig.add_particle(50.4f, 49.6f, 20);
    p->colour[0] = 20000;
    p->colour[1] = 10000;
    p->colour[2] = 40000;  // unclamped in the set, clamped when drawn
    p->colour[3] = 30000;
    render(rig);
    const BrightestPixel b = brightest(*rig.set()->lumps_corrected[20], 50, 50);
    const int64_t w = (int64_t(30000) * b.intensity) >> 15;
    const PixelQv &out = rig.output->rows[b.y][b.x];
    EXPECT_EQ(out.alpha, w);
    EXPECT_EQ(out.red, (20000 * w) >> 15);
    EXPECT_EQ(out.green, (10000 * w) >> 15);
    EXPECT_EQ(out.blue, (32767 * w) >> 15);
    // Nothing outside the sprite's box.
    const int32_t half = rig.set()->lumps_corrected[20]->width / 2;
    EXPECT_EQ(rig.output->rows[50][50 + half + 1].alpha, 0);
    EXPECT_EQ(rig.output->rows[50 - half - 1][50].alpha, 0);
}

TEST(Rendering, FadeModesDeriveDensityFromColourOrDensityOverMaxAge) {
    struct Case {
        int fade_mode;
        int64_t density;
    };
    // Colour (20000, 10000, 5000) has luminance 12187; density 30000; age 2500 of 5000.
    for (const Case &c : {Case{1, 6093}, Case{2, 12187}, Case{3, 15000}}) {
        EngineRig rig(100, 100);
        rig.engine->parameters.fade_mode = c.fade_mode;
        rig.refresh();
        tagPART *p = rig.add_particle(50, 50, 20);
        p->colour[0] = 20000;
        p->colour[1] = 10000;
        p->colour[2] = 5000;
        p->colour[3] = 30000;
        p->age = 2500;
        render(rig);
        const BrightestPixel b = brightest(*rig.set()->lumps_corrected[20], 50, 50);
        EXPECT_EQ(rig.output->rows[b.y][b.x].alpha, (c.density * b.intensity) >> 15) << c.fade_mode;
    }
}

TEST(Lighting, BubbleBehindTheLightOrOutsideTheConeVanishes) {
    for (auto position : {std::make_pair(50.0f, 20.0f), std::make_pair(80.0f, 80.0f)}) {
        EngineRig rig(100, 100);
        light_from_centre_downwards(rig);
        rig.add_particle(position.first, position.second, 10);
        render(rig);
        EXPECT_EQ(count_changed_pixels(*rig.output, 0, 0, 0, 0), 0) << position.first;
    }
}

TEST(Lighting, BubbleInsideTheConeIsDrawnWithGlints) {
    EngineRig lit(100, 100);
    light_from_centre_downwards(lit);
    lit.engine->parameters.light_intensity = 100;
    lit.refresh();
    lit.add_particle(51, 85, 30);
    render(lit);
    EXPECT_GT(count_changed_pixels(*lit.output, 0, 0, 0, 0), 100);

    EngineRig unlit(100, 100);
    unlit.add_particle(51, 85, 30);
    render(unlit);
    EXPECT_NE(lit.output_bytes(), unlit.output_bytes());
    // The highlight adds the same to every colour channel of a white bubble.
    int32_t highlighted = 0;
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 100; ++x) {
            const PixelQv &p = lit.output->rows[y][x];
            EXPECT_EQ(p.red, p.green);
            EXPECT_EQ(p.green, p.blue);
            if (p.red > unlit.output->rows[y][x].red) ++highlighted;
        }
    EXPECT_GT(highlighted, 0);
}

TEST(Lighting, ZeroIntensityLightDrawsAsUnlit) {
    EngineRig lit(100, 100), unlit(100, 100);
    light_from_centre_downwards(lit);
    lit.engine->parameters.light_intensity = 0;
    lit.refresh();
    lit.add_particle(30, 20, 25);
    unlit.add_particle(30, 20, 25);
    render(lit);
    render(unlit);
    EXPECT_EQ(lit.output_bytes(), unlit.output_bytes());
}

TEST(Lighting, ReflectionsTintTheBubbleWithTheReflectedImage) {
    EngineRig rig(100, 100);
    light_from_centre_downwards(rig);
    rig.engine->parameters.reflections_on = true;
    rig.refresh();
    rig.reflection->Fill(32767, 0, 0, 32767);
    rig.add_particle(50, 85, 30);
    render(rig);
    int32_t reddened = 0;
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 100; ++x) {
            const PixelQv &p = rig.output->rows[y][x];
            EXPECT_GE(p.red, p.green);
            if (p.red > p.green) ++reddened;
        }
    EXPECT_GT(reddened, 100);
}

TEST(Bursting, MatteBurstsTheBubbleAndThrowsFragmentsOutwards) {
    EngineRig rig(120, 120);
    BubbleParameters &c = rig.engine->parameters;
    c.burst_on = true;
    c.burst_probability = 100;
    c.burst_quantity = 100;
    c.burst_extent = 10;
    c.afterlife = 3;
    rig.refresh();
    rig.fill_matte(*rig.burst, 16384);
    tagPART *p = rig.add_particle(60, 60, 20, 100);
    p->age = 10;
    render(rig);
    EXPECT_EQ(p->bursting, 1);
    EXPECT_GE(p->age, 97);  // life - trunc(1 + afterlife x r)
    EXPECT_LE(p->age, 99);
    const int32_t half = rig.set()->lumps_corrected[20]->width / 2;
    int32_t outside_sprite = 0;
    for (int32_t y = 0; y < 120; ++y)
        for (int32_t x = 0; x < 120; ++x)
            if (rig.output->rows[y][x].alpha && (std::abs(x - 60) > half || std::abs(y - 60) > half)) ++outside_sprite;
    EXPECT_GT(outside_sprite, 10);
}

TEST(Bursting, BurstQuantityZeroDropsEveryFragment) {
    EngineRig rig(100, 100);
    BubbleParameters &c = rig.engine->parameters;
    c.burst_on = true;
    c.burst_probability = 100;
    c.burst_quantity = 0;
    rig.refresh();
    rig.fill_matte(*rig.burst, 32767);
    tagPART *p = rig.add_particle(50, 50, 20);
    render(rig);
    EXPECT_EQ(p->bursting, 1);
    EXPECT_EQ(count_changed_pixels(*rig.output, 0, 0, 0, 0), 0);
}

TEST(Bursting, WithoutMatteOnlyTheLastFrameBursts) {
    auto bursts = [](int32_t age, double probability) {
        EngineRig rig(100, 100);
        rig.engine->parameters.burst_on = true;
        rig.engine->parameters.burst_probability = probability;
        rig.refresh();
        rig.fill_matte(*rig.burst, 16383);
        tagPART *p = rig.add_particle(50, 50, 20, 40);
        p->age = age;
        render(rig);
        return p->bursting;
    };
    EXPECT_EQ(bursts(10, 100), 0);
    EXPECT_EQ(bursts(39, 100), 1);
    EXPECT_EQ(bursts(39, 0), 0);
}

TEST(Bursting, BubbleThatLeftTheGatheringIsDrawnAsFragments) {
    EngineRig rig(100, 100);
    rig.engine->parameters.burst_quantity = 0;  // every fragment dropped
    rig.refresh();
    tagPART *p = rig.add_particle(50, 50, 20);
    p->gather_state = 2;
    render(rig);
    EXPECT_EQ(count_changed_pixels(*rig.output, 0, 0, 0, 0), 0);
    EXPECT_EQ(p->bursting, 0);
}
