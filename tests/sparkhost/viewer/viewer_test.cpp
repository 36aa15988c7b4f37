// The host's viewer: the state byte that stops the pen, and overlays drawn
// over frames of both depths.
#include <gtest/gtest.h>

#include "spark/spark.h"
#include "sparkhost/core/host.h"
#include "sparkhost/viewer/viewer.h"

using namespace sparkhost;

TEST(Viewer, InactiveViewerStopsThePen) {
    Settings settings;
    settings.message_sink = [](const Message &) {};
    Host host(settings);
    Viewer viewer(host);
    host.load(FIZZLE_PLUGIN_PATH);
    host.initialise();
    viewer.set_active(false);
    EXPECT_EQ(viewer.info_record().ViewerState, 0);
    for (const PenOutcome &outcome : viewer.stroke({5, 5}, {30, 30})) EXPECT_TRUE(outcome.ignored());
}

TEST(DrawOverFrame, PaintsOnlyWhatTheOverlayTouchesAtBothDepths) {
    const std::vector<GlPrimitive> overlay = {{GL_LINES, {1.0f, 0.0f, 0.0f}, {{0.0f, 2.5f}, {10.0f, 2.5f}}},
                                              {GL_POINTS, {0.0f, 0.0f, 0.0f}, {{20.5f, 30.5f}}}};
    for (Depth depth : {Depth::Bits8, Depth::Bits12}) {
        Frame frame({40, 40, depth});
        const int grey = depth == Depth::Bits8 ? 100 : 1600, top = depth == Depth::Bits8 ? 255 : 4095;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                for (int c = 0; c < 3; ++c) frame.set_value(x, y, c, grey);
        DrawOverFrame(overlay, frame);
        // Row 2 counted from the bottom holds the red line.
        EXPECT_EQ(frame.value(5, 2, 0), top) << top;
        EXPECT_EQ(frame.value(5, 2, 1), 0) << top;
        EXPECT_EQ(frame.value(5, 3, 0), grey) << top;
        EXPECT_EQ(frame.value(20, 30, 0), 0) << "a black mark is still drawn";
        EXPECT_EQ(frame.value(21, 30, 0), grey) << top;
    }
}
