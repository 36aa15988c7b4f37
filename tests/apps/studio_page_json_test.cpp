// What fizzle-studio sends its page: pictures turned right side up at 8
// bits whatever the depth, as changes from the page's picture when that is
// shorter, and overlays kept in the plug-in's own units.
#include <gtest/gtest.h>

#include "apps/fizzle-studio/page_json.h"
#include "apps/fizzle-studio/picture_delta.h"

namespace {

TEST(StudioPicture, TopRowComesFirstAndTwelveBitKeepsItsHighByte) {
    for (sparkhost::Depth depth : {sparkhost::Depth::Bits8, sparkhost::Depth::Bits12}) {
        sparkhost::Frame frame({2, 2, depth});
        const int scale = depth == sparkhost::Depth::Bits12 ? 16 : 1;
        frame.set_value(0, 0, 0, 10 * scale);   // bottom left, red
        frame.set_value(1, 1, 2, 200 * scale);  // top right, blue
        frame.set_value(0, 1, 1, 255 * scale);  // top left, green
        const std::vector<uint8_t> rgb = rgb_top_down(frame);
        ASSERT_EQ(rgb.size(), 12u);
        EXPECT_EQ(rgb[1], 255) << "top left green";
        EXPECT_EQ(rgb[3 + 2], 200) << "top right blue";
        EXPECT_EQ(rgb[6 + 0], 10) << "bottom left red";
    }
}

TEST(StudioPictureDelta, SendsRunsOfChangedPixelsJoiningThoseAFewPixelsApart) {
    std::vector<uint8_t> from(3 * 20, 7), to = from;
    to[3 * 2 + 1] = 1;               // pixel 2
    to[3 * 5] = 2;                   // pixel 5: three unchanged between, joined
    to[3 * 15 + 2] = 3;              // pixel 15: too far, a run of its own
    const std::string delta = picture_delta(from, to);
    auto u32 = [&](size_t at) {
        return uint32_t(uint8_t(delta[at])) | uint32_t(uint8_t(delta[at + 1])) << 8 |
               uint32_t(uint8_t(delta[at + 2])) << 16 | uint32_t(uint8_t(delta[at + 3])) << 24;
    };
    ASSERT_EQ(delta.size(), 8u + 4 * 3 + 8u + 3);
    EXPECT_EQ(u32(0), 2u);   // unchanged before
    EXPECT_EQ(u32(4), 4u);   // pixels 2..5
    EXPECT_EQ(uint8_t(delta[8 + 1]), 1);
    EXPECT_EQ(uint8_t(delta[8 + 9]), 2);
    EXPECT_EQ(u32(20), 9u);  // pixels 6..14 unchanged
    EXPECT_EQ(u32(24), 1u);
    EXPECT_EQ(uint8_t(delta[28 + 2]), 3);
    EXPECT_TRUE(picture_delta(from, from).empty());
}

TEST(StudioControl, HiddenControlsAreFlaggedAndAFrozenRangeGreysASlider) {
    SparkFloatStruct live{5.0f, 0.0f, 10.0f, 1.0f, 0, "Amount %.1f", nullptr};
    SparkFloatStruct frozen{5.0f, 5.0f, 5.0f, 1.0f, 0, "Amount %.1f", nullptr};
    const sparkhost::Control shown(sparkhost::ControlKind::Float, 16, &live);
    const sparkhost::Control greyed(sparkhost::ControlKind::Float, 17, &frozen);
    EXPECT_EQ(control_json(shown, true)["hidden"], false);
    EXPECT_EQ(control_json(shown, true)["enabled"], true);
    EXPECT_EQ(control_json(shown, false)["hidden"], true);
    EXPECT_EQ(control_json(greyed, true)["enabled"], false);
    EXPECT_EQ(control_json(greyed, true)["hidden"], false);
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
