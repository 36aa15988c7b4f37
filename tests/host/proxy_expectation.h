// Random host frames, and what one looks like after a proxy image and back.
#pragma once

#include <algorithm>
#include <random>
#include <vector>

#include "host/conversion.h"

template <class Word>
std::vector<Word> random_words(size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::vector<Word> words(count);
    for (Word &w : words) w = Word(generator());
    return words;
}

// Each host pixel (x, y) becomes the host pixel its proxy sample came from:
// proxy row y/s read host row s/2 + (y/s)*s, proxy column x/s read host
// column (x/s)*s, both clamped to the proxy. Where the proxy row or column
// was never sampled (past the frame), the pixel is black, as it is in an
// output buffer that starts cleared.
template <class Word>
std::vector<Word> expected_proxy_round_trip(const std::vector<Word> &host, int width, int height,
                                            int s) {
    const int pw = ProxyExtent(width, s), ph = ProxyExtent(height, s);
    std::vector<Word> expected(host.size());
    if (pw == 0 || ph == 0) return expected;  // nothing written: a cleared buffer stays black
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int j = std::min(y / s, ph - 1), k = std::min(x / s, pw - 1);
            const int host_row = s / 2 + j * s, host_column = k * s;
            const bool sampled = host_row < height && s / 2 + host_column < width;
            for (int c = 0; c < 3; ++c)
                expected[(y * width + x) * 3 + c] =
                    sampled ? host[(host_row * width + host_column) * 3 + c] : Word(0);
        }
    return expected;
}
