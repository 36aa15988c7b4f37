// Drawing one bubble: fade modes, the light cone, reflections, bursting
// and fragments.
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "engine_rig.h"

namespace {

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

void set_colour(tagPART *p, int32_t red, int32_t green, int32_t blue, int32_t density) {
    p->colour[0] = red;
    p->colour[1] = green;
    p->colour[2] = blue;
    p->colour[3] = density;
}

void light_from_centre_downwards(EngineRig &rig, double intensity = 50) {
    rig.configure([&](BubbleParameters &p) {
        p.light_on = true;
        p.light_source_x = p.light_source_y = p.light_target_x = 0.5;
        p.light_target_y = 1.0;
        p.light_spread = 20;
        p.light_intensity = intensity;
    });
}

// A bubble of sprite 20 at (50, 50) over a burst matte of one grey, bursting for sure.
tagPART *bursting_bubble(EngineRig &rig, uint16_t matte, double quantity) {
    rig.configure([&](BubbleParameters &c) {
        c.burst_on = true;
        c.burst_probability = 100;
        c.burst_quantity = quantity;
        c.burst_extent = 10;
        c.afterlife = 3;
    });
    rig.burst->Fill(matte, matte, matte, matte);
    return rig.add_particle(50, 50, 20, 100);
}

}  // namespace

TEST(Rendering, UnlitBubbleBlendsItsColourByDensityTimesCoverage) {
    EngineRig rig(100, 100);
    set_colour(rig.add_particle(50.4f, 49.6f, 20), 20000, 10000, 40000, 30000);  // unclamped in the set
    rig.render();
    const BrightestPixel b = brightest(*rig.set()->lumps_corrected[20], 50, 50);
    const int64_t w = (int64_t(30000) * b.intensity) >> 15;
    const PixelQv &out = rig.output->rows[b.y][b.x];
    EXPECT_EQ(out.alpha, w);
    EXPECT_EQ(out.red, (20000 * w) >> 15);
    EXPECT_EQ(out.green, (10000 * w) >> 15);
    EXPECT_EQ(out.blue, (32767 * w) >> 15);  // clamped when drawn
    // Nothing outside the sprite's box.
    const int32_t half = rig.set()->lumps_corrected[20]->width / 2;
    EXPECT_EQ(rig.output->rows[50][50 + half + 1].alpha, 0);
    EXPECT_EQ(rig.output->rows[50 - half - 1][50].alpha, 0);
}

TEST(Rendering, FadeModesDeriveDensityFromColourOrDensityOverMaxAge) {
    // Colour (20000, 10000, 5000) has luminance 12187; density 30000; age 2500 of 5000.
    for (auto [fade_mode, density] : {std::pair{1, 6093}, {2, 12187}, {3, 15000}}) {
        EngineRig rig(100, 100);
        rig.configure([&](BubbleParameters &p) { p.fade_mode = fade_mode; });
        tagPART *p = rig.add_particle(50, 50, 20);
        set_colour(p, 20000, 10000, 5000, 30000);
        p->age = 2500;
        rig.render();
        const BrightestPixel b = brightest(*rig.set()->lumps_corrected[20], 50, 50);
        EXPECT_EQ(rig.output->rows[b.y][b.x].alpha, (int64_t(density) * b.intensity) >> 15) << fade_mode;
    }
}

TEST(Lighting, BubbleBehindTheLightOrOutsideTheConeVanishes) {
    for (auto [x, y] : {std::pair{50.0f, 20.0f}, {80.0f, 80.0f}}) {
        EngineRig rig(100, 100);
        light_from_centre_downwards(rig);
        rig.add_particle(x, y, 10);
        rig.render();
        EXPECT_EQ(rig.drawn_pixels(), 0) << x;
    }
}

TEST(Lighting, BubbleInsideTheConeGetsAGreyHighlightAndZeroIntensityDrawsAsUnlit) {
    EngineRig lit(100, 100), dark(100, 100), unlit(100, 100);
    light_from_centre_downwards(lit, 100);
    light_from_centre_downwards(dark, 0);
    for (EngineRig *rig : {&lit, &dark, &unlit}) {
        rig->add_particle(51, 85, 30);
        rig->add_particle(30, 20, 25);  // behind the light
        rig->render();
    }
    EXPECT_EQ(dark.output_bytes(), unlit.output_bytes());
    EXPECT_GT(lit.drawn_pixels(), 100);
    // The highlight adds the same to every colour channel of a white bubble.
    int32_t highlighted = 0;
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 100; ++x) {
            const PixelQv &p = lit.output->rows[y][x];
            EXPECT_EQ(p.red, p.green);
            EXPECT_EQ(p.green, p.blue);
            highlighted += p.red > unlit.output->rows[y][x].red;
        }
    EXPECT_GT(highlighted, 0);
}

TEST(Lighting, ReflectionsTintTheBubbleWithTheReflectedImage) {
    EngineRig rig(100, 100);
    light_from_centre_downwards(rig);
    rig.configure([](BubbleParameters &p) { p.reflections_on = true; });
    rig.reflection->Fill(32767, 0, 0, 32767);
    rig.add_particle(50, 85, 30);
    rig.render();
    int32_t reddened = 0;
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 100; ++x) {
            const PixelQv &p = rig.output->rows[y][x];
            EXPECT_GE(p.red, p.green);
            reddened += p.red > p.green;
        }
    EXPECT_GT(reddened, 100);
}

TEST(Bursting, MatteBurstsTheBubbleAndCutsItsLifeToTheAfterlife) {
    EngineRig rig(100, 100);
    tagPART *p = bursting_bubble(rig, 16384, 100);
    p->age = 10;
    rig.render();
    EXPECT_EQ(p->bursting, 1);
    EXPECT_GE(p->age, 97);  // life - trunc(1 + afterlife x r)
    EXPECT_LE(p->age, 99);
    EXPECT_GT(rig.drawn_pixels(), 0) << "the fragments";
}

TEST(Bursting, BurstQuantityZeroDropsEveryFragment) {
    EngineRig rig(100, 100);
    tagPART *p = bursting_bubble(rig, 32767, 0);
    rig.render();
    EXPECT_EQ(p->bursting, 1);
    EXPECT_EQ(rig.drawn_pixels(), 0);

    // A bubble that left the gathering is drawn as fragments, without bursting.
    EngineRig gathered(100, 100);
    gathered.configure([](BubbleParameters &c) { c.burst_quantity = 0; });
    tagPART *left = gathered.add_particle(50, 50, 20);
    left->gather_state = 2;
    gathered.render();
    EXPECT_EQ(gathered.drawn_pixels(), 0);
    EXPECT_EQ(left->bursting, 0);
}

TEST(Bursting, WithoutMatteOnlyTheLastFrameBursts) {
    for (auto [age, probability, bursts] : {std::tuple{10, 100.0, 0}, {39, 100.0, 1}, {39, 0.0, 0}}) {
        EngineRig rig(100, 100);
        tagPART *p = bursting_bubble(rig, 16383, 100);
        rig.configure([&](BubbleParameters &c) { c.burst_probability = probability; });
        p->life = 40;
        p->age = age;
        rig.render();
        EXPECT_EQ(p->bursting, bursts) << age << " " << probability;
    }
}
