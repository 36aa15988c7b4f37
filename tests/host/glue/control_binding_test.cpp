// Which framework control and which overlay widget each host control drives,
// against numbers written out here rather than taken from the table.
#include <gtest/gtest.h>

#include <memory>

#include "bubbles/bubbles.h"
#include "host/glue/control_binding.h"
#include "host/glue/control_table.h"

namespace {

class ControlBindingTest : public ::testing::Test {
protected:
    void SetUp() override {
        effect = std::make_unique<Bubbles>();
        bind_effect_controls(*effect);
    }
    std::unique_ptr<Bubbles> effect;
};

// A crosshair's index and records, as (x number, y number) of the structures it writes.
void expect_cross(const CrosshairOverlayQv &cross, int x, SparkFloatStruct *x_record, SparkFloatStruct *y_record,
                  const OverlayQv *overlay) {
    EXPECT_EQ(cross.index, x);
    EXPECT_EQ(cross.record, x_record) << "x of " << x;
    EXPECT_EQ(cross.y_record, y_record) << "y of " << x;
    EXPECT_EQ(cross.overlay, overlay);
}

}  // namespace

TEST_F(ControlBindingTest, EachWidgetDragsThePositionOrAngleStructuresOfItsControls) {
    const BubblesInfo &info = effect->info;
    const OverlayQv *overlay = effect.get();
    expect_cross(info.leftCross, 11, &SparkFloat11, &SparkFloat12, overlay);
    expect_cross(info.rightCross, 18, &SparkFloat18, &SparkFloat19, overlay);
    expect_cross(info.lightSourceCross, 100, &SparkFloat100, &SparkFloat101, overlay);
    expect_cross(info.lightTargetCross, 107, &SparkFloat107, &SparkFloat108, overlay);

    // The lines join the crosshairs' points: emitter left to right, light source to target.
    const LineOverlayQv &emitter = info.emitterLine;
    EXPECT_EQ(emitter.index, 11);
    EXPECT_EQ(emitter.record, &SparkFloat11);
    EXPECT_EQ(emitter.y_record, &SparkFloat12);
    EXPECT_EQ(emitter.index2, 18);
    EXPECT_EQ(emitter.x2_record, &SparkFloat18);
    EXPECT_EQ(emitter.y2_record, &SparkFloat19);
    const LineOverlayQv &light = info.lightLine;
    EXPECT_EQ(light.index, 100);
    EXPECT_EQ(light.y_record, &SparkFloat101);
    EXPECT_EQ(light.index2, 107);
    EXPECT_EQ(light.y2_record, &SparkFloat108);

    // The cone's handles write the "Light Spread" angle.
    EXPECT_EQ(info.coneEditor.index, 103);
    EXPECT_EQ(info.coneEditor.record, &SparkFloat103);
    EXPECT_EQ(info.coneEditor.overlay, overlay);
}

TEST_F(ControlBindingTest, ParametersFindTheirFrameworkControlAndHostOnlyControlsFindNone) {
    BubblesInfo &info = effect->info;
    // Both numbers of a pair reach the one position control bound to the X.
    EXPECT_EQ(framework_control(info, 100), &info.lightSource);
    EXPECT_EQ(framework_control(info, 101), &info.lightSource);
    EXPECT_EQ(info.lightSource.index, 100);

    ControlQv *intensity = framework_control(info, 102);  // "Light Inten"
    ASSERT_EQ(intensity, &info.lightIntensity);
    EXPECT_EQ(intensity->index, 102);
    EXPECT_EQ(intensity->host_value, &SparkFloat102);
    EXPECT_EQ(binding_for(102)->kind, BoundKind::Float);
    EXPECT_EQ(binding_for(103)->kind, BoundKind::Angle);

    // The colour word is bound; its percent sliders, Blend, Help and the
    // resolution list belong to the host side alone.
    EXPECT_EQ(framework_control(info, 71), &info.bubbleColour);
    for (int number : {72, 27, 31, 33, 5, 200}) EXPECT_EQ(framework_control(info, number), nullptr) << number;
}
