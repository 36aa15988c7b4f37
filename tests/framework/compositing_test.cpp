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

namespace {

using ImagePtr = std::unique_ptr<ImageQv>;

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

#define EXPECT_PIXEL(pixel, r, g, b, a)  \
    do {                                  \
        PixelQv p_ = (pixel);             \
        EXPECT_EQ(p_.red, r);             \
        EXPECT_EQ(p_.green, g);           \
        EXPECT_EQ(p_.blue, b);            \
        EXPECT_EQ(p_.alpha, a);           \
    } while (0)

// Restores the processor count the tests change.
class ProcessorCount {
public:
    explicit ProcessorCount(int32_t count) : saved_(DLnumProc) { DLnumProc = count; }
    ~ProcessorCount() { DLnumProc = saved_; }

private:
    int32_t saved_;
};

}  // namespace

TEST(Merge, EmptyMatteAsIsGivesTheSecondImageOneUnitLow) {
    auto image = solid(3, 2, {1000, 2000, 3000, 4000});
    auto second = solid(3, 2, {32767, 16384, 0, 32767});
    auto matte = solid(3, 2, {0, 32767, 32767, 32767});
    image->Merge(second.get(), matte.get(), true, 0);
    // a * 32767 >> 15; alpha left alone without with_alpha.
    EXPECT_PIXEL(image->rows[1][2], 32766, 16383, 0, 4000);
}

TEST(Merge, FullMatteKeepsThisImageAndInvertedMatteSwapsTheRoles) {
    auto image = solid(2, 2, {32767, 32767, 32767, 32767});
    auto second = solid(2, 2, {0, 0, 0, 0});
    auto full = solid(2, 2, {32767, 0, 0, 0});
    image->Merge(second.get(), full.get(), true, 1);
    EXPECT_PIXEL(image->rows[0][0], 32766, 32766, 32766, 32766);

    auto other = solid(2, 2, {20000, 20000, 20000, 20000});
    auto empty = solid(2, 2, {0, 0, 0, 0});
    image->Merge(other.get(), empty.get(), false, 1);
    // matte 0 inverted is 32767: this image is kept, 32766 * 32767 >> 15.
    EXPECT_PIXEL(image->rows[1][1], 32765, 32765, 32765, 32765);
}

TEST(Merge, RefusesImagesOfAnotherSize) {
    auto image = solid(3, 3, {5, 6, 7, 8});
    auto second = solid(3, 2, {32767, 32767, 32767, 32767});
    auto matte = solid(3, 3, {0, 0, 0, 0});
    image->Merge(second.get(), matte.get(), true, 1);
    image->Merge(matte.get(), second.get(), true, 1);
    image->Merge(nullptr, matte.get(), true, 1);
    EXPECT_PIXEL(image->rows[2][2], 5, 6, 7, 8);
}

TEST(MapGamma, UnitGammaKeepsBothEndsOfTheScale) {
    auto source = solid(2, 1, {0, 32767, 0, 32767});
    source->rows[0][1] = PixelQv{32767, 0, 32767, 0};
    auto image = solid(2, 1, {1, 1, 1, 1});
    image->MapGamma_RGBA(source.get(), 1.0f);
    EXPECT_PIXEL(image->rows[0][0], 0, 32767, 0, 32767);
    EXPECT_PIXEL(image->rows[0][1], 32767, 0, 32767, 0);
}

TEST(MapGamma, TableIsMadeOnceAndFollowsTheLatestGamma) {
    auto source = solid(1, 1, {8192, 8192, 40000, 8192});
    auto image = solid(1, 1, {0, 0, 0, 0});
    EXPECT_EQ(image->owned_aux, nullptr);
    image->MapGamma_RGBA(source.get(), 2.0f);
    int32_t *table = image->owned_aux;
    ASSERT_NE(table, nullptr);
    // sqrt(8192/32767) * 32768 + 0.5 truncates to 16384; out-of-scale input
    // reads the top entry and is clamped on store.
    EXPECT_PIXEL(image->rows[0][0], 16384, 16384, 32767, 16384);

    image->MapGamma_RGBA(source.get(), 0.5f);
    EXPECT_EQ(image->owned_aux, table);
    EXPECT_EQ(image->rows[0][0].red, 2048);  // (0.25)^2 * 32768 + 0.5
}

