// fizzle-studio's guards on the files the page names, and the quoting of
// the command line it hands out.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "apps/fizzle-studio/command_line.h"
#include "apps/fizzle-studio/make_folders.h"
#include "apps/fizzle-studio/safe_open.h"
#include "apps/fizzle-studio/work_files.h"

namespace fs = std::filesystem;

namespace {

class StudioFiles : public ::testing::Test {
protected:
    void SetUp() override {
        root_ = fs::temp_directory_path() / ("studio-files-" + std::to_string(::getpid()));
        fs::remove_all(root_);
        fs::create_directories(root_ / "setups" / "old");
        fs::create_directories(root_.string() + "-outside");
        std::ofstream(root_ / "setups" / "a.json") << "{}";
        std::ofstream(root_ / "setups" / "b.amp") << "";
        std::ofstream(root_.string() + "-outside/secret.json") << "{}";
        fs::create_directory_symlink(root_.string() + "-outside", root_ / "setups" / "away");
        fs::create_symlink(root_.string() + "-outside/secret.json", root_ / "setups" / "secret.json");
        fs::create_directory_symlink(root_ / "setups" / "old", root_ / "near");
    }
    void TearDown() override {
        fs::remove_all(root_);
        fs::remove_all(root_.string() + "-outside");
    }
    fs::path root_;
};

TEST_F(StudioFiles, MakesMissingFoldersForAFileButNeverOutsideNorThroughAFile) {
    WorkFiles files(root_.string());
    EXPECT_EQ(make_folders_for(files, "out/shots/a/f.####.png"), "");
    EXPECT_TRUE(fs::is_directory(root_ / "out" / "shots" / "a"));
    EXPECT_EQ(make_folders_for(files, "out/shots/a/f.####.png"), "") << "folders already there are fine";
    EXPECT_EQ(make_folders_for(files, "plain.json"), "");
    EXPECT_NE(make_folders_for(files, "setups/away/new/f.png").find("not a folder under the working directory"),
              std::string::npos);
    EXPECT_FALSE(fs::exists(root_.string() + "-outside/new"));
    EXPECT_NE(make_folders_for(files, "setups/a.json/f.png").find("is a file"), std::string::npos);
}

std::string read_all(int fd) {
    std::string text;
    char block[256];
    ssize_t got;
    while ((got = ::read(fd, block, sizeof block)) > 0) text.append(block, size_t(got));
    return text;
}

TEST_F(StudioFiles, OpensFilesUnderTheRootAndPlacesFilesNotYetWritten) {
    WorkFiles files(root_.string());
    WorkFiles::Refusal why;
    auto opened = files.open_file("setups/a.json", why);
    ASSERT_TRUE(opened);
    EXPECT_EQ(read_all(opened->fd.get()), "{}");
    EXPECT_EQ(opened->size, 2u);
    // A link given as an absolute path into the root is followed from the root.
    std::ofstream(root_ / "setups" / "old" / "x.json") << "old";
    auto near = files.open_file("near/x.json", why);
    ASSERT_TRUE(near);
    EXPECT_EQ(read_all(near->fd.get()), "old");

    auto place = files.place("setups/new.json");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->name, "new.json");
    std::ofstream(place->path()) << "written";
    std::string written;
    std::ifstream(root_ / "setups" / "new.json") >> written;
    EXPECT_EQ(written, "written");
    EXPECT_TRUE(files.place("top.json"));
    EXPECT_EQ(files.relative((root_ / "setups" / "a.json").string()), "setups/a.json");
}

TEST_F(StudioFiles, RefusesEveryWayOut) {
    WorkFiles files(root_.string());
    WorkFiles::Refusal why;
    for (const char *name : {"../x.json", "setups/../../x.json", "/etc/passwd", "setups/away/secret.json",
                             "setups/secret.json", "setups/./../.."}) {
        EXPECT_FALSE(files.open_file(name, why)) << name;
        EXPECT_FALSE(files.place(name)) << name;
    }
    EXPECT_FALSE(files.open_file(std::string("a\0b", 3), why));
    EXPECT_FALSE(files.place("setups/away/new.json"));
    EXPECT_FALSE(files.place("missing/new.json"));
    EXPECT_FALSE(files.place("setups/.."));
}

