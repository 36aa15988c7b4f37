// Writes rendered frames behind the render, on a thread of its own, in frame
// order, through a bounded queue so memory stays bounded however long the
// sequence. Frame buffers travel back to the render once written, so a
// long run reuses the same few buffers.
//
//     FrameWriter writer(FramePattern("out/f.%04d.exr"), "");
//     for (...) {
//         Frame picture = writer.take_buffer();   // storage of a written frame
//         ... fill picture ...
//         writer.submit(frame, std::move(picture));  // throws a write error
//     }
//     writer.finish();  // waits for the last file; throws a write error
#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sparkhost/frame.h"
#include "sparkhost/frame_pattern.h"

namespace sparkhost {

class FrameWriter {
public:
    // The first write error stops the writer: later frames are dropped and
    // submit() and finish() throw it. `compression` as write_image takes it.
    FrameWriter(FramePattern output, std::string compression, int queue_depth = 3);
    // Writes what was queued, unless a write already failed.
    ~FrameWriter();
    FrameWriter(const FrameWriter &) = delete;
    FrameWriter &operator=(const FrameWriter &) = delete;

    // An empty frame, or the storage of one already written.
    Frame take_buffer();
    // Queues the frame; waits while the queue is full.
    void submit(int number, Frame frame);
    void finish();

private:
    struct Job {
        int number;
        Frame frame;
    };
    void work();
    void throw_failure();

    FramePattern output_;
    std::string compression_;
    std::size_t depth_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> queue_;
    std::vector<Frame> spare_;
    bool writing_ = false;  // a job is out of the queue but not yet written
    bool closing_ = false;
    std::exception_ptr failure_;
    std::thread thread_;
};

}  // namespace sparkhost
