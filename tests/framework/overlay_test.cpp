// Overlay primitives as recorded by our host's GL: colours, handles, dotted
// lines and ellipses.
#include <algorithm>
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
    overlay.SetViewport(720, 576, 1.5f, 2.0f, 0.5f);
    overlay.SetViewport(720, 576, 1.0f, 0.0f, 1.0f);
    EXPECT_EQ(overlay.zoom, 2.0f);
    EXPECT_FLOAT_EQ(overlay.PixelAspect(), 1.5f);

    overlay.SetColour(65535, 0, 32768, 7);  // alpha ignored
    overlay.DrawPixel(3.0f, 4.0f);
    std::vector<GlPrimitive> p = drawn();
    ASSERT_EQ(p.size(), 1u);
    EXPECT_EQ(p[0].mode, GLenum(GL_POINTS));
    EXPECT_EQ(p[0].colour.r, 1.0f);
    EXPECT_EQ(p[0].colour.g, 0.0f);
    EXPECT_FLOAT_EQ(p[0].colour.b, 32768 / 65535.0f);
}

TEST_F(OverlayDrawing, HandleKeepsTenViewerPixelsAtAnyZoom) {
    overlay.SetViewport(200, 100, 1.0f, 2.0f, 1.0f);
    EXPECT_EQ(overlay.GrabHandleSize(), 2.5f);
    overlay.DrawHandle(50.0f, 20.0f, false);
    std::vector<GlPrimitive> p = drawn();
    ASSERT_EQ(p.size(), 1u);
    EXPECT_EQ(p[0].mode, GLenum(GL_POLYGON));
    const float expected[4][2] = {{47.5f, 17.5f}, {52.5f, 17.5f}, {52.5f, 22.5f}, {47.5f, 22.5f}};
    ASSERT_EQ(p[0].vertices.size(), 4u);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(p[0].vertices[i].x == expected[i][0] && p[0].vertices[i].y == expected[i][1]) << i;
}

TEST_F(OverlayDrawing, DottedLineStartsWithGapAndStopsAtTheEndPoint) {
    overlay.DrawLineDotted(0.0f, 5.0f, 100.0f, 5.0f, 10);
    std::vector<Segment> s = segments();
    ASSERT_EQ(s.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_FLOAT_EQ(s[i].x0, 10.0f + 20.0f * i);
        EXPECT_FLOAT_EQ(s[i].x1, 20.0f + 20.0f * i);
        EXPECT_EQ(s[i].y0, 5.0f);
    }

    sparkhost::gl_recorder().clear();
    overlay.DrawLineDotted(57.0f, 76.0f, 0.0f, 0.0f, 10);  // 95 long: 9.5 dashes, backwards
    s = segments();
    ASSERT_EQ(s.size(), 5u);
    EXPECT_FLOAT_EQ(s[0].x0, 51.0f);
    EXPECT_FLOAT_EQ(s[0].y0, 68.0f);
    EXPECT_EQ(s.back().x1, 0.0f);  // the last dash would pass the end: cut there
    EXPECT_EQ(s.back().y1, 0.0f);
}

TEST_F(OverlayDrawing, FullEllipseWalksStepsOfAtMostThirtySixDegreesAndClosesOnce) {
    // step = 360 / (pi * 100 / 10) = 11.46 degrees: 32 points from 0 to 355.2
    overlay.DrawEllipse(50.0f, 50.0f, 100.0f, 60.0f, 0.0f, 0, 10, 0.0f, 360.0f);
    std::vector<Segment> s = segments();
    ASSERT_EQ(s.size(), 33u);
    EXPECT_EQ(s[0].x0, s[0].x1);  // the first segment joins the first point to itself
    EXPECT_FLOAT_EQ(s[0].x0, 100.0f);
    const Segment &closing = s.back();
    EXPECT_FLOAT_EQ(closing.x0, 100.0f);
    EXPECT_FLOAT_EQ(closing.y0, 50.0f);
    EXPECT_FLOAT_EQ(closing.x1, s[31].x0);  // back to the last point of the walk
    EXPECT_FLOAT_EQ(closing.y1, s[31].y0);

    sparkhost::gl_recorder().clear();
    overlay.DrawEllipse(50.0f, 50.0f, 100.0f, 60.0f, 0.0f, 1, 10, 0.0f, 360.0f);
    EXPECT_EQ(segments().size(), 17u);  // odd steps only, then the closing segment
    sparkhost::gl_recorder().clear();
    overlay.DrawEllipse(0.0f, 0.0f, 20.0f, 20.0f, 0.0f, 0, 10, 0.0f, 360.0f);
    EXPECT_EQ(segments().size(), 12u);  // steps limited to 36 degrees: 0 ... 360, then closing
}

