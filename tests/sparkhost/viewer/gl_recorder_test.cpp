// Recorded GL drawing put out: polygons rasterised and clipped, and SVG.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "spark/spark_gl.h"
#include "sparkhost/viewer/gl_recorder.h"

using namespace sparkhost;

namespace {

GlPrimitive square(float x0, float y0, float x1, float y1, GlColour colour) {
    return {GL_POLYGON, colour, {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}};
}

}  // namespace

TEST(Rasterise, PolygonsFillPixelCentresInsideAndClipAtTheEdges) {
    const GlColour blue{0.0f, 0.0f, 1.0f};
    const std::vector<GlPrimitive> drawn = {square(2.0f, 2.0f, 6.0f, 6.0f, blue),
                                            square(-5.0f, -5.0f, 1.0f, 1.0f, blue),
                                            {GL_LINE_STRIP, blue, {{-1e6f, 9.5f}, {1e6f, 9.5f}}}};
    std::vector<uint8_t> rgb(12 * 12 * 3, 0);
    Rasterise(drawn, rgb.data(), 12, 12, RowOrder::BottomFirst);
    auto blue_at = [&](int x, int y) { return rgb[(size_t(y) * 12 + x) * 3 + 2]; };
    EXPECT_EQ(blue_at(2, 2), 255);
    EXPECT_EQ(blue_at(5, 5), 255);
    EXPECT_EQ(blue_at(6, 6), 0);
    EXPECT_EQ(blue_at(0, 0), 255);
    int lit = 0;
    for (size_t i = 2; i < rgb.size(); i += 3) lit += rgb[i] != 0;
    EXPECT_EQ(lit, 16 + 1 + 12);
}

TEST(WriteSvg, FlipsRowsAndFillsPolygons) {
    const GlColour orange{1.0f, 0.5f, 0.0f}, black{0.0f, 0.0f, 0.0f};
    const std::vector<GlPrimitive> drawn = {{GL_LINES, orange, {{0.0f, 0.0f}, {10.0f, 20.0f}}},
                                            square(1.0f, 1.0f, 2.0f, 2.0f, orange)};
    std::ostringstream svg;
    WriteSvg(svg, drawn, 40, 30, &black);
    for (const char *part : {"viewBox=\"0 0 40 30\"", "fill=\"rgb(0,0,0)\"",
                             "points=\"0.000,30.000 10.000,10.000\" fill=\"none\" stroke=\"rgb(255,128,0)\"",
                             "<polygon points=\"1.000,29.000", "</svg>"})
        EXPECT_NE(svg.str().find(part), std::string::npos) << part;
}
