// Rendering a frame range to files: fizzle-render run as a child process
// with the arguments that reproduce the studio's state, so files come from
// the very same render loop.
#pragma once

#include <sys/types.h>

#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

class RenderJob {
public:
    RenderJob() = default;
    ~RenderJob();  // cancels a running render
    RenderJob(const RenderJob &) = delete;
    RenderJob &operator=(const RenderJob &) = delete;

    // Starts program with arguments; output is the frame pattern it writes
    // (absolute), first..last its frames. Returns an error text, empty on success.
    std::string start(const std::string &program, const std::vector<std::string> &arguments,
                      const std::string &output, int first, int last);
    void cancel();
    // running, done (frames written so far), total, and the outcome of a
    // finished render ("finished", "cancelled" or the program's last line of error).
    nlohmann::json status();

private:
    void reap();

    std::mutex mutex_;
    pid_t child_ = -1;
    int error_pipe_ = -1;
    std::string output_;
    int first_ = 0, last_ = 0;
    long long started_ = 0;  // seconds since the epoch, for telling new files from old
    bool cancelled_ = false;
    std::string outcome_;
    std::string errors_;
};
