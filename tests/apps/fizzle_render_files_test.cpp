// fizzle-render and the files it is given: no output may land on an input,
// frame numbers too wide for a file name are bad arguments, and special
// files (FIFOs, devices, directories) are refused at once or skipped with a
// note, never waited on or read without end.
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "render_run.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/files/image_io.h"

namespace fs = std::filesystem;
using sparkhost::Depth;
using sparkhost::Frame;
using sparkhost::FrameFormat;

using RenderFiles = RenderRun;

namespace {

std::string bytes_of(const std::string &path) { return slurp(path); }

}  // namespace

TEST_F(RenderFiles, NoOutputMayOverwriteAnInputWhateverNameLeadsToIt) {
    const FrameFormat small{32, 24, Depth::Bits8};
    fs::create_directory(path("plate"));
    for (const char *name : {"plate/p.0001.png", "plate/p.0002.png", "still.png"})
        sparkhost::write_image(path(name), Frame(small));
    fs::create_hard_link(path("still.png"), path("linked.png"));
    const std::string plate = bytes_of(path("plate/p.0002.png"));
    ASSERT_EQ(run({"--size", "32x24", "--save-setup", path("setup.json")}).exit_code, 0);
    const std::string size = "32x24";
    expect_refused({"--size", size, "--frames", "1-2", "--scene", path("plate/p.%04d.png"), "-o",
                    path("plate/p.%04d.png")},
                   {"--output", "p.0001.png", "is the input"});
    // Another spelling of the same files, and frame 2 written from frame 1's range.
    expect_refused({"--size", size, "--frames", "2", "--scene", path("plate/p.####.png"), "-o",
                    path("plate/../plate/p.%04d.png")},
                   {"--output", "p.0002.png"});
    expect_refused({"--size", size, "--reflection", path("still.png"), "-o", path("linked.png")},
                   {"--output", "linked.png", "still.png"});
    expect_refused({"--size", size, "--setup", path("setup.json"), "--save-setup", path("setup.json")},
                   {"--save-setup", "setup.json"});
    expect_refused({"--size", size, "--scene", path("plate/p.%04d.png"), "--overlay-svg", path("plate/p.0001.png"),
                    "-o", path("out.png")},
                   {"--overlay-svg"});
    expect_refused({"--size", size, "--frames", "1-2", "--scene", path("plate/p.%04d.png"), "--layer",
                    path("plate/p.%04d.png"), "-o", path("out.%04d.png")},
                   {"--layer", "p.0001.png", "is the input"});
    EXPECT_EQ(bytes_of(path("plate/p.0002.png")), plate);
    // Frames of the plate not read by this run may be written.
    EXPECT_EQ(run({"--size", size, "--frames", "1", "--scene", path("plate/p.%04d.png"), "-o",
                   path("plate/p.0002.png")})
                  .exit_code,
              0);
}

TEST_F(RenderFiles, FrameNumbersTooWideForAFileNameAreBadArgumentsAndWideOnesAreKept) {
    for (const std::string &pattern : {std::string("f.%99999999999d.png"), std::string("f.%0999999999d.png"),
                                       "f." + std::string(30000, '#') + ".png"}) {
        for (const char *option : {"--output", "--scene"}) {
            SCOPED_TRACE(std::string(option) + " " + pattern.substr(0, 20));
            const std::vector<std::string> arguments =
                std::string(option) == "--output"
                    ? std::vector<std::string>{"--frames", "1-3", "-o", path(pattern)}
                    : std::vector<std::string>{"--frames", "1-3", "--scene", path(pattern), "-o", path("f.%04d.png")};
            const RunResult result = run(arguments);
            EXPECT_EQ(result.exit_code, 2) << result.err;
            EXPECT_NE(result.err.find(std::string(option) + ": "), std::string::npos) << result.err.substr(0, 200);
            EXPECT_NE(result.err.find("digits wide"), std::string::npos) << result.err.substr(0, 200);
            EXPECT_EQ(files(), 0);
        }
    }
    // Paths that are there but longer than the system takes say so, rather than "missing".
    std::string long_way = dir_.string();
    while (long_way.size() < 5000) long_way += "/.";
    sparkhost::write_image(path("plate.png"), Frame(FrameFormat{16, 16, Depth::Bits8}));
    expect_refused({"--size", "16x16", "-o", long_way + "/f.png"}, {"File name too long"});
    expect_refused({"--size", "16x16", "--scene", long_way + "/plate.png", "-o", path("f.png")}, {"File name too long"});
    fs::remove(path("plate.png"));
    const RunResult wide = run({"--size", "16x16", "--frames", "1-3", "-o", path("f.%040d.png")});
    ASSERT_EQ(wide.exit_code, 0) << wide.err;
    EXPECT_EQ(files(), 3);
    EXPECT_TRUE(fs::exists(path("f." + std::string(39, '0') + "3.png")));
}

