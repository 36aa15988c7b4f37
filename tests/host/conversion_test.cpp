// Host frame buffers to images and back, at full and proxy resolution.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "host/conversion.h"
#include "host/globals.h"
#include "proxy_expectation.h"

namespace {

std::vector<uint8_t> random_bytes(size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::vector<uint8_t> bytes(count);
    for (uint8_t &b : bytes) b = uint8_t(generator());
    return bytes;
}

std::vector<uint16_t> random_words(size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::vector<uint16_t> words(count);
    for (uint16_t &w : words) w = uint16_t(generator());
    return words;
}

using Image = std::unique_ptr<ImageQv>;

}  // namespace

TEST(FullResolution8, ScalesToFifteenBitsAndBack) {
    uint8_t host[] = {0, 128, 255, 1, 254, 127};
    Image image(ConvertFromDLImage8(host, 2, 1, 1.5, 1, nullptr, 1));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 2);
    EXPECT_EQ(image->rows[0][0].red, 0);
    EXPECT_EQ(image->rows[0][0].green, 0x4040);
    EXPECT_EQ(image->rows[0][0].blue, 0x7FFF);
    EXPECT_EQ(image->rows[0][0].alpha, 0x7FFF);
    EXPECT_EQ(image->rows[0][1].red, 0x0080);
    EXPECT_EQ(image->scale_x, 1.5);
    EXPECT_EQ(image->scale_y, 1.0);
    EXPECT_EQ(image->video_scale, 1.0f);
    uint8_t back[6] = {};
    ConvertToDLImage8(image.get(), back, 2, 1, 1);
    EXPECT_EQ(std::vector<uint8_t>(back, back + 6), std::vector<uint8_t>(host, host + 6));
}

TEST(FullResolution8, RoundTripIsExactForOddSizes) {
    const int width = 37, height = 11;
    auto host = random_bytes(size_t(width) * height * 3, 1);
    Image image(ConvertFromDLImage8(host.data(), width, height, 1.0, 1, nullptr, 1));
    std::vector<uint8_t> back(host.size(), 0xAA);
    ConvertToDLImage8(image.get(), back.data(), width, height, 1);
    EXPECT_EQ(back, host);
}

TEST(FullResolution12, RoundTripKeepsTheOutputWordsLowBits) {
    const int width = 9, height = 5;
    auto host = random_words(size_t(width) * height * 3, 2);
    host[0] = 0xFFF0;
    host[1] = 0x8000;
    Image image(ConvertFromDLImage12(host.data(), width, height, 1.0, 1, nullptr, 1));
    EXPECT_EQ(image->rows[0][0].red, 0x7FFF);
    EXPECT_EQ(image->rows[0][0].green, 0x4004);  // 0x800 << 3 | 0x800 >> 9
    EXPECT_EQ(image->rows[0][0].alpha, 0x7FFF);
    // The output buffer's own low bits survive; the top 12 bits come back.
    auto out = random_words(host.size(), 3);
    auto before = out;
    ConvertToDLImage12(image.get(), out.data(), width, height, 1);
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
    ConvertToDLImage8(&image, bytes, 2, 1, 1);
    EXPECT_EQ(bytes[0], 255);
    EXPECT_EQ(bytes[1], 255);
    EXPECT_EQ(bytes[2], 255);
    EXPECT_EQ(bytes[3], 254);
    EXPECT_EQ(bytes[4], 1);
    EXPECT_EQ(bytes[5], 0);
    uint16_t words[6] = {0x0003, 0x000C, 0x0005, 0, 0, 0};
    ConvertToDLImage12(&image, words, 2, 1, 1);
    EXPECT_EQ(words[0], 0xFFF3);
    EXPECT_EQ(words[1], 0xFFFC);
    EXPECT_EQ(words[2], 0xFFF5);
    EXPECT_EQ(words[3], 0xFEF0);  // 0x7F7F >> 3 = 0xFEF
}

