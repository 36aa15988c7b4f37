// Overlay widgets: strict hit tests, grabbing, dragging, range limits and
// host writes in percent.
#include <vector>

#include "control_records.h"
#include "framework/overlay.h"
#include "framework/overlay_widgets.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;
using ::testing::FloatEq;
using ::testing::Pointwise;

namespace {

// The host values of the given entries, for comparing with FloatEq.
std::vector<float> values(std::initializer_list<const SparkFloatStruct *> records) {
    std::vector<float> out;
    for (const SparkFloatStruct *record : records) out.push_back(record->Value);
    return out;
}

// Remembers what reached HandleInteractionPlat and in which state.
struct PlatSpy : CrosshairOverlayQv {
    struct Call {
        int type, grabbed, highlighted;
    };
    std::vector<Call> seen;
    void HandleInteractionPlat(InterType type, float mx, float my) override {
        seen.push_back({type, grabbed, highlighted});
        CrosshairOverlayQv::HandleInteractionPlat(type, mx, my);
    }
};

class Widgets : public HostLogTest {
protected:
    void SetUp() override {
        HostLogTest::SetUp();
        overlay.SetViewport(200, 100, 1.0f, 1.0f, 1.0f);
    }
    // Binds a crosshair to entries 11 and 12 and draws it at (100, 50).
    void centre(CrosshairOverlayQv &cross, SparkFloatStruct &x, SparkFloatStruct &y) {
        cross.Bind(&overlay, 11, &x, &y);
        cross.SetPosition(0.5f, 0.5f);
        overlay.DrawCrosshairOverlay(&cross);
    }
    OverlayQv overlay;
    SparkFloatStruct x = float_record(50.0f), y = float_record(50.0f);
};

}  // namespace

TEST_F(Widgets, CrosshairHitTestIsStrictOnAllSidesAtBothZooms) {
    CrosshairOverlayQv cross;
    centre(cross, x, y);
    for (float zoom : {1.0f, 2.0f}) {
        overlay.SetViewport(200, 100, 1.0f, zoom, 1.0f);
        overlay.DrawCrosshairOverlay(&cross);
        const float r = 5.0f / zoom;
        for (float distance : {r - 0.1f, r}) {
            const float points[][2] = {{100 + distance, 50}, {100 - distance, 50}, {100, 50 + distance},
                                       {100, 50 - distance}};
            for (const auto &p : points) {
                cross.HandleInteraction(InterMove, p[0], p[1]);
                EXPECT_EQ(cross.highlighted, distance < r) << "zoom " << zoom << " at " << p[0] << "," << p[1];
            }
        }
    }
}

TEST_F(Widgets, CrosshairDragWritesPercentStopsAtTheRangeEdgeAndEndsOnRelease) {
    y = float_record(50.0f, 50.0f, 10.0f);
    CrosshairOverlayQv cross;
    centre(cross, x, y);
    cross.HandleInteraction(InterPress, 101.0f, 49.0f);
    EXPECT_EQ(cross.grabbed, 1);
    cross.HandleInteraction(InterDrag, 150.0f, 60.0f);
    EXPECT_FLOAT_EQ(cross.x, 0.75f);
    EXPECT_EQ(cross.y, 0.5f);  // minimum above maximum: the minimum wins
    EXPECT_THAT(values({&x, &y}), Pointwise(FloatEq(), {75.0f, 50.0f}));
    x.Max = 100.0f;
    cross.HandleInteraction(InterDrag, 260.0f, 60.0f);
    EXPECT_EQ(x.Value, 100.0f);

    cross.HandleInteraction(InterRelease, 150.0f, 60.0f);
    EXPECT_EQ(cross.grabbed, 0);
    EXPECT_EQ(cross.highlighted, 1);  // release leaves the highlight to the next move
    cross.HandleInteraction(InterDrag, 10.0f, 10.0f);
    EXPECT_EQ(cross.x, 1.0f);
    EXPECT_THAT(updates(), ElementsAre(11, 12, 11, 12));
}

