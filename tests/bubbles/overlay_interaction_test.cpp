// The effect's overlay driven through our host as a user's pen would: the
// emitter ends and line (and the births that follow them), the light cone's
// edges, the band around the emitter, and the switches that hide or stop them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "host/plugin_host_fixture.h"
#include "sparkhost/viewer.h"

using sparkhost::GlPrimitive;
using sparkhost::PenOutcome;
using sparkhost::Viewer;

namespace {

// A 200x100 frame with the emitter from (40, 50) to (160, 50) and the light
// from (100, 90) down to (100, 10), in image pixels; the light is off.
class EffectOverlay : public PluginHostTest {
protected:
    void SetUp() override {
        sparkhost::Settings settings = quiet_host_settings();
        settings.format = {200, 100, sparkhost::Depth::Bits8};
        start(settings);
        for (auto [name, value] : {std::pair{"Left X", 20.0}, {"Left Y", 50.0}, {"Right X", 80.0},
                                   {"Right Y", 50.0}, {"Light Source X", 50.0}, {"Light Source Y", 90.0},
                                   {"Light Target X", 50.0}, {"Light Target Y", 10.0}})
            host().set_control(name, value);
        viewer_ = std::make_unique<Viewer>(host());
        viewer_->pen(0, 0, 0.0f);  // the pen starts lifted
    }

    double value(const char *name) { return host().controls().at(name).value(); }
    // Positions come back through float fractions of the frame.
    void expect_percent(const char *name, double expected) { EXPECT_NEAR(value(name), expected, 1e-4) << name; }
    Viewer &viewer() { return *viewer_; }
    // Draws, then drags from one point to another.
    std::vector<PenOutcome> drag(float x0, float y0, float x1, float y1) {
        viewer().draw();
        return viewer().stroke({x0, y0}, {x1, y1});
    }
    void light_on() { host().set_control("Light", 1); }

    std::unique_ptr<Viewer> viewer_;
};

bool near(float a, float b) { return std::fabs(a - b) < 1e-3f; }

// A drawn segment from a to b, in either direction.
bool has_segment(const std::vector<GlPrimitive> &drawn, float ax, float ay, float bx, float by) {
    for (const GlPrimitive &p : drawn)
        for (size_t i = 0; p.mode == GL_LINES && i + 1 < p.vertices.size(); i += 2) {
            const auto &u = p.vertices[i], &v = p.vertices[i + 1];
            if ((near(u.x, ax) && near(u.y, ay) && near(v.x, bx) && near(v.y, by)) ||
                (near(u.x, bx) && near(u.y, by) && near(v.x, ax) && near(v.y, ay)))
                return true;
        }
    return false;
}

int filled(const std::vector<GlPrimitive> &drawn) {
    int count = 0;
    for (const GlPrimitive &p : drawn) count += p.mode == GL_POLYGON;
    return count;
}

}  // namespace

TEST_F(EffectOverlay, DraggingAnEmitterEndWritesItsPositionAndMovesTheLine) {
    viewer().draw();
    EXPECT_EQ(viewer().pen(41, 51, 0.0f).cursor(), SPARK_CURSOR_HOVER);
    std::vector<PenOutcome> stroke = viewer().stroke({41, 51}, {60, 20});
    EXPECT_EQ(stroke[1].cursor(), SPARK_CURSOR_CAUGHT);
    EXPECT_EQ(stroke[2].updates, (std::vector<int>{11, 12}));
    expect_percent("Left X", 30.0);
    expect_percent("Left Y", 20.0);
    expect_percent("Right X", 80.0);
    EXPECT_TRUE(stroke.back().frame) << "released with Auto Preview on: the frame is rendered again";
    EXPECT_TRUE(has_segment(viewer().draw(), 60, 20, 160, 50)) << "the emitter line follows its end";
}

TEST_F(EffectOverlay, OnlyXOfThePenIsScaledByTheViewerRatio) {
    viewer().set_ratio(2.0f);
    drag(20.5f, 50, 30, 40);  // x 20.5 reaches the left end at 41
    expect_percent("Left X", 30.0);
    expect_percent("Left Y", 40.0);
}

TEST_F(EffectOverlay, LineDraggedByItsMiddleMovesBothEndsAndReRendersOnlyWithAutoPreview) {
    EXPECT_FALSE(drag(10, 90, 20, 80).back().frame) << "nothing caught";
    host().set_control("Auto Preview", 0);
    std::vector<PenOutcome> stroke = drag(100, 50, 100, 60);
    EXPECT_FALSE(stroke.back().frame);
    EXPECT_EQ(stroke.back().redraws, 1);
    for (auto [name, percent] : {std::pair{"Left X", 20.0}, {"Left Y", 60.0}, {"Right X", 80.0}, {"Right Y", 60.0}})
        expect_percent(name, percent);
}