TEST(ProxySize, RoundsTheQuotientUpToEven) {
    EXPECT_EQ(ProxyExtent(725, 3), 242);
    EXPECT_EQ(ProxyExtent(720, 3), 240);
    EXPECT_EQ(ProxyExtent(1080, 32), 34);
    EXPECT_EQ(ProxyExtent(7, 2), 4);
    EXPECT_EQ(ProxyExtent(3, 4), 0);
    EXPECT_EQ(ProxyExtent(0, 4), 0);
    EXPECT_EQ(ProxyExtent(720, 0), 720);  // a divisor below 1 counts as 1
}

TEST(ProxyInput, SamplesRowsCentredColumnsFromZero) {
    const int width = 16, height = 16;
    std::vector<uint8_t> host(size_t(width) * height * 3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            host[(y * width + x) * 3 + 0] = uint8_t(x);
            host[(y * width + x) * 3 + 1] = uint8_t(y);
        }
    Image image(ConvertFromDLImage8(host.data(), width, height, 1.0, 4, nullptr, 1));
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
    Image proxy8(ConvertFromDLImage8(bytes.data(), 8, 8, 1.0, 2, nullptr, 1));
    Image proxy12(ConvertFromDLImage12(words.data(), 8, 8, 1.0, 2, nullptr, 1));
    Image full12(ConvertFromDLImage12(words.data(), 8, 8, 1.0, 1, nullptr, 1));
    EXPECT_EQ(proxy8->rows[1][1].alpha, 0x7FFF);
    EXPECT_EQ(proxy12->rows[1][1].alpha, 0xFFFF);
    EXPECT_EQ(full12->rows[1][1].alpha, 0x7FFF);
}

TEST(ProxyInput, RowsPastTheFrameStayEmpty) {
    // Height 7 at 1/2: four proxy rows, but the fourth would read host row 7.
    std::vector<uint8_t> host(4 * 7 * 3, 255);
    Image image(ConvertFromDLImage8(host.data(), 4, 7, 1.0, 2, nullptr, 1));
    ASSERT_EQ(image->height, 4);
    EXPECT_EQ(image->rows[2][1].red, 0x7FFF);
    EXPECT_EQ(image->rows[3][1].red, 0);
    EXPECT_EQ(image->rows[3][1].alpha, 0);
}

TEST(ProxyRoundTrip, EveryDivisorFillsWholeBlocksAtOddSizes8) {
    for (int s : {2, 3, 4, 6, 8, 12, 16, 32}) {
        for (auto size : {std::pair<int, int>{725, 37}, {64, 65}, {33, 32}}) {
            const int width = size.first, height = size.second;
            auto host = random_bytes(size_t(width) * height * 3, unsigned(s));
            Image image(ConvertFromDLImage8(host.data(), width, height, 1.0, s, nullptr, 1));
            std::vector<uint8_t> out(host.size(), 0x5A);
            ConvertToDLImage8(image.get(), out.data(), width, height, s);
            ASSERT_EQ(out, expected_proxy_round_trip(host, width, height, s))
                << width << "x" << height << " at 1/" << s;
        }
    }
}

TEST(ProxyRoundTrip, EveryDivisorFillsWholeBlocksAtOddSizes12) {
    for (int s : {2, 3, 4, 6, 8, 12, 16, 32}) {
        const int width = 725, height = 41;
        auto host = random_words(size_t(width) * height * 3, unsigned(s));
        for (uint16_t &w : host) w &= 0xFFF0;  // the output buffer's low bits are 0 here
        Image image(ConvertFromDLImage12(host.data(), width, height, 1.0, s, nullptr, 1));
        std::vector<uint16_t> out(host.size(), 0);
        ConvertToDLImage12(image.get(), out.data(), width, height, s);
        ASSERT_EQ(out, expected_proxy_round_trip(host, width, height, s)) << "at 1/" << s;
    }
}

