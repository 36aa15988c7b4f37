// Host frame buffers and the rounding between depths.
#include "sparkhost/core/frame.h"

#include <cstring>

namespace sparkhost {

std::string FrameFormat::size_text() const {
    return std::to_string(width) + "x" + std::to_string(height);
}

std::string FrameFormat::describe() const {
    return size_text() + (depth == Depth::Bits12 ? " 12-bit" : " 8-bit");
}

Frame::Frame(const FrameFormat &format) : format_(format), pixels_(format.bytes(), 0) {}

void Frame::reshape(const FrameFormat &format) {
    format_ = format;
    pixels_.resize(format.bytes());
}

void Frame::assign(const Frame &other) {
    format_ = other.format_;
    pixels_.assign(other.pixels_.begin(), other.pixels_.end());
}

int Frame::value(int x, int y, int c) const {
    std::size_t at = offset(x, y);
    if (format_.depth == Depth::Bits8) return pixels_[at + c];
    uint16_t word;
    std::memcpy(&word, &pixels_[at + 2 * c], 2);
    return word >> 4;
}

void Frame::set_value(int x, int y, int c, int value) {
    std::size_t at = offset(x, y);
    if (format_.depth == Depth::Bits8) {
        pixels_[at + c] = uint8_t(value);
        return;
    }
    uint16_t word = uint16_t(value << 4);
    std::memcpy(&pixels_[at + 2 * c], &word, 2);
}

void Frame::set_rgb16(int x, int y, uint16_t red, uint16_t green, uint16_t blue) {
    set_value(x, y, 0, quantize16(red, format_.depth));
    set_value(x, y, 1, quantize16(green, format_.depth));
    set_value(x, y, 2, quantize16(blue, format_.depth));
}

uint16_t Frame::value16(int x, int y, int c) const {
    return widen_to16(value(x, y, c), format_.depth);
}

uint16_t widen_to16(int value, Depth depth) {
    // Bit replication: full scale maps to 65535 and quantize16 undoes it exactly.
    if (depth == Depth::Bits8) return uint16_t((value << 8) | value);
    return uint16_t((value << 4) | (value >> 8));
}

}  // namespace sparkhost
