// Writes rendered frames behind the render, through a bounded queue so
// memory stays bounded however long the sequence. Compressing a frame can
// take longer than rendering one, so `encoders` threads encode successive
// frames side by side; each file is renamed into place in frame order, so
// the files appear one after another as from a single writer. Frame buffers
// travel back to the render once written, so a long run reuses the same few
// buffers.
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

#include "sparkhost/core/frame.h"
#include "sparkhost/files/frame_pattern.h"

namespace sparkhost {

class FrameWriter {
public:
    // The first write error stops the writer: later frames are dropped (none
    // of them appears, even one already encoded) and submit() and finish()
    // throw it. `compression` as write_image takes it.
    FrameWriter(FramePattern output, std::string compression, int queue_depth = 3, int encoders = 2);
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
        long sequence;  // the order the frames were submitted in
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
    long submitted_ = 0;     // frames queued so far
    long committed_ = 0;     // frames renamed into place (or dropped) so far
    int writing_ = 0;        // jobs out of the queue but not yet finished
    bool closing_ = false;
    std::exception_ptr failure_;
    std::vector<std::thread> threads_;
};

}  // namespace sparkhost
