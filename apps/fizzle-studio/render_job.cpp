// fizzle-render as a child process, its progress read from the files it has
// renamed into place.
#include "render_job.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "sparkhost/files/frame_pattern.h"

RenderJob::~RenderJob() {
    cancel();
    std::lock_guard<std::mutex> lock(mutex_);
    if (child_ > 0) {
        waitpid(child_, nullptr, 0);
        child_ = -1;
    }
    if (error_pipe_ >= 0) close(error_pipe_);
}

namespace {

// Frames looked for past those known to be written, at each question: the
// render writes them nearly in order, and a long range costs no more to follow.
constexpr int kLookAhead = 64;

}  // namespace

std::string RenderJob::start(const std::string &program, const std::vector<std::string> &arguments, UniqueFd folder,
                             const std::string &pattern, const std::string &folder_name, int first, int last) {
    std::lock_guard<std::mutex> lock(mutex_);
    reap();
    if (child_ > 0) return "a render is already running";
    int pipe_ends[2];
    if (pipe2(pipe_ends, O_CLOEXEC) != 0) return std::string("cannot start the render: ") + std::strerror(errno);
    std::vector<char *> argv;
    argv.push_back(const_cast<char *>(program.c_str()));
    for (const std::string &argument : arguments) argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        close(pipe_ends[0]);
        close(pipe_ends[1]);
        return std::string("cannot start the render: ") + std::strerror(errno);
    }
    if (child == 0) {
        // The studio blocks its stop signals and ignores SIGPIPE; both would
        // carry over into the render, which could then not be cancelled.
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        signal(SIGPIPE, SIG_DFL);
        // The render inherits the frames' folder and nothing else of the
        // studio's: no client connection, nor the listening socket, outlives
        // the studio in it.
        close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
        fcntl(folder.get(), F_SETFD, 0);
        dup2(pipe_ends[1], STDERR_FILENO);
        int null = open("/dev/null", O_RDWR);
        if (null >= 0) {
            dup2(null, STDIN_FILENO);
            dup2(null, STDOUT_FILENO);
        }
        execv(program.c_str(), argv.data());
        const char *text = "cannot run fizzle-render\n";
        (void)!write(STDERR_FILENO, text, std::strlen(text));
        _exit(127);
    }
    close(pipe_ends[1]);
    fcntl(pipe_ends[0], F_SETFL, O_NONBLOCK);
    if (error_pipe_ >= 0) close(error_pipe_);
    error_pipe_ = pipe_ends[0];
    child_ = child;
    folder_ = std::move(folder);
    pattern_ = pattern;
    folder_name_ = folder_name;
    first_ = first;
    last_ = last;
    confirmed_ = 0;
    started_ = (long long)std::time(nullptr);
    cancelled_ = false;
    outcome_.clear();
    errors_.clear();
    return {};
}

void RenderJob::cancel() {
    std::lock_guard<std::mutex> lock(mutex_);
    reap();
    if (child_ <= 0) return;
    cancelled_ = true;
    kill(child_, SIGTERM);
}

void RenderJob::reap() {
    if (error_pipe_ >= 0) {
        char buffer[4096];
        ssize_t got;
        while ((got = read(error_pipe_, buffer, sizeof buffer)) > 0) errors_.append(buffer, size_t(got));
        if (errors_.size() > 65536) errors_.erase(0, errors_.size() - 65536);
    }
    if (child_ <= 0) return;
    int status = 0;
    if (waitpid(child_, &status, WNOHANG) != child_) return;
    child_ = -1;
    // A render that ended by itself before the cancel reached it finished.
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        outcome_ = "finished";
    } else if (cancelled_) {
        outcome_ = "cancelled";
    } else {
        // The program's last line names the problem.
        std::string text = errors_;
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        const size_t line = text.find_last_of("\r\n");
        outcome_ = line == std::string::npos ? text : text.substr(line + 1);
        // The render knew the folder by its descriptor; the user knows its name.
        const std::string held = descriptor_path(folder_.get());
        for (size_t at; (at = outcome_.find(held)) != std::string::npos;) outcome_.replace(at, held.size(), folder_name_);
        if (outcome_.empty()) outcome_ = "fizzle-render failed";
    }
}

int RenderJob::count_done() {
    sparkhost::FramePattern pattern(pattern_);
    auto written = [&](int frame) {
        struct stat info;
        return fstatat(folder_.get(), pattern.path(frame).c_str(), &info, 0) == 0 && S_ISREG(info.st_mode) &&
               (long long)info.st_mtime >= started_;
    };
    for (int step = 0; step < 16 * kLookAhead && first_ + confirmed_ <= last_ && written(first_ + confirmed_); ++step)
        ++confirmed_;
    int done = confirmed_;
    const int from = first_ + confirmed_ + 1;
    for (int frame = from; frame <= last_ && frame < from + kLookAhead; ++frame) done += written(frame);
    return done;
}

nlohmann::json RenderJob::status() {
    std::lock_guard<std::mutex> lock(mutex_);
    reap();
    if (!folder_) return {{"running", false}};
    nlohmann::json answer = {{"running", child_ > 0}, {"done", count_done()}, {"total", last_ - first_ + 1}};
    if (!outcome_.empty()) answer["outcome"] = outcome_;
    return answer;
}
