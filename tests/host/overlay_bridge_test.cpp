// The viewer entry points with a stand-in effect put in through the overlay
// hooks: the viewer transform, the pen-pressure events, the cursor shapes,
// redraws, and the one re-render after releasing a caught widget.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "host/overlay_binding.h"
#include "spark/spark.h"
#include "spark/spark_gl.h"
#include "sparkhost/gl_recorder.h"
#include "sparkhost/host.h"

using sparkhost::GlPrimitive;
using sparkhost::gl_recorder;

namespace {

struct Event {
    int type;
    float x, y;
    bool operator==(const Event &other) const { return type == other.type && x == other.x && y == other.y; }
};

// Draws one line from the origin to (10, 20) and records the events it gets.
class StandInOverlay : public OverlayQv {
public:
    void RenderOverlay() override {
        ++renders;
        DrawLine(0.0f, 0.0f, 10.0f, 20.0f);
    }
    void HandleInteraction(InterType type, float x, float y) override { events.push_back({type, x, y}); }
    int renders = 0;
    std::vector<Event> events;
};

struct StandInEffect {
    StandInOverlay overlay;
    bool clear_overlay = false;
    bool auto_preview = true;
    bool caught = false;
    bool hovered = false;
    float pressure = -1.0f;
    int refreshes = 0;
    int renders = 0;
    unsigned long frame[1] = {};
};

StandInEffect *effect = nullptr;

OverlayHooks stand_in_hooks() {
    return {[]() -> OverlayQv & { return effect->overlay; },
            [] { return effect->clear_overlay; },
            [] { return effect->auto_preview; },
            [](float pressure) { effect->pressure = pressure; },
            [] { return effect->caught; },
            [] { return effect->hovered; },
            [] { ++effect->refreshes; },
            [](SparkInfoStruct) -> unsigned long * {
                ++effect->renders;
                return effect->frame;
            }};
}

class OverlayBridge : public ::testing::Test {
protected:
    void SetUp() override {
        sparkhost::Settings settings;
        settings.format = {200, 100, sparkhost::Depth::Bits8};
        settings.pixel_aspect = 1.5f;
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

    SparkInfoStruct info() const {
        SparkInfoStruct record = host_->info_record(1);
        record.ViewerOffsetX = 30;
        record.ViewerOffsetY = -8;
        return record;
    }
    unsigned long *pen(float pressure, float x = 50.0f, float y = 40.0f) {
        return SparkInteract(info(), 0, 0, pressure, x, y);
    }
    std::vector<int> cursors() const { return host_->events().cursor_shapes; }
    int redraws() const { return host_->events().viewing_draws; }
    // Where the stand-in's line ended up in the viewer.
    sparkhost::GlVertex line_end() const {
        std::vector<GlPrimitive> drawn = gl_recorder().primitives();
        EXPECT_EQ(drawn.size(), 1u);
        return drawn.empty() ? sparkhost::GlVertex{} : drawn[0].vertices.at(1);
    }

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

TEST_F(OverlayBridge, CursorShowsCaughtAndHoveredWidgets) {
    effect_.hovered = true;
    pen(0.0f);
    EXPECT_EQ(cursors().back(), SPARK_CURSOR_HOVER);
    effect_.caught = true;
    pen(0.3f);
    EXPECT_EQ(cursors().back(), SPARK_CURSOR_CAUGHT);
    pen(0.0f);
    EXPECT_EQ(cursors().back(), SPARK_CURSOR_NORMAL) << "a release always restores the cursor";
}

TEST_F(OverlayBridge, ReleaseOfCaughtWidgetReRendersOnceWithAutoPreview) {
    for (bool caught : {false, true})
        for (bool auto_preview : {false, true}) {
            SCOPED_TRACE(testing::Message() << "caught " << caught << ", auto preview " << auto_preview);
            effect_.renders = 0;
            effect_.caught = caught;
            effect_.auto_preview = auto_preview;
            EXPECT_EQ(pen(0.6f), nullptr);
            effect_.caught = false;  // the widget lets go while dragging: the press decided
            EXPECT_EQ(pen(0.6f), nullptr);
            unsigned long *released = pen(0.0f);
            const bool expected = caught && auto_preview;
            EXPECT_EQ(released, expected ? effect_.frame : nullptr);
            EXPECT_EQ(effect_.renders, expected ? 1 : 0);
            EXPECT_EQ(pen(0.0f), nullptr) << "a hover after the release does not render again";
            EXPECT_EQ(effect_.renders, expected ? 1 : 0);
        }
}

TEST_F(OverlayBridge, PenPressureReachesTheEffectAndOnlyXIsScaledByTheViewerRatio) {
    host_->settings().viewer_ratio = 2.0f;
    pen(0.25f, 10.0f, 30.0f);
    EXPECT_EQ(effect_.pressure, 0.25f);
    EXPECT_EQ(effect_.overlay.events.back(), (Event{InterPress, 20.0f, 30.0f}));
}

TEST_F(OverlayBridge, InactiveViewerIgnoresThePenAndKeepsItsPressure) {
    SparkInfoStruct record = info();
    record.ViewerState = 0;
    const int redraws_before = redraws();
    effect_.pressure = -1.0f;
    EXPECT_EQ(SparkInteract(record, 0, 0, 0.8f, 1, 1), nullptr);
    EXPECT_TRUE(effect_.overlay.events.empty());
    EXPECT_EQ(effect_.pressure, -1.0f);
    EXPECT_EQ(redraws(), redraws_before);
    // The ignored sample left the previous pressure (0) in place: this is a press.
    pen(0.8f);
    EXPECT_EQ(effect_.overlay.events.back().type, InterPress);
}

TEST_F(OverlayBridge, ClearOverlayDrawsNothingAndIgnoresThePen) {
    effect_.clear_overlay = true;
    SparkOverlay(info(), 1.0f);
    EXPECT_TRUE(gl_recorder().primitives().empty());
    EXPECT_EQ(gl_recorder().flushes(), 0);
    EXPECT_EQ(effect_.refreshes, 0);

    const size_t cursors_before = cursors().size();
    EXPECT_EQ(pen(0.9f), nullptr);
    EXPECT_TRUE(effect_.overlay.events.empty());
    EXPECT_EQ(cursors().size(), cursors_before);
    EXPECT_EQ(effect_.pressure, 0.9f) << "the pressure is stored before the switch is read";

    // The pen's previous pressure did not follow the ignored sample.
    effect_.clear_overlay = false;
    pen(0.9f);
    EXPECT_EQ(effect_.overlay.events.back().type, InterPress);
}

TEST_F(OverlayBridge, ZoomBelowOneDrawsLargerThanAskedAndOffsetsTranslate) {
    struct Case {
        float zoom, drawn;
    };
    for (Case c : {Case{0.5f, float(1 / 1.5)}, Case{2.0f, 2.0f}, Case{1.0f, 1.0f}, Case{0.0f, 0.5f}}) {
        SCOPED_TRACE(c.zoom);
        gl_recorder().clear();
        SparkOverlay(info(), c.zoom);
        sparkhost::GlVertex end = line_end();
        EXPECT_FLOAT_EQ(end.x, 30.0f + 10.0f * c.drawn);
        EXPECT_FLOAT_EQ(end.y, -8.0f + 20.0f * c.drawn);
        EXPECT_EQ(effect_.overlay.zoom, c.drawn);
        EXPECT_EQ(gl_recorder().flushes(), 1);
    }
}

TEST_F(OverlayBridge, OverlayGetsFrameSizeAndPixelAspectAndFreshControls) {
    SparkOverlay(info(), 1.0f);
    EXPECT_EQ(effect_.overlay.viewer_width, 200);
    EXPECT_EQ(effect_.overlay.viewer_height, 100);
    EXPECT_FLOAT_EQ(effect_.overlay.PixelAspect(), 1.5f);
    EXPECT_EQ(effect_.overlay.overlay_scale, 1.0f);
    EXPECT_EQ(effect_.refreshes, 1);
    EXPECT_EQ(effect_.overlay.renders, 1);
}
