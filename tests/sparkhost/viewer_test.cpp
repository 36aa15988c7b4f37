// The host's viewer: its refusals, the state byte that stops the pen, and
// overlays drawn over frames of both depths.
#include <gtest/gtest.h>

#include "spark/spark.h"
#include "sparkhost/error.h"
#include "sparkhost/host.h"
#include "sparkhost/viewer.h"

using namespace sparkhost;

TEST(Viewer, RefusesBadZoomStrokesAndMissingPlugInAndInactiveStopsThePen) {
    Settings settings;
    settings.message_sink = [](const Message &) {};
    Host host(settings);
    Viewer viewer(host);
    EXPECT_THROW(viewer.set_zoom(0.0f), Error);
    EXPECT_THROW(viewer.set_zoom(-1.0f), Error);
    EXPECT_THROW(viewer.set_frame(0), Error);
    EXPECT_THROW(viewer.draw(), Error);
    EXPECT_THROW(viewer.pen(1, 1, 0.5f), Error);
    EXPECT_THROW(viewer.stroke({0, 0}, {1, 1}, 0), Error);
    EXPECT_EQ(viewer.zoom(), 1.0f);

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
        SCOPED_TRACE(depth == Depth::Bits8 ? "8-bit" : "12-bit");
        Frame frame({40, 40, depth});
        const int grey = depth == Depth::Bits8 ? 100 : 1600, top = depth == Depth::Bits8 ? 255 : 4095;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                for (int c = 0; c < 3; ++c) frame.set_value(x, y, c, grey);
        DrawOverFrame(overlay, frame);
        // Row 2 counted from the bottom holds the red line.
        EXPECT_EQ(frame.value(5, 2, 0), top);
        EXPECT_EQ(frame.value(5, 2, 1), 0);
        EXPECT_EQ(frame.value(5, 3, 0), grey);
        EXPECT_EQ(frame.value(20, 30, 0), 0) << "a black mark is still drawn";
        EXPECT_EQ(frame.value(21, 30, 0), grey);
        EXPECT_EQ(frame.value(39, 39, 2), grey);
    }
}
