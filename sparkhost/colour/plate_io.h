// Scene-linear plates: float images read and written with every value kept
// (negatives, values above 1, NaN and infinity), and colour conversions
// through the colour configuration OpenImageIO uses (OpenColorIO's). Like
// image_io.h, everything that needs OpenImageIO lives in a module loaded on
// first use, so programs that never touch a float plate do not wait for it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "sparkhost/files/atomic_file.h"

namespace sparkhost {

// Pixels as in the file: top row first, `channels` floats a pixel.
struct PlateImage {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<float> pixels;

    PlateImage() = default;
    PlateImage(int width, int height, int channels)
        : width(width), height(height), channels(channels),
          pixels(std::size_t(width) * std::size_t(height) * std::size_t(channels)) {}
    float *row(int y) { return pixels.data() + std::size_t(y) * std::size_t(width) * std::size_t(channels); }
    const float *row(int y) const {
        return pixels.data() + std::size_t(y) * std::size_t(width) * std::size_t(channels);
    }
};

// How samples are stored in a file.
enum class SampleType { Half, Float, UInt16, UInt8 };
const char *sample_type_name(SampleType type);  // "half", "float", "uint16", "uint8"

struct PlateInfo {
    int width = 0;
    int height = 0;
    int channels = 0;
    SampleType type = SampleType::UInt8;  // the file's own (the widest of its channels)
    std::string colour_space;  // the file's own claim ("oiio:ColorSpace"), empty when none
    bool is_float() const { return type == SampleType::Half || type == SampleType::Float; }
};

// Without reading the pixels. Throws Error.
PlateInfo probe_plate(const std::string &path);
// The first four channels (RGB or RGBA) as floats, exactly as stored; a grey
// image gives three equal channels. Throws Error.
PlateImage read_plate(const std::string &path);
// Writes every channel of `image` as `type` (RGB, or RGBA when it has four)
// to file's temporary name; committing is the caller's. `compression` as
// write_image takes it, empty for the format's default. Throws Error.
void write_plate(AtomicFile &file, const PlateImage &image, SampleType type, const std::string &compression);
// Rounds samples as storing them as `type` and reading them back would, so
// that what is computed from them matches the file.
void round_to_type(float *samples, std::size_t count, SampleType type);
// Whether the path's format can store samples of `type`.
bool can_store(const std::string &path, SampleType type);

// A colour conversion between two spaces of a configuration.
class ColourConversion {
public:
    virtual ~ColourConversion() = default;
    // Converts the first three channels of `count` pixels of `channels`
    // floats each, in place.
    virtual void apply(float *pixels, std::size_t count, int channels) const = 0;
    // True when it changes nothing (the same space on both sides).
    virtual bool identity() const = 0;
};

// A colour configuration: an OpenColorIO file, or with an empty path $OCIO,
// else OpenImageIO's built-in spaces.
class ColourConfig {
public:
    virtual ~ColourConfig() = default;
    virtual std::vector<std::string> spaces() const = 0;
    // The space a role names ("scene_linear"), empty when the config has none.
    virtual std::string role(const std::string &name) const = 0;
    // Throws Error naming the spaces available when either is unknown.
    virtual std::shared_ptr<const ColourConversion> conversion(const std::string &from,
                                                               const std::string &to) const = 0;
    // What the config is, for messages: its file, or "OpenImageIO's built-in spaces".
    virtual std::string describe() const = 0;
    // The displays and each display's views, the default first.
    virtual std::vector<std::string> displays() const = 0;
    virtual std::vector<std::string> views(const std::string &display) const = 0;
    // From a space to what a display shows through one of its views. Throws
    // Error naming the displays or views available when either is unknown.
    virtual std::shared_ptr<const ColourConversion> display_conversion(const std::string &from,
                                                                       const std::string &display,
                                                                       const std::string &view) const = 0;
};

// Throws Error (one line naming the file and the library's reason) when the
// file is missing or not a readable configuration.
std::shared_ptr<const ColourConfig> open_colour_config(const std::string &path);

}  // namespace sparkhost
