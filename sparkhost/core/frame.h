// Host frame buffers: packed RGB rows with no padding, row 0 at the bottom of
// the picture (as in OpenGL). 8-bit frames hold three bytes a pixel; 12-bit
// frames three 16-bit words whose top 12 bits carry the value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sparkhost {

enum class Depth { Bits8 = 8, Bits12 = 12 };

struct FrameFormat {
    int width = 0;
    int height = 0;
    Depth depth = Depth::Bits8;

    int bytes_per_pixel() const { return depth == Depth::Bits12 ? 6 : 3; }
    // What the info record calls the depth: 24 or 48 bits a pixel.
    int bits_per_pixel() const { return depth == Depth::Bits12 ? 48 : 24; }
    // Largest channel value: 255 or 4095.
    int max_value() const { return depth == Depth::Bits12 ? 4095 : 255; }
    std::size_t row_bytes() const { return std::size_t(width) * bytes_per_pixel(); }
    std::size_t bytes() const { return row_bytes() * std::size_t(height); }
    std::string size_text() const;   // "1920x1080"
    std::string describe() const;    // "1920x1080 8-bit"

    bool operator==(const FrameFormat &other) const {
        return width == other.width && height == other.height && depth == other.depth;
    }
    bool operator!=(const FrameFormat &other) const { return !(*this == other); }
};

class Frame {
public:
    Frame() = default;
    explicit Frame(const FrameFormat &format);  // all black

    // Gives the frame `format`, keeping its storage when the size allows;
    // the pixels are left as they were (callers overwrite every one).
    void reshape(const FrameFormat &format);
    // Copies other's pixels into this frame's storage.
    void assign(const Frame &other);

    const FrameFormat &format() const { return format_; }
    int width() const { return format_.width; }
    int height() const { return format_.height; }
    uint8_t *data() { return pixels_.data(); }
    // Row y (counted from the bottom) as bytes.
    uint8_t *row(int y) { return pixels_.data() + std::size_t(y) * format_.row_bytes(); }
    const uint8_t *row(int y) const { return pixels_.data() + std::size_t(y) * format_.row_bytes(); }
    const uint8_t *data() const { return pixels_.data(); }
    std::size_t size() const { return pixels_.size(); }
    std::vector<uint8_t> &bytes() { return pixels_; }
    const std::vector<uint8_t> &bytes() const { return pixels_; }

    // Channel c (0 red, 1 green, 2 blue) of pixel (x, y), y counted from the
    // bottom row: 0..255 in 8-bit, 0..4095 (the word's top 12 bits) in 12-bit.
    int value(int x, int y, int c) const;
    // Writes a value as above; in 12-bit the word's low 4 bits become 0.
    void set_value(int x, int y, int c, int value);
    // Writes a pixel from 16-bit channels, rounded to the frame's depth.
    void set_rgb16(int x, int y, uint16_t red, uint16_t green, uint16_t blue);
    // Reads a channel widened to 16 bits, full scale 65535.
    uint16_t value16(int x, int y, int c) const;

    bool operator==(const Frame &other) const {
        return format_ == other.format_ && pixels_ == other.pixels_;
    }
    bool operator!=(const Frame &other) const { return !(*this == other); }

private:
    std::size_t offset(int x, int y) const {
        return (std::size_t(y) * format_.width + x) * format_.bytes_per_pixel();
    }
    FrameFormat format_;
    std::vector<uint8_t> pixels_;
};

// Rounds a 16-bit channel to the frame depth's range and back. Inline: the
// built-in pictures round every channel of every frame.
inline int quantize16(uint16_t value, Depth depth) {
    uint32_t top = depth == Depth::Bits12 ? 4095 : 255;
    return int((uint32_t(value) * top + 32767) / 65535);
}
uint16_t widen_to16(int value, Depth depth);

}  // namespace sparkhost
