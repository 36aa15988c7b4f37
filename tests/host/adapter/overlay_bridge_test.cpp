// The viewer entry points with a stand-in effect put in through the overlay
// hooks: samples that must leave no trace. The real effect's widgets, and the
// press, drag and release they get, are driven in tests/bubbles.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "host/adapter/overlay_bridge.h"
#include "host/plugin_host_fixture.h"
#include "spark/spark.h"
#include "sparkhost/viewer/gl_recorder.h"

namespace {

// Counts its drawings and records the events it gets.
struct StandInOverlay : OverlayQv {
    void RenderOverlay() override { ++renders; }
    void HandleInteraction(InterType type, float, float) override { events.push_back(type); }
    int renders = 0;
    std::vector<int> events;
};

struct StandInEffect {
    StandInOverlay overlay;
    bool clear_overlay = false;
    float pressure = -1.0f;
    unsigned long frame[1] = {};
} *effect = nullptr;

class OverlayBridge : public ::testing::Test {
protected:
    void SetUp() override {
        host_ = std::make_unique<sparkhost::Host>(quiet_host_settings());
        host_->make_current();
        effect = &effect_;
        saved_ = overlay_hooks();
        overlay_hooks() = {[]() -> OverlayQv & { return effect->overlay; }, [] { return effect->clear_overlay; },
                           [] { return true; }, [](float pressure) { effect->pressure = pressure; },
                           [] { return false; }, [] { return false; }, [] {},
                           [](SparkInfoStruct) -> unsigned long * { return effect->frame; }};
        sparkhost::gl_recorder().clear();
        pen(0.0f);  // the pen's previous pressure carries over between calls: start lifted
        effect_.overlay.events.clear();
    }
    void TearDown() override {
        overlay_hooks() = saved_;
        effect = nullptr;
    }

    unsigned long *pen(float pressure) { return SparkInteract(host_->info_record(1), 0, 0, pressure, 50, 40); }
    size_t cursors() const { return host_->events().cursor_shapes.size(); }
    int redraws() const { return host_->events().viewing_draws; }

    std::unique_ptr<sparkhost::Host> host_;
    StandInEffect effect_;
    OverlayHooks saved_{};
};

}  // namespace

TEST_F(OverlayBridge, IgnoredSamplesTouchNothingAndLeaveThePreviousPressure) {
    const size_t cursors_before = cursors();
    const int redraws_before = redraws();
    SparkInfoStruct inactive = host_->info_record(1);
    inactive.ViewerState = 0;
    EXPECT_EQ(SparkInteract(inactive, 0, 0, 0.8f, 1, 1), nullptr);
    EXPECT_EQ(effect_.pressure, 0.0f) << "an inactive viewer does not even store the pressure";

    effect_.clear_overlay = true;
    SparkOverlay(host_->info_record(1), 1.0f);
    EXPECT_EQ(effect_.overlay.renders, 0);
    EXPECT_EQ(sparkhost::gl_recorder().flushes(), 0);
    EXPECT_EQ(pen(0.9f), nullptr);
    EXPECT_EQ(effect_.pressure, 0.9f) << "the pressure is stored before Clear Overlay is read";
    EXPECT_TRUE(effect_.overlay.events.empty());
    EXPECT_EQ(cursors(), cursors_before);
    EXPECT_EQ(redraws(), redraws_before);
    // Neither sample became the previous pressure: the next one is a press.
    effect_.clear_overlay = false;
    pen(0.9f);
    EXPECT_EQ(effect_.overlay.events.back(), InterPress);
}
