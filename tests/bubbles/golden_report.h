// What a golden-frame failure leaves behind for a person to look at: the
// frame got, the kept frame it should have been, and their difference.
#pragma once

#include <string>

#include "sparkhost/core/frame.h"

// The largest channel difference and how many pixels differ at all.
struct FrameDifference {
    long pixels = 0;
    int largest = 0;
};

// Differences between two frames of one format; the picture, when not null,
// gets each channel's difference stretched so the largest is full white.
FrameDifference compare_frames(const sparkhost::Frame &got, const sparkhost::Frame &kept,
                               sparkhost::Frame *picture);

// Keeps a frame that matched its hash, for later failures to compare with.
void keep_reference(const std::string &name, const sparkhost::Frame &frame);

// Writes the frame got, and when a kept frame with the expected hash exists
// a difference picture; returns one line naming the files and the figures.
std::string report_mismatch(const std::string &name, const sparkhost::Frame &got,
                            const std::string &expected_hash);
