// Where a render's time went, for --timings: the plug-in's frame cycle
// against everything around it, so a slow render shows whether the effect
// or the host is to blame. Its clock starts with the program.
#pragma once

#include <chrono>
#include <cstdio>

#include "sparkhost/core/host.h"

class RenderTimings {
public:
    using Clock = std::chrono::steady_clock;

    void frame_rendered(const sparkhost::Host::FrameTimes &times);
    // Time the render loop spent handing a frame to the writer (copying it
    // and, when the writer is behind, waiting for room in its queue).
    void handed_over(double seconds) { hand_over_ += seconds; }
    // Time spent waiting for the image library to finish loading before the
    // first frame could be written: start-up, not the frames' cost.
    void waited_for_library(double seconds) { library_ += seconds; }
    void first_frame_begins() {
        if (first_frame_ == Clock::time_point()) first_frame_ = Clock::now();
    }

    // One paragraph on stream, at the end of the render.
    void print(std::FILE *stream) const;

private:
    int frames_ = 0;
    double buffers_ = 0, process_ = 0, hand_over_ = 0, library_ = 0;
    Clock::time_point first_frame_;
};
