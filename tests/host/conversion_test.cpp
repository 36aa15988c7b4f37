// Host frame buffers to images and back, at full and proxy resolution.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "host/conversion.h"
#include "host/globals.h"
#include "proxy_expectation.h"

namespace {

using Image = std::unique_ptr<ImageQv>;

Image from_host(const uint8_t *host, int width, int height, int s, double aspect = 1.0) {
    return Image(ConvertFromDLImage8(host, width, height, aspect, s, nullptr, 1));
}
Image from_host(const uint16_t *host, int width, int height, int s, double aspect = 1.0) {
    return Image(ConvertFromDLImage12(host, width, height, aspect, s, nullptr, 1));
}
void to_host(const ImageQv *image, uint8_t *host, int width, int height, int s) {
    ConvertToDLImage8(image, host, width, height, s);
}
void to_host(const ImageQv *image, uint16_t *host, int width, int height, int s) {
    ConvertToDLImage12(image, host, width, height, s);
}

}  // namespace

TEST(FullResolution8, ScalesToFifteenBitsAndBack) {
    uint8_t host[] = {0, 128, 255, 1, 254, 127};
    Image image = from_host(host, 2, 1, 1, 1.5);
    ASSERT_TRUE(image);
    const PixelQv &p = image->rows[0][0];
    EXPECT_EQ((std::vector<int>{p.red, p.green, p.blue, p.alpha}), (std::vector<int>{0, 0x4040, 0x7FFF, 0x7FFF}));
    EXPECT_EQ(image->rows[0][1].red, 0x0080);
    EXPECT_EQ(image->scale_x, 1.5);
    EXPECT_EQ(image->video_scale, 1.0f);
    uint8_t back[6] = {};
    to_host(image.get(), back, 2, 1, 1);
    EXPECT_EQ(std::vector<uint8_t>(back, back + 6), std::vector<uint8_t>(host, host + 6));
}

TEST(FullResolution12, RoundTripKeepsTheOutputWordsLowBits) {
    const int width = 9, height = 5;
    auto host = random_words<uint16_t>(size_t(width) * height * 3, 2);
    host[0] = 0xFFF0;
    host[1] = 0x8000;
    Image image = from_host(host.data(), width, height, 1);
    EXPECT_EQ(image->rows[0][0].red, 0x7FFF);
    EXPECT_EQ(image->rows[0][0].green, 0x4004);  // 0x800 << 3 | 0x800 >> 9
    EXPECT_EQ(image->rows[0][0].alpha, 0x7FFF);
    auto out = random_words<uint16_t>(host.size(), 3);
    const auto before = out;
    to_host(image.get(), out.data(), width, height, 1);
    for (size_t i = 0; i < out.size(); ++i) {
        ASSERT_EQ(out[i] & 0xFFF0, host[i] & 0xFFF0) << i;
        ASSERT_EQ(out[i] & 0x000F, before[i] & 0x000F) << i;
    }
}

TEST(OutputClamp, ChannelsAboveFullScaleClampAtBothDepths) {
    ImageQv image(2, 1, 1.0f, nullptr, nullptr);
    image.rows[0][0] = PixelQv{0xFFFF, 0x8000, 0x7FFF, 0};
    image.rows[0][1] = PixelQv{0x7F7F, 0x0080, 0x007F, 0};
    uint8_t bytes[6] = {};
    to_host(&image, bytes, 2, 1, 1);
    EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + 6), (std::vector<uint8_t>{255, 255, 255, 254, 1, 0}));
    uint16_t words[6] = {0x0003, 0x000C, 0x0005, 0, 0, 0};
    to_host(&image, words, 2, 1, 1);
    // 0x7F7F >> 3 = 0xFEF
    EXPECT_EQ(std::vector<uint16_t>(words, words + 4), (std::vector<uint16_t>{0xFFF3, 0xFFFC, 0xFFF5, 0xFEF0}));
}

TEST(ProxySize, RoundsTheQuotientUpToEven) {
    const int cases[][3] = {{725, 3, 242}, {720, 3, 240}, {1080, 32, 34}, {7, 2, 4},
                            {3, 4, 0},     {0, 4, 0},     {720, 0, 720}};  // a divisor below 1 counts as 1
    for (const auto &c : cases) EXPECT_EQ(ProxyExtent(c[0], c[1]), c[2]) << c[0] << " / " << c[1];
}

TEST(ProxyInput, SamplesRowsCentredColumnsFromZero) {
    std::vector<uint8_t> host(16 * 16 * 3);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            host[(y * 16 + x) * 3 + 0] = uint8_t(x);
            host[(y * 16 + x) * 3 + 1] = uint8_t(y);
        }
    Image image = from_host(host.data(), 16, 16, 4);
    ASSERT_EQ(image->width, 4);
    ASSERT_EQ(image->height, 4);
    EXPECT_EQ(image->video_scale, 4.0f);
    EXPECT_EQ(image->rows[0][0].red >> 7, 0);    // column 0
    EXPECT_EQ(image->rows[0][0].green >> 7, 2);  // row 2
    EXPECT_EQ(image->rows[3][1].red >> 7, 4);
    EXPECT_EQ(image->rows[3][1].green >> 7, 14);
}

