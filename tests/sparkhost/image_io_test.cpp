// Image files: sequences in PNG, TIFF and EXR at both depths, row order,
// frame patterns and the errors for bad files.
#include <gtest/gtest.h>

#include <OpenImageIO/imageio.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "sparkhost/error.h"
#include "sparkhost/file_clip.h"
#include "sparkhost/frame_pattern.h"
#include "sparkhost/image_io.h"

using namespace sparkhost;
namespace fs = std::filesystem;

namespace {

// A fresh directory per test, removed afterwards.
class TempDir {
public:
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "sparkhost-io-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TempDir() { fs::remove_all(path_); }
    std::string file(const std::string &name) const { return (fs::path(path_) / name).string(); }

private:
    std::string path_;
};

// Every pixel different, and a marker in the bottom-left corner.
Frame test_frame(FrameFormat format, int seed) {
    Frame frame(format);
    int levels = format.max_value() + 1;
    for (int y = 0; y < format.height; ++y)
        for (int x = 0; x < format.width; ++x)
            for (int c = 0; c < 3; ++c) frame.set_value(x, y, c, (seed + 131 * x + 37 * y + 1009 * c) % levels);
    for (int c = 0; c < 3; ++c) frame.set_value(0, 0, c, format.max_value());
    return frame;
}

}  // namespace

struct FileCase {
    const char *extension;
    Depth depth;
};

class ImageSequence : public ::testing::TestWithParam<FileCase> {};

TEST_P(ImageSequence, WritesAndReadsBackEveryFrameExactly) {
    TempDir dir;
    FrameFormat format{37, 21, GetParam().depth};
    FileClip clip(dir.file(std::string("shot.####.") + GetParam().extension));
    FramePattern pattern(dir.file(std::string("shot.%04d.") + GetParam().extension));
    for (int frame = 1; frame <= 3; ++frame) write_image(pattern.path(frame), test_frame(format, frame));
    clip.check(1, 3, format);
    for (int frame = 1; frame <= 3; ++frame)
        EXPECT_TRUE(clip.frame(frame, format) == test_frame(format, frame)) << "frame " << frame;
}

TEST_P(ImageSequence, FilesAreRightSideUp) {
    TempDir dir;
    FrameFormat format{16, 8, GetParam().depth};
    std::string path = dir.file(std::string("flip.") + GetParam().extension);
    write_image(path, test_frame(format, 0));
    // The frame's bottom-left marker is the file's last row, first pixel.
    auto input = OIIO::ImageInput::open(path);
    ASSERT_TRUE(input);
    std::vector<float> pixels(16 * 8 * 3);
    ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::FLOAT, pixels.data()));
    EXPECT_FLOAT_EQ(pixels[(7 * 16) * 3], 1.0f);
    EXPECT_LT(pixels[0], 1.0f);
}

INSTANTIATE_TEST_SUITE_P(Formats, ImageSequence,
                         ::testing::Values(FileCase{"png", Depth::Bits8}, FileCase{"png", Depth::Bits12},
                                           FileCase{"tif", Depth::Bits8}, FileCase{"tif", Depth::Bits12},
                                           FileCase{"exr", Depth::Bits8}, FileCase{"exr", Depth::Bits12}),
                         [](const auto &info) {
                             return std::string(info.param.extension) +
                                    (info.param.depth == Depth::Bits8 ? "8" : "12");
                         });

TEST(ImageFiles, TwelveBitFramesAreWrittenAsSixteenBitFiles) {
    TempDir dir;
    Frame frame(FrameFormat{2, 1, Depth::Bits12});
    frame.set_value(0, 0, 0, 4095);
    frame.set_value(1, 0, 0, 1);
    std::string path = dir.file("deep.png");
    write_image(path, frame);
    auto input = OIIO::ImageInput::open(path);
    ASSERT_TRUE(input);
    EXPECT_EQ(input->spec().format, OIIO::TypeDesc::UINT16);
    uint16_t words[6];
    ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT16, words));
    EXPECT_EQ(words[0], 65535);
    EXPECT_EQ(words[3], 16);
}

TEST(ImageFiles, GreyImageFillsAllThreeChannels) {
    TempDir dir;
    std::string path = dir.file("matte.png");
    auto output = OIIO::ImageOutput::create(path);
    uint8_t grey[2] = {10, 200};  // one row: left, right
    ASSERT_TRUE(output->open(path, OIIO::ImageSpec(2, 1, 1, OIIO::TypeDesc::UINT8)));
    ASSERT_TRUE(output->write_image(OIIO::TypeDesc::UINT8, grey));
    output->close();
    Frame frame = read_image(path, Depth::Bits8);
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(frame.value(0, 0, c), 10);
        EXPECT_EQ(frame.value(1, 0, c), 200);
    }
}

TEST(ImageFiles, ProblemsNameTheFileAndBothSizes) {
    TempDir dir;
    FrameFormat format{8, 6, Depth::Bits8};
    write_image(dir.file("small.0001.png"), Frame(FrameFormat{4, 3, Depth::Bits8}));
    write_image(dir.file("right.0001.png"), Frame(format));
    std::string missing = dir.file("right.0002.png");

    auto message_of = [](auto action) {
        try {
            action();
        } catch (const Error &error) {
            return std::string(error.what());
        }
        return std::string("no error");
    };
    std::string wrong_size = message_of([&] { FileClip(dir.file("small.%04d.png")).check(1, 1, format); });
    EXPECT_NE(wrong_size.find("small.0001.png"), std::string::npos) << wrong_size;
    EXPECT_NE(wrong_size.find("4x3"), std::string::npos) << wrong_size;
    EXPECT_NE(wrong_size.find("8x6"), std::string::npos) << wrong_size;
    std::string gap = message_of([&] { FileClip(dir.file("right.%04d.png")).check(1, 2, format); });
    EXPECT_NE(gap.find(missing), std::string::npos) << gap;
    std::string not_image = message_of([&] { read_image(__FILE__, Depth::Bits8); });
    EXPECT_NE(not_image.find(__FILE__), std::string::npos) << not_image;
    EXPECT_THROW(write_image(dir.file("frame.nosuchformat"), Frame(format)), Error);
    EXPECT_THROW(write_image(dir.file("no/such/dir/frame.png"), Frame(format)), Error);
}

TEST(ImageFiles, StillImageServesEveryFrame) {
    TempDir dir;
    FrameFormat format{5, 4, Depth::Bits8};
    write_image(dir.file("plate.png"), test_frame(format, 3));
    FileClip clip(dir.file("plate.png"));
    clip.check(1, 100, format);
    EXPECT_TRUE(clip.frame(1, format) == test_frame(format, 3));
    EXPECT_TRUE(clip.frame(77, format) == test_frame(format, 3));
}

TEST(FramePatterns, PrintfAndHashFormsPadTheFrameNumber) {
    EXPECT_EQ(FramePattern("a/shot.%04d.exr").path(7), "a/shot.0007.exr");
    EXPECT_EQ(FramePattern("shot.####.exr").path(12), "shot.0012.exr");
    EXPECT_EQ(FramePattern("shot.#.png").path(123), "shot.123.png");
    EXPECT_EQ(FramePattern("shot.%d.png").path(5), "shot.5.png");
    EXPECT_EQ(FramePattern("v%02d/shot.%03d.png").path(4), "v%02d/shot.004.png");
    EXPECT_FALSE(FramePattern("plate.png").is_sequence());
    EXPECT_EQ(FramePattern("plate.png").path(9), "plate.png");
}
