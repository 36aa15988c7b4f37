// The writer threads behind a render.
#include "sparkhost/files/frame_writer.h"

#include <memory>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/image_io.h"

namespace sparkhost {

FrameWriter::FrameWriter(FramePattern output, std::string compression, int queue_depth, int encoders)
    : output_(std::move(output)), compression_(std::move(compression)), depth_(std::size_t(queue_depth < 1 ? 1 : queue_depth)) {
    for (int i = 0; i < (encoders < 1 ? 1 : encoders); ++i) threads_.emplace_back([this] { work(); });
}

FrameWriter::~FrameWriter() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        closing_ = true;
    }
    changed_.notify_all();
    for (std::thread &thread : threads_) thread.join();
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
    queue_.push_back(Job{number, std::move(frame), submitted_++});
    changed_.notify_all();
}

void FrameWriter::finish() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return failure_ || (queue_.empty() && writing_ == 0); });
    throw_failure();
}

void FrameWriter::work() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return closing_ || failure_ || !queue_.empty(); });
        if (failure_ || queue_.empty()) return;
        Job job = std::move(queue_.front());
        queue_.pop_front();
        ++writing_;
        lock.unlock();
        std::exception_ptr failure;
        std::unique_ptr<AtomicFile> file;
        try {
            file = std::make_unique<AtomicFile>(output_.path(job.number));
            write_image(*file, job.frame, compression_);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        // Renamed in frame order: wait for the frames submitted before this one.
        changed_.wait(lock, [&] { return failure_ || committed_ == job.sequence; });
        if (!failure && !failure_) {
            try {
                file->commit();
            } catch (...) {
                failure = std::current_exception();
            }
        }
        file.reset();  // an uncommitted temporary is removed
        ++committed_;
        --writing_;
        if (failure && !failure_) {
            failure_ = failure;
            queue_.clear();
        } else if (!failure && spare_.size() < depth_ + threads_.size()) {
            spare_.push_back(std::move(job.frame));
        }
        changed_.notify_all();
    }
}

}  // namespace sparkhost
