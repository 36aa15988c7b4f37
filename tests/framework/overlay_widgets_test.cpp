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

TEST_F(Widgets, CrosshairHitTestIsStrictAtBothZooms) {
    CrosshairOverlayQv cross;
    centre(cross, x, y);
    for (float zoom : {1.0f, 2.0f}) {
        overlay.SetViewport(200, 100, 1.0f, zoom, 1.0f);
        overlay.DrawCrosshairOverlay(&cross);
        const float r = 5.0f / zoom;
        cross.HandleInteraction(InterMove, 100.0f, 50.0f - (r - 0.1f));
        EXPECT_EQ(cross.highlighted, 1) << "zoom " << zoom;
        cross.HandleInteraction(InterMove, 100.0f + r, 50.0f);
        EXPECT_EQ(cross.highlighted, 0) << "zoom " << zoom;
    }
}

TEST_F(Widgets, CrosshairDragWritesPercentStopsAtTheRangeEdgeAndEndsOnRelease) {
    y = float_record(50.0f, 50.0f, 10.0f);
    CrosshairOverlayQv cross;
    centre(cross, x, y);
    cross.HandleInteraction(InterPress, 101.0f, 49.0f);
    cross.HandleInteraction(InterDrag, 150.0f, 60.0f);
    EXPECT_THAT(values({&x, &y}), Pointwise(FloatEq(), {75.0f, 50.0f}));  // y: minimum above maximum wins
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


TEST_F(Widgets, RectangleDragsOnlyTheGrabbedCornerAndWritesItsOwnPair) {
    SparkFloatStruct x2 = float_record(80.0f, 0.0f, 100.0f), y2 = float_record(60.0f, 0.0f, 100.0f);
    RectangleOverlayQv rectangle;
    rectangle.Bind(&overlay, 11, &x, &y, 18, &x2, &y2);
    rectangle.SetCorners(0.2f, 0.2f, 0.8f, 0.6f);
    overlay.DrawRectangleOverlay(&rectangle);  // corners at (40, 20) and (160, 60)
    rectangle.HandleInteraction(InterPress, 160.0f, 60.0f);
    EXPECT_EQ(rectangle.grabbed, 2);
    rectangle.HandleInteraction(InterDrag, 100.0f, 90.0f);
    EXPECT_THAT(values({&x, &y, &x2, &y2}), Pointwise(FloatEq(), {50.0f, 50.0f, 50.0f, 90.0f}));
    EXPECT_THAT(updates(), ElementsAre(18, 19));
}
