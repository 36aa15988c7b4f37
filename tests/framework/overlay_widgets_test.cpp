// Overlay widgets: strict hit tests, grabbing, dragging, range limits and
// host writes in percent.
#include <vector>

#include "framework/overlay.h"
#include "framework/overlay_widgets.h"
#include "host_log_fixture.h"

using ::testing::ElementsAre;

namespace {

SparkFloatStruct percent(float value, float min = -300.0f, float max = 300.0f) {
    SparkFloatStruct record{};
    record.Value = value;
    record.Min = min;
    record.Max = max;
    record.Title = "X: %.2f";
    return record;
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
    OverlayQv overlay;
};

}  // namespace

TEST_F(Widgets, CrosshairHitTestIsStrictOnAllSidesAtBothZooms) {
    SparkFloatStruct x = percent(50.0f), y = percent(50.0f);
    CrosshairOverlayQv cross;
    cross.Bind(&overlay, 11, &x, &y);
    cross.SetPosition(0.5f, 0.5f);
    for (float zoom : {1.0f, 2.0f}) {
        overlay.SetViewport(200, 100, 1.0f, zoom, 1.0f);
        overlay.DrawCrosshairOverlay(&cross);  // centre at (100, 50)
        const float r = 5.0f / zoom, inside = r - 0.1f;
        const float hits[][2] = {{100 + inside, 50}, {100 - inside, 50}, {100, 50 + inside},
                                 {100, 50 - inside}};
        const float misses[][2] = {{100 + r, 50}, {100 - r, 50}, {100, 50 + r}, {100, 50 - r}};
        for (const auto &p : hits) {
            cross.HandleInteraction(InterMove, p[0], p[1]);
            EXPECT_EQ(cross.highlighted, 1) << "zoom " << zoom << " at " << p[0] << "," << p[1];
        }
        for (const auto &p : misses) {
            cross.HandleInteraction(InterMove, p[0], p[1]);
            EXPECT_EQ(cross.highlighted, 0) << "zoom " << zoom << " at " << p[0] << "," << p[1];
        }
    }
}

TEST_F(Widgets, CrosshairDragWritesPercentAndUpdatesBothEntries) {
    SparkFloatStruct x = percent(50.0f), y = percent(50.0f);
    CrosshairOverlayQv cross;
    cross.Bind(&overlay, 11, &x, &y);
    cross.SetPosition(0.5f, 0.5f);
    overlay.DrawCrosshairOverlay(&cross);

    cross.HandleInteraction(InterPress, 101.0f, 49.0f);
    EXPECT_EQ(cross.grabbed, 1);
    cross.HandleInteraction(InterDrag, 150.0f, 60.0f);
    EXPECT_FLOAT_EQ(cross.x, 0.75f);
    EXPECT_FLOAT_EQ(cross.y, 0.6f);
    EXPECT_FLOAT_EQ(x.Value, 75.0f);
    EXPECT_FLOAT_EQ(y.Value, 60.0f);
    EXPECT_THAT(updates(), ElementsAre(11, 12));

    cross.HandleInteraction(InterRelease, 150.0f, 60.0f);
    EXPECT_EQ(cross.grabbed, 0);
    EXPECT_EQ(cross.highlighted, 1);  // release leaves the highlight to the next move
    cross.HandleInteraction(InterDrag, 10.0f, 10.0f);
    EXPECT_FLOAT_EQ(cross.x, 0.75f);
    EXPECT_THAT(updates(), ElementsAre(11, 12));
}

TEST_F(Widgets, CrosshairDraggedPastTheRangeStopsAtItsEdge) {
    SparkFloatStruct x = percent(50.0f, 0.0f, 100.0f), y = percent(50.0f, 50.0f, 10.0f);
    CrosshairOverlayQv cross;
    cross.Bind(&overlay, 11, &x, &y);
    cross.SetPosition(0.5f, 0.5f);
    overlay.DrawCrosshairOverlay(&cross);
    cross.HandleInteraction(InterPress, 100.0f, 50.0f);
    cross.HandleInteraction(InterDrag, 260.0f, 5.0f);
    EXPECT_EQ(cross.x, 1.0f);
    EXPECT_EQ(x.Value, 100.0f);
    EXPECT_EQ(cross.y, 0.5f);  // minimum above maximum: the minimum wins
    EXPECT_EQ(y.Value, 50.0f);
}