TEST_F(RenderFiles, SpecialFilesAreRefusedAtOnceNamingWhatTheyAre) {
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);  // nobody writes: a read would wait for ever
    fs::create_directory(path("folder.png"));
    const std::string out = path("f.%04d.png");
    const struct {
        std::vector<std::string> arguments;
        std::vector<std::string> needles;
    } cases[] = {
        {{"--scene", path("fifo"), "-o", out}, {"fifo", "FIFO"}},
        {{"--reflection", "/dev/urandom", "-o", out}, {"/dev/urandom", "character device"}},
        {{"--birth", path("folder.png"), "-o", out}, {"folder.png", "directory"}},
        {{"--setup", path("fifo"), "-o", out}, {"--setup", "FIFO"}},
        {{"--setup", "/dev/zero", "-o", out}, {"--setup", "/dev/zero", "character device"}},
        {{"--import-amplitude", path("fifo"), "-o", out}, {"--import-amplitude", "FIFO"}},
        {{"--import-amplitude", "/dev/zero", "-o", out}, {"--import-amplitude", "character device"}},
        // An output is renamed into place: over a FIFO (or /dev/null) it would replace it.
        {{"-o", path("fifo")}, {"--output", "fifo", "not a regular file"}},
        {{"--save-setup", path("fifo")}, {"--save-setup", "not a regular file"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.arguments[1]);
        expect_refused(c.arguments, c.needles);
    }
    EXPECT_EQ(fs::status(path("fifo")).type(), fs::file_type::fifo);
}

TEST_F(RenderFiles, CheckpointsThatAreNotFilesAreSkippedWithANoteAndTheRunGoesOn) {
    const std::vector<std::string> shot = {"--preset", "Soap", "--size", "64x36", "--cache", path("cache"),
                                           "--cache-every", "2"};
    auto with = [&shot](std::vector<std::string> more) {
        more.insert(more.begin(), shot.begin(), shot.end());
        return more;
    };
    ASSERT_EQ(run(with({"--frames", "1-6", "--simulate-only"})).exit_code, 0);
    std::vector<std::string> checkpoints;
    for (const auto &entry : fs::directory_iterator(path("cache"))) checkpoints.push_back(entry.path().string());
    std::sort(checkpoints.begin(), checkpoints.end());
    ASSERT_EQ(checkpoints.size(), 3u);  // after frames 2, 4 and 6
    // The newest a directory, the one before a FIFO: both passed over for frame 2's.
    fs::remove(checkpoints[2]);
    fs::create_directory(checkpoints[2]);
    fs::remove(checkpoints[1]);
    ASSERT_EQ(mkfifo(checkpoints[1].c_str(), 0600), 0);
    RunResult result = run(with({"--frames", "7", "-o", path("f.%04d.png")}));
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_NE(result.err.find("is a directory"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("FIFO"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("after frame 2"), std::string::npos) << result.err;
    // Filling the cache past them notes the names it cannot take and saves the rest.
    result = run(with({"--frames", "1-8", "--simulate-only"}));
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_NE(result.err.find("not saved"), std::string::npos) << result.err;
    EXPECT_TRUE(fs::is_directory(checkpoints[2]));
    EXPECT_EQ(std::distance(fs::directory_iterator(path("cache")), fs::directory_iterator()), 4);
}
