// The frei0r filter's time to frame mapping: hosts' rounding, units, rates
// and the nonsense times some hosts pass.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "frame_clock.h"
#include "sparkhost/core/error.h"

TEST(FrameClock, SecondsAndMillisecondsLandOnTheirFramesDespiteRounding) {
    FrameClock seconds(25, TimeUnit::Seconds);
    FrameClock milliseconds(25, TimeUnit::Milliseconds);
    for (int frame = 1; frame <= 3000; ++frame) {
        // MLT divides a position by the rate; sums of 1/25 drift either side.
        const double time = double(frame - 1) / 25.0;
        ASSERT_EQ(seconds.frame_at(time), frame);
        ASSERT_EQ(seconds.frame_at(std::nextafter(time, 0.0)), frame);
        ASSERT_EQ(seconds.frame_at(std::nextafter(time, 1e9)), frame);
        ASSERT_EQ(milliseconds.frame_at(time * 1000.0), frame);
    }
}

TEST(FrameClock, FractionalRatesCountWholeFrames) {
    const double rate = parse_frame_rate("30000/1001");
    FrameClock clock(rate, TimeUnit::Seconds);
    for (int frame = 1; frame <= 100000; frame += 997) EXPECT_EQ(clock.frame_at((frame - 1) * 1001.0 / 30000.0), frame);
    EXPECT_NEAR(parse_frame_rate(" 29.97 "), 29.97, 1e-12);
    EXPECT_EQ(parse_frame_rate("25"), 25);
}

TEST(FrameClock, TimesThatCannotBeOneCountOnFromTheLastFrame) {
    FrameClock clock(25, TimeUnit::Milliseconds);
    EXPECT_EQ(clock.frame_at(-3.6893488147419103e+20), 1);  // ffmpeg with no time
    EXPECT_EQ(clock.frame_at(-3.6893488147419103e+20), 2);
    EXPECT_EQ(clock.frame_at(std::numeric_limits<double>::quiet_NaN()), 3);
    EXPECT_EQ(clock.frame_at(std::numeric_limits<double>::infinity()), 4);
    EXPECT_EQ(clock.frame_at(400), 11);  // a real time again
    EXPECT_EQ(clock.frame_at(-1e6), 12);
    // Going backwards is a real request, not nonsense.
    EXPECT_EQ(clock.frame_at(40), 2);
}

TEST(FrameClock, BadRatesAndUnitsAreRefusedByName) {
    for (const char *text : {"", "0", "-25", "abc", "25fps", "30000/0", "1/", "nan", "inf", "5000"}) {
        try {
            parse_frame_rate(text);
            ADD_FAILURE() << "accepted \"" << text << "\"";
        } catch (const sparkhost::Error &error) {
            EXPECT_NE(std::string(error.what()).find("frame rate"), std::string::npos) << error.what();
        }
    }
    EXPECT_EQ(parse_time_unit("ms"), TimeUnit::Milliseconds);
    EXPECT_EQ(parse_time_unit("Seconds"), TimeUnit::Seconds);
    // This test program is no known host: the frei0r convention, seconds.
    EXPECT_EQ(parse_time_unit("auto"), TimeUnit::Seconds);
    EXPECT_THROW(parse_time_unit("minutes"), sparkhost::Error);
}