TEST(MapGamma, AlphaFormTouchesOnlyAlpha) {
    auto source = solid(2, 2, {8192, 8192, 8192, 8192});
    auto image = solid(2, 2, {100, 200, 300, 400});
    image->MapGamma_Alpha(source.get(), 2.0f);
    EXPECT_PIXEL(image->rows[1][0], 100, 200, 300, 16384);
}

TEST(BlendBack, WeightsAddTo32768) {
    auto source = solid(2, 2, {32767, 0, 32767, 0});
    auto image = solid(2, 2, {0, 32767, 12345, 32767});
    image->BlendBack(0.0f, source.get());
    EXPECT_PIXEL(image->rows[0][1], 0, 32767, 12345, 32767);

    image->BlendBack(1.0f, source.get());
    // source * 32767/32768 plus this/32768.
    EXPECT_PIXEL(image->rows[1][1], 32766, 0, (32767u * 32767u + 12345u) >> 15, 0);
}

TEST(BlendBack, OutOfRangeAmountsStayOnTheScale) {
    auto source = solid(1, 1, {30000, 30000, 30000, 30000});
    auto image = solid(1, 1, {10000, 10000, 10000, 10000});
    image->BlendBack(-3.0f, source.get());
    EXPECT_PIXEL(image->rows[0][0], 10000, 10000, 10000, 10000);
    image->BlendBack(7.0f, source.get());
    EXPECT_EQ(image->rows[0][0].red, (30000u * 32767u + 10000u) >> 15);
}

TEST(BlendBackCol, FadesTowardTheWorkingColour) {
    auto image = solid(2, 3, {0, 32767, 1000, 32767});
    PixelQv grey{16384, 16384, 16384, 0};
    image->BlendBackCol(0.5f, grey);
    EXPECT_EQ(image->colour.red, 16384);
    // k = 16383, w = 16385.
    EXPECT_PIXEL(image->rows[2][1], (16384u * 16383u) >> 15, (16384u * 16383u + 32767u * 16385u) >> 15,
                 (16384u * 16383u + 1000u * 16385u) >> 15, (32767u * 16385u) >> 15);
}

TEST(CutOut, LuminanceChannelUsesWeightsFiveEightThree) {
    auto white = solid(3, 1, {32767, 32767, 32767, 32767});
    auto source = solid(3, 1, {0, 0, 0, 20000});
    source->rows[0][0].red = 32767;
    source->rows[0][1].green = 32767;
    source->rows[0][2].blue = 32767;
    white->CutOut(source.get(), 4, 0, 1);
    const uint32_t red_luma = (5u * 32767u) >> 4, green_luma = (8u * 32767u) >> 4,
                   blue_luma = (3u * 32767u) >> 4;
    EXPECT_EQ(white->rows[0][0].red, (32767u * red_luma) >> 15);
    EXPECT_EQ(white->rows[0][0].alpha, red_luma);
    EXPECT_EQ(white->rows[0][1].green, (32767u * green_luma) >> 15);
    EXPECT_EQ(white->rows[0][2].blue, (32767u * blue_luma) >> 15);
}

TEST(CutOut, InvertAndAlphaModes) {
    auto source = solid(1, 1, {8192, 0, 0, 16384});
    const uint32_t k = 32767 - 8192;
    const PixelQv start{32767, 16384, 0, 20000};
    for (int mode : {0, 1, 2, 3, 9}) {
        auto image = solid(1, 1, start);
        image->CutOut(source.get(), 0, 1, mode);
        PixelQv p = image->rows[0][0];
        EXPECT_EQ(p.red, (32767u * k) >> 15) << "mode " << mode;
        EXPECT_EQ(p.green, (16384u * k) >> 15) << "mode " << mode;
        uint32_t alpha = mode == 0 ? (k * 20000u) >> 15 : mode == 1 ? k : mode <= 3 ? (k * 16384u) >> 15 : 20000u;
        EXPECT_EQ(p.alpha, alpha) << "mode " << mode;
    }
}

