// fizzle-render on a full disk: a small tmpfs mounted in a private mount
// namespace (gone, with the mount, when the run ends, whatever happens).
// Every frame under its final name is whole, the run fails naming the
// problem, and no temporary is left.
#include <fstream>
#include <string>
#include <vector>

#include "render_run.h"
#include "sparkhost/files/atomic_file.h"
#include "sparkhost/files/image_io.h"

namespace fs = std::filesystem;

namespace {

constexpr int kCannotMount = 77;

class FullDisk : public RenderRun {
protected:
    // Runs fizzle-render with `disk` (in the arguments) on a tmpfs of `size`;
    // what the run left there is copied to left().
    RunResult run_on_small_disk(const std::string &size, const std::vector<std::string> &arguments) {
        fs::create_directories(left());
        // A preloaded library may start threads, and a process with threads
        // cannot enter a user namespace: the preload is kept for the render only.
        std::string command = "LD_PRELOAD=\"$FIZZLE_SAVED_PRELOAD\" FIZZLE_NO_PAUSE=1 " + quoted(FIZZLE_RENDER_PATH);
        for (const std::string &argument : arguments) command += " " + quoted(argument);
        const std::string script = path("..script");
        std::ofstream(script) << "mount -t tmpfs -o size=" << size << " tmpfs " << quoted(disk()) << " || exit "
                              << kCannotMount << "\n"
                              << command << " >" << quoted(path("..out")) << " 2>" << quoted(path("..err"))
                              << " </dev/null\n"
                              << "echo $? >" << quoted(path("..rc")) << "\n"
                              << "cp -a " << quoted(disk() + "/.") << " " << quoted(left()) << "\n";
        fs::create_directories(disk());
        const int status = std::system(
            ("FIZZLE_SAVED_PRELOAD=\"$LD_PRELOAD\" env -u LD_PRELOAD unshare -rm sh " + quoted(script) + " 2>/dev/null")
                .c_str());
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            mounted_ = false;
            return {};
        }
        mounted_ = true;
        return {std::stoi(slurp(path("..rc"))), slurp(path("..out")), slurp(path("..err"))};
    }

    std::string disk() const { return path("disk"); }
    std::string left() const { return path("left"); }
    bool mounted_ = false;

    // Names of what the run left, each regular file checked to be a whole
    // image when it is a frame.
    std::vector<std::string> left_files(const std::string &frame_extension = "") {
        std::vector<std::string> names;
        for (const auto &entry : fs::recursive_directory_iterator(left())) {
            if (!entry.is_regular_file()) continue;
            const std::string name = entry.path().filename().string();
            names.push_back(name);
            EXPECT_FALSE(sparkhost::is_temporary_name(name)) << "temporary left: " << name;
            if (!frame_extension.empty() && entry.path().extension() == frame_extension) {
                try {
                    sparkhost::read_image(entry.path().string(), sparkhost::Depth::Bits8);
                } catch (const std::exception &error) {
                    ADD_FAILURE() << name << " is not whole: " << error.what();
                }
            }
        }
        return names;
    }
};

#define SKIP_UNLESS_MOUNTED()                                                         \
    if (!mounted_) GTEST_SKIP() << "mounting a tmpfs is not permitted here"

}  // namespace

TEST_F(FullDisk, FramesThatDoNotFitFailTheRunAndNoneIsLeftCutShortInEveryFormat) {
    for (const std::string extension : {".png", ".jpg", ".tif", ".exr", ".dpx"}) {
        SCOPED_TRACE(extension);
        fs::remove_all(left());
        // A few 320x180 frames fit; the rest do not. Uncompressed frames
        // (170-230 KB) get room for three, since two are written at once and
        // two half-written ones would leave none whole.
        const bool uncompressed = extension == ".tif" || extension == ".dpx";
        const RunResult result = run_on_small_disk(
            extension == ".jpg" ? "100k" : uncompressed ? "720k" : "300k",
            {"--preset", "Soap", "--size", "320x180", "--frames", "1-8", "-o", disk() + "/f.%04d" + extension});
        SKIP_UNLESS_MOUNTED();
        EXPECT_EQ(result.exit_code, 1) << result.err;
        EXPECT_NE(result.err.find("No space left on device"), std::string::npos) << result.err;
        const std::vector<std::string> names = left_files(extension);
        EXPECT_GE(names.size(), 1u);
        EXPECT_LT(names.size(), 8u);
    }
}

TEST_F(FullDisk, CheckpointsAndSetupsThatDoNotFitFailTheRunNamingThem) {
    RunResult result = run_on_small_disk("40k", {"--preset", "Soap", "--preroll", "--size", "160x90", "--frames", "1-4",
                                                "--cache", disk() + "/cache", "--cache-every", "2",
                                                "--simulate-only"});
    SKIP_UNLESS_MOUNTED();
    EXPECT_EQ(result.exit_code, 1) << result.err;
    EXPECT_NE(result.err.find("--simulate-only: the checkpoint after frame 2 could not be saved"), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("No space left on device"), std::string::npos) << result.err;
    EXPECT_TRUE(left_files().empty());

    fs::remove_all(left());
    // A setup of long curves: larger than the disk.
    std::string keys;
    for (int frame = 1; frame <= 4000; ++frame) keys += (keys.empty() ? "" : ",") + std::to_string(frame) + ":0.5";
    result = run_on_small_disk("8k", {"--animate", "Density=" + keys, "--save-setup", disk() + "/s.json"});
    EXPECT_EQ(result.exit_code, 1) << result.err;
    EXPECT_NE(result.err.find("No space left on device"), std::string::npos) << result.err;
    EXPECT_TRUE(left_files().empty());
}
