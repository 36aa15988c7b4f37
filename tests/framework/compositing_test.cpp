// Compositing and channel operations of ImageQv: arithmetic at its edges,
// the kept quirks, and independence from the number of bands.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "framework/image.h"
#include "framework/plugin.h"
#include "pixel_expect.h"

namespace {

using ImagePtr = std::unique_ptr<ImageQv>;
using P = PixelQv;

ImagePtr solid(int width, int height, PixelQv colour) {
    ImagePtr image(new ImageQv(width, height, 1.0f, nullptr, nullptr));
    image->Fill(colour.red, colour.green, colour.blue, colour.alpha);
    return image;
}

// Every channel of every pixel different, spread over the whole scale.
ImagePtr pattern(int width, int height, unsigned seed) {
    ImagePtr image(new ImageQv(width, height, 1.0f, nullptr, nullptr));
    for (int i = 0; i < width * height * 4; ++i)
        reinterpret_cast<uint16_t *>(image->pixels)[i] = uint16_t((seed * 7919u + i * 2654435761u) >> 17);
    return image;
}

bool same_pixels(const ImageQv &a, const ImageQv &b) {
    return a.width == b.width && a.height == b.height &&
           std::memcmp(a.pixels, b.pixels, size_t(a.width) * a.height * sizeof(PixelQv)) == 0;
}

}  // namespace

TEST(Merge, MatteEndsScaleByOneUnitLowAndInvertSwapsTheRoles) {
    auto image = solid(3, 2, {1000, 2000, 3000, 4000});
    auto second = solid(3, 2, {32767, 16384, 0, 32767});
    image->Merge(second.get(), solid(3, 2, {0, 32767, 32767, 32767}).get(), true, 0);
    EXPECT_EQ(image->rows[1][2], (P{32766, 16383, 0, 4000}));  // a * 32767 >> 15; alpha needs with_alpha
    // An empty matte inverted keeps this image: 32766 * 32767 >> 15.
    image->Merge(solid(3, 2, {0, 0, 0, 0}).get(), solid(3, 2, {0, 0, 0, 0}).get(), false, 1);
    EXPECT_EQ(image->rows[1][1], (P{32765, 16382, 0, 3999}));
}

TEST(MapGamma, UnitGammaKeepsBothEndsAndTheTableFollowsTheLatestGamma) {
    auto image = solid(1, 1, {1, 1, 1, 1});
    image->MapGamma_RGBA(solid(1, 1, {0, 32767, 0, 32767}).get(), 1.0f);
    EXPECT_EQ(image->rows[0][0], (P{0, 32767, 0, 32767}));  // the table's 32768 is clamped on store

    auto source = solid(1, 1, {8192, 8192, 40000, 8192});
    image->MapGamma_RGBA(source.get(), 2.0f);
    // sqrt(8192/32767) * 32768 + 0.5 truncates to 16384; out-of-scale input
    // reads the top entry and is clamped on store.
    EXPECT_EQ(image->rows[0][0], (P{16384, 16384, 32767, 16384}));
    image->MapGamma_RGBA(source.get(), 0.5f);  // the kept table is rebuilt
    EXPECT_EQ(image->rows[0][0].red, 2048);  // (0.25)^2 * 32768 + 0.5
}

TEST(BlendBack, ZeroLeavesThisAndAmountsPastOneAreClamped) {
    auto source = solid(2, 2, {32767, 0, 32767, 0});
    auto image = solid(2, 2, {0, 32767, 12345, 32767});
    image->BlendBack(-3.0f, source.get());
    EXPECT_EQ(image->rows[0][1], (P{0, 32767, 12345, 32767}));
    image->BlendBack(7.0f, source.get());  // weights 32767 and 1 of 32768, as for one
    EXPECT_EQ(image->rows[1][1], (P{32766, 0, 32766, 0}));
}

TEST(CutOut, LuminanceWeightsFiveEightThreeAndInvertedAlphaModes) {
    auto white = solid(1, 1, {32767, 32767, 32767, 32767});
    white->CutOut(solid(1, 1, {32767, 0, 0, 20000}).get(), 4, 0, 1);
    EXPECT_EQ(white->rows[0][0], (P{10238, 10238, 10238, 10239}));  // luma 10239 multiplied in

    auto source = solid(1, 1, {8192, 0, 0, 16384});
    // Inverted matte k = 24575; alpha by mode: times alpha, k, times source
    // alpha (modes 2 and 3), untouched otherwise.
    const uint16_t alphas[] = {14999, 24575, 12287, 20000};
    const int modes[] = {0, 1, 2, 9};
    for (int i = 0; i < 4; ++i) {
        auto image = solid(1, 1, {32767, 16384, 0, 20000});
        image->CutOut(source.get(), 0, 1, modes[i]);
        EXPECT_EQ(image->rows[0][0], (P{24574, 12287, 0, alphas[i]})) << "mode " << modes[i];
    }
}

