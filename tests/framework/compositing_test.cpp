// Compositing and channel operations of ImageQv: arithmetic at its edges,
// the kept quirks, and independence from the number of bands.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "framework/image.h"
#include "host/globals.h"
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
    unsigned state = seed * 2654435761u + 12345u;
    auto next = [&state] {
        state = state * 1103515245u + 12345u;
        return uint16_t((state >> 8) % 32768u);
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) image->rows[y][x] = PixelQv{next(), next(), next(), next()};
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

    image = solid(2, 2, {32767, 32767, 32767, 32767});
    image->Merge(solid(2, 2, {0, 0, 0, 0}).get(), solid(2, 2, {32767, 0, 0, 0}).get(), true, 1);
    EXPECT_EQ(image->rows[0][0], (P{32766, 32766, 32766, 32766}));
    // An empty matte inverted keeps this image: 32766 * 32767 >> 15.
    image->Merge(solid(2, 2, {20000, 20000, 20000, 20000}).get(), solid(2, 2, {0, 0, 0, 0}).get(), false, 1);
    EXPECT_EQ(image->rows[1][1], (P{32765, 32765, 32765, 32765}));
}

TEST(Merge, RefusesImagesOfAnotherSize) {
    auto image = solid(3, 3, {5, 6, 7, 8});
    auto second = solid(3, 2, {32767, 32767, 32767, 32767});
    auto matte = solid(3, 3, {0, 0, 0, 0});
    image->Merge(second.get(), matte.get(), true, 1);
    image->Merge(matte.get(), second.get(), true, 1);
    image->Merge(nullptr, matte.get(), true, 1);
    EXPECT_EQ(image->rows[2][2], (P{5, 6, 7, 8}));
}

TEST(MapGamma, UnitGammaKeepsBothEndsTableFollowsTheLatestGammaAlphaFormTouchesOnlyAlpha) {
    auto image = solid(1, 1, {1, 1, 1, 1});
    image->MapGamma_RGBA(solid(1, 1, {0, 32767, 0, 32767}).get(), 1.0f);
    EXPECT_EQ(image->rows[0][0], (P{0, 32767, 0, 32767}));  // the table's 32768 is clamped on store

    auto source = solid(1, 1, {8192, 8192, 40000, 8192});
    image->MapGamma_RGBA(source.get(), 2.0f);
    int32_t *table = image->owned_aux;
    ASSERT_NE(table, nullptr);
    // sqrt(8192/32767) * 32768 + 0.5 truncates to 16384; out-of-scale input
    // reads the top entry and is clamped on store.
    EXPECT_EQ(image->rows[0][0], (P{16384, 16384, 32767, 16384}));
    image->MapGamma_RGBA(source.get(), 0.5f);
    EXPECT_EQ(image->owned_aux, table);
    EXPECT_EQ(image->rows[0][0].red, 2048);  // (0.25)^2 * 32768 + 0.5

    image = solid(2, 2, {100, 200, 300, 400});
    image->MapGamma_Alpha(solid(2, 2, {8192, 8192, 8192, 8192}).get(), 2.0f);
    EXPECT_EQ(image->rows[1][0], (P{100, 200, 300, 16384}));
}

TEST(BlendBack, ZeroLeavesThisAndAmountsPastOneAreClamped) {
    auto source = solid(2, 2, {32767, 0, 32767, 0});
    auto image = solid(2, 2, {0, 32767, 12345, 32767});
    for (float amount : {0.0f, -3.0f}) {
        image->BlendBack(amount, source.get());
        EXPECT_EQ(image->rows[0][1], (P{0, 32767, 12345, 32767})) << amount;
    }
    // Weights 32767 and 1 of 32768, also for amounts above one.
    for (float amount : {1.0f, 7.0f}) {
        image = solid(2, 2, {0, 32767, 12345, 32767});
        image->BlendBack(amount, source.get());
        EXPECT_EQ(image->rows[1][1], (P{32766, 0, 32766, 0})) << amount;
    }
}

