// The built-in input pictures.
#include "sparkhost/clips/default_clips.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "sparkhost/clips/default_scene.h"
#include "sparkhost/core/host.h"

namespace sparkhost {

namespace {

struct Colour {
    double r, g, b;
};

// A triangle wave with period 1 between 0 and 1.
double triangle(double t) {
    double f = t - std::floor(t);
    return 1.0 - std::fabs(2.0 * f - 1.0);
}

double smoothstep(double edge0, double edge1, double x) {
    double t = std::clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

uint16_t to16(double v) { return uint16_t(std::clamp(v, 0.0, 1.0) * 65535.0 + 0.5); }

// Writes the shaded colour of every pixel straight into the frame's rows,
// rounded as Frame::set_rgb16 rounds.
template <class Shader>
void paint(Frame &frame, const FrameFormat &format, Shader shade) {
    frame.reshape(format);
    const bool deep = format.depth == Depth::Bits12;
    const std::size_t pixel = deep ? 6 : 3;
    for (int y = 0; y < format.height; ++y) {
        // v runs from 0 at the bottom row to 1 at the top.
        double v = (y + 0.5) / format.height;
        uint8_t *out = frame.row(y);
        Colour last{};
        for (int x = 0; x < format.width; ++x) {
            double u = (x + 0.5) / format.width;
            Colour c = shade(x, y, u, v);
            // The mattes are mostly runs of one colour: the pixel just
            // written is copied rather than rounded again.
            if (x > 0 && c.r == last.r && c.g == last.g && c.b == last.b) {
                std::memcpy(out, out - pixel, pixel);
                out += pixel;
                continue;
            }
            last = c;
            for (double channel : {c.r, c.g, c.b}) {
                int value = quantize16(to16(channel), format.depth);
                if (deep) {
                    uint16_t word = uint16_t(value << 4);
                    std::memcpy(out, &word, 2);
                    out += 2;
                } else {
                    *out++ = uint8_t(value);
                }
            }
        }
    }
}

// Rounds one row of colours (red, green, blue, red, ...) into a frame row as
// paint() rounds each pixel; a plain loop over samples, which the compiler
// runs several samples at a time.
void store_row(const std::vector<double> &colours, Depth depth, uint8_t *out) {
    const std::size_t samples = colours.size();
    if (depth == Depth::Bits12) {
        for (std::size_t i = 0; i < samples; ++i) {
            const uint16_t word = uint16_t(quantize16(to16(colours[i]), depth) << 4);
            std::memcpy(out + 2 * i, &word, 2);
        }
    } else {
        for (std::size_t i = 0; i < samples; ++i) out[i] = uint8_t(quantize16(to16(colours[i]), depth));
    }
}

template <class Shader>
Frame paint(const FrameFormat &format, Shader shade) {
    Frame frame;
    paint(frame, format, shade);
    return frame;
}

// The still pictures are drawn when a render starts, so they take short cuts
// that give the very same bytes: values that depend only on the row or only
// on the column are computed once for it, and far from the disc is black.

// White rows along the bottom tenth, black (all bytes 0) above.
Frame birth_matte(const FrameFormat &format) {
    Frame frame(format);
    std::vector<uint8_t> white(format.row_bytes());
    store_row(std::vector<double>(std::size_t(format.width) * 3, 1.0), format.depth, white.data());
    for (int y = 0; y * 10 < format.height; ++y) std::memcpy(frame.row(y), white.data(), white.size());
    return frame;
}

Frame burst_matte(const FrameFormat &format) {
    double cx = format.width / 2.0;
    double cy = format.height * 2.0 / 3.0;
    double radius = std::min(format.width, format.height) / 6.0;
    // A pixel whose row or column alone lies a radius away or more is black:
    // its distance is at least that far, so the smoothstep is exactly 1.
    std::vector<char> far_column(std::size_t(format.width));
    for (int x = 0; x < format.width; ++x) {
        double dx = x + 0.5 - cx;
        far_column[std::size_t(x)] = std::sqrt(dx * dx) >= radius;
    }
    return paint(format, [&](int x, int y, double, double) {
        double dx = x + 0.5 - cx, dy = y + 0.5 - cy;
        if (far_column[std::size_t(x)] || std::sqrt(dy * dy) >= radius) return Colour{0.0, 0.0, 0.0};
        double d = std::sqrt(dx * dx + dy * dy);
        double white = 1.0 - smoothstep(0.5 * radius, radius, d);
        return Colour{white, white, white};
    });
}

// A rainbow across the picture, brighter towards the top, with a bright
// window band near the top as a reflection would show.
Frame reflection(const FrameFormat &format) {
    std::vector<Colour> rainbow(std::size_t(format.width));
    for (int x = 0; x < format.width; ++x) {
        double u = (x + 0.5) / format.width;
        rainbow[std::size_t(x)] = {triangle(u * 1.5), triangle(u * 1.5 + 1.0 / 3.0), triangle(u * 1.5 + 2.0 / 3.0)};
    }
    Frame frame(format);
    std::vector<double> colours(std::size_t(format.width) * 3);
    for (int y = 0; y < format.height; ++y) {
        const double v = (y + 0.5) / format.height;
        const double light = 0.3 + 0.6 * v;
        const double window = smoothstep(0.70, 0.78, v) * (1.0 - smoothstep(0.84, 0.92, v));
        for (std::size_t x = 0; x < rainbow.size(); ++x) {
            const Colour &band = rainbow[x];
            colours[3 * x] = band.r * light + 0.6 * window;
            colours[3 * x + 1] = band.g * light + 0.6 * window;
            colours[3 * x + 2] = band.b * light + 0.6 * window;
        }
        store_row(colours, format.depth, frame.row(y));
    }
    return frame;
}

}  // namespace

Frame default_frame(int clip, int number, const FrameFormat &format) {
    switch (clip) {
    case kScene: {
        Frame frame;
        draw_scene(number, format, frame);
        return frame;
    }
    case kBirth:
        return birth_matte(format);
    case kBurst:
        return burst_matte(format);
    default:
        return reflection(format);
    }
}

Frame DefaultClip::frame(int number, const FrameFormat &format) {
    Frame picture;
    fill(number, format, picture);
    return picture;
}

void DefaultClip::fill(int number, const FrameFormat &format, Frame &into) {
    if (clip_ == kScene) {
        draw_scene(number, format, into);
        return;
    }
    into.assign(*held(number, format));
}

const Frame *DefaultClip::held(int number, const FrameFormat &format) {
    if (clip_ == kScene) return nullptr;
    if (!still_ || still_->format() != format)
        still_ = std::make_unique<Frame>(default_frame(clip_, number, format));
    return still_.get();
}

bool DefaultClip::changes() const { return clip_ == kScene; }

std::string DefaultClip::describe() const { return std::string("built-in ") + clip_name(clip_); }

std::shared_ptr<ClipSource> make_default_clip(int clip) { return std::make_shared<DefaultClip>(clip); }

}  // namespace sparkhost
