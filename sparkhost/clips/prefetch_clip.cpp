// Input frames made ahead of the render.
#include "sparkhost/clips/prefetch_clip.h"

#include "sparkhost/core/error.h"

namespace sparkhost {

PrefetchClip::PrefetchClip(std::shared_ptr<ClipSource> clip, int first, int last, const FrameFormat &format,
                           int depth)
    : clip_(std::move(clip)),
      first_(first),
      last_(last),
      format_(format),
      depth_(std::size_t(depth < 1 ? 1 : depth)),
      next_(first),
      thread_([this] { work(); }) {}

PrefetchClip::~PrefetchClip() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void PrefetchClip::work() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (next_ <= last_) {
        changed_.wait(lock, [this] { return stopping_ || ready_.size() < depth_; });
        if (stopping_) break;
        Ready made{next_, Frame(), ""};
        if (!spare_.empty()) {
            made.frame = std::move(spare_.back());
            spare_.pop_back();
        }
        lock.unlock();
        try {
            std::lock_guard<std::mutex> serving(clip_mutex_);
            clip_->fill(made.number, format_, made.frame);
        } catch (const Error &error) {
            made.failure = error.what();
        }
        lock.lock();
        const bool failed = !made.failure.empty();
        ready_.push_back(std::move(made));
        ++next_;
        changed_.notify_all();
        if (failed) break;  // nothing after a failure is asked for
    }
    finished_ = true;
    changed_.notify_all();
}

void PrefetchClip::fill(int number, const FrameFormat &format, Frame &into) {
    if (format == format_ && number >= first_ && number <= last_) {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            // Frames before the one asked for are not going to be asked for.
            while (!ready_.empty() && ready_.front().number < number) ready_.pop_front();
            changed_.notify_all();
            if (!ready_.empty() || finished_ || next_ > number) break;
            changed_.wait(lock);
        }
        if (!ready_.empty() && ready_.front().number == number) {
            Ready made = std::move(ready_.front());
            ready_.pop_front();
            changed_.notify_all();
            if (!made.failure.empty()) throw Error(made.failure);
            std::swap(into, made.frame);
            spare_.push_back(std::move(made.frame));
            return;
        }
    }
    std::lock_guard<std::mutex> serving(clip_mutex_);
    clip_->fill(number, format, into);
}

Frame PrefetchClip::frame(int number, const FrameFormat &format) {
    Frame picture;
    fill(number, format, picture);
    return picture;
}

void PrefetchClip::check(int first, int last, const FrameFormat &format) {
    std::lock_guard<std::mutex> serving(clip_mutex_);
    clip_->check(first, last, format);
}

}  // namespace sparkhost
