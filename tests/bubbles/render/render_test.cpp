// Drawing one bubble: fade modes, light of no intensity, and bursting.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "../engine_rig.h"

namespace {

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

// What one render left: the bursting bubble's flag and age, pixels drawn.
struct Frames {
    int32_t bursting = 0;
    int32_t age = 0;
    int32_t pixels = 0;
};

}  // namespace

TEST(Rendering, FadeModesDeriveDensityFromColourOrDensityOverMaxAge) {
    // Colour (20000, 10000, 5000) has luminance 12187; density 30000; age 2500 of 5000.
    for (auto [fade_mode, density] : {std::pair{1, 6093}, {2, 12187}, {3, 15000}}) {
        EngineRig rig(100, 100);
        rig.configure([&](BubbleParameters &p) { p.fade_mode = fade_mode; });
        tagPART *p = rig.add_particle(50, 50, 20);
        p->colour[0] = 20000;
        p->colour[1] = 10000;
        p->colour[2] = 5000;
        p->colour[3] = 30000;
        p->age = 2500;
        rig.render();
        // The sprite's centre row holds its brightest pixel at the rim.
        const tagPARTLUMP &lump = *rig.set()->lumps_corrected[20];
        const auto *row = lump.intensity + lump.height / 2 * lump.width;
        const int32_t x = int32_t(std::max_element(row, row + lump.width) - row);
        EXPECT_EQ(rig.output->rows[50][50 - lump.width / 2 + x].alpha, (int64_t(density) * row[x]) >> 15) << fade_mode;
    }
}

TEST(Lighting, ZeroIntensityDrawsAsUnlit) {
    EngineRig dark(100, 100), unlit(100, 100);
    dark.configure([&](BubbleParameters &p) {
        p.light_on = true;
        p.light_source_x = p.light_source_y = p.light_target_x = 0.5;
        p.light_target_y = 1.0;
        p.light_intensity = 0;
    });
    for (EngineRig *rig : {&dark, &unlit}) {
        rig->add_particle(51, 85, 30);
        rig->add_particle(30, 20, 25);  // behind the light
        rig->render();
    }
    EXPECT_EQ(dark.output_bytes(), unlit.output_bytes());
}

TEST(Bursting, BurstQuantityZeroDropsEveryFragment) {
    EngineRig rig(100, 100);
    tagPART *p = bursting_bubble(rig, 32767, 0);
    rig.render();
    EXPECT_EQ(p->bursting, 1);
    EXPECT_EQ(rig.drawn_pixels(), 0);
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

// A renderer that only decides, as a simulated frame uses, reaches the
// drawn renderer's bursts and leaves every pixel alone.
TEST(Rendering, DecisionsAloneBurstAsADrawnRenderAndWriteNoPixel) {
    Frames drawn, decided;
    for (bool drawing : {true, false}) {
        EngineRig rig(100, 100);
        tagPART *p = bursting_bubble(rig, 32767, 100);
        BubbleRenderer renderer = rig.renderer(drawing);
        renderer.render(rig.set());
        Frames &result = drawing ? drawn : decided;
        result.bursting = p->bursting;
        result.age = p->age;
        result.pixels = rig.drawn_pixels();
        EXPECT_EQ(rig.engine->mp_region, 0) << "the render's region ends with it";
    }
    EXPECT_EQ(drawn.bursting, 1);
    EXPECT_GT(drawn.pixels, 0);
    EXPECT_EQ(decided.bursting, drawn.bursting);
    EXPECT_EQ(decided.age, drawn.age);
    EXPECT_EQ(decided.pixels, 0);
}
