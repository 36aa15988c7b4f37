// Image files: sequences and stills in PNG, TIFF and EXR at both depths, row
// order, sixteen-bit and grey files, and frame patterns.
#include <gtest/gtest.h>

#include <OpenImageIO/imageio.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "sparkhost/clips/default_clips.h"
#include "sparkhost/clips/file_clip.h"
#include "sparkhost/core/host.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/files/image_io.h"

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
    for (int y = 0; y < format.height; ++y)
        for (int x = 0; x < format.width; ++x)
            for (int c = 0; c < 3; ++c)
                frame.set_value(x, y, c, (seed + 131 * x + 37 * y + 1009 * c) % (format.max_value() + 1));
    for (int c = 0; c < 3; ++c) frame.set_value(0, 0, c, format.max_value());
    return frame;
}

}  // namespace

TEST(ImageFiles, EveryFormatAndDepthReadsBackExactlyAndRightSideUp) {
    for (const char *extension : {"png", "tif", "exr"}) {
        for (Depth depth : {Depth::Bits8, Depth::Bits12}) {
            SCOPED_TRACE(std::string(extension) + (depth == Depth::Bits8 ? " 8-bit" : " 12-bit"));
            TempDir dir;
            // Taller than the writer's bands of rows, and not a whole number of them.
            const FrameFormat format{37, 150, depth};
            FramePattern pattern(dir.file(std::string("shot.%04d.") + extension));
            for (int frame = 1; frame <= 2; ++frame) write_image(pattern.path(frame), test_frame(format, frame));
            FileClip clip(dir.file(std::string("shot.####.") + extension));
            clip.check(1, 2, format);
            for (int frame = 1; frame <= 2; ++frame)
                EXPECT_TRUE(clip.frame(frame, format) == test_frame(format, frame)) << "frame " << frame;
            FileClip still(pattern.path(2));  // a still serves every frame
            EXPECT_TRUE(still.frame(77, format) == test_frame(format, 2));

            // The frame's bottom-left marker is the file's last row, first pixel.
            auto input = OIIO::ImageInput::open(pattern.path(1));
            ASSERT_TRUE(input);
            std::vector<float> pixels(37 * 150 * 3);
            ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::FLOAT, pixels.data()));
            EXPECT_FLOAT_EQ(pixels[(149 * 37) * 3], 1.0f);
            EXPECT_LT(pixels[0], 1.0f);
        }
    }
}

TEST(ImageFiles, TwelveBitFramesAreWrittenAsSixteenBitFiles) {
    TempDir dir;
    Frame frame(FrameFormat{2, 1, Depth::Bits12});
    frame.set_value(0, 0, 0, 4095);
    frame.set_value(1, 0, 0, 1);
    write_image(dir.file("deep.png"), frame);
    auto input = OIIO::ImageInput::open(dir.file("deep.png"));
    ASSERT_TRUE(input);
    EXPECT_EQ(input->spec().format, OIIO::TypeDesc::UINT16);
    uint16_t words[6];
    ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT16, words));
    EXPECT_EQ(words[0], 65535);
    EXPECT_EQ(words[3], 16);
}

TEST(ImageFiles, GreyImageFillsAllThreeChannels) {
    TempDir dir;
    const std::string path = dir.file("matte.png");
    auto output = OIIO::ImageOutput::create(path);
    uint8_t grey[2] = {10, 200};  // one row: left, right
    ASSERT_TRUE(output->open(path, OIIO::ImageSpec(2, 1, 1, OIIO::TypeDesc::UINT8)));
    ASSERT_TRUE(output->write_image(OIIO::TypeDesc::UINT8, grey));
    output->close();
    Frame frame = read_image(path, Depth::Bits8);
    for (int c = 0; c < 3; ++c) EXPECT_TRUE(frame.value(0, 0, c) == 10 && frame.value(1, 0, c) == 200) << c;
}

TEST(FramePatterns, HashesAreAMinimumWidthAndOnlyTheLastPrintfFormIsTheFrame) {
    EXPECT_EQ(FramePattern("shot.#.png").path(123), "shot.123.png");
    EXPECT_EQ(FramePattern("v%02d/shot.%03d.png").path(4), "v%02d/shot.004.png");
}

