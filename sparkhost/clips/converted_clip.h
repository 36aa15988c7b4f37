// An input clip of float image files shown to the effect in its working
// encoding: each frame is read with every value, converted from the file's
// colour space and only then rounded to the host's depth.
#pragma once

#include <memory>
#include <string>

#include "sparkhost/clips/clip_source.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/colour/plate_io.h"

namespace sparkhost {

class ConvertedClip : public ClipSource {
public:
    ConvertedClip(std::string pattern, std::shared_ptr<const ColourConversion> conversion);
    Frame frame(int number, const FrameFormat &format) override;
    void check(int first, int last, const FrameFormat &format) override;
    std::string describe() const override { return pattern_.text(); }
    bool changes() const override { return pattern_.is_sequence(); }

private:
    FramePattern pattern_;
    std::shared_ptr<const ColourConversion> conversion_;
};

// Rounds a float image (top row first, values 0..1 in range) to a host frame
// (bottom row first) to the nearest level; values outside 0..1 clamp.
Frame frame_from_plate(const PlateImage &image, Depth depth);

}  // namespace sparkhost
