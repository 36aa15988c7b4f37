// The writer thread behind a render.
#include "sparkhost/frame_writer.h"

#include "sparkhost/error.h"
#include "sparkhost/image_io.h"

namespace sparkhost {

FrameWriter::FrameWriter(FramePattern output, std::string compression, int queue_depth)
    : output_(std::move(output)),
      compression_(std::move(compression)),
      depth_(std::size_t(queue_depth < 1 ? 1 : queue_depth)),
      thread_([this] { work(); }) {}

FrameWriter::~FrameWriter() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        closing_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

Frame FrameWriter::take_buffer() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (spare_.empty()) return Frame();
    Frame frame = std::move(spare_.back());
    spare_.pop_back();
    return frame;
}

void FrameWriter::throw_failure() {
    if (failure_) std::rethrow_exception(failure_);
}

void FrameWriter::submit(int number, Frame frame) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return failure_ || queue_.size() < depth_; });
    throw_failure();
    queue_.push_back(Job{number, std::move(frame)});
    changed_.notify_all();
}

void FrameWriter::finish() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return failure_ || (queue_.empty() && !writing_); });
    throw_failure();
}

void FrameWriter::work() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return closing_ || failure_ || !queue_.empty(); });
        if (failure_ || queue_.empty()) return;
        Job job = std::move(queue_.front());
        queue_.pop_front();
        writing_ = true;
        lock.unlock();
        std::exception_ptr failure;
        try {
            write_image(output_.path(job.number), job.frame, compression_);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        writing_ = false;
        if (failure) {
            failure_ = failure;
            queue_.clear();
        } else if (spare_.size() < depth_ + 1) {
            spare_.push_back(std::move(job.frame));
        }
        changed_.notify_all();
    }
}

}  // namespace sparkhost