TEST(CutOut, LuminanceChannelUsesWeightsFiveEightThreeAndUnknownChannelsChangeNothing) {
    auto white = solid(3, 1, {32767, 32767, 32767, 32767});
    auto source = solid(3, 1, {0, 0, 0, 20000});
    source->rows[0][0].red = 32767;
    source->rows[0][1].green = 32767;
    source->rows[0][2].blue = 32767;
    white->CutOut(source.get(), 4, 0, 1);
    // Luma 10239, 16383 and 6143 of the primaries, each multiplied in.
    EXPECT_EQ(white->rows[0][0], (P{10238, 10238, 10238, 10239}));
    EXPECT_EQ(white->rows[0][1].green, 16382);
    EXPECT_EQ(white->rows[0][2].blue, 6142);

    auto image = solid(1, 1, {111, 222, 333, 444});
    auto black = solid(1, 1, {0, 0, 0, 0});
    image->CutOut(black.get(), 5, 0, 1);
    image->CutOut(black.get(), -1, 0, 1);
    EXPECT_EQ(image->rows[0][0], (P{111, 222, 333, 444}));
}

TEST(CutOut, InvertAndAlphaModes) {
    auto source = solid(1, 1, {8192, 0, 0, 16384});
    // Inverted matte k = 24575; alpha by mode: times alpha, k, times source
    // alpha (modes 2 and 3), untouched otherwise.
    const uint16_t alphas[] = {14999, 24575, 12287, 12287, 20000};
    const int modes[] = {0, 1, 2, 3, 9};
    for (int i = 0; i < 5; ++i) {
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
    EXPECT_EQ(block[0], (P{32767, 32767, 32767, 32767}));
}

TEST(ChannelCopies, EachCopiesOnlyItsOwnChannels) {
    auto source = solid(2, 2, {1, 2, 3, 4});
    struct Case {
        void (ImageQv::*operation)(ImageQv *);
        PixelQv expected;
    } cases[] = {
        {&ImageQv::CopyAlpha, {10, 20, 30, 4}}, {&ImageQv::CopyRGB, {1, 2, 3, 40}},
        {&ImageQv::CopyR, {1, 20, 30, 40}},     {&ImageQv::CopyG, {10, 2, 30, 40}},
        {&ImageQv::CopyB, {10, 20, 3, 40}},
    };
    for (const Case &c : cases) {
        auto image = solid(2, 2, {10, 20, 30, 40});
        ((*image).*c.operation)(source.get());
        EXPECT_EQ(image->rows[1][1], c.expected);
    }
}

TEST(CopyLumaToChannel, WritesTheNamedChannelAndIgnoresOthers) {
    auto source = solid(1, 1, {32767, 16384, 800, 0});
    const uint16_t luma = 18581;  // (5 r + 8 g + 3 b) >> 4
    auto image = solid(1, 1, {1, 2, 3, 4});
    image->CopyLumaToChannel(source.get(), 3);
    EXPECT_EQ(image->rows[0][0], (P{1, 2, 3, luma}));
    image->CopyLumaToChannel(source.get(), 1);
    image->CopyLumaToChannel(source.get(), 7);
    image->CopyLumaToChannel(source.get(), -1);
    EXPECT_EQ(image->rows[0][0], (P{1, luma, 3, luma}));
}

TEST(CopyValues, UnityFactorsCopyBytesOtherwiseScaleAndClamp) {
    auto source = solid(2, 2, {40000, 16000, 100, 32767});  // 40000: off the scale on purpose
    auto image = solid(2, 2, {0, 0, 0, 0});
    image->CopyValues(source.get(), 1.0f, 1.0f, 1.0f, 1.0f);
    EXPECT_TRUE(same_pixels(*image, *source));
    image->CopyValues(source.get(), 0.5f, 3.0f, -1.0f, 0.999f);
    image->CopyValues(nullptr, 0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_EQ(image->rows[0][1], (P{20000, 32767, 0, 32734}));
}

TEST(InBlend, MixesInFloatWithoutClamping) {
    auto image = solid(1, 2, {10000, 32767, 1000, 0});
    image->InBlend(0.25f, solid(1, 2, {30000, 0, 1000, 32767}).get());
    EXPECT_EQ(image->rows[1][0], (P{15000, 24575, 1000, 8191}));
    auto weak = solid(1, 1, {10000, 10000, 10000, 10000});
    weak->InBlend(2.0f, solid(1, 1, {30000, 30000, 30000, 30000}).get());
    EXPECT_EQ(weak->rows[0][0].red, 50000);  // 2 * 30000 - 10000, past full scale
}

TEST(HSVTransfer, UseHSVStoresHueSaturationValueAndSourceAlphaAndReplaceHSVUndoesIt) {
    auto source = solid(3, 1, {32767, 0, 0, 1234});
    source->rows[0][1] = PixelQv{0, 32767, 0, 5};
    source->rows[0][2] = PixelQv{0, 0, 32767, 6};
    auto image = solid(3, 1, {9, 9, 9, 9});
    image->UseHSV(source.get());
    EXPECT_EQ(image->rows[0][0], (P{0, 32766, 32766, 1234}));
    EXPECT_EQ(image->rows[0][1].red, 10922);
    EXPECT_EQ(image->rows[0][2].red, 21844);
    EXPECT_EQ(image->rows[0][2].alpha, 6);
    auto back = solid(3, 1, {0, 0, 0, 0});
    back->ReplaceHSV(image.get());
    for (int x = 0; x < 3; ++x) {
        EXPECT_NEAR(back->rows[0][x].red, source->rows[0][x].red, 8) << x;
        EXPECT_NEAR(back->rows[0][x].green, source->rows[0][x].green, 8) << x;
        EXPECT_NEAR(back->rows[0][x].blue, source->rows[0][x].blue, 8) << x;
    }
}

// Every banded operation must give the same picture however its rows are
// split, including more bands than rows.
TEST(Bands, EveryOperationGivesTheSameResultWithOneTwoOrThreeBands) {
    using Run = std::function<void(ImageQv &, ImageQv *, ImageQv *)>;
    const PixelQv grey{16000, 16000, 16000, 16000};
    const std::vector<std::pair<const char *, Run>> operations = {
        {"Merge", [](ImageQv &i, ImageQv *s, ImageQv *m) { i.Merge(s, m, true, 1); }},
        {"MapGamma_RGBA", [](ImageQv &i, ImageQv *s, ImageQv *) { i.MapGamma_RGBA(s, 2.2f); }},
        {"MapGamma_Alpha", [](ImageQv &i, ImageQv *s, ImageQv *) { i.MapGamma_Alpha(s, 0.45f); }},
        {"CopyAlpha", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CopyAlpha(s); }},
        {"CopyRGB", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CopyRGB(s); }},
        {"CopyR", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CopyR(s); }},
        {"CopyG", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CopyG(s); }},
        {"CopyB", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CopyB(s); }},
        {"CopyLumaToChannel", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CopyLumaToChannel(s, 2); }},
        {"UseHSV", [](ImageQv &i, ImageQv *s, ImageQv *) { i.UseHSV(s); }},
        {"ReplaceHSV", [](ImageQv &i, ImageQv *s, ImageQv *) { i.ReplaceHSV(s); }},
        {"BlendBack", [](ImageQv &i, ImageQv *s, ImageQv *) { i.BlendBack(0.3f, s); }},
        {"BlendBackCol", [grey](ImageQv &i, ImageQv *, ImageQv *) { i.BlendBackCol(0.6f, grey); }},
        {"CutOut", [](ImageQv &i, ImageQv *s, ImageQv *) { i.CutOut(s, 4, 1, 2); }},
        {"Negative", [](ImageQv &i, ImageQv *s, ImageQv *) { i.Negative(s); }},
        {"Negative(null)", [](ImageQv &i, ImageQv *, ImageQv *) { i.Negative(nullptr); }},
    };
    const int32_t saved = DLnumProc;
    for (int height : {7, 2}) {
        auto source = pattern(5, height, 1);
        auto matte = pattern(5, height, 2);
        for (const auto &operation : operations) {
            ImagePtr reference;
            for (int bands : {1, 2, 3}) {
                DLnumProc = bands;
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
    DLnumProc = saved;
}
