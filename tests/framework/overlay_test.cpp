// Overlay primitives as recorded by our host's GL: colours, handles, dotted
// lines and ellipses.
#include <cmath>
#include <vector>

#include "framework/overlay.h"
#include "host_log_fixture.h"

using sparkhost::GlPrimitive;

namespace {

struct Segment {
    float x0, y0, x1, y1;
};

// The GL_LINES segments drawn so far, in order.
std::vector<Segment> segments() {
    std::vector<Segment> found;
    for (const GlPrimitive &p : sparkhost::gl_recorder().primitives())
        if (p.mode == GL_LINES)
            for (size_t i = 0; i + 1 < p.vertices.size(); i += 2)
                found.push_back({p.vertices[i].x, p.vertices[i].y, p.vertices[i + 1].x,
                                 p.vertices[i + 1].y});
    return found;
}

class OverlayDrawing : public HostLogTest {
protected:
    void SetUp() override {
        HostLogTest::SetUp();
        overlay.SetViewport(200, 100, 1.0f, 1.0f, 1.0f);
    }
    OverlayQv overlay;
};

}  // namespace

TEST_F(OverlayDrawing, ViewportRefusesNonPositiveZoomAndColourIsOnTheSixteenBitScale) {
    overlay.SetViewport(720, 576, 1.0f, 2.0f, 1.0f);
    overlay.SetViewport(720, 576, 1.0f, 0.0f, 1.0f);
    EXPECT_EQ(overlay.zoom, 2.0f);
    overlay.SetColour(65535, 0, 32768, 7);  // alpha ignored
    overlay.DrawPixel(3.0f, 4.0f);
    std::vector<GlPrimitive> p = drawn();
    ASSERT_EQ(p.size(), 1u);
    EXPECT_EQ(p[0].colour.r, 1.0f);
    EXPECT_FLOAT_EQ(p[0].colour.b, 32768 / 65535.0f);
}

TEST_F(OverlayDrawing, HandleKeepsTenViewerPixelsAtAnyZoom) {
    overlay.SetViewport(200, 100, 1.0f, 2.0f, 1.0f);
    overlay.DrawHandle(50.0f, 20.0f, false);
    std::vector<GlPrimitive> p = drawn();
    ASSERT_TRUE(p.size() == 1 && p[0].vertices.size() == 4);
    EXPECT_EQ(p[0].vertices[0].x, 47.5f);
    EXPECT_EQ(p[0].vertices[2].y, 22.5f);
}

TEST_F(OverlayDrawing, DottedLineStartsWithGapAndStopsAtTheEndPoint) {
    overlay.DrawLineDotted(57.0f, 76.0f, 0.0f, 0.0f, 10);  // 95 long: 9.5 dashes, backwards
    std::vector<Segment> s = segments();
    ASSERT_EQ(s.size(), 5u);
    EXPECT_FLOAT_EQ(s[0].x0, 51.0f);
    EXPECT_EQ(s.back().x1, 0.0f);  // the last dash would pass the end: cut there
    EXPECT_EQ(s.back().y1, 0.0f);
}

TEST_F(OverlayDrawing, FullEllipseWalksStepsOfAtMostThirtySixDegreesAndClosesOnce) {
    // step = 360 / (pi * 100 / 10) = 11.46 degrees: 32 points from 0 to 355.2
    overlay.DrawEllipse(50.0f, 50.0f, 100.0f, 60.0f, 0.0f, 0, 10, 0.0f, 360.0f);
    std::vector<Segment> s = segments();
    ASSERT_EQ(s.size(), 33u);
    EXPECT_EQ(s[0].x0, s[0].x1);  // the first segment joins the first point to itself
    EXPECT_FLOAT_EQ(s.back().x0, 100.0f);
    EXPECT_FLOAT_EQ(s.back().y1, s[31].y0);  // closing: back to the last point of the walk
    sparkhost::gl_recorder().clear();
    overlay.DrawEllipse(0.0f, 0.0f, 20.0f, 20.0f, 0.0f, 0, 10, 0.0f, 360.0f);
    EXPECT_EQ(segments().size(), 12u);  // steps limited to 36 degrees: 0 ... 360, then closing
}

TEST_F(OverlayDrawing, ArcHasNoClosingSegmentAndFollowsTheRotation) {
    overlay.DrawEllipse(10.0f, 20.0f, 100.0f, 40.0f, 30.0f, 0, 10, 90.0f, 270.0f);
    std::vector<Segment> s = segments();
    ASSERT_EQ(s.size(), 16u);  // 90 + 15 x 11.46 = 261.9 is the last point
    const double turn = 30.0 * 0.017453292519943295;
    EXPECT_NEAR(s[0].x0, 10.0 - std::sin(turn) * 20.0, 1e-4);  // t = 90 is the minor axis
    EXPECT_NEAR(s[0].y0, 20.0 + std::cos(turn) * 20.0, 1e-4);
}

TEST_F(OverlayDrawing, DegenerateDottedLinesAndEllipsesDrawNothing) {
    overlay.DrawLineDotted(0.0f, 0.0f, 50.0f, 0.0f, 0);
    overlay.DrawEllipse(0.0f, 0.0f, 50.0f, 4.9f, 0.0f, 0, 10, 0.0f, 360.0f);
    overlay.DrawEllipse(0.0f, 0.0f, 50.0f, 50.0f, 0.0f, 0, 10, 270.0f, 90.0f);
    overlay.DrawEllipse(0.0f, 0.0f, 50.0f, 50.0f, 0.0f, 0, 0, 0.0f, 360.0f);
    EXPECT_TRUE(drawn().empty());
}

