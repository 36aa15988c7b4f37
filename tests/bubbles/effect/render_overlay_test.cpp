// The effect's overlay driven through our host as a user's pen would: the
// emitter ends and line, and the light cone's edges.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "host/plugin_host_fixture.h"
#include "sparkhost/viewer/viewer.h"

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

TEST_F(EffectOverlay, DraggingAConeEdgeSetsTheSpreadFromTheLightAxisAndNoIntensityHidesTheCone) {
    host().set_control("Light", 1);
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
    host().set_control("Light Inten", 0);
    EXPECT_EQ(filled(viewer().draw()), 0) << "no handles without light intensity";
}
