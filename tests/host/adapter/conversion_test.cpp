// Host frame buffers to images and back: the scaling, clamping and proxy
// corners that a frame passed through the plug-in does not reach.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "host/adapter/conversion.h"

using Image = std::unique_ptr<ImageQv>;

TEST(Conversion, HostChannelsWidenToFifteenBitsWithTheAspectKept) {
    const uint8_t bytes[] = {0, 128, 255};
    Image image(ConvertFromDLImage8(bytes, 1, 1, 1.5, 1, nullptr, 1));
    const PixelQv &p = image->rows[0][0];
    EXPECT_EQ((std::vector<int>{p.red, p.green, p.blue, p.alpha}), (std::vector<int>{0, 0x4040, 0x7FFF, 0x7FFF}));
    EXPECT_EQ(image->scale_x, 1.5);
    const uint16_t words[] = {0xFFF0, 0x8000, 0};
    image.reset(ConvertFromDLImage12(words, 1, 1, 1.0, 1, nullptr, 1));
    EXPECT_EQ(image->rows[0][0].red, 0x7FFF);
    EXPECT_EQ(image->rows[0][0].green, 0x4004);  // 0x800 << 3 | 0x800 >> 9
}

TEST(Conversion, OutputClampsAboveFullScaleAndKeepsTheTwelveBitWordsLowBits) {
    ImageQv image(2, 1, 1.0f, nullptr, nullptr);
    image.rows[0][0] = PixelQv{0xFFFF, 0x8000, 0x7FFF, 0};
    image.rows[0][1] = PixelQv{0x7F7F, 0x0080, 0x007F, 0};
    uint8_t bytes[6] = {};
    ConvertToDLImage8(&image, bytes, 2, 1, 1);
    EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + 6), (std::vector<uint8_t>{255, 255, 255, 254, 1, 0}));
    uint16_t words[6] = {0x0003, 0x000C, 0x0005, 0, 0, 0};
    ConvertToDLImage12(&image, words, 2, 1, 1);
    // 0x7F7F >> 3 = 0xFEF
    EXPECT_EQ(std::vector<uint16_t>(words, words + 4), (std::vector<uint16_t>{0xFFF3, 0xFFFC, 0xFFF5, 0xFEF0}));
}

TEST(ProxySize, RoundsTheQuotientUpToEven) {
    const int cases[][3] = {{725, 3, 242}, {720, 3, 240}, {7, 2, 4}, {3, 4, 0}, {720, 0, 720}};  // divisor 0 is 1
    for (const auto &c : cases) EXPECT_EQ(ProxyExtent(c[0], c[1]), c[2]) << c[0] << " / " << c[1];
}

TEST(ProxyInput, ScaleIsTheDivisorAndAlphaIsFullScaleExceptInTwelveBitProxies) {
    std::vector<uint8_t> bytes(8 * 8 * 3, 200);
    std::vector<uint16_t> words(8 * 8 * 3, 0x8000);
    Image proxy8(ConvertFromDLImage8(bytes.data(), 8, 8, 1.0, 2, nullptr, 1));
    EXPECT_EQ(proxy8->video_scale, 2.0f);
    EXPECT_EQ(proxy8->rows[1][1].alpha, 0x7FFF);
    EXPECT_EQ(Image(ConvertFromDLImage12(words.data(), 8, 8, 1.0, 2, nullptr, 1))->rows[1][1].alpha, 0xFFFF);
    EXPECT_EQ(Image(ConvertFromDLImage12(words.data(), 8, 8, 1.0, 1, nullptr, 1))->rows[1][1].alpha, 0x7FFF);
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
