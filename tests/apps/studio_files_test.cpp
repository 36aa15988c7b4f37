// fizzle-studio's guards on the files the page names, and the quoting of
// the command line it hands out.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "apps/fizzle-studio/command_line.h"
#include "apps/fizzle-studio/make_folders.h"
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

TEST_F(StudioFiles, ResolvesNamesUnderTheRootIncludingFilesNotYetWritten) {
    WorkFiles files(root_.string());
    EXPECT_EQ(*files.resolve("setups/a.json"), (root_ / "setups" / "a.json").string());
    EXPECT_EQ(*files.resolve("setups/new.json"), (root_ / "setups" / "new.json").string());
    EXPECT_EQ(*files.resolve("near/x.json"), (root_ / "setups" / "old" / "x.json").string());
    EXPECT_EQ(files.relative(*files.resolve("setups/a.json")), "setups/a.json");
}

TEST_F(StudioFiles, RefusesEveryWayOut) {
    WorkFiles files(root_.string());
    for (const char *name : {"../x.json", "setups/../../x.json", "/etc/passwd", "setups/away/secret.json",
                             "setups/secret.json", "setups/away", "setups/./../.."})
        EXPECT_FALSE(files.resolve(name)) << name;
    EXPECT_FALSE(files.resolve(std::string("a\0b", 3)));
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
