// Banded conversions under the host's fork against the whole-frame ones.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "host/conversion.h"
#include "spark/spark.h"

namespace {

// Runs body(bands) on every worker of a fork over `bands` processors.
void fork_over(int bands, const std::function<void(int)> &body) {
    struct Job {
        const std::function<void(int)> *body;
        int bands;
    } job{&body, bands};
    sparkMpFork(
        [](void *job_pointer, void *, void *, void *) {
            auto *j = static_cast<Job *>(job_pointer);
            (*j->body)(j->bands);
        },
        4, &job, nullptr, nullptr, reinterpret_cast<void *>(intptr_t(bands)));
}

template <class Word>
std::vector<Word> random_host(size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::vector<Word> words(count);
    for (Word &w : words) w = Word(generator());
    return words;
}

bool same_pixels(const ImageQv &a, const ImageQv &b) {
    if (a.width != b.width || a.height != b.height) return false;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x) {
            const PixelQv &p = a.rows[y][x], &q = b.rows[y][x];
            if (p.red != q.red || p.green != q.green || p.blue != q.blue || p.alpha != q.alpha)
                return false;
        }
    return true;
}

const int kBandCounts[] = {1, 3, 4, 7, 40};

}  // namespace

TEST(BandedConversion, FullResolutionMatchesTheWholeFrame) {
    const int width = 31, height = 19;
    auto bytes = random_host<uint8_t>(size_t(width) * height * 3, 5);
    auto words = random_host<uint16_t>(size_t(width) * height * 3, 6);
    std::unique_ptr<ImageQv> whole8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, 1, nullptr, 1));
    std::unique_ptr<ImageQv> whole12(ConvertFromDLImage12(words.data(), width, height, 1.0, 1, nullptr, 1));
    std::vector<uint8_t> bytes_out(bytes.size());
    std::vector<uint16_t> words_out = random_host<uint16_t>(words.size(), 7), words_expected = words_out;
    ConvertToDLImage8(whole8.get(), bytes_out.data(), width, height, 1);
    ConvertToDLImage12(whole12.get(), words_expected.data(), width, height, 1);

    for (int bands : kBandCounts) {
        ImageQv image8(width, height, 1.0f, nullptr, nullptr), image12(width, height, 1.0f, nullptr, nullptr);
        fork_over(bands, [&](int n) {
            mp_copy_pixel_data(bytes.data(), &image8, n);
            mp_copy_pixel_data_deep12(words.data(), &image12, n);
        });
        EXPECT_TRUE(same_pixels(image8, *whole8)) << bands << " bands";
        EXPECT_TRUE(same_pixels(image12, *whole12)) << bands << " bands";

        std::vector<uint8_t> banded_bytes(bytes.size());
        std::vector<uint16_t> banded_words = random_host<uint16_t>(words.size(), 7);
        fork_over(bands, [&](int n) {
            mp_paste_pixel_data(banded_bytes.data(), whole8.get(), n);
            mp_paste_pixel_data_deep12(banded_words.data(), whole12.get(), n);
        });
        EXPECT_EQ(banded_bytes, bytes_out) << bands << " bands";
        EXPECT_EQ(banded_words, words_expected) << bands << " bands";
    }
}

TEST(BandedConversion, ProxyPasteMatchesTheWholeFrame) {
    const int width = 725, height = 23;
    for (int s : {2, 3, 4}) {
        auto words = random_host<uint16_t>(size_t(width) * height * 3, unsigned(s));
        std::unique_ptr<ImageQv> proxy(ConvertFromDLImage12(words.data(), width, height, 1.0, s, nullptr, 1));
        std::vector<uint8_t> bytes_expected(size_t(width) * height * 3);
        std::vector<uint16_t> words_expected = words;
        ConvertToDLImage8(proxy.get(), bytes_expected.data(), width, height, s);
        ConvertToDLImage12(proxy.get(), words_expected.data(), width, height, s);
        for (int bands : kBandCounts) {
            std::vector<uint8_t> bytes_out(bytes_expected.size());
            std::vector<uint16_t> words_out = words;
            fork_over(bands, [&](int n) {
                mp_paste_pixel_data_scale(bytes_out.data(), proxy.get(), n, height, width);
                mp_paste_pixel_data_scale_deep12(words_out.data(), proxy.get(), n, height, width);
            });
            EXPECT_EQ(bytes_out, bytes_expected) << "1/" << s << ", " << bands << " bands";
            EXPECT_EQ(words_out, words_expected) << "1/" << s << ", " << bands << " bands";
        }
    }
}

TEST(BandedConversion, ProxyCopyClampsRowsAndMarksAlphaOpaqueAtBothDepths) {
    // Height 7 at 1/2: the whole-frame copy leaves proxy row 3 empty, the
    // banded copy reads the last host row into it.
    const int width = 9, height = 7;
    auto bytes = random_host<uint8_t>(size_t(width) * height * 3, 11);
    auto words = random_host<uint16_t>(size_t(width) * height * 3, 12);
    std::unique_ptr<ImageQv> whole8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, 2, nullptr, 1));
    std::unique_ptr<ImageQv> whole12(ConvertFromDLImage12(words.data(), width, height, 1.0, 2, nullptr, 1));
    for (int bands : kBandCounts) {
        std::unique_ptr<ImageQv> image8(ConvertFromDLImage8(bytes.data(), width, height, 1.0, 2, nullptr, 0));
        std::unique_ptr<ImageQv> image12(ConvertFromDLImage12(words.data(), width, height, 1.0, 2, nullptr, 0));
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
        const uint8_t *last_row = bytes.data() + size_t(height - 1) * width * 3;
        EXPECT_EQ(image8->rows[3][2].green, uint16_t((last_row[2 * 2 * 3 + 1] << 7) | (last_row[2 * 2 * 3 + 1] >> 1)));
        EXPECT_EQ(whole8->rows[3][2].green, 0);
    }
}
