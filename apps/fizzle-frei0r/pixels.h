// Between frei0r's pictures (RGBA bytes, top row first) and the host's
// frames (RGB bytes, bottom row first).
#pragma once

#include <cstdint>

#include "sparkhost/core/frame.h"

// frame must already have the picture's size (8-bit).
void rgba_to_frame(const uint32_t *rgba, sparkhost::Frame &frame);
// Alpha is taken from `alpha_from` (the host's input), the colours from frame.
void frame_to_rgba(const sparkhost::Frame &frame, const uint32_t *alpha_from, uint32_t *rgba);
