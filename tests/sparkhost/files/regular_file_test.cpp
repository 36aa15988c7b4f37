// Files that must be regular files: FIFOs, devices and directories are
// refused at once (never waited on or read), and sizes are bounded.
#include "sparkhost/files/regular_file.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "sparkhost/core/error.h"

namespace fs = std::filesystem;

namespace {

class RegularFile : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "regular-file-XXXXXX").string();
        dir_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(dir_); }
    std::string path(const std::string &name) const { return (dir_ / name).string(); }

    // The message of the Error read_regular_file throws, or "" when it reads.
    static std::string refusal(const std::string &path, std::uintmax_t largest = 1 << 20) {
        try {
            sparkhost::read_regular_file(path, largest);
        } catch (const sparkhost::Error &error) {
            return error.what();
        }
        return "";
    }

    fs::path dir_;
};

}  // namespace

TEST_F(RegularFile, SpecialFilesAreRefusedWithoutWaitingOrReading) {
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);  // no writer: opening it to read would block
    fs::create_directory(path("folder"));
    EXPECT_NE(refusal(path("fifo")).find("is a FIFO, not a regular file"), std::string::npos);
    EXPECT_NE(refusal("/dev/zero").find("is a character device"), std::string::npos);
    EXPECT_NE(refusal("/dev/urandom").find("is a character device"), std::string::npos);
    EXPECT_NE(refusal(path("folder")).find("is a directory"), std::string::npos);
    EXPECT_NE(refusal(path("missing")).find("no such file"), std::string::npos);
    for (const std::string &special : {path("fifo"), std::string("/dev/zero"), path("folder")})
        EXPECT_THROW(sparkhost::check_regular_file(special), sparkhost::Error) << special;
}

TEST_F(RegularFile, FilesAreReadWholeUpToTheBoundAndRefusedBeyondIt) {
    std::ofstream(path("exact")) << std::string(1000, 'a');
    EXPECT_EQ(sparkhost::read_regular_file(path("exact"), 1000), std::string(1000, 'a'));
    EXPECT_NE(refusal(path("exact"), 999).find("is larger than"), std::string::npos);
    std::ofstream(path("empty")).flush();
    EXPECT_EQ(sparkhost::read_regular_file(path("empty"), 10), "");
    EXPECT_NO_THROW(sparkhost::check_regular_file(path("exact")));
}

TEST_F(RegularFile, PathsThatAreTooLongSaySoInsteadOfMissing) {
    std::ofstream(path("here")) << "x";
    std::string long_way = dir_.string();
    while (long_way.size() < 5000) long_way += "/.";
    long_way += "/here";
    EXPECT_NE(refusal(long_way).find("File name too long"), std::string::npos) << refusal(long_way);
}
