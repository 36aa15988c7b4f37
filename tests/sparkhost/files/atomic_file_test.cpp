// Output files that appear whole or not at all: the temporary beside the
// final name, commit, abandon, failure and the signal handler's clean-up.
#include "sparkhost/files/atomic_file.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "sparkhost/core/error.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/files/image_io.h"

namespace fs = std::filesystem;

namespace {

class AtomicFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "atomic-file-XXXXXX").string();
        dir_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(dir_); }

    std::string path(const std::string &name) const { return (dir_ / name).string(); }
    static std::string read(const std::string &path) {
        std::stringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }
    static void write(const std::string &path, const std::string &text) { std::ofstream(path) << text; }
    int entries() const { return int(std::distance(fs::directory_iterator(dir_), fs::directory_iterator())); }

    fs::path dir_;
};

}  // namespace

TEST_F(AtomicFileTest, CommitReplacesTheFileOnlyWhenCompleteFromAHiddenTemporaryBesideIt) {
    write(path("frame.0001.exr"), "old");
    sparkhost::AtomicFile file(path("frame.0001.exr"));
    const fs::path temporary(file.temporary_path());
    EXPECT_EQ(temporary.parent_path(), dir_);
    EXPECT_EQ(temporary.extension(), ".exr");  // libraries pick the format from it
    EXPECT_TRUE(sparkhost::is_temporary_name(temporary.filename().string()));
    EXPECT_FALSE(sparkhost::is_temporary_name("frame.0001.exr"));
    EXPECT_NE(file.temporary_path(), sparkhost::AtomicFile(path("frame.0001.exr")).temporary_path());

    write(file.temporary_path(), "new");
    EXPECT_EQ(read(path("frame.0001.exr")), "old");
    EXPECT_EQ(sparkhost::temporaries_in_flight(), 1);
    file.commit();
    EXPECT_EQ(read(path("frame.0001.exr")), "new");
    EXPECT_EQ(sparkhost::temporaries_in_flight(), 0);
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFileTest, AnAbandonedOrFailedFileLeavesWhatWasThereAndNoTemporary) {
    write(path("setup.json"), "kept");
    {
        sparkhost::AtomicFile file(path("setup.json"));
        write(file.temporary_path(), "half");
    }  // an exception unwinding past it abandons the file
    EXPECT_EQ(read(path("setup.json")), "kept");

    fs::create_directories(path("taken/inside"));
    sparkhost::AtomicFile blocked(path("taken"));
    write(blocked.temporary_path(), "whole");
    try {
        blocked.commit();
        ADD_FAILURE() << "renaming over a directory succeeded";
    } catch (const sparkhost::Error &error) {
        EXPECT_NE(std::string(error.what()).find("taken"), std::string::npos) << error.what();
    }
    EXPECT_EQ(entries(), 2);  // setup.json and the directory
    EXPECT_EQ(sparkhost::temporaries_in_flight(), 0);
}

TEST_F(AtomicFileTest, TheSignalHandlersCleanUpRemovesEveryTemporaryInFlight) {
    sparkhost::AtomicFile first(path("a.png")), second(path("b.svg"));
    write(first.temporary_path(), "a");
    write(second.temporary_path(), "b");
    sparkhost::remove_temporaries_in_flight();
    EXPECT_EQ(entries(), 0);
}

TEST_F(AtomicFileTest, AnImageThatCannotBeWrittenLeavesNothingBehind) {
    const sparkhost::Frame frame(sparkhost::FrameFormat{8, 6, sparkhost::Depth::Bits8});
    fs::create_directories(path("frame.png"));  // the name is taken by a directory
    EXPECT_THROW(sparkhost::write_image(path("frame.png"), frame), sparkhost::Error);
    EXPECT_EQ(entries(), 1);
    sparkhost::write_image(path("frame.0001.png"), frame);
    EXPECT_EQ(sparkhost::probe_image(path("frame.0001.png")).width, 8);
    EXPECT_EQ(entries(), 2);
}

// A name as long as a file name may be still gets a temporary: the
// temporary is shortened, not the write refused.
TEST_F(AtomicFileTest, TheLongestLegalNameGetsATemporaryWithinTheFileNameLimit) {
    const std::string name = std::string(244, 'n') + ".png";
    const std::string temporary = sparkhost::temporary_path_for(path(name));
    EXPECT_LE(fs::path(temporary).filename().string().size(), 255u);
    EXPECT_EQ(fs::path(temporary).extension(), ".png");
    sparkhost::write_image(path(name), sparkhost::Frame(sparkhost::FrameFormat{4, 4, sparkhost::Depth::Bits8}));
    EXPECT_TRUE(fs::exists(path(name)));
    EXPECT_EQ(entries(), 1);
}

// What a process killed outright left is removed by the next run in that
// folder; temporaries of running processes or other machines are not.
TEST_F(AtomicFileTest, StaleTemporariesOfDeadProcessesOnThisMachineAreRemoved) {
    const pid_t child = fork();
    if (child == 0) {
        write(sparkhost::temporary_path_for(path("f.0001.png")), "killed mid-write");
        _exit(0);
    }
    ASSERT_GT(child, 0);
    int status = 0;
    waitpid(child, &status, 0);
    const std::string own = sparkhost::temporary_path_for(path("f.0002.png"));
    write(own, "still being written");
    std::string foreign = fs::path(sparkhost::temporary_path_for(path("f.0003.png"))).filename().string();
    foreign = foreign.substr(0, foreign.find('@')) + "@another-machine.png";
    write(path(foreign), "a farm node's");
    write(path("f.0004.png"), "a frame");
    ASSERT_EQ(entries(), 4);

    EXPECT_EQ(sparkhost::remove_stale_temporaries(dir_.string()), 1);
    EXPECT_EQ(entries(), 3);
    EXPECT_TRUE(fs::exists(own));
    EXPECT_TRUE(fs::exists(path(foreign)));
    EXPECT_EQ(sparkhost::remove_stale_temporaries(path("no-such-folder")), 0);
}