TEST(ProxyInput, AlphaIsFullScaleExceptInTwelveBitProxies) {
    std::vector<uint8_t> bytes(8 * 8 * 3, 200);
    std::vector<uint16_t> words(8 * 8 * 3, 0x8000);
    EXPECT_EQ(from_host(bytes.data(), 8, 8, 2)->rows[1][1].alpha, 0x7FFF);
    EXPECT_EQ(from_host(words.data(), 8, 8, 2)->rows[1][1].alpha, 0xFFFF);
    EXPECT_EQ(from_host(words.data(), 8, 8, 1)->rows[1][1].alpha, 0x7FFF);
}

TEST(ProxyOutput, LastRowsAndColumnsRepeatWhenTheProxyWasRoundedDown) {
    // 10x9 at 1/4 gives a 2x2 proxy; host columns 8, 9 and row 8 read its last pixels.
    ImageQv image(2, 2, 1.0f, nullptr, nullptr);
    for (int j = 0; j < 2; ++j)
        for (int k = 0; k < 2; ++k) image.rows[j][k] = PixelQv{uint16_t((j * 2 + k + 1) << 7), 0, 0, 0};
    std::vector<uint8_t> out(10 * 9 * 3);
    to_host(&image, out.data(), 10, 9, 4);
    const int cases[][3] = {{0, 0, 1}, {3, 3, 1}, {4, 3, 2}, {9, 0, 2}, {0, 4, 3}, {9, 8, 4}};
    for (const auto &c : cases) EXPECT_EQ(out[(c[1] * 10 + c[0]) * 3], c[2]) << c[0] << "," << c[1];
}

TEST(ProxyOutput, FrameSmallerThanTheDivisorWritesNothing) {
    std::vector<uint8_t> host(3 * 3 * 3, 77);
    Image image = from_host(host.data(), 3, 3, 4);
    EXPECT_EQ(image->width, 0);
    std::vector<uint8_t> out(host.size(), 9);
    ConvertToDLImage8(image.get(), out.data(), 3, 3, 4);
    ConvertToDLImage12(image.get(), out.data(), 3, 1, 4);
    EXPECT_EQ(out, std::vector<uint8_t>(host.size(), 9));
}

TEST(ConversionArguments, NullBuffersAndNoCopy) {
    EXPECT_EQ(ConvertFromDLImage8(nullptr, 4, 4, 1.0, 1, nullptr, 1), nullptr);
    EXPECT_EQ(ConvertFromDLImage12(nullptr, 4, 4, 1.0, 2, nullptr, 1), nullptr);
    ImageQv image(2, 2, 1.0f, nullptr, nullptr);
    ConvertToDLImage8(&image, nullptr, 2, 2, 1);  // nothing to write into
    ConvertToDLImage12(nullptr, &image, 2, 2, 1);

    std::vector<uint8_t> host(6 * 4 * 3, 255);
    Image blank(ConvertFromDLImage8(host.data(), 6, 4, 2.0, 0, nullptr, 0));
    EXPECT_EQ(blank->width, 6);  // divisor 0 counts as full resolution
    EXPECT_EQ(blank->rows[3][5].red, 0);
    EXPECT_EQ(blank->rows[3][5].alpha, 0);
}

TEST(ConversionArguments, GivenImageIsFilledAndKeepsItsIntegers) {
    std::vector<uint8_t> host(8 * 8 * 3, 255);
    ImageQv image(4, 4, 1.0f, nullptr, nullptr);
    image.reserved_ints[0] = 42;
    EXPECT_EQ(ConvertFromDLImage8(host.data(), 8, 8, 0.9, 2, &image, 1), &image);
    EXPECT_EQ(image.reserved_ints[0], 42);
    EXPECT_EQ(image.video_scale, 2.0f);
    EXPECT_EQ(image.scale_x, 0.9);
    EXPECT_EQ(image.rows[3][3].red, 0x7FFF);
}

TEST(ConversionBands, SameImagesAndFramesOnAnyProcessorCount) {
    // Large enough (150 rows) for the conversions to split rows over processors.
    const int width = 203, height = 150;
    const auto bytes = random_words<uint8_t>(size_t(width) * height * 3, 21);
    const auto words = random_words<uint16_t>(size_t(width) * height * 3, 22);
    struct Result {
        std::vector<uint8_t> bytes;
        std::vector<uint16_t> words;
        std::vector<uint8_t> image;  // the 12-bit image's pixels as raw bytes
    };
    auto convert = [&](int s) {
        Image image8 = from_host(bytes.data(), width, height, s), image12 = from_host(words.data(), width, height, s);
        Result result{std::vector<uint8_t>(bytes.size()), words, {}};
        to_host(image8.get(), result.bytes.data(), width, height, s);
        to_host(image12.get(), result.words.data(), width, height, s);
        const auto *raw = reinterpret_cast<const uint8_t *>(image12->pixels);
        result.image.assign(raw, raw + sizeof(PixelQv) * size_t(image12->width) * image12->height);
        return result;
    };
    const int32_t saved = DLnumProc;
    for (int s : {1, 2, 3}) {
        DLnumProc = 1;
        const Result single = convert(s);
        for (int processors : {2, 3, 7}) {
            DLnumProc = processors;
            const Result banded = convert(s);
            SCOPED_TRACE("1/" + std::to_string(s) + " on " + std::to_string(processors));
            EXPECT_EQ(banded.bytes, single.bytes);
            EXPECT_EQ(banded.words, single.words);
            EXPECT_EQ(banded.image, single.image);
        }
    }
    DLnumProc = saved;
}
