// Frame numbers from the time a frei0r host passes: hosts count time in
// different units, and some pass nonsense for some frames.
#pragma once

#include <string>

enum class TimeUnit { Seconds, Milliseconds };

// "25", "29.97", "30000/1001": frames a second, positive. Throws
// sparkhost::Error naming the text otherwise.
double parse_frame_rate(const std::string &text);

// "auto", "seconds", "milliseconds" ("s", "ms"); auto asks which host loaded
// us (host_time_unit). Throws sparkhost::Error for anything else.
TimeUnit parse_time_unit(const std::string &text);

// ffmpeg's frei0r filter passes milliseconds; MLT, GStreamer and the frei0r
// convention pass seconds. Told apart by the libraries the process has loaded.
TimeUnit host_time_unit();

class FrameClock {
public:
    FrameClock(double rate, TimeUnit unit) : rate_(rate), unit_(unit) {}

    // The frame (from 1) shown at `time`: time 0 is frame 1, and a time is
    // rounded to the nearest frame, so that a host's 1/fps sums a hair off
    // either side still land on their frame. A time that cannot be one (not
    // a number, negative, absurdly large) is taken for the frame after the
    // last one given.
    int frame_at(double time);

private:
    double rate_;
    TimeUnit unit_;
    int last_ = 0;
};
