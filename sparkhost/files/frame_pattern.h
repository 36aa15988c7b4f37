// File names with a frame number in them: "shot.%04d.exr" or "shot.####.exr".
#pragma once

#include <optional>
#include <string>

namespace sparkhost {

class FramePattern {
public:
    // The widest frame number a pattern may ask for: wider cannot fit in a
    // file name.
    static constexpr int kWidest = 255;

    // The last "%d", "%0Nd" or run of '#' is the frame number; a name with
    // none of these is one file for every frame. Throws Error when the
    // number is to be wider than kWidest.
    explicit FramePattern(std::string text);

    bool is_sequence() const { return sequence_; }
    const std::string &text() const { return text_; }
    // The file of a frame: the number zero-padded to the pattern's width.
    std::string path(int frame) const;
    // The frame whose file `name` is, if it is one of the pattern's files.
    std::optional<int> frame_of(const std::string &name) const;

private:
    std::string text_;
    std::string prefix_;
    std::string suffix_;
    int width_ = 0;
    bool sequence_ = false;
};

}  // namespace sparkhost
