// What fizzle-studio sends its page: pictures turned right side up at 8
// bits whatever the depth, and overlays kept in the plug-in's own units.
#include <gtest/gtest.h>

#include "apps/fizzle-studio/page_json.h"

namespace {

TEST(StudioPicture, TopRowComesFirstAndTwelveBitKeepsItsHighByte) {
    for (sparkhost::Depth depth : {sparkhost::Depth::Bits8, sparkhost::Depth::Bits12}) {
        sparkhost::Frame frame({2, 2, depth});
        const int scale = depth == sparkhost::Depth::Bits12 ? 16 : 1;
        frame.set_value(0, 0, 0, 10 * scale);   // bottom left, red
        frame.set_value(1, 1, 2, 200 * scale);  // top right, blue
        frame.set_value(0, 1, 1, 255 * scale);  // top left, green
        const std::vector<uint8_t> rgba = rgba_top_down(frame);
        ASSERT_EQ(rgba.size(), 16u);
        EXPECT_EQ(rgba[1], 255) << "top left green";
        EXPECT_EQ(rgba[4 + 2], 200) << "top right blue";
        EXPECT_EQ(rgba[8 + 0], 10) << "bottom left red";
        for (int pixel = 0; pixel < 4; ++pixel) EXPECT_EQ(rgba[pixel * 4 + 3], 255);
    }
}

TEST(StudioOverlay, KeepsEachBlockWithItsModeColourAndPointsInOrder) {
    sparkhost::GlPrimitive line;
    line.mode = GL_LINES;
    line.colour = {1.0f, 0.5f, 0.0f};
    line.vertices = {{1, 2}, {3, 4}};
    sparkhost::GlPrimitive strip;
    strip.mode = GL_LINE_STRIP;
    strip.colour = {-1.0f, 2.0f, 0.0f};  // out of range: clamped
    strip.vertices = {{0, 0}, {5, 5}, {9, 0}};
    sparkhost::GlPrimitive polygon;
    polygon.mode = GL_POLYGON;
    const nlohmann::json drawn = overlay_json({line, strip, polygon});
    ASSERT_EQ(drawn.size(), 3u);
    EXPECT_EQ(drawn[0]["mode"], "lines");
    EXPECT_EQ(drawn[0]["colour"], "#ff8000");
    EXPECT_EQ(drawn[0]["points"], nlohmann::json({1, 2, 3, 4}));
    EXPECT_EQ(drawn[1]["mode"], "strip");
    EXPECT_EQ(drawn[1]["colour"], "#00ff00");
    EXPECT_EQ(drawn[1]["points"].size(), 6u);
    EXPECT_EQ(drawn[2]["mode"], "polygon");
    EXPECT_TRUE(drawn[2]["points"].empty());
}

}  // namespace
