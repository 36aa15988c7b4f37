// The progress bar fizzle-render draws on a terminal, and its closing summary.
#pragma once

#include <chrono>
#include <string>

class Progress {
public:
    // Draws nothing unless enabled (stderr is a terminal and not --quiet).
    Progress(int total_frames, bool enabled);
    ~Progress();

    // Starts the clock: frames per second count from the first frame.
    void start();
    void frame_done(int frame);
    // Takes the bar off the line so another message can be printed.
    void clear_line();
    // Replaces the bar by a one-line summary.
    void finish(const std::string &where);

    bool enabled() const { return enabled_; }
    double seconds() const;

private:
    int total_;
    int done_ = 0;
    bool enabled_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point start_;
};