TEST_F(Widgets, EventsReachThePlatformHookAfterTheFlagsChange) {
    SparkFloatStruct x = percent(50.0f), y = percent(50.0f);
    PlatSpy cross;
    cross.Bind(&overlay, 11, &x, &y);
    cross.SetPosition(0.5f, 0.5f);
    overlay.DrawCrosshairOverlay(&cross);

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
    SparkFloatStruct x = percent(0.0f), y = percent(0.0f);
    CrosshairOverlayQv cross;
    cross.Bind(&blank, 11, &x, &y);
    cross.HandleInteraction(InterPress, 0.0f, 0.0f);
    cross.HandleInteraction(InterDrag, 5.0f, 5.0f);
    EXPECT_EQ(cross.grabbed, 0);
    EXPECT_TRUE(calls().empty());
}

TEST_F(Widgets, LineDraggedByItsMiddleKeepsDirectionAndLength) {
    SparkFloatStruct x = percent(20.0f), y = percent(20.0f), x2 = percent(40.0f),
                     y2 = percent(60.0f);
    LineOverlayQv line;
    line.Bind(&overlay, 11, &x, &y, 18, &x2, &y2);
    line.SetPoints(0.2f, 0.2f, 0.4f, 0.6f);
    overlay.DrawLineOverlay(&line);
    EXPECT_FLOAT_EQ(line.screen_x, 60.0f);
    EXPECT_FLOAT_EQ(line.screen_y, 40.0f);

    line.HandleInteraction(InterPress, 60.0f, 40.0f);
    line.HandleInteraction(InterDrag, 100.0f, 50.0f);
    EXPECT_FLOAT_EQ(line.x, 0.4f);
    EXPECT_FLOAT_EQ(line.y, 0.3f);
    EXPECT_FLOAT_EQ(line.x2, 0.6f);
    EXPECT_FLOAT_EQ(line.y2, 0.7f);
    EXPECT_FLOAT_EQ(x.Value, 40.0f);
    EXPECT_FLOAT_EQ(y.Value, 30.0f);
    EXPECT_FLOAT_EQ(x2.Value, 60.0f);
    EXPECT_FLOAT_EQ(y2.Value, 70.0f);
    EXPECT_THAT(updates(), ElementsAre(11, 12, 18, 19));
}

TEST_F(Widgets, LineSecondPointXLimitsLandInTheFirstPointX) {
    SparkFloatStruct x = percent(50.0f, 0.0f, 100.0f), y = percent(50.0f, 0.0f, 100.0f),
                     x2 = percent(90.0f, 0.0f, 100.0f), y2 = percent(50.0f, 0.0f, 100.0f);
    LineOverlayQv line;
    line.Bind(&overlay, 11, &x, &y, 18, &x2, &y2);
    line.SetPoints(0.5f, 0.5f, 0.9f, 0.5f);
    overlay.DrawLineOverlay(&line);  // middle at (140, 50)
    line.HandleInteraction(InterPress, 140.0f, 50.0f);
    line.HandleInteraction(InterDrag, 190.0f, 50.0f);  // x 0.75, x2 1.15
    EXPECT_FLOAT_EQ(line.x, 1.0f);
    EXPECT_FLOAT_EQ(line.x2, 1.15f);
    EXPECT_FLOAT_EQ(x.Value, 100.0f);
    EXPECT_FLOAT_EQ(x2.Value, 115.0f);

    // The minimum of the second x does the same; y2 is limited into itself.
    x2.Min = 50.0f;
    line.SetPoints(0.1f, 0.4f, 0.3f, 0.6f);
    overlay.DrawLineOverlay(&line);  // middle at (40, 50)
    line.HandleInteraction(InterPress, 40.0f, 50.0f);
    line.HandleInteraction(InterDrag, 40.0f, 95.0f);  // y 0.85, y2 1.05
    EXPECT_FLOAT_EQ(line.x, 0.5f);
    EXPECT_FLOAT_EQ(line.y, 0.85f);
    EXPECT_FLOAT_EQ(line.x2, 0.3f);
    EXPECT_FLOAT_EQ(line.y2, 1.0f);
    EXPECT_FLOAT_EQ(y2.Value, 100.0f);
}

