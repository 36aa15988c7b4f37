// File names with a frame number in them: "shot.%04d.exr" or "shot.####.exr".
#pragma once

#include <string>

namespace sparkhost {

class FramePattern {
public:
    // The last "%d", "%0Nd" or run of '#' is the frame number; a name with
    // none of these is one file for every frame.
    explicit FramePattern(std::string text);

    bool is_sequence() const { return sequence_; }
    const std::string &text() const { return text_; }
    // The file of a frame: the number zero-padded to the pattern's width.
    std::string path(int frame) const;

private:
    std::string text_;
    std::string prefix_;
    std::string suffix_;
    int width_ = 0;
    bool sequence_ = false;
};

}  // namespace sparkhost
