// Float input clips converted to the effect's working encoding.
#include "sparkhost/clips/converted_clip.h"

#include <algorithm>
#include <cmath>

#include "sparkhost/core/error.h"

namespace sparkhost {

ConvertedClip::ConvertedClip(std::string pattern, std::shared_ptr<const ColourConversion> conversion)
    : pattern_(std::move(pattern)), conversion_(std::move(conversion)) {}

Frame ConvertedClip::frame(int number, const FrameFormat &format) {
    const std::string path = pattern_.path(pattern_.is_sequence() ? number : 0);
    PlateImage image = read_plate(path);
    if (image.width != format.width || image.height != format.height)
        throw Error("'" + path + "' is " + std::to_string(image.width) + "x" + std::to_string(image.height) +
                    " but the frame is " + format.size_text());
    conversion_->apply(image.pixels.data(), std::size_t(image.width) * std::size_t(image.height), image.channels);
    return frame_from_plate(image, format.depth);
}

void ConvertedClip::check(int first, int last, const FrameFormat &format) {
    if (!pattern_.is_sequence()) first = last = 0;
    for (int number = first; number <= last; ++number) {
        const std::string path = pattern_.path(number);
        const PlateInfo info = probe_plate(path);
        if (info.width != format.width || info.height != format.height)
            throw Error("'" + path + "' is " + std::to_string(info.width) + "x" + std::to_string(info.height) +
                        " but the frame is " + format.size_text());
    }
}

Frame frame_from_plate(const PlateImage &image, Depth depth) {
    Frame frame(FrameFormat{image.width, image.height, depth});
    const float top = float(frame.format().max_value());
    for (int file_row = 0; file_row < image.height; ++file_row) {
        const float *pixel = image.row(file_row);
        const int y = image.height - 1 - file_row;
        for (int x = 0; x < image.width; ++x, pixel += image.channels)
            for (int c = 0; c < 3; ++c) {
                // NaN lands on 0, like a negative value.
                const float value = pixel[c] > 0.0f ? std::min(pixel[c], 1.0f) : 0.0f;
                frame.set_value(x, y, c, int(std::floor(value * top + 0.5f)));
            }
    }
    return frame;
}

}  // namespace sparkhost