TEST(Negative, WithSourceClearsOwnershipInPlaceMarksAWrappedBlockAsOwned) {
    auto image = solid(2, 2, {5, 5, 5, 5});
    PixelQv *own = image->pixels;
    image->Negative(solid(2, 2, {0, 32767, 10000, 1}).get());
    EXPECT_EQ(image->rows[1][0], (P{32767, 0, 22767, 32766}));
    EXPECT_EQ(image->owns_pixels, 0);
    std::free(own);  // the cleared flag hands the block back to us

    auto *block = static_cast<PixelQv *>(std::calloc(6, sizeof(PixelQv)));
    block[5] = PixelQv{100, 32767, 0, 32000};
    image.reset(new ImageQv(3, 2, 1.0f, block, nullptr));
    image->Negative(nullptr);
    EXPECT_EQ(image->owns_pixels, 1);  // the destructor now frees the block
    EXPECT_EQ(block[5], (P{32667, 0, 32767, 767}));
}

TEST(InBlend, MixesInFloatWithoutClamping) {
    auto weak = solid(1, 1, {10000, 10000, 10000, 10000});
    weak->InBlend(2.0f, solid(1, 1, {30000, 30000, 30000, 30000}).get());
    EXPECT_EQ(weak->rows[0][0].red, 50000);  // 2 * 30000 - 10000, past full scale
}

// Every banded operation must give the same picture however its rows are
// split, including more bands than rows.
TEST(Bands, EveryOperationGivesTheSameResultWithOneTwoOrThreeBands) {
    using Run = std::function<void(ImageQv &, ImageQv *, ImageQv *)>;
    const std::vector<std::pair<const char *, Run>> operations = {
        {"Merge", [](ImageQv &i, ImageQv *s, ImageQv *m) { i.Merge(s, m, true, 1); }},
        {"MapGamma_RGBA", [](ImageQv &i, ImageQv *s, ImageQv *) { i.MapGamma_RGBA(s, 2.2f); }},
        {"MapGamma_Alpha", [](ImageQv &i, ImageQv *s, ImageQv *) { i.MapGamma_Alpha(s, 0.45f); }},
        {"CopyAlpha", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CopyAlpha(s); }},
        {"CopyLumaToChannel", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CopyLumaToChannel(s, 2); }},
        {"UseHSV", [](ImageQv &i, ImageQv *s, ImageQv *) { i.UseHSV(s); }},
        {"ReplaceHSV", [](ImageQv &i, ImageQv *s, ImageQv *) { i.ReplaceHSV(s); }},
        {"BlendBack", [](ImageQv &i, ImageQv *s, ImageQv *) { i.BlendBack(0.3f, s); }},
        {"BlendBackCol", [](ImageQv &i, ImageQv *, ImageQv *) { i.BlendBackCol(0.6f, {16000, 16000, 16000, 16000}); }},
        {"CutOut", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CutOut(s, 4, 1, 2); }},
        {"Negative", [](ImageQv &i, ImageQv *s, ImageQv *) { i.Negative(s); }},
        {"Negative(null)", [](ImageQv &i, ImageQv *, ImageQv *) { i.Negative(nullptr); }},
    };
    const int32_t saved = frame_context.processors;
    for (int height : {7, 2}) {
        auto source = pattern(5, height, 1);
        auto matte = pattern(5, height, 2);
        for (const auto &operation : operations) {
            ImagePtr reference;
            for (int bands : {1, 2, 3}) {
                frame_context.processors = bands;
                auto image = pattern(5, height, 3);
                image->owns_pixels = 0;  // Negative rewrites the flag; free the block ourselves
                PixelQv *block = image->pixels;
                operation.second(*image, source.get(), matte.get());
                if (!reference) reference.reset(new ImageQv(*image));
                else EXPECT_TRUE(same_pixels(*image, *reference))
                    << operation.first << " with " << bands << " bands, height " << height;
                image->owns_pixels = 0;
                std::free(block);
            }
        }
    }
    frame_context.processors = saved;
}