// A farm chunk and a sequential run are compared by their bytes, so no file
// may carry the time it was written.
TEST(ImageFiles, TheSameFrameWrittenLaterGivesTheSameBytes) {
    TempDir dir;
    const Frame frame = test_frame(FrameFormat{16, 9, Depth::Bits8}, 3);
    auto bytes = [](const std::string &path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    for (const char *extension : {"png", "tif", "exr"}) {
        const std::string first = dir.file(std::string("a.") + extension);
        const std::string second = dir.file(std::string("b.") + extension);
        write_image(first, frame);
        std::this_thread::sleep_for(std::chrono::milliseconds(1100));  // past a clock stamp's second
        write_image(second, frame);
        EXPECT_EQ(bytes(first), bytes(second)) << extension;
    }
}

// Every format's writer takes its Deflate level from the setting: a higher
// level gives a smaller file, "none" the largest, and the pixels stay exact.
TEST(ImageFiles, DeflateLevelsTakeEffectInEveryFormatThatHasThem) {
    TempDir dir;
    const FrameFormat format{480, 270, Depth::Bits8};
    const Frame frame = default_frame(kScene, 1, format);
    for (const char *extension : {"png", "tif"}) {
        SCOPED_TRACE(extension);
        std::uintmax_t previous = 0;
        int count = 0;
        for (const char *compression : {"zip:9", "zip:1", "none"}) {
            const std::string path = dir.file(std::to_string(++count) + "." + extension);
            write_image(path, frame, compression);
            EXPECT_GT(fs::file_size(path), previous) << compression;
            previous = fs::file_size(path);
            FileClip clip(path);
            EXPECT_TRUE(clip.frame(1, format) == frame) << compression;
        }
    }
}

// What a render writes when no compression is asked for, as --help says:
// uncompressed TIFF and PIZ EXR (PNG is always Deflate).
TEST(ImageFiles, EachFormatHasTheCompressionItsHelpNames) {
    TempDir dir;
    const Frame frame = default_frame(kScene, 1, FrameFormat{64, 40, Depth::Bits8});
    for (auto [extension, expected] : {std::pair{"tif", "none"}, {"exr", "piz"}}) {
        const std::string path = dir.file(std::string("default.") + extension);
        write_image(path, frame);
        auto input = OIIO::ImageInput::open(path);
        ASSERT_TRUE(input) << path;
        EXPECT_EQ(std::string(input->spec().get_string_attribute("compression", "none")), std::string(expected))
            << extension;
    }
}

// A file cut short is an error, at both depths, never a picture with
// made-up rows. (PNG, refused as well, is left out: its reader unwinds a
// cut-short file with longjmp past a string of the image library's own,
// which the leak checker reports.)
TEST(ImageFiles, AFileCutShortIsRefusedInEveryFormat) {
    TempDir dir;
    const Frame frame = test_frame(FrameFormat{64, 182, Depth::Bits8}, 5);
    for (const char *extension : {"tif", "exr", "jpg", "dpx"}) {
        SCOPED_TRACE(extension);
        const std::string path = dir.file(std::string("cut.") + extension);
        write_image(path, frame, std::string(extension) == "tif" ? "none" : "");
        std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
        for (Depth depth : {Depth::Bits8, Depth::Bits12}) {
            try {
                read_image(path, depth);
                ADD_FAILURE() << "read without complaint";
            } catch (const sparkhost::Error &error) {
                EXPECT_NE(std::string(error.what()).find("cannot read"), std::string::npos) << error.what();
            }
        }
    }
}

// A matte written with pixels for part of its frame (a data window inside
// the display window) is the whole frame, black around its pixels, at both
// depths; overscan is refused by name.
TEST(ImageFiles, AFileWithPixelsForPartOfItsFrameIsTheWholeFrame) {
    TempDir dir;
    auto write_window = [&dir](const std::string &name, int x, int y, int width, int height) {
        OIIO::ImageSpec spec(width, height, 3, OIIO::TypeDesc::HALF);
        spec.x = x;
        spec.y = y;
        spec.full_x = spec.full_y = 0;
        spec.full_width = 8;
        spec.full_height = 6;
        const std::vector<float> white(std::size_t(width) * std::size_t(height) * 3, 1.0f);
        auto output = OIIO::ImageOutput::create(dir.file(name));
        EXPECT_TRUE(output && output->open(dir.file(name), spec) &&
                    output->write_image(OIIO::TypeDesc::FLOAT, white.data()) && output->close());
        return dir.file(name);
    };
    const std::string inside = write_window("window.exr", 2, 0, 3, 3);
    EXPECT_EQ(probe_image(inside).width, 8);
    for (Depth depth : {Depth::Bits8, Depth::Bits12}) {
        const Frame frame = read_image(inside, depth);
        ASSERT_EQ(frame.width(), 8);
        ASSERT_EQ(frame.height(), 6);
        // File rows 0..2 from the top are frame rows 5..3 from the bottom.
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 8; ++x) {
                const bool held = x >= 2 && x < 5 && y >= 3;
                EXPECT_EQ(frame.value(x, y, 1), held ? frame.format().max_value() : 0) << x << "," << y;
            }
    }
    const std::string overscan = write_window("overscan.exr", 0, -1, 8, 8);
    try {
        read_image(overscan, Depth::Bits8);
        ADD_FAILURE() << "overscan accepted";
    } catch (const Error &error) {
        EXPECT_NE(std::string(error.what()).find("overscan.exr' has pixels outside its display window"),
                  std::string::npos)
            << error.what();
    }
}