TEST(ProxyOutput, LastRowsAndColumnsRepeatWhenTheProxyWasRoundedDown) {
    // 10x9 at 1/4 gives a 2x2 proxy; host columns 8, 9 and row 8 read its last pixels.
    ImageQv image(2, 2, 1.0f, nullptr, nullptr);
    for (int j = 0; j < 2; ++j)
        for (int k = 0; k < 2; ++k) image.rows[j][k] = PixelQv{uint16_t((j * 2 + k + 1) << 7), 0, 0, 0};
    std::vector<uint8_t> out(10 * 9 * 3);
    ConvertToDLImage8(&image, out.data(), 10, 9, 4);
    auto at = [&](int x, int y) { return out[(y * 10 + x) * 3]; };
    EXPECT_EQ(at(0, 0), 1);
    EXPECT_EQ(at(3, 3), 1);
    EXPECT_EQ(at(4, 3), 2);
    EXPECT_EQ(at(9, 0), 2);
    EXPECT_EQ(at(0, 4), 3);
    EXPECT_EQ(at(9, 8), 4);
}

TEST(ProxyOutput, FrameSmallerThanTheDivisorWritesNothing) {
    std::vector<uint8_t> host(3 * 3 * 3, 77);
    Image image(ConvertFromDLImage8(host.data(), 3, 3, 1.0, 4, nullptr, 1));
    EXPECT_EQ(image->width, 0);
    std::vector<uint8_t> out(host.size(), 9);
    ConvertToDLImage8(image.get(), out.data(), 3, 3, 4);
    ConvertToDLImage12(image.get(), out.data(), 3, 1, 4);
    EXPECT_EQ(out, std::vector<uint8_t>(host.size(), 9));
}

TEST(ConversionArguments, NullBufferAndNoCopy) {
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
    EXPECT_EQ(blank->scale_x, 2.0);
}

TEST(ConversionArguments, GivenImageIsFilledAndKeepsItsIntegers) {
    std::vector<uint8_t> host(8 * 8 * 3, 255);
    ImageQv image(4, 4, 1.0f, nullptr, nullptr);
    image.reserved_ints[0] = 42;
    ImageQv *result = ConvertFromDLImage8(host.data(), 8, 8, 0.9, 2, &image, 1);
    EXPECT_EQ(result, &image);
    EXPECT_EQ(image.reserved_ints[0], 42);
    EXPECT_EQ(image.video_scale, 2.0f);
    EXPECT_EQ(image.scale_x, 0.9);
    EXPECT_EQ(image.rows[3][3].red, 0x7FFF);
}

TEST(ConversionBands, SameImagesAndFramesOnAnyProcessorCount) {
    // Large enough (150 rows) for the conversions to split rows over processors.
    const int width = 203, height = 150;
    auto bytes = random_bytes(size_t(width) * height * 3, 21);
    auto words = random_words(size_t(width) * height * 3, 22);
    const int32_t saved = DLnumProc;
    for (int s : {1, 2, 3}) {
        std::vector<uint8_t> first_bytes;
        std::vector<uint16_t> first_words;
        std::vector<PixelQv> first_pixels;
        for (int processors : {1, 2, 3, 7}) {
            DLnumProc = processors;
            Image image8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, s, nullptr, 1));
            Image image12(ConvertFromDLImage12(words.data(), width, height, 1.0, s, nullptr, 1));
            std::vector<uint8_t> out8(bytes.size());
            std::vector<uint16_t> out12 = words;
            ConvertToDLImage8(image8.get(), out8.data(), width, height, s);
            ConvertToDLImage12(image12.get(), out12.data(), width, height, s);
            std::vector<PixelQv> pixels(image12->pixels, image12->pixels + size_t(image12->width) * image12->height);
            if (processors == 1) {
                first_bytes = out8;
                first_words = out12;
                first_pixels = pixels;
                continue;
            }
            EXPECT_EQ(out8, first_bytes) << "1/" << s << " on " << processors;
            EXPECT_EQ(out12, first_words) << "1/" << s << " on " << processors;
            EXPECT_EQ(0, std::memcmp(pixels.data(), first_pixels.data(), pixels.size() * sizeof(PixelQv)))
                << "1/" << s << " on " << processors;
        }
    }
    DLnumProc = saved;
}
