// fizzle-render stopped by SIGTERM or SIGINT at different moments: only
// complete frames are left, no temporaries, the exit code says how it
// ended, and --skip-existing finishes the sequence as one run would have.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <map>
#include <thread>

#include "render_run.h"
#include "sparkhost/files/atomic_file.h"
#include "sparkhost/files/image_io.h"

extern char **environ;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

// fizzle-render running in the background; killed whatever happens.
class Background {
public:
    Background(const std::vector<std::string> &arguments, const fs::path &log) {
        std::vector<std::string> words = {FIZZLE_RENDER_PATH};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char *> argv;
        for (std::string &word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        setenv("FIZZLE_NO_PAUSE", "1", 1);
        if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Background() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    bool started() const { return pid_ > 0; }
    void signal(int number) const { kill(pid_, number); }

    // The exit code, or -1 when it did not end on its own within the time.
    int wait(std::chrono::seconds limit = std::chrono::seconds(120)) {
        const auto deadline = Clock::now() + limit;
        int status = 0;
        while (Clock::now() < deadline) {
            if (waitpid(pid_, &status, WNOHANG) == pid_) {
                pid_ = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return -1;
    }

private:
    pid_t pid_ = -1;
};

// Polls until the condition holds; false after the time limit.
bool eventually(const std::function<bool()> &condition, std::chrono::seconds limit = std::chrono::seconds(120)) {
    const auto deadline = Clock::now() + limit;
    while (Clock::now() < deadline) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return false;
}

class RenderStop : public RenderRun {
protected:
    // Output files by name, and whether a temporary is among the entries.
    std::map<std::string, fs::path> outputs(bool &temporary_seen) const {
        std::map<std::string, fs::path> found;
        temporary_seen = false;
        for (const auto &entry : fs::directory_iterator(dir_)) {
            const std::string name = entry.path().filename().string();
            if (sparkhost::is_temporary_name(name)) temporary_seen = true;
            if (name.rfind("f.", 0) == 0) found[name] = entry.path();
        }
        return found;
    }
    bool temporary_present() const {
        bool seen = false;
        outputs(seen);
        return seen;
    }
    // Every output frame reads back whole; returns how many there are.
    int expect_only_complete_frames() const {
        bool temporary = false;
        const auto found = outputs(temporary);
        EXPECT_FALSE(temporary) << "a temporary file was left behind";
        for (const auto &[name, file] : found)
            EXPECT_NO_THROW(sparkhost::read_image(file.string(), sparkhost::Depth::Bits12)) << name;
        return int(found.size());
    }
};

const std::vector<std::string> kSoap = {"--preset", "Soap", "--preroll", "--processors", "2", "-q"};

std::vector<std::string> with(std::vector<std::string> arguments, const std::vector<std::string> &more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

}  // namespace

TEST_F(RenderStop, TermAfterSomeFramesKeepsThemAndSkipExistingFinishesByteIdentically) {
    const std::vector<std::string> job = with(kSoap, {"--frames", "1-12", "--size", "160x120"});
    ASSERT_EQ(run(with(job, {"-o", path("ref.####.png")})).exit_code, 0);

    Background render(with(job, {"-o", path("f.####.png")}), path("log"));
    ASSERT_TRUE(render.started());
    ASSERT_TRUE(eventually([&] { return fs::exists(path("f.0003.png")); }));
    render.signal(SIGTERM);
    ASSERT_EQ(render.wait(), 143) << slurp(path("log"));
    EXPECT_NE(slurp(path("log")).find("stopped by SIGTERM after frame"), std::string::npos) << slurp(path("log"));
    const int kept = expect_only_complete_frames();
    EXPECT_GE(kept, 3);
    EXPECT_LT(kept, 12);

    std::map<std::string, fs::file_time_type> written;
    bool temporary = false;
    for (const auto &[name, file] : outputs(temporary)) written[name] = fs::last_write_time(file);
    const RunResult resumed = run(with(job, {"--skip-existing", "-o", path("f.####.png")}));
    ASSERT_EQ(resumed.exit_code, 0) << resumed.err;
    for (const auto &[name, time] : written) EXPECT_EQ(fs::last_write_time(path(name)), time) << name << " rewritten";
    for (int frame = 1; frame <= 12; ++frame) {
        char name[16];
        std::snprintf(name, sizeof name, "%04d.png", frame);
        EXPECT_EQ(slurp(path(std::string("f.") + name)), slurp(path(std::string("ref.") + name))) << name;
    }
}

TEST_F(RenderStop, ASignalDuringAWriteFinishesThatFrameAndASecondOneDropsIt) {
    const std::vector<std::string> job =
        with(kSoap, {"--frames", "1-5", "--size", "960x540", "--depth", "12", "-o", path("f.%04d.exr")});
    const struct {
        std::vector<int> signals;
        int exit_code;
    } cases[] = {{{SIGINT}, 130}, {{SIGTERM, SIGTERM}, 143}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.signals.size());
        for (const auto &entry : fs::directory_iterator(dir_)) fs::remove(entry.path());
        Background render(job, path("log"));
        ASSERT_TRUE(render.started());
        // The second frame's write, so at least one complete frame is there to keep.
        ASSERT_TRUE(eventually([&] { return fs::exists(path("f.0001.exr")) && temporary_present(); }));
        for (int number : c.signals) render.signal(number);
        ASSERT_EQ(render.wait(), c.exit_code) << slurp(path("log"));
        EXPECT_GE(expect_only_complete_frames(), 1);
    }
}
