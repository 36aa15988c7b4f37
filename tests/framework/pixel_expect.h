// Lets tests compare and print whole pixels: EXPECT_EQ(pixel, (PixelQv{r, g, b, a})).
#pragma once

#include <ostream>

#include "framework/pixel.h"

inline bool operator==(const PixelQv &a, const PixelQv &b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
}

inline void PrintTo(const PixelQv &p, std::ostream *out) {
    *out << "{" << p.red << ", " << p.green << ", " << p.blue << ", " << p.alpha << "}";
}
