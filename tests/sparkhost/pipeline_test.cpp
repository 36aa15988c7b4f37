// The render's pipeline: input frames made ahead (PrefetchClip) and output
// frames written behind (FrameWriter), on threads of their own.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "sparkhost/clips/default_clips.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/frame_writer.h"
#include "sparkhost/core/host.h"
#include "sparkhost/files/image_io.h"
#include "sparkhost/clips/prefetch_clip.h"

using namespace sparkhost;
namespace fs = std::filesystem;

namespace {

const FrameFormat kSmall{24, 10, Depth::Bits8};

// Frame n of a clip: every value n, so a frame shows which number it is.
Frame numbered(int number) {
    Frame frame(kSmall);
    std::fill(frame.bytes().begin(), frame.bytes().end(), uint8_t(number));
    return frame;
}

class TempDir {
public:
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "sparkhost-pipe-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TempDir() { fs::remove_all(path_); }
    std::string file(const std::string &name) const { return (fs::path(path_) / name).string(); }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto &entry : fs::directory_iterator(path_)) found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::string path_;
};

// Serves numbered frames, refusing one number; counts what it was asked.
class CountingClip : public ClipSource {
public:
    explicit CountingClip(int refused) : refused_(refused) {}
    Frame frame(int number, const FrameFormat &) override {
        ++served;
        if (number == refused_) throw Error("no frame " + std::to_string(number));
        return numbered(number);
    }
    void check(int, int, const FrameFormat &) override {}
    std::string describe() const override { return "counting clip"; }
    std::atomic<int> served{0};

private:
    int refused_;
};

}  // namespace

TEST(FrameWriter, WritesEveryFrameWholeUnderItsOwnNumber) {
    TempDir dir;
    {
        FrameWriter writer(FramePattern(dir.file("f.%02d.png")), "", 1);
        for (int number = 1; number <= 8; ++number) {
            Frame picture = writer.take_buffer();
            picture.assign(numbered(number * 20));
            writer.submit(number, std::move(picture));
        }
        writer.finish();
    }
    std::vector<std::string> expected;
    for (int number = 1; number <= 8; ++number) {
        const std::string name = "f.0" + std::to_string(number) + ".png";
        expected.push_back(name);
        EXPECT_EQ(read_image(dir.file(name), Depth::Bits8), numbered(number * 20)) << name;
    }
    EXPECT_EQ(dir.names(), expected) << "nothing but the frames, no temporary files";
}

// Frames are encoded side by side, but a slow first frame still lands
// first: a file under its final name means every earlier one is there.
TEST(FrameWriter, SeveralEncodersStillRenameTheFilesInFrameOrder) {
    TempDir dir;
    const int watch_fd = inotify_init1(IN_NONBLOCK);
    ASSERT_GE(watch_fd, 0);
    ASSERT_GE(inotify_add_watch(watch_fd, dir.file("").c_str(), IN_MOVED_TO), 0);
    {
        FrameWriter writer(FramePattern(dir.file("f.%02d.png")), "zip:9", 3, 3);
        writer.submit(1, default_frame(kScene, 1, FrameFormat{640, 360, Depth::Bits8}));  // slow to compress
        for (int number = 2; number <= 6; ++number) writer.submit(number, numbered(number));
        writer.finish();
    }
    std::vector<std::string> renamed;
    alignas(inotify_event) char events[4096];
    for (ssize_t got; (got = read(watch_fd, events, sizeof events)) > 0;)
        for (char *at = events; at < events + got;) {
            const auto *event = reinterpret_cast<const inotify_event *>(at);
            renamed.push_back(event->name);
            at += sizeof(inotify_event) + event->len;
        }
    close(watch_fd);
    EXPECT_EQ(renamed, (std::vector<std::string>{"f.01.png", "f.02.png", "f.03.png", "f.04.png", "f.05.png",
                                                 "f.06.png"}));
}

TEST(FrameWriter, AWriteErrorStopsTheRunNamingTheFileAndLeavesNoPartialFile) {
    TempDir dir;
    fs::create_directory(dir.file("f.03.tif"));  // frame 3 cannot take its name
    std::string message;
    {
        FrameWriter writer(FramePattern(dir.file("f.%02d.tif")), "", 2);
        try {
            for (int number = 1; number <= 20; ++number) writer.submit(number, numbered(number));
            writer.finish();
        } catch (const Error &error) {
            message = error.what();
        }
    }
    EXPECT_NE(message.find("cannot write '" + dir.file("f.03.tif") + "'"), std::string::npos) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos);
    EXPECT_EQ(dir.names(), (std::vector<std::string>{"f.01.tif", "f.02.tif", "f.03.tif"}))
        << "frames after the failure are dropped, no temporary file stays";
    EXPECT_EQ(read_image(dir.file("f.02.tif"), Depth::Bits8), numbered(2));
}

TEST(FrameWriter, RefusesCompressionTheFormatDoesNotKnow) {
    EXPECT_NO_THROW(check_compression("a.exr", "piz"));
    EXPECT_NO_THROW(check_compression("a.tif", "zip:9"));
    for (auto [path, compression] : {std::pair{"a.exr", "lzw"}, {"a.tif", "zip:12"}, {"a.png", "piz"},
                                     {"a.tif", "lzw:3"}, {"a.jpg", "zip"}})
        EXPECT_THROW(check_compression(path, compression), Error) << path << " " << compression;
}

TEST(PrefetchClip, ServesFramesInOrderAheadAndOthersFromTheClip) {
    auto clip = std::make_shared<CountingClip>(0);
    PrefetchClip ahead(clip, 1, 6, kSmall, 2);
    Frame into;
    for (int number : {1, 2, 4, 5}) {  // 3 is skipped, as a plug-in may
        ahead.fill(number, kSmall, into);
        EXPECT_EQ(into, numbered(number)) << number;
    }
    ahead.fill(3, kSmall, into);  // behind the reader: straight from the clip
    EXPECT_EQ(into, numbered(3));
    ahead.fill(9, kSmall, into);  // past the range
    EXPECT_EQ(into, numbered(9));
    ahead.fill(6, kSmall, into);
    EXPECT_EQ(into, numbered(6));
    EXPECT_LE(clip->served.load(), 8) << "each frame is made once, and 3 and 9 once more";
}

TEST(PrefetchClip, AFrameTheClipCannotServeFailsWhenItsTurnComes) {
    auto clip = std::make_shared<CountingClip>(3);
    PrefetchClip ahead(clip, 1, 10, kSmall, 4);
    Frame into;
    ahead.fill(1, kSmall, into);
    ahead.fill(2, kSmall, into);
    EXPECT_EQ(into, numbered(2));
    try {
        ahead.fill(3, kSmall, into);
        ADD_FAILURE() << "frame 3 should fail";
    } catch (const Error &error) {
        EXPECT_STREQ(error.what(), "no frame 3");
    }
    EXPECT_LE(clip->served.load(), 3) << "nothing is read past the failure";
}
