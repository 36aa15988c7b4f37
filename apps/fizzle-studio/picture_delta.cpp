// Changed runs of pixels between two pictures.
#include "picture_delta.h"

#include <cstring>

namespace {

void put_u32(std::string &out, uint32_t value) {
    const char bytes[4] = {char(value & 0xFF), char((value >> 8) & 0xFF), char((value >> 16) & 0xFF),
                           char((value >> 24) & 0xFF)};
    out.append(bytes, 4);
}

// Runs of changed pixels closer than this are sent as one: eight bytes of
// run header cost more than a few unchanged pixels.
constexpr size_t kJoinGap = 3;

}  // namespace

std::string picture_delta(const std::vector<uint8_t> &from, const std::vector<uint8_t> &to) {
    std::string out;
    const size_t pixels = to.size() / 3;
    if (from.size() != to.size()) return out;
    const uint8_t *a = from.data(), *b = to.data();
    auto same = [&](size_t pixel) { return std::memcmp(a + pixel * 3, b + pixel * 3, 3) == 0; };
    size_t pixel = 0, last_end = 0;
    while (pixel < pixels) {
        while (pixel < pixels && same(pixel)) ++pixel;
        if (pixel == pixels) break;
        const size_t start = pixel;
        size_t end = pixel + 1;
        for (;;) {
            while (end < pixels && !same(end)) ++end;
            size_t gap = end;
            while (gap < pixels && gap - end <= kJoinGap && same(gap)) ++gap;
            if (gap < pixels && gap - end <= kJoinGap) {
                end = gap;
                continue;
            }
            break;
        }
        put_u32(out, uint32_t(start - last_end));
        put_u32(out, uint32_t(end - start));
        out.append(reinterpret_cast<const char *>(b + start * 3), (end - start) * 3);
        last_end = pixel = end;
    }
    return out;
}
