// Still frames held in memory.
#include "sparkhost/clips/clip_source.h"

#include "sparkhost/core/error.h"

namespace sparkhost {

Frame StillClip::frame(int, const FrameFormat &format) {
    check(0, 0, format);
    return frame_;
}

void StillClip::fill(int, const FrameFormat &format, Frame &into) {
    check(0, 0, format);
    into.assign(frame_);
}

const Frame *StillClip::held(int, const FrameFormat &format) {
    check(0, 0, format);
    return &frame_;
}

void StillClip::check(int, int, const FrameFormat &format) {
    if (frame_.format() != format)
        throw Error("still frame is " + frame_.format().describe() + " but the frame is " +
                    format.describe());
}

}  // namespace sparkhost
