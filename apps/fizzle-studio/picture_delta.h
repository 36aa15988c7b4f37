// A picture sent as the changes from one the page already has: most user
// changes (a slider, a handle) touch only the bubbles, a small share of the
// pixels, and the browser takes bytes slowly.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Runs over two RGB pictures of the same size, pixel by pixel: a 32-bit
// count of unchanged pixels, a 32-bit count of changed ones and their RGB
// bytes, repeated to the last changed pixel (little-endian).
std::string picture_delta(const std::vector<uint8_t> &from, const std::vector<uint8_t> &to);
