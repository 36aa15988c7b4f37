// Reads or draws an input clip's frames ahead of the render on a thread of
// its own: frames first..last in order, at most `depth` ready at a time.
// Asked for the frame it has ready next, it hands that over; asked for any
// other frame (a plug-in fetching a neighbour), it serves it from the clip
// directly. A frame the clip cannot serve throws its error when asked for,
// as the clip itself would.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sparkhost/clips/clip_source.h"

namespace sparkhost {

class PrefetchClip : public ClipSource {
public:
    PrefetchClip(std::shared_ptr<ClipSource> clip, int first, int last, const FrameFormat &format,
                 int depth = 2);
    ~PrefetchClip() override;

    Frame frame(int number, const FrameFormat &format) override;
    void fill(int number, const FrameFormat &format, Frame &into) override;
    void check(int first, int last, const FrameFormat &format) override;
    std::string describe() const override { return clip_->describe(); }
    bool changes() const override { return clip_->changes(); }

private:
    struct Ready {
        int number;
        Frame frame;
        std::string failure;  // set instead of a frame when the clip failed
    };
    void work();

    std::shared_ptr<ClipSource> clip_;
    std::mutex clip_mutex_;  // the clip serves one caller at a time
    const int first_, last_;
    const FrameFormat format_;
    const std::size_t depth_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Ready> ready_;
    std::vector<Frame> spare_;
    int next_ = 0;  // the next number work() will make
    bool stopping_ = false;
    bool finished_ = false;  // work() made its last frame or gave up
    std::thread thread_;
};

}  // namespace sparkhost
