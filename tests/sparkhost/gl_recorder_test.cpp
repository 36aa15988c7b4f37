// The host's GL recorder: transforms, recording, SVG and rasterising.
#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "spark/spark.h"
#include "spark/spark_gl.h"
#include "sparkhost/gl_recorder.h"

using namespace sparkhost;

namespace {

class Recorder : public ::testing::Test {
protected:
    void SetUp() override { gl_recorder().clear(); }
};

// A black 8-bit RGB frame and a way to read it back by viewer coordinates.
struct Frame {
    int width, height;
    RowOrder order;
    std::vector<uint8_t> rgb;
    Frame(int w, int h, RowOrder o) : width(w), height(h), order(o), rgb(size_t(w) * h * 3, 0) {}
    const uint8_t *at(int x, int y) const {
        int row = order == RowOrder::BottomFirst ? y : height - 1 - y;
        return &rgb[(size_t(row) * width + x) * 3];
    }
    int lit() const {
        int count = 0;
        for (size_t i = 0; i < rgb.size(); i += 3) count += rgb[i] || rgb[i + 1] || rgb[i + 2];
        return count;
    }
};

void draw(GLenum mode, std::initializer_list<GlVertex> vertices) {
    glBegin(mode);
    for (GlVertex v : vertices) glVertex2f(v.x, v.y);
    glEnd();
}

void square(float x0, float y0, float x1, float y1) { draw(GL_POLYGON, {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}); }

}  // namespace

TEST_F(Recorder, VerticesFollowTranslateThenScaleAsInOpenGL) {
    glLoadIdentity();
    glTranslatef(10.0f, 20.0f, 5.0f);
    glScalef(2.0f, 3.0f, 1.0f);
    draw(GL_POINTS, {{1.0f, 1.0f}});
    glLoadIdentity();
    glScalef(2.0f, 2.0f, 1.0f);
    glTranslatef(10.0f, 20.0f, 0.0f);
    draw(GL_POINTS, {{1.0f, 1.0f}});
    std::vector<GlPrimitive> p = gl_recorder().primitives();
    ASSERT_EQ(p.size(), 2u);
    EXPECT_EQ(p[0].vertices[0].x, 12.0f);
    EXPECT_EQ(p[0].vertices[0].y, 23.0f);
    EXPECT_EQ(p[1].vertices[0].x, 22.0f);
    EXPECT_EQ(p[1].vertices[0].y, 42.0f);
}

TEST_F(Recorder, PrimitiveTakesTheColourOfItsFirstVertexAndMisusesAreCounted) {
    glColor3f(1.0f, 0.0f, 0.0f);
    glBegin(GL_LINES);
    glColor3f(0.0f, 1.0f, 0.0f);
    glVertex2f(0.0f, 0.0f);
    glColor3f(0.0f, 0.0f, 1.0f);
    glVertex2f(1.0f, 1.0f);
    glEnd();
    glVertex2f(5.0f, 5.0f);
    glEnd();
    glFlush();
    std::vector<GlPrimitive> p = gl_recorder().primitives();
    ASSERT_EQ(p.size(), 1u);
    EXPECT_EQ(p[0].colour.g, 1.0f);
    EXPECT_EQ(p[0].vertices.size(), 2u);
    EXPECT_EQ(gl_recorder().misuses(), 2);
    EXPECT_EQ(gl_recorder().flushes(), 1);

    gl_recorder().clear();
    EXPECT_TRUE(gl_recorder().primitives().empty());
    EXPECT_EQ(gl_recorder().misuses(), 0);
}

TEST_F(Recorder, RasterisedLinesLandOnTheRightRowForEitherRowOrder) {
    glColor3f(1.0f, 1.0f, 0.0f);
    draw(GL_LINES, {{2.5f, 1.5f}, {6.5f, 1.5f}});
    for (RowOrder order : {RowOrder::BottomFirst, RowOrder::TopFirst}) {
        Frame frame(10, 4, order);
        Rasterise(gl_recorder().primitives(), frame.rgb.data(), 10, 4, order);
        EXPECT_EQ(frame.lit(), 5);
        for (int x = 2; x <= 6; ++x) {
            EXPECT_EQ(frame.at(x, 1)[0], 255);
            EXPECT_EQ(frame.at(x, 1)[2], 0);
        }
        // Viewer row 1 is buffer row 1 from the bottom, or row 2 from the top.
        EXPECT_EQ(frame.rgb[((order == RowOrder::TopFirst ? 2 : 1) * 10 + 3) * 3], 255);
    }
}

TEST_F(Recorder, PolygonsFillPixelCentresInsideAndClipAtTheEdges) {
    glColor3f(0.0f, 0.0f, 1.0f);
    square(2.0f, 2.0f, 6.0f, 6.0f);
    square(-5.0f, -5.0f, 1.0f, 1.0f);
    draw(GL_LINE_STRIP, {{-1e6f, 9.5f}, {1e6f, 9.5f}});
    Frame frame(12, 12, RowOrder::BottomFirst);
    Rasterise(gl_recorder().primitives(), frame.rgb.data(), 12, 12, RowOrder::BottomFirst);
    EXPECT_EQ(frame.at(2, 2)[2], 255);
    EXPECT_EQ(frame.at(5, 5)[2], 255);
    EXPECT_EQ(frame.at(6, 6)[2], 0);
    EXPECT_EQ(frame.at(0, 0)[2], 255);
    EXPECT_EQ(frame.lit(), 16 + 1 + 12);
}

TEST_F(Recorder, SvgFlipsRowsAndFillsPolygons) {
    glColor3f(1.0f, 0.5f, 0.0f);
    draw(GL_LINES, {{0.0f, 0.0f}, {10.0f, 20.0f}});
    square(1.0f, 1.0f, 2.0f, 2.0f);
    std::ostringstream svg;
    GlColour black{0.0f, 0.0f, 0.0f};
    WriteSvg(svg, gl_recorder().primitives(), 40, 30, &black);
    for (const char *part : {"viewBox=\"0 0 40 30\"", "fill=\"rgb(0,0,0)\"",
                             "points=\"0.000,30.000 10.000,10.000\" fill=\"none\" stroke=\"rgb(255,128,0)\"",
                             "<polygon points=\"1.000,29.000", "</svg>"})
        EXPECT_NE(svg.str().find(part), std::string::npos) << part;
}