// Named pipes, devices and folders are refused without waiting for a writer.
TEST_F(StudioFiles, RefusesWhatIsNotARegularFile) {
    WorkFiles files(root_.string());
    ASSERT_EQ(mkfifo((root_ / "pipe").c_str(), 0600), 0);
    WorkFiles::Refusal why;
    EXPECT_FALSE(files.open_file("pipe", why));
    EXPECT_EQ(why, WorkFiles::Refusal::Special);
    EXPECT_FALSE(files.open_file("setups", why));
    EXPECT_FALSE(files.open_file("setups/none.json", why));
    EXPECT_EQ(why, WorkFiles::Refusal::Missing);
}

// The same checks when the kernel cannot resolve beneath a folder itself.
TEST_F(StudioFiles, TheNameByNameWalkRefusesTheSameWaysOut) {
    const std::string root = fs::canonical(root_).string();
    UniqueFd root_fd(::open(root.c_str(), O_PATH | O_DIRECTORY));
    auto opens = [&](const std::string &name) {
        UniqueFd fd(open_beneath_walk(root_fd.get(), root, name, O_RDONLY));
        return bool(fd);
    };
    EXPECT_TRUE(opens("setups/a.json"));
    EXPECT_TRUE(opens("near"));
    EXPECT_TRUE(opens("setups/old/../a.json"));
    for (const char *name : {"../x", "setups/../../x", "/etc/passwd", "setups/away/secret.json", "setups/secret.json"})
        EXPECT_FALSE(opens(name)) << name;
    // A relative link that climbs out is refused too.
    fs::create_symlink("../../" + root_.filename().string() + "-outside/secret.json", root_ / "setups" / "climb");
    EXPECT_FALSE(opens("setups/climb"));
    UniqueFd kernel(open_beneath(root_fd.get(), root, "setups/climb", O_RDONLY));
    EXPECT_FALSE(kernel);
}

// A link swapped in for a folder between checks never leads out: the
// folder and the link trade places as fast as they can while the file is
// opened over and over.
TEST_F(StudioFiles, ALinkSwappedInDuringTheOpenNeverLeadsOut) {
    fs::create_directories(root_ / "real");
    std::ofstream(root_ / "real" / "data.txt") << "inside";
    std::ofstream(root_.string() + "-outside/data.txt") << "outside";
    fs::create_directory_symlink(root_.string() + "-outside", root_ / "swap");
    std::atomic<bool> stop{false};
    std::thread swapper([&] {
        const std::string a = (root_ / "real").string(), b = (root_ / "swap").string();
        while (!stop) syscall(SYS_renameat2, AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE);
    });
    WorkFiles files(root_.string());
    const std::string root = fs::canonical(root_).string();
    UniqueFd root_fd(::open(root.c_str(), O_PATH | O_DIRECTORY));
    int inside = 0;
    for (int i = 0; i < 20000; ++i) {
        WorkFiles::Refusal why;
        for (const char *name : {"swap/data.txt", "real/data.txt"}) {
            if (auto opened = files.open_file(name, why)) {
                ASSERT_EQ(read_all(opened->fd.get()), "inside");
                ++inside;
            }
            UniqueFd walked(open_beneath_walk(root_fd.get(), root, name, O_RDONLY));
            if (walked) {
                ASSERT_EQ(read_all(walked.get()), "inside");
            }
        }
    }
    stop = true;
    swapper.join();
    EXPECT_GT(inside, 0);
}

TEST_F(StudioFiles, ListsFoldersFirstFiltersByExtensionAndHidesLinksOut) {
    WorkFiles files(root_.string());
    auto entries = files.list("setups", ".json");
    ASSERT_TRUE(entries);
    std::vector<std::string> names;
    for (const auto &entry : *entries) names.push_back(entry.name + (entry.directory ? "/" : ""));
    EXPECT_EQ(names, (std::vector<std::string>{"old/", "a.json"}));
    EXPECT_FALSE(files.list("setups/away", ""));
    EXPECT_FALSE(files.list("setups/a.json", ""));
    EXPECT_FALSE(files.list("..", ""));
}

TEST(StudioCommandLine, QuotesOnlyWhatTheShellWouldSplitOrExpand) {
    EXPECT_EQ(shell_command({"build/fizzle-render", "--frames", "1-24", "-o", "out/a.%04d.png"}),
              "build/fizzle-render --frames 1-24 -o out/a.%04d.png");
    EXPECT_EQ(shell_command({"--scene", "my plate.####.exr", "it's", "$HOME", ""}),
              "--scene 'my plate.####.exr' 'it'\\''s' '$HOME' ''");
}

}  // namespace
