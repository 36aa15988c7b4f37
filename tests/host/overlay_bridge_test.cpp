// The viewer entry points with a stand-in effect put in through the overlay
// hooks: pen pressure turned into events, and samples that must leave no
// trace. The real effect's widgets are driven in tests/bubbles.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "host/overlay_binding.h"
#include "spark/spark.h"
#include "sparkhost/gl_recorder.h"
#include "sparkhost/host.h"

using sparkhost::gl_recorder;

namespace {

struct Event {
    int type;
    float x, y;
    bool operator==(const Event &other) const { return type == other.type && x == other.x && y == other.y; }
};

// Counts its drawings and records the events it gets.
class StandInOverlay : public OverlayQv {
public:
    void RenderOverlay() override { ++renders; }
    void HandleInteraction(InterType type, float x, float y) override { events.push_back({type, x, y}); }
    int renders = 0;
    std::vector<Event> events;
};

struct StandInEffect {
    StandInOverlay overlay;
    bool clear_overlay = false, auto_preview = true, caught = false, hovered = false;
    float pressure = -1.0f;
    int renders = 0;
    unsigned long frame[1] = {};
};

StandInEffect *effect = nullptr;

OverlayHooks stand_in_hooks() {
    return {[]() -> OverlayQv & { return effect->overlay; },   [] { return effect->clear_overlay; },
            [] { return effect->auto_preview; },                [](float pressure) { effect->pressure = pressure; },
            [] { return effect->caught; },                      [] { return effect->hovered; },
            [] {},                                              [](SparkInfoStruct) -> unsigned long * {
                ++effect->renders;
                return effect->frame;
            }};
}

class OverlayBridge : public ::testing::Test {
protected:
    void SetUp() override {
        sparkhost::Settings settings;
        settings.format = {200, 100, sparkhost::Depth::Bits8};
        settings.message_sink = [](const sparkhost::Message &) {};
        host_ = std::make_unique<sparkhost::Host>(settings);
        host_->make_current();
        effect = &effect_;
        saved_ = overlay_hooks();
        overlay_hooks() = stand_in_hooks();
        gl_recorder().clear();
        // The pen's previous pressure carries over between calls: start lifted.
        pen(0.0f);
        effect_.overlay.events.clear();
    }
    void TearDown() override {
        overlay_hooks() = saved_;
        effect = nullptr;
        host_.reset();
    }

    SparkInfoStruct info() const { return host_->info_record(1); }
    unsigned long *pen(float pressure, float x = 50.0f, float y = 40.0f) {
        return SparkInteract(info(), 0, 0, pressure, x, y);
    }
    std::vector<int> cursors() const { return host_->events().cursor_shapes; }
    int redraws() const { return host_->events().viewing_draws; }

    std::unique_ptr<sparkhost::Host> host_;
    StandInEffect effect_;
    OverlayHooks saved_{};
};

}  // namespace

TEST_F(OverlayBridge, PressureSequenceGivesHoverPressDragRelease) {
    const std::vector<int> cursors_before = cursors();
    const int redraws_before = redraws();
    EXPECT_EQ(pen(0.0f, 1, 2), nullptr);
    EXPECT_EQ(redraws(), redraws_before);
    EXPECT_EQ(pen(0.5f, 3, 4), nullptr);
    EXPECT_EQ(pen(0.7f, 5, 6), nullptr);
    EXPECT_EQ(pen(0.0f, 7, 8), nullptr);

    EXPECT_EQ(effect_.overlay.events,
              (std::vector<Event>{{InterMove, 1, 2}, {InterPress, 3, 4}, {InterDrag, 5, 6}, {InterRelease, 7, 8}}));
    const std::vector<int> all = cursors();
    std::vector<int> shapes(all.begin() + long(cursors_before.size()), all.end());
    // Hover, press (nothing caught) and release ask for the normal cursor; a drag asks for none.
    EXPECT_EQ(shapes, (std::vector<int>{1, 1, 1}));
    EXPECT_EQ(redraws(), redraws_before + 3) << "every event but the hover redraws";
    EXPECT_EQ(effect_.renders, 0) << "nothing was caught";
}

TEST_F(OverlayBridge, IgnoredSamplesTouchNothingAndLeaveThePreviousPressure) {
    const size_t cursors_before = cursors().size();
    const int redraws_before = redraws();
    SparkInfoStruct inactive = info();
    inactive.ViewerState = 0;
    EXPECT_EQ(SparkInteract(inactive, 0, 0, 0.8f, 1, 1), nullptr);
    EXPECT_EQ(effect_.pressure, 0.0f) << "an inactive viewer does not even store the pressure";

    effect_.clear_overlay = true;
    SparkOverlay(info(), 1.0f);
    EXPECT_EQ(effect_.overlay.renders, 0);
    EXPECT_EQ(gl_recorder().flushes(), 0);
    EXPECT_EQ(pen(0.9f), nullptr);
    EXPECT_EQ(effect_.pressure, 0.9f) << "the pressure is stored before Clear Overlay is read";

    EXPECT_TRUE(effect_.overlay.events.empty());
    EXPECT_EQ(cursors().size(), cursors_before);
    EXPECT_EQ(redraws(), redraws_before);
    // Neither sample became the previous pressure: the next one is a press.
    effect_.clear_overlay = false;
    pen(0.9f);
    EXPECT_EQ(effect_.overlay.events.back().type, InterPress);
}
