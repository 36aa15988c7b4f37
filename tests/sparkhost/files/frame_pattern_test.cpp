// Frame numbers in file names: every width honoured or refused, long runs
// of '#' scanned without recursion, and a file's frame found back.
#include "sparkhost/files/frame_pattern.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "sparkhost/core/error.h"

using sparkhost::FramePattern;

TEST(FramePatterns, WideNumbersKeepEveryFrameInAFileOfItsOwn) {
    const FramePattern wide("f.%040d.png");
    std::set<std::string> names;
    for (int frame = 1; frame <= 3; ++frame) names.insert(wide.path(frame));
    EXPECT_EQ(names.size(), 3u);
    EXPECT_EQ(wide.path(3), "f." + std::string(39, '0') + "3.png");
    EXPECT_EQ(FramePattern("f." + std::string(255, '#') + ".png").path(7).size(), 2 + 255 + 4u);
    EXPECT_EQ(FramePattern("f.%4d.png").path(7), "f.0007.png");
    EXPECT_EQ(FramePattern("f.%d.png").path(1234567), "f.1234567.png");
}

TEST(FramePatterns, WidthsNoFileNameCanHoldAreRefusedNamingThePattern) {
    for (const std::string &text : std::vector<std::string>{"f.%0256d.png", "f.%0999999999d.png", "f.%99999999999d.png",
                                   "f." + std::string(30000, '#') + ".png"}) {
        SCOPED_TRACE(text.substr(0, 40));
        try {
            FramePattern pattern(text);
            ADD_FAILURE() << "accepted";
        } catch (const sparkhost::Error &error) {
            EXPECT_NE(std::string(error.what()).find("digits wide"), std::string::npos) << error.what();
        }
    }
    // Long runs that make no frame number are no trouble either.
    EXPECT_FALSE(FramePattern("f.%" + std::string(30000, '9') + "x.png").is_sequence());
    EXPECT_EQ(FramePattern(std::string(30000, '%') + "d.png").path(5), std::string(29999, '%') + "5.png");
}

TEST(FramePatterns, AFilesFrameIsFoundBackOnlyWhenThePatternMakesExactlyThatName) {
    const FramePattern pattern("shot.%04d.exr");
    EXPECT_EQ(pattern.frame_of("shot.0012.exr"), 12);
    EXPECT_EQ(pattern.frame_of("shot.12345.exr"), 12345);
    EXPECT_FALSE(pattern.frame_of("shot.012.exr"));   // not the pattern's width
    EXPECT_FALSE(pattern.frame_of("shot.00012.exr"));
    EXPECT_FALSE(pattern.frame_of("shot.00a1.exr"));
    EXPECT_FALSE(pattern.frame_of("shot..exr"));
    EXPECT_FALSE(pattern.frame_of("shot.99999999999.exr"));
    EXPECT_FALSE(FramePattern("still.exr").frame_of("still.exr"));
}
