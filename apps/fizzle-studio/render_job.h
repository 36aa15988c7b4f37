// Rendering a frame range to files: fizzle-render run as a child process
// with the arguments that reproduce the studio's state, so files come from
// the very same render loop.
#pragma once

#include <sys/types.h>

#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "safe_open.h"

class RenderJob {
public:
    RenderJob() = default;
    ~RenderJob();  // cancels a running render
    RenderJob(const RenderJob &) = delete;
    RenderJob &operator=(const RenderJob &) = delete;

    // Starts program with arguments; the frames go into folder, held open
    // and handed to the program, which the arguments name as
    // "/proc/self/fd/N" (shown to the user as folder_name); pattern is
    // their file name there, first..last their frames. Returns an error
    // text, empty on success.
    std::string start(const std::string &program, const std::vector<std::string> &arguments, UniqueFd folder,
                      const std::string &pattern, const std::string &folder_name, int first, int last);
    // Ends a render still running; one that has already ended keeps its outcome.
    void cancel();
    // running, done (frames written so far), total, and the outcome of a
    // finished render ("finished", "cancelled" or the program's last line of error).
    nlohmann::json status();

private:
    void reap();
    int count_done();

    std::mutex mutex_;
    pid_t child_ = -1;
    int error_pipe_ = -1;
    UniqueFd folder_;
    std::string pattern_, folder_name_;
    int first_ = 0, last_ = 0;
    int confirmed_ = 0;  // frames from first_ on known to be written
    long long started_ = 0;  // seconds since the epoch, for telling new files from old
    bool cancelled_ = false;
    std::string outcome_;
    std::string errors_;
};
