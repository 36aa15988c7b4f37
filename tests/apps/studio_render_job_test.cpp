// The studio's render job, with a shell script standing in for fizzle-render.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "apps/fizzle-studio/render_job.h"

namespace fs = std::filesystem;

namespace {

using namespace std::chrono_literals;

class StudioRenderJob : public ::testing::Test {
protected:
    void SetUp() override {
        folder_ = fs::temp_directory_path() / ("studio-render-job-" + std::to_string(getpid()));
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    // Starts sh -c script; $1 in the script is the frames' folder as the render sees it.
    std::string start(const std::string &script, int first, int last) {
        UniqueFd folder(open(folder_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        const std::string held = descriptor_path(folder.get());
        return job_.start("/bin/sh", {"-c", script, "sh", held}, std::move(folder), "f.####.txt", "out", first, last);
    }
    nlohmann::json wait_for_end() {
        for (int i = 0; i < 400; ++i) {
            nlohmann::json status = job_.status();
            if (!status["running"].get<bool>()) return status;
            std::this_thread::sleep_for(25ms);
        }
        return job_.status();
    }

    fs::path folder_;
    RenderJob job_;
};

TEST_F(StudioRenderJob, ARenderThatEndedBeforeTheCancelFinished) {
    ASSERT_EQ(start("exit 0", 1, 1), "");
    std::this_thread::sleep_for(300ms);  // ended, not yet collected
    job_.cancel();
    EXPECT_EQ(job_.status()["outcome"], "finished");
}

TEST_F(StudioRenderJob, ACancelledRenderIsCancelled) {
    ASSERT_EQ(start("exec sleep 30", 1, 1), "");
    job_.cancel();
    EXPECT_EQ(wait_for_end()["outcome"], "cancelled");
}

// The render reaches its folder through the inherited descriptor, and
// following a long range costs a few lookups, not one per frame.
TEST_F(StudioRenderJob, FollowsFramesWrittenThroughTheHeldFolderOverAnyRange) {
    ASSERT_EQ(start("for i in 1 2 3 5; do : > \"$1/f.000$i.txt\"; done", 1, 1000000), "");
    const nlohmann::json status = wait_for_end();
    EXPECT_EQ(status["outcome"], "finished");
    EXPECT_EQ(status["done"], 4);
    EXPECT_EQ(status["total"], 1000000);
    const auto started = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) job_.status();
    EXPECT_LT(std::chrono::steady_clock::now() - started, 5s);
}

// Nothing else the studio holds open (its clients' connections, its
// listening socket) lives on in the render.
TEST_F(StudioRenderJob, TheRenderInheritsTheFolderAndNothingElse) {
    const int stray = open("/dev/null", O_RDONLY);  // no O_CLOEXEC, as a library's socket might be
    const std::string script = "[ -e \"$1\" ] && [ ! -e /proc/$$/fd/" + std::to_string(stray) + " ]";
    ASSERT_EQ(start(script, 1, 1), "");
    EXPECT_EQ(wait_for_end()["outcome"], "finished");
    close(stray);
}

TEST_F(StudioRenderJob, AFailureIsToldWithTheFoldersName) {
    ASSERT_EQ(start("echo \"cannot write $1/f.0001.txt\" >&2; exit 1", 1, 3), "");
    EXPECT_EQ(wait_for_end()["outcome"], "cannot write out/f.0001.txt");
}

}  // namespace
