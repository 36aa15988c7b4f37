// Written frames: whole or not at all, and whether one is already there.
#pragma once

#include <string>

#include "sparkhost/core/frame.h"

// Writes under a temporary name in the same directory, then renames, so a
// run stopped mid-frame never leaves half a picture behind.
void write_frame_whole(const std::string &path, const sparkhost::Frame &frame);

// A finished frame is there (a temporary of a stopped run does not count).
bool output_exists(const std::string &path);
