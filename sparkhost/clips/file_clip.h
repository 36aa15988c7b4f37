// An input clip read from image files: one still image or a numbered sequence.
#pragma once

#include <optional>
#include <string>

#include "sparkhost/clips/clip_source.h"
#include "sparkhost/files/frame_pattern.h"

namespace sparkhost {

class FileClip : public ClipSource {
public:
    explicit FileClip(std::string pattern) : pattern_(std::move(pattern)) {}
    Frame frame(int number, const FrameFormat &format) override;
    // Every file of first..last exists, is an image and has the frame's size.
    void check(int first, int last, const FrameFormat &format) override;
    void fill(int number, const FrameFormat &format, Frame &into) override;
    std::string describe() const override { return pattern_.text(); }
    bool changes() const override { return pattern_.is_sequence(); }

private:
    FramePattern pattern_;
    std::optional<Frame> still_;  // a still image is read once
};

}  // namespace sparkhost