TEST_F(OverlayDrawing, ArcHasNoClosingSegmentAndFollowsTheRotation) {
    overlay.DrawEllipse(10.0f, 20.0f, 100.0f, 40.0f, 30.0f, 0, 10, 90.0f, 270.0f);
    std::vector<Segment> s = segments();
    ASSERT_EQ(s.size(), 16u);  // 90 + 15 x 11.46 = 261.9 is the last point
    const double turn = 30.0 * 0.017453292519943295;
    for (const Segment &segment : s) {
        // Undo the rotation: every point lies on the axis-aligned ellipse.
        double dx = segment.x0 - 10.0, dy = segment.y0 - 20.0;
        double u = std::cos(turn) * dx + std::sin(turn) * dy;
        double v = -std::sin(turn) * dx + std::cos(turn) * dy;
        EXPECT_NEAR(u * u / 2500.0 + v * v / 400.0, 1.0, 1e-4);
    }
    EXPECT_NEAR(s[0].x0, 10.0 - std::sin(turn) * 20.0, 1e-4);  // t = 90 is the minor axis
}

TEST_F(OverlayDrawing, DegenerateDottedLinesAndEllipsesDrawNothing) {
    overlay.DrawLineDotted(7.0f, 7.0f, 7.0f, 7.0f, 10);
    overlay.DrawLineDotted(0.0f, 0.0f, 50.0f, 0.0f, 0);
    overlay.DrawLineDotted(0.0f, 0.0f, 50.0f, 0.0f, -3);
    overlay.DrawEllipse(0.0f, 0.0f, 4.9f, 50.0f, 0.0f, 0, 10, 0.0f, 360.0f);
    overlay.DrawEllipse(0.0f, 0.0f, 50.0f, 4.9f, 0.0f, 0, 10, 0.0f, 360.0f);
    overlay.DrawEllipse(0.0f, 0.0f, 50.0f, 50.0f, 0.0f, 0, 10, 270.0f, 90.0f);
    overlay.DrawEllipse(0.0f, 0.0f, 50.0f, 50.0f, 0.0f, 0, 0, 0.0f, 360.0f);
    EXPECT_TRUE(drawn().empty());
}

TEST_F(OverlayDrawing, TextStaysTwelveViewerPixelsTallAtAnyZoom) {
    for (float zoom : {1.0f, 2.0f}) {
        sparkhost::gl_recorder().clear();
        overlay.SetViewport(200, 100, 1.0f, zoom, 1.0f);
        overlay.DrawText(10.0f, 20.0f, "Fizzle 4.0?");
        float bottom = 1e9f, top = -1e9f, right = 10.0f;
        for (const GlPrimitive &stroke : drawn()) {
            EXPECT_EQ(stroke.mode, GLenum(GL_LINE_STRIP));
            for (const sparkhost::GlVertex &v : stroke.vertices) {
                bottom = std::min(bottom, v.y);
                top = std::max(top, v.y);
                right = std::max(right, v.x);
            }
        }
        EXPECT_GE(bottom, 20.0f);
        EXPECT_FLOAT_EQ(top - 20.0f, 12.0f / zoom);
        EXPECT_LE(right - 10.0f, 11 * 12.0f / zoom);
    }
}
