// Image files: sequences in PNG, TIFF and EXR at both depths, row order,
// grey and still images, and frame patterns.
#include <gtest/gtest.h>

#include <OpenImageIO/imageio.h>

#include <cstdlib>
#include <filesystem>
#include <string>

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

TEST_P(ImageSequence, WritesAndReadsBackEveryFrameExactlyAndRightSideUp) {
    TempDir dir;
    FrameFormat format{37, 21, GetParam().depth};
    FileClip clip(dir.file(std::string("shot.####.") + GetParam().extension));
    FramePattern pattern(dir.file(std::string("shot.%04d.") + GetParam().extension));
    for (int frame = 1; frame <= 3; ++frame) write_image(pattern.path(frame), test_frame(format, frame));
    clip.check(1, 3, format);
    for (int frame = 1; frame <= 3; ++frame)
        EXPECT_TRUE(clip.frame(frame, format) == test_frame(format, frame)) << "frame " << frame;

    // The frame's bottom-left marker is the file's last row, first pixel.
    auto input = OIIO::ImageInput::open(pattern.path(1));
    ASSERT_TRUE(input);
    std::vector<float> pixels(37 * 21 * 3);
    ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::FLOAT, pixels.data()));
    EXPECT_FLOAT_EQ(pixels[(20 * 37) * 3], 1.0f);
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
    const struct {
        const char *pattern;
        int frame;
        const char *path;
    } cases[] = {{"a/shot.%04d.exr", 7, "a/shot.0007.exr"}, {"shot.####.exr", 12, "shot.0012.exr"},
                 {"shot.#.png", 123, "shot.123.png"},       {"shot.%d.png", 5, "shot.5.png"},
                 {"v%02d/shot.%03d.png", 4, "v%02d/shot.004.png"}, {"plate.png", 9, "plate.png"}};
    for (const auto &c : cases) EXPECT_EQ(FramePattern(c.pattern).path(c.frame), c.path);
    EXPECT_FALSE(FramePattern("plate.png").is_sequence());
}
