// Built-in pictures for inputs the user did not give: a moving scene, a birth
// matte along the bottom tenth, a soft burst disc in the upper middle and a
// colourful reflection. Only exactly rounded arithmetic (+ - * / sqrt) goes
// into them, so every machine and every run makes the same bytes.
#pragma once

#include <map>
#include <memory>

#include "sparkhost/clips/clip_source.h"

namespace sparkhost {

// The built-in picture of input `clip` (a ClipIndex) at frame `number`.
Frame default_frame(int clip, int number, const FrameFormat &format);

// A clip serving default_frame; the still ones are computed once per format.
class DefaultClip : public ClipSource {
public:
    explicit DefaultClip(int clip) : clip_(clip) {}
    Frame frame(int number, const FrameFormat &format) override;
    void fill(int number, const FrameFormat &format, Frame &into) override;
    // The still pictures, drawn once per format; null for the moving scene.
    const Frame *held(int number, const FrameFormat &format) override;
    void check(int, int, const FrameFormat &) override {}
    std::string describe() const override;
    bool changes() const override;

private:
    int clip_;
    std::unique_ptr<Frame> still_;
};

std::shared_ptr<ClipSource> make_default_clip(int clip);

}  // namespace sparkhost
