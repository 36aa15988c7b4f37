// Banded conversions under the host's fork against the whole-frame ones.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "proxy_expectation.h"
#include "spark/spark.h"

namespace {

using Image = std::unique_ptr<ImageQv>;

// Runs body(bands) on every worker of a fork over `bands` processors.
void fork_over(int bands, const std::function<void(int)> &body) {
    struct Job {
        const std::function<void(int)> *body;
        int bands;
    } job{&body, bands};
    sparkMpFork([](void *j, void *, void *, void *) { (*static_cast<Job *>(j)->body)(static_cast<Job *>(j)->bands); },
                4, &job, nullptr, nullptr, reinterpret_cast<void *>(intptr_t(bands)));
}

bool same_pixels(const ImageQv &a, const ImageQv &b) {
    return a.width == b.width && a.height == b.height &&
           std::memcmp(a.pixels, b.pixels, sizeof(PixelQv) * size_t(a.width) * a.height) == 0;
}

const int kBandCounts[] = {1, 3, 4, 7, 40};

}  // namespace

TEST(BandedConversion, CopyAndPasteMatchTheWholeFrameOnAnyBandCount) {
    const int width = 725, height = 23;
    const size_t count = size_t(width) * height * 3;
    for (int s : {1, 2, 3, 4}) {
        auto bytes = random_words<uint8_t>(count, unsigned(s));
        auto words = random_words<uint16_t>(count, unsigned(s + 10));
        Image whole8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, s, nullptr, 1));
        Image whole12(ConvertFromDLImage12(words.data(), width, height, 1.0, s, nullptr, 1));
        std::vector<uint8_t> bytes_expected(count);
        std::vector<uint16_t> words_expected = words;  // the low bits of each word must survive
        ConvertToDLImage8(whole8.get(), bytes_expected.data(), width, height, s);
        ConvertToDLImage12(whole12.get(), words_expected.data(), width, height, s);
        for (int bands : kBandCounts) {
            SCOPED_TRACE("1/" + std::to_string(s) + ", " + std::to_string(bands) + " bands");
            // Banded proxy copies differ from the whole frame on purpose (next test).
            ImageQv image8(width, height, 1.0f, nullptr, nullptr), image12(width, height, 1.0f, nullptr, nullptr);
            std::vector<uint8_t> bytes_out(count);
            std::vector<uint16_t> words_out = words;
            fork_over(bands, [&](int n) {
                if (s == 1) {
                    mp_copy_pixel_data(bytes.data(), &image8, n);
                    mp_copy_pixel_data_deep12(words.data(), &image12, n);
                    mp_paste_pixel_data(bytes_out.data(), whole8.get(), n);
                    mp_paste_pixel_data_deep12(words_out.data(), whole12.get(), n);
                } else {
                    mp_paste_pixel_data_scale(bytes_out.data(), whole8.get(), n, height, width);
                    mp_paste_pixel_data_scale_deep12(words_out.data(), whole12.get(), n, height, width);
                }
            });
            EXPECT_EQ(bytes_out, bytes_expected);
            EXPECT_EQ(words_out, words_expected);
            if (s == 1) {
                EXPECT_TRUE(same_pixels(image8, *whole8));
                EXPECT_TRUE(same_pixels(image12, *whole12));
            }
        }
    }
}

TEST(BandedConversion, ProxyCopyClampsRowsAndMarksAlphaOpaqueAtBothDepths) {
    // Height 7 at 1/2: the whole-frame copy leaves proxy row 3 empty, the
    // banded copy reads the last host row into it.
    const int width = 9, height = 7;
    auto bytes = random_words<uint8_t>(size_t(width) * height * 3, 11);
    auto words = random_words<uint16_t>(size_t(width) * height * 3, 12);
    Image whole8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, 2, nullptr, 1));
    Image whole12(ConvertFromDLImage12(words.data(), width, height, 1.0, 2, nullptr, 1));
    for (int bands : kBandCounts) {
        Image image8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, 2, nullptr, 0));
        Image image12(ConvertFromDLImage12(words.data(), width, height, 1.0, 2, nullptr, 0));
        fork_over(bands, [&](int n) {
            mp_copy_pixel_data_scale(bytes.data(), image8.get(), n, height, width);
            mp_copy_pixel_data_scale_deep12(words.data(), image12.get(), n, height, width);
        });
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < image8->width; ++k) {
                ASSERT_EQ(image8->rows[j][k].red, whole8->rows[j][k].red);
                ASSERT_EQ(image8->rows[j][k].alpha, 0x7FFF);
                ASSERT_EQ(image12->rows[j][k].blue, whole12->rows[j][k].blue);
                ASSERT_EQ(image12->rows[j][k].alpha, 0x7FFF);
            }
        const uint8_t green = bytes[(size_t(height - 1) * width + 4) * 3 + 1];  // last host row, column 4
        EXPECT_EQ(image8->rows[3][2].green, uint16_t((green << 7) | (green >> 1)));
        EXPECT_EQ(whole8->rows[3][2].green, 0);
    }
}