TEST_F(Widgets, EventsReachThePlatformHookAfterTheFlagsChange) {
    PlatSpy cross;
    centre(cross, x, y);
    cross.HandleInteraction(InterDrag, 20.0f, 20.0f);  // no press: nothing moves
    cross.HandleInteraction(InterMove, 100.0f, 50.0f);
    cross.HandleInteraction(InterPress, 10.0f, 10.0f);  // away from the handle
    cross.HandleInteraction(static_cast<InterType>(4), 100.0f, 50.0f);
    cross.HandleInteraction(static_cast<InterType>(-1), 100.0f, 50.0f);
    cross.HandleInteraction(InterRelease, 10.0f, 10.0f);

    ASSERT_EQ(cross.seen.size(), 4u);
    EXPECT_EQ(cross.seen[0].type, InterDrag);
    EXPECT_EQ(cross.seen[1].highlighted, 1);
    EXPECT_EQ(cross.seen[2].type, InterPress);
    EXPECT_EQ(cross.seen[2].highlighted, 0);
    EXPECT_EQ(cross.seen[2].grabbed, 0);
    EXPECT_EQ(cross.seen[3].type, InterRelease);
    EXPECT_EQ(cross.x, 0.5f);
    EXPECT_TRUE(calls().empty());
}

TEST_F(Widgets, WidgetsIgnoreEventsBeforeTheOverlayHasAViewport) {
    OverlayQv blank;
    CrosshairOverlayQv cross;
    cross.Bind(&blank, 11, &x, &y);
    cross.HandleInteraction(InterPress, 0.0f, 0.0f);
    cross.HandleInteraction(InterDrag, 5.0f, 5.0f);
    EXPECT_EQ(cross.grabbed, 0);
    EXPECT_TRUE(calls().empty());
}

TEST_F(Widgets, LineDraggedByItsMiddleKeepsDirectionAndLength) {
    x = float_record(20.0f), y = float_record(20.0f);
    SparkFloatStruct x2 = float_record(40.0f), y2 = float_record(60.0f);
    LineOverlayQv line;
    line.Bind(&overlay, 11, &x, &y, 18, &x2, &y2);
    line.SetPoints(0.2f, 0.2f, 0.4f, 0.6f);
    overlay.DrawLineOverlay(&line);  // middle at (60, 40)
    line.HandleInteraction(InterPress, 60.0f, 40.0f);
    line.HandleInteraction(InterDrag, 100.0f, 50.0f);
    EXPECT_THAT(values({&x, &y, &x2, &y2}), Pointwise(FloatEq(), {40.0f, 30.0f, 60.0f, 70.0f}));
    EXPECT_THAT(updates(), ElementsAre(11, 12, 18, 19));
}

TEST_F(Widgets, LineSecondPointXLimitsLandInTheFirstPointX) {
    x = float_record(50.0f, 0.0f, 100.0f), y = float_record(50.0f, 0.0f, 100.0f);
    SparkFloatStruct x2 = float_record(90.0f, 0.0f, 100.0f), y2 = float_record(50.0f, 0.0f, 100.0f);
    LineOverlayQv line;
    line.Bind(&overlay, 11, &x, &y, 18, &x2, &y2);
    line.SetPoints(0.5f, 0.5f, 0.9f, 0.5f);
    overlay.DrawLineOverlay(&line);  // middle at (140, 50)
    line.HandleInteraction(InterPress, 140.0f, 50.0f);
    line.HandleInteraction(InterDrag, 190.0f, 50.0f);  // x 0.75, x2 1.15
    EXPECT_FLOAT_EQ(line.x, 1.0f);
    EXPECT_FLOAT_EQ(line.x2, 1.15f);
    EXPECT_THAT(values({&x, &x2}), Pointwise(FloatEq(), {100.0f, 115.0f}));

    // The minimum of the second x does the same; y2 is limited into itself.
    x2.Min = 50.0f;
    line.SetPoints(0.1f, 0.4f, 0.3f, 0.6f);
    overlay.DrawLineOverlay(&line);  // middle at (40, 50)
    line.HandleInteraction(InterPress, 40.0f, 50.0f);
    line.HandleInteraction(InterDrag, 40.0f, 95.0f);  // y 0.85, y2 1.05
    EXPECT_THAT((std::vector<float>{line.x, line.y, line.x2, line.y2}),
                Pointwise(FloatEq(), {0.5f, 0.85f, 0.3f, 1.0f}));
    EXPECT_FLOAT_EQ(y2.Value, 100.0f);
}

