// Banded conversions under the host's fork against the whole-frame ones.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "host/adapter/conversion.h"
#include "spark/spark.h"

namespace {

using Image = std::unique_ptr<ImageQv>;

template <class Word>
std::vector<Word> random_words(size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::vector<Word> words(count);
    for (Word &w : words) w = Word(generator());
    return words;
}

// Runs body(bands) on every worker of a fork over `bands` processors.
void fork_over(int bands, const std::function<void(int)> &body) {
    struct Job {
        const std::function<void(int)> *body;
        int bands;
    } job{&body, bands};
    sparkMpFork([](void *j, void *, void *, void *) { (*static_cast<Job *>(j)->body)(static_cast<Job *>(j)->bands); },
                4, &job, nullptr, nullptr, reinterpret_cast<void *>(intptr_t(bands)));
}

}  // namespace

TEST(BandedConversion, CopyAndPasteMatchTheWholeFrameOnAnyBandCount) {
    const int width = 725, height = 23;
    const size_t count = size_t(width) * height * 3;
    for (int s : {1, 3}) {
        auto bytes = random_words<uint8_t>(count, unsigned(s));
        auto words = random_words<uint16_t>(count, unsigned(s + 10));
        Image whole8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, s, nullptr, 1));
        Image whole12(ConvertFromDLImage12(words.data(), width, height, 1.0, s, nullptr, 1));
        std::vector<uint8_t> bytes_expected(count);
        std::vector<uint16_t> words_expected = words;  // the low bits of each word must survive
        ConvertToDLImage8(whole8.get(), bytes_expected.data(), width, height, s);
        ConvertToDLImage12(whole12.get(), words_expected.data(), width, height, s);
        for (int bands : {1, 4, 7, 40}) {
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
                EXPECT_EQ(std::memcmp(image8.pixels, whole8->pixels, sizeof(PixelQv) * count / 3), 0);
                EXPECT_EQ(std::memcmp(image12.pixels, whole12->pixels, sizeof(PixelQv) * count / 3), 0);
            }
        }
    }
}

TEST(BandedConversion, ProxyCopyReadsTheLastRowPastTheFrameAndMarksAlphaOpaque) {
    // Height 7 at 1/2: the whole-frame copy leaves proxy row 3 empty, the
    // banded copy reads the last host row into it.
    const int width = 9, height = 7;
    auto bytes = random_words<uint8_t>(size_t(width) * height * 3, 11);
    auto words = random_words<uint16_t>(size_t(width) * height * 3, 12);
    Image image8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, 2, nullptr, 0));
    Image image12(ConvertFromDLImage12(words.data(), width, height, 1.0, 2, nullptr, 0));
    fork_over(3, [&](int n) {
        mp_copy_pixel_data_scale(bytes.data(), image8.get(), n, height, width);
        mp_copy_pixel_data_scale_deep12(words.data(), image12.get(), n, height, width);
    });
    const uint8_t green = bytes[(size_t(height - 1) * width + 4) * 3 + 1];  // last host row, column 4
    EXPECT_EQ(image8->rows[3][2].green, uint16_t((green << 7) | (green >> 1)));
    EXPECT_EQ(image12->rows[1][1].alpha, 0x7FFF);
}
