// Where the host gets the frames of an input clip: a still frame held in
// memory, image files (file_clip.h) or a built-in picture (default_clips.h).
#pragma once

#include <string>
#include <utility>

#include "sparkhost/core/frame.h"

namespace sparkhost {

class ClipSource {
public:
    virtual ~ClipSource() = default;
    // The clip's picture at frame `number` (numbered from 1) in `format`.
    // Throws Error naming the problem when it cannot.
    virtual Frame frame(int number, const FrameFormat &format) = 0;
    // The same picture written into `into`, whose pixel storage may be
    // reused: the host fills its buffers this way every frame, so a source
    // that can draw in place saves an allocation and its page faults.
    virtual void fill(int number, const FrameFormat &format, Frame &into) { into = frame(number, format); }
    // A picture of frame `number` the source itself holds, which the host
    // then shows the plug-in instead of a copy (a 4K 12-bit frame is 50 MB).
    // It must stay unchanged while the source lives and is asked for nothing
    // in another format. Null: the source has none, fill() is used instead.
    // Throws as frame() does.
    virtual const Frame *held(int, const FrameFormat &) { return nullptr; }
    // Checks before rendering that frames first..last can be served in
    // `format`, so a bad input fails before any output is written.
    virtual void check(int first, int last, const FrameFormat &format) = 0;
    // False when every frame is the same picture, so reading ahead gains nothing.
    virtual bool changes() const { return true; }
    // Names the clip in messages: a file pattern, "still frame", ...
    virtual std::string describe() const = 0;
};

// The same frame at every frame number; its format must match the host's.
class StillClip : public ClipSource {
public:
    explicit StillClip(Frame frame) : frame_(std::move(frame)) {}
    Frame frame(int number, const FrameFormat &format) override;
    void fill(int number, const FrameFormat &format, Frame &into) override;
    const Frame *held(int number, const FrameFormat &format) override;
    void check(int first, int last, const FrameFormat &format) override;
    std::string describe() const override { return "still frame"; }
    bool changes() const override { return false; }

private:
    Frame frame_;
};

}  // namespace sparkhost