TEST(CutOut, UnknownMatteChannelChangesNothing) {
    auto source = solid(1, 1, {0, 0, 0, 0});
    auto image = solid(1, 1, {111, 222, 333, 444});
    image->CutOut(source.get(), 5, 0, 1);
    image->CutOut(source.get(), -1, 0, 1);
    EXPECT_PIXEL(image->rows[0][0], 111, 222, 333, 444);
}

TEST(Negative, WithSourceNegatesAllFourChannelsAndClearsOwnership) {
    auto source = solid(2, 2, {0, 32767, 10000, 1});
    auto image = solid(2, 2, {5, 5, 5, 5});
    PixelQv *block = image->pixels;
    image->Negative(source.get());
    EXPECT_PIXEL(image->rows[1][0], 32767, 0, 22767, 32766);
    EXPECT_EQ(image->owns_pixels, 0);
    std::free(block);  // the cleared flag hands the block back to us
}

TEST(Negative, InPlaceMarksAWrappedBlockAsOwned) {
    auto *block = static_cast<PixelQv *>(std::calloc(6, sizeof(PixelQv)));
    block[5] = PixelQv{100, 32767, 0, 32000};
    ImagePtr image(new ImageQv(3, 2, 1.0f, block, nullptr));
    ASSERT_EQ(image->owns_pixels, 0);
    image->Negative(nullptr);
    EXPECT_EQ(image->owns_pixels, 1);  // the destructor now frees the block
    EXPECT_EQ(image->pixels, block);
    EXPECT_PIXEL(block[5], 32667, 0, 32767, 767);
    EXPECT_PIXEL(block[0], 32767, 32767, 32767, 32767);
}

TEST(ChannelCopies, EachCopiesOnlyItsOwnChannels) {
    const PixelQv from{1, 2, 3, 4}, to{10, 20, 30, 40};
    auto source = solid(2, 2, from);
    struct Case {
        void (ImageQv::*operation)(ImageQv *);
        PixelQv expected;
    } cases[] = {
        {&ImageQv::CopyAlpha, {10, 20, 30, 4}}, {&ImageQv::CopyRGB, {1, 2, 3, 40}},
        {&ImageQv::CopyR, {1, 20, 30, 40}},     {&ImageQv::CopyG, {10, 2, 30, 40}},
        {&ImageQv::CopyB, {10, 20, 3, 40}},
    };
    for (const Case &c : cases) {
        auto image = solid(2, 2, to);
        ((*image).*c.operation)(source.get());
        EXPECT_PIXEL(image->rows[1][1], c.expected.red, c.expected.green, c.expected.blue, c.expected.alpha);
    }
}

TEST(CopyLumaToChannel, WritesTheNamedChannelAndIgnoresOthers) {
    auto source = solid(1, 1, {32767, 16384, 800, 0});
    const uint16_t luma = uint16_t((5u * 32767u + 8u * 16384u + 3u * 800u) >> 4);
    auto image = solid(1, 1, {1, 2, 3, 4});
    image->CopyLumaToChannel(source.get(), 3);
    EXPECT_PIXEL(image->rows[0][0], 1, 2, 3, luma);
    image->CopyLumaToChannel(source.get(), 1);
    EXPECT_PIXEL(image->rows[0][0], 1, luma, 3, luma);
    image->CopyLumaToChannel(source.get(), 7);
    image->CopyLumaToChannel(source.get(), -1);
    EXPECT_PIXEL(image->rows[0][0], 1, luma, 3, luma);
}