// Circle, rectangle and angle widgets follow the crosshair's pick-and-drag
// pattern; these pin the units they write and which handle a press picks.
TEST_F(Widgets, CircleRimSetsRadiusInPercentOfWidthAndCentreMovesLast) {
    SparkFloatStruct r = float_record(10.0f, 0.0f, 25.0f);
    CircleOverlayQv circle;
    circle.Bind(&overlay, 40, &x, &y, 45, &r);
    circle.SetCircle(0.5f, 0.5f, 0.1f);
    overlay.DrawCircleOverlay(&circle);  // centre (100, 50), rim handle (120, 50)
    circle.HandleInteraction(InterPress, 121.0f, 50.0f);
    EXPECT_EQ(circle.grabbed, 2);
    circle.HandleInteraction(InterDrag, 100.0f, 80.0f);
    EXPECT_FLOAT_EQ(r.Value, 15.0f);
    circle.HandleInteraction(InterDrag, 190.0f, 50.0f);  // 90 pixels: past the maximum 25
    EXPECT_FLOAT_EQ(r.Value, 25.0f);
    circle.HandleInteraction(InterRelease, 190.0f, 50.0f);

    overlay.DrawCircleOverlay(&circle);
    circle.HandleInteraction(InterPress, 100.0f, 50.0f);
    circle.HandleInteraction(InterDrag, 50.0f, 25.0f);
    EXPECT_THAT(values({&x, &y}), Pointwise(FloatEq(), {25.0f, 25.0f}));
    EXPECT_THAT(updates(), ElementsAre(45, 45, 40, 41));
}

TEST_F(Widgets, RectangleOverlappingCornersPickTheLastAndAngleWrapsDegreesIntoItsRange) {
    SparkFloatStruct x2 = float_record(10.0f), y2 = float_record(10.0f, 0.0f, 100.0f);
    x = float_record(10.0f), y = float_record(10.0f);
    RectangleOverlayQv rectangle;
    rectangle.Bind(&overlay, 11, &x, &y, 18, &x2, &y2);
    rectangle.SetCorners(0.1f, 0.1f, 0.1f, 0.1f);
    overlay.DrawRectangleOverlay(&rectangle);
    rectangle.HandleInteraction(InterPress, 20.0f, 10.0f);
    rectangle.HandleInteraction(InterDrag, 150.0f, 120.0f);
    EXPECT_THAT(values({&x, &y, &x2, &y2}), Pointwise(FloatEq(), {10.0f, 10.0f, 75.0f, 100.0f}));

    SparkFloatStruct angle = float_record(0.0f, 0.0f, 180.0f);
    AngleOverlayQv spoke;
    spoke.Bind(&overlay, 22, &angle);
    spoke.SetCentre(0.5f, 0.5f);
    spoke.SetAngle(0.0f);
    overlay.SetViewport(200, 100, 1.0f, 2.0f, 1.0f);
    overlay.DrawAngleOverlay(&spoke);  // tip 30 image units right of (100, 50)
    spoke.HandleInteraction(InterPress, 131.0f, 51.0f);
    spoke.HandleInteraction(InterDrag, 100.0f, 90.0f);
    EXPECT_FLOAT_EQ(angle.Value, 90.0f);
    spoke.HandleInteraction(InterDrag, 100.0f, 10.0f);  // 270 is past the maximum
    EXPECT_FLOAT_EQ(spoke.angle, 180.0f);
    EXPECT_THAT(updates(), ElementsAre(18, 19, 22, 22));
}