TEST_F(Widgets, CircleCentreMovesAndRimSetsRadiusInPercentOfWidth) {
    SparkFloatStruct x = percent(50.0f), y = percent(50.0f), r = percent(10.0f, 0.0f, 25.0f);
    CircleOverlayQv circle;
    circle.Bind(&overlay, 40, &x, &y, 45, &r);
    circle.SetCircle(0.5f, 0.5f, 0.1f);
    overlay.DrawCircleOverlay(&circle);  // centre (100, 50), rim handle (120, 50)

    circle.HandleInteraction(InterPress, 121.0f, 50.0f);
    EXPECT_EQ(circle.grabbed, 2);
    circle.HandleInteraction(InterDrag, 100.0f, 80.0f);
    EXPECT_FLOAT_EQ(circle.radius, 0.15f);
    EXPECT_FLOAT_EQ(r.Value, 15.0f);
    circle.HandleInteraction(InterDrag, 100.0f, 0.0f);  // 50 pixels: 0.25, the maximum
    circle.HandleInteraction(InterDrag, 190.0f, 50.0f);
    EXPECT_FLOAT_EQ(r.Value, 25.0f);
    circle.HandleInteraction(InterRelease, 190.0f, 50.0f);

    overlay.DrawCircleOverlay(&circle);
    circle.HandleInteraction(InterPress, 100.0f, 50.0f);
    EXPECT_EQ(circle.grabbed, 1);
    circle.HandleInteraction(InterDrag, 50.0f, 25.0f);
    EXPECT_FLOAT_EQ(x.Value, 25.0f);
    EXPECT_FLOAT_EQ(y.Value, 25.0f);
    EXPECT_THAT(updates(), ElementsAre(45, 45, 45, 40, 41));
}

TEST_F(Widgets, RectangleCornersMoveAloneAndOverlappingHandlesPickTheLast) {
    SparkFloatStruct x = percent(10.0f), y = percent(10.0f), x2 = percent(10.0f),
                     y2 = percent(10.0f, 0.0f, 100.0f);
    RectangleOverlayQv rectangle;
    rectangle.Bind(&overlay, 11, &x, &y, 18, &x2, &y2);
    rectangle.SetCorners(0.1f, 0.1f, 0.1f, 0.1f);
    overlay.DrawRectangleOverlay(&rectangle);

    rectangle.HandleInteraction(InterPress, 20.0f, 10.0f);
    EXPECT_EQ(rectangle.grabbed, 2);
    rectangle.HandleInteraction(InterDrag, 150.0f, 120.0f);
    EXPECT_FLOAT_EQ(x2.Value, 75.0f);
    EXPECT_FLOAT_EQ(y2.Value, 100.0f);
    EXPECT_FLOAT_EQ(rectangle.x, 0.1f);
    EXPECT_THAT(updates(), ElementsAre(18, 19));
}

TEST_F(Widgets, AngleTipSetsDegreesWrappedAndLimited) {
    SparkFloatStruct angle = percent(0.0f, 0.0f, 180.0f);
    AngleOverlayQv spoke;
    spoke.Bind(&overlay, 22, &angle);
    spoke.SetCentre(0.5f, 0.5f);
    spoke.SetAngle(0.0f);
    overlay.SetViewport(200, 100, 1.0f, 2.0f, 1.0f);
    overlay.DrawAngleOverlay(&spoke);  // tip 30 image units right of (100, 50)
    EXPECT_FLOAT_EQ(spoke.screen_x, 130.0f);

    spoke.HandleInteraction(InterPress, 131.0f, 51.0f);
    spoke.HandleInteraction(InterDrag, 100.0f, 90.0f);
    EXPECT_FLOAT_EQ(angle.Value, 90.0f);
    spoke.HandleInteraction(InterDrag, 100.0f, 10.0f);  // 270 is past the maximum
    EXPECT_FLOAT_EQ(spoke.angle, 180.0f);
    EXPECT_THAT(updates(), ElementsAre(22, 22));
}