TEST(CopyValues, UnityFactorsCopyBytesOtherwiseScaleAndClamp) {
    auto source = solid(2, 2, {40000, 16000, 100, 32767});  // 40000: off the scale on purpose
    auto image = solid(2, 2, {0, 0, 0, 0});
    image->CopyValues(source.get(), 1.0f, 1.0f, 1.0f, 1.0f);
    EXPECT_TRUE(same_pixels(*image, *source));

    image->CopyValues(source.get(), 0.5f, 3.0f, -1.0f, 0.999f);
    EXPECT_PIXEL(image->rows[0][1], 20000, 32767, 0, 32734);

    image->CopyValues(nullptr, 0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_PIXEL(image->rows[0][1], 20000, 32767, 0, 32734);
}

TEST(InBlend, MixesInFloatWithoutClamping) {
    auto source = solid(1, 2, {30000, 0, 1000, 32767});
    auto image = solid(1, 2, {10000, 32767, 1000, 0});
    image->InBlend(0.25f, source.get());
    EXPECT_PIXEL(image->rows[1][0], 15000, 24575, 1000, 8191);

    auto strong = solid(1, 1, {30000, 30000, 30000, 30000});
    auto weak = solid(1, 1, {10000, 10000, 10000, 10000});
    weak->InBlend(2.0f, strong.get());
    EXPECT_EQ(weak->rows[0][0].red, 50000);  // 2 * 30000 - 10000, past full scale
}

TEST(ShiftIntensity, ChangesNoPixel) {
    auto image = pattern(4, 3, 7);
    ImageQv before(*image);
    image->ShiftIntensity(-5);
    image->ShiftIntensity(5);
    EXPECT_TRUE(same_pixels(*image, before));
}

TEST(HSVTransfer, UseHSVStoresHueSaturationValueAndSourceAlpha) {
    auto source = solid(3, 1, {32767, 0, 0, 1234});
    source->rows[0][1] = PixelQv{0, 32767, 0, 5};
    source->rows[0][2] = PixelQv{0, 0, 32767, 6};
    auto image = solid(3, 1, {9, 9, 9, 9});
    image->UseHSV(source.get());
    EXPECT_PIXEL(image->rows[0][0], 0, 32766, 32766, 1234);
    EXPECT_EQ(image->rows[0][1].red, 10922);
    EXPECT_EQ(image->rows[0][2].red, 21844);
    EXPECT_EQ(image->rows[0][2].alpha, 6);
}

TEST(HSVTransfer, ReplaceHSVUndoesUseHSVWithinAFewUnits) {
    auto source = pattern(5, 4, 3);
    auto hsv = solid(5, 4, {0, 0, 0, 0});
    hsv->UseHSV(source.get());
    auto back = solid(5, 4, {0, 0, 0, 0});
    back->ReplaceHSV(hsv.get());
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x) {
            const PixelQv &a = source->rows[y][x], &b = back->rows[y][x];
            EXPECT_NEAR(b.red, a.red & ~1, 8) << x << "," << y;
            EXPECT_NEAR(b.green, a.green & ~1, 8) << x << "," << y;
            EXPECT_NEAR(b.blue, a.blue & ~1, 8) << x << "," << y;
            EXPECT_EQ(b.alpha, a.alpha);
        }
}

// Every banded operation must give the same picture however its rows are
// split, including more bands than rows.
TEST(Bands, EveryOperationGivesTheSameResultWithOneTwoOrThreeBands) {
    struct Operation {
        const char *name;
        std::function<void(ImageQv &, ImageQv *, ImageQv *)> run;
    };
    const PixelQv grey{16000, 16000, 16000, 16000};
    const std::vector<Operation> operations = {
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
    for (int height : {7, 2}) {
        auto source = pattern(5, height, 1);
        auto matte = pattern(5, height, 2);
        for (const Operation &operation : operations) {
            ImagePtr reference;
            for (int bands : {1, 2, 3}) {
                ProcessorCount count(bands);
                auto image = pattern(5, height, 3);
                image->owns_pixels = 0;  // Negative rewrites the flag; free the block ourselves
                PixelQv *block = image->pixels;
                operation.run(*image, source.get(), matte.get());
                if (!reference) reference.reset(new ImageQv(*image));
                else EXPECT_TRUE(same_pixels(*image, *reference)) << operation.name << " with " << bands
                                                                   << " bands, height " << height;
                image->owns_pixels = 0;
                std::free(block);
            }
        }
    }
}