TEST_F(EffectOverlay, DraggingAConeEdgeSetsTheSpreadFromTheLightAxis) {
    light_on();
    // Spread 90: the edges end 80 pixels from the source, 45 degrees either side of straight down.
    const float edge = float(80 * std::sqrt(0.5));
    std::vector<GlPrimitive> drawn = viewer().draw();
    EXPECT_EQ(filled(drawn), 2) << "the two cone handles";
    EXPECT_TRUE(has_segment(drawn, 100, 90, 100, 10)) << "the light line";

    drag(100 + edge, 90 - edge, 100, 30);
    EXPECT_DOUBLE_EQ(value("Light Spread"), 0.0) << "on the axis";
    host().set_control("Light Spread", 90);
    drag(100 - edge, 90 - edge, 100, 95);
    EXPECT_DOUBLE_EQ(value("Light Spread"), 360.0) << "behind the source, beyond the control's range";
    expect_percent("Light Source Y", 90.0);
}

TEST_F(EffectOverlay, LightWidgetsHideAndIgnoreThePenWithoutLightIntensity) {
    light_on();
    host().set_control("Light Inten", 0);
    const float edge = float(80 * std::sqrt(0.5));
    std::vector<GlPrimitive> drawn = viewer().draw();
    EXPECT_EQ(filled(drawn), 0);
    EXPECT_FALSE(has_segment(drawn, 100, 90, 100, 10));
    EXPECT_EQ(viewer().stroke({100 + edge, 90 - edge}, {100, 30})[1].cursor(), SPARK_CURSOR_NORMAL);
    viewer().stroke({100, 90}, {120, 80});
    EXPECT_DOUBLE_EQ(value("Light Spread"), 90.0);
    expect_percent("Light Source X", 50.0);
    EXPECT_TRUE(has_segment(drawn, 40, 50, 160, 50)) << "the emitter stays";
}

TEST_F(EffectOverlay, BandAroundTheEmitterIsPositionVarWideScaledByPixelAspect) {
    host().settings().pixel_aspect = 2.0f;
    host().set_control("Position Var", 10);  // 20 pixels of a 200-pixel frame
    // Dashed edges 20 x 2 above and below the emitter, and dotted half circles beyond its ends.
    int above = 0, below = 0, left_arc = 0, right_arc = 0, inner_arc = 0;
    auto on_end = [](const sparkhost::GlVertex &q, float cx) {
        return near(std::hypot((q.x - cx) / 20, (q.y - 50) / 40), 1.0f);
    };
    for (const GlPrimitive &p : viewer().draw())
        for (size_t i = 0; p.mode == GL_LINES && i + 1 < p.vertices.size(); i += 2) {
            const auto &u = p.vertices[i], &v = p.vertices[i + 1];
            above += near(u.y, 90) && near(v.y, 90);
            below += near(u.y, 10) && near(v.y, 10);
            const bool left = on_end(u, 40) && on_end(v, 40), right = on_end(u, 160) && on_end(v, 160);
            left_arc += left && std::max(u.x, v.x) <= 40.001f;
            right_arc += right && std::min(u.x, v.x) >= 159.999f;
            inner_arc += (left && std::max(u.x, v.x) > 40.001f) || (right && std::min(u.x, v.x) < 159.999f);
        }
    EXPECT_GT(above, 3);
    EXPECT_GT(below, 3);
    EXPECT_GT(left_arc, 2);
    EXPECT_GT(right_arc, 2);
    EXPECT_EQ(inner_arc, 0) << "half circles only, on the far side of each end";
}

TEST_F(EffectOverlay, ZoomAndOffsetsPlaceTheDrawing) {
    viewer().set_offset(7, 3);
    for (auto [zoom, drawn] : {std::pair{0.5f, float(1 / 1.5)}, {2.0f, 2.0f}}) {
        viewer().set_zoom(zoom);
        EXPECT_TRUE(has_segment(viewer().draw(), 7 + 40 * drawn, 3 + 50 * drawn, 7 + 160 * drawn, 3 + 50 * drawn))
            << zoom;
    }
}

TEST_F(EffectOverlay, BirthsFollowTheDraggedEmitter) {
    // Auto Preview off: no control change may advance the bubbles before the restart.
    for (auto [name, value] : {std::pair{"Auto Preview", 0.0}, {"Initial Velocity", 0.0}, {"Velocity Var", 0.0},
                               {"Turbulence", 0.0}, {"Growth Mode", 0.0}, {"Bubble Size Var", 0.0},
                               {"Density", 200.0}, {"Bubble Size", 5.0}, {"Left Y", 20.0}, {"Right Y", 20.0}})
        host().set_control(name, value);
    drag(100, 20, 100, 80);
    host().press_control("Restart");
    std::optional<sparkhost::Frame> frame = host().process(2);
    ASSERT_TRUE(frame);
    const sparkhost::Frame scene = host().input(sparkhost::kScene).frame(2, frame->format());
    int lowest = 100, highest = -1;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 200; ++x)
            if (frame->value(x, y, 0) != scene.value(x, y, 0)) {
                lowest = std::min(lowest, y);
                highest = std::max(highest, y);
            }
    // Still, small bubbles: what changed lies around the emitter's new height only.
    EXPECT_LT(lowest, 80);
    EXPECT_GT(highest, 80);
    EXPECT_GT(lowest, 60);
}
