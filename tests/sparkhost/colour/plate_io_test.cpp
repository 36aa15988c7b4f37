// Float plates, colour conversions and the bubbles layer's arithmetic.
#include "sparkhost/colour/plate_io.h"

#include <Imath/half.h>
#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <vector>

#include "sparkhost/colour/bubble_layer.h"
#include "sparkhost/core/error.h"

namespace {

namespace fs = std::filesystem;
using sparkhost::PlateImage;

std::string output_path(const std::string &name) {
    fs::create_directories(FIZZLE_TEST_OUTPUT);
    return (fs::path(FIZZLE_TEST_OUTPUT) / name).string();
}

uint32_t bits(float value) {
    uint32_t out;
    std::memcpy(&out, &value, 4);
    return out;
}

std::string config_path() { return std::string(FIZZLE_TEST_DATA) + "/scene_linear.ocio"; }

}  // namespace

TEST(PlateFiles, FloatSamplesComeBackBitForBitNegativesHugeValuesAndNonFiniteIncluded) {
    PlateImage image(4, 2, 3);
    const float values[] = {-0.05f, 16.0f, 0.18f, -0.0f, 65504.0f, 1e-8f, std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN()};
    for (std::size_t i = 0; i < image.pixels.size(); ++i) image.pixels[i] = values[i % 8];
    const std::string path = output_path("plate_bits.exr");
    sparkhost::AtomicFile file(path);
    sparkhost::write_plate(file, image, sparkhost::SampleType::Float, "piz");
    file.commit();
    const sparkhost::PlateInfo info = sparkhost::probe_plate(path);
    EXPECT_TRUE(info.is_float());
    EXPECT_EQ(info.width, 4);
    const PlateImage back = sparkhost::read_plate(path);
    ASSERT_EQ(back.pixels.size(), image.pixels.size());
    for (std::size_t i = 0; i < image.pixels.size(); ++i) EXPECT_EQ(bits(back.pixels[i]), bits(image.pixels[i])) << i;
}

// A plate written with only part of its frame's pixels (a data window inside
// the display window) is the whole frame, 0 around its pixels; one with
// pixels outside its frame is refused, naming the file.
TEST(PlateFiles, APlateWithPixelsForPartOfItsFrameIsTheFrameAndOverscanIsRefused) {
    auto write_window = [](const std::string &name, int x, int y, int width, int height) {
        OIIO::ImageSpec spec(width, height, 3, OIIO::TypeDesc::HALF);
        spec.x = x;
        spec.y = y;
        spec.full_x = spec.full_y = 0;
        spec.full_width = 8;
        spec.full_height = 6;
        OIIO::ImageBuf image(spec);
        const float value[3] = {16.0f, -0.125f, 0.5f};  // exact in half
        OIIO::ImageBufAlgo::fill(image, value);
        EXPECT_TRUE(image.write(output_path(name))) << image.geterror();
        return output_path(name);
    };
    const std::string inside = write_window("plate_window.exr", 2, 1, 3, 4);
    const sparkhost::PlateInfo info = sparkhost::probe_plate(inside);
    EXPECT_EQ(info.width, 8);
    EXPECT_EQ(info.height, 6);
    const PlateImage plate = sparkhost::read_plate(inside);
    ASSERT_EQ(plate.width, 8);
    ASSERT_EQ(plate.height, 6);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) {
            const bool held = x >= 2 && x < 5 && y >= 1 && y < 5;
            EXPECT_EQ(plate.row(y)[3 * x], held ? 16.0f : 0.0f) << x << "," << y;
            EXPECT_EQ(plate.row(y)[3 * x + 1], held ? -0.125f : 0.0f) << x << "," << y;
        }
    const std::string overscan = write_window("plate_overscan.exr", -2, 0, 12, 6);
    for (auto call : {+[](const std::string &path) { sparkhost::probe_plate(path); },
                      +[](const std::string &path) { sparkhost::read_plate(path); }}) {
        try {
            call(overscan);
            ADD_FAILURE() << "overscan accepted";
        } catch (const sparkhost::Error &error) {
            const std::string text = error.what();
            EXPECT_NE(text.find("plate_overscan.exr"), std::string::npos) << text;
            EXPECT_NE(text.find("outside its display window"), std::string::npos) << text;
        }
    }
}

// Half rounding must be the image library's to the bit, or a half plate
// would change where no bubble falls. Every half goes through, and floats
// at and around each half and halfway between neighbours (where rounding
// to even decides), plus NaNs with payloads and a spread of other floats.
TEST(PlateFiles, HalfRoundingIsTheLibrarysForEveryHalfAndTheFloatsBetween) {
    std::vector<float> samples;
    for (uint32_t h = 0; h < 0x10000; ++h) {
        Imath::half half;
        half.setBits(uint16_t(h));
        const uint32_t at = bits(float(half));
        for (uint32_t nearby : {at - 1, at, at + 1, at + 0x1000, at + 0xfff, at + 0x1001}) {
            float value;
            std::memcpy(&value, &nearby, 4);
            samples.push_back(value);
        }
    }
    for (uint32_t spread = 0; spread < 0xffffffffu - 65537u; spread += 65537u) {
        float value;
        std::memcpy(&value, &spread, 4);
        samples.push_back(value);
    }
    std::vector<float> rounded = samples;
    // An odd count leaves a tail that takes the one-at-a-time path.
    rounded.push_back(0.1f);
    sparkhost::round_to_type(rounded.data(), rounded.size(), sparkhost::SampleType::Half);
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (bits(rounded[i]) != bits(float(Imath::half(samples[i]))) && ++wrong < 5)
            ADD_FAILURE() << "0x" << std::hex << bits(samples[i]) << " rounds to 0x" << bits(rounded[i])
                          << ", not 0x" << bits(float(Imath::half(samples[i])));
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(bits(rounded.back()), bits(float(Imath::half(0.1f))));
}

TEST(ColourConfig, WorkingSpaceConversionAgreesWithOcioconvert) {
    // Scene-linear values through the sRGB curve and back, on both sides
    // of its linear toe and above 1.
    PlateImage image(8, 1, 3);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) image.pixels[i] = float(i) * float(i) / 180.0f;
    const std::string in = output_path("ocio_in.exr"), reference = output_path("ocio_reference.exr");
    sparkhost::AtomicFile file(in);
    sparkhost::write_plate(file, image, sparkhost::SampleType::Float, "");
    file.commit();
    const std::string command = "OCIO='" + config_path() + "' ocioconvert '" + in + "' lin_rec709 '" + reference +
                                "' sRGB >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    const PlateImage expected = sparkhost::read_plate(reference);

    auto config = sparkhost::open_colour_config(config_path());
    auto to_working = config->conversion("lin_rec709", "sRGB");
    EXPECT_FALSE(to_working->identity());
    PlateImage converted = image;
    to_working->apply(converted.pixels.data(), 8, 3);
    ASSERT_EQ(expected.pixels.size(), converted.pixels.size());
    for (std::size_t i = 0; i < converted.pixels.size(); ++i)
        EXPECT_NEAR(converted.pixels[i], expected.pixels[i], 1e-5 * std::max(1.0f, expected.pixels[i])) << i;
    config->conversion("sRGB", "lin_rec709")->apply(converted.pixels.data(), 8, 3);
    for (std::size_t i = 0; i < converted.pixels.size(); ++i)
        EXPECT_NEAR(converted.pixels[i], image.pixels[i], 1e-5 * std::max(1.0f, image.pixels[i])) << i;
}

TEST(ColourConfig, UnknownSpacesAndUnreadableConfigsAreOneLineErrorsNamingWhatThereIs) {
    auto config = sparkhost::open_colour_config(config_path());
    try {
        config->conversion("ACEScg", "sRGB");
        FAIL();
    } catch (const sparkhost::Error &error) {
        const std::string text = error.what();
        EXPECT_NE(text.find("'ACEScg'"), std::string::npos) << text;
        EXPECT_NE(text.find("lin_rec709, sRGB, raw"), std::string::npos) << text;
        EXPECT_EQ(text.find('\n'), std::string::npos);
    }
    EXPECT_NO_THROW(config->conversion("srgb", "LIN_REC709"));  // names are not case-sensitive
    EXPECT_EQ(config->role("scene_linear"), "lin_rec709");
    EXPECT_THROW(sparkhost::open_colour_config(output_path("no_such.ocio")), sparkhost::Error);
}

TEST(BubbleLayer, RendersOverBlackAndGreyGiveColourAndCoverage) {
    const sparkhost::FrameFormat format{3, 2, sparkhost::Depth::Bits12};
    const int grey = sparkhost::layer_grey_level(format.depth);
    sparkhost::Frame black = sparkhost::constant_frame(format, 0);
    sparkhost::Frame over_grey = sparkhost::constant_frame(format, grey);
    // Bottom-left: colour at coverage 0.5, red clamped over the grey so only
    // green and blue tell the coverage; top-right: light added with no coverage.
    for (int c = 0; c < 3; ++c) {
        black.set_value(0, 0, c, c == 0 ? 4000 : 1024);
        over_grey.set_value(0, 0, c, c == 0 ? 4095 : 1024 + grey / 2);
        black.set_value(2, 1, c, 100);
        over_grey.set_value(2, 1, c, 100 + grey);
    }
    const PlateImage layer = sparkhost::layer_from_renders(black, over_grey);
    const float *bottom_left = layer.row(1);
    EXPECT_FLOAT_EQ(bottom_left[0], 4000.0f / 4095.0f);
    EXPECT_FLOAT_EQ(bottom_left[3], 0.5f);
    const float *top_right = layer.row(0) + 8;
    EXPECT_FLOAT_EQ(top_right[3], 0.0f);
    EXPECT_FLOAT_EQ(top_right[1], 100.0f / 4095.0f);
    for (int c = 0; c < 4; ++c) EXPECT_EQ(bits(layer.row(0)[c]), 0u);
}

// Wide enough for whole runs of empty pixels, and a bubble pixel after them.
TEST(BubbleLayer, OverKeepsThePlatesBitsWhereTheLayerIsEmptyAndCountsNonFiniteValues) {
    constexpr int kWidth = 70, kBubble = 41;  // an odd pixel: -0.05, 2, inf, 1 below
    PlateImage layer(kWidth, 1, 4), plate(kWidth, 1, 4);
    const float plate_values[] = {-0.0f, std::numeric_limits<float>::quiet_NaN(), 16.0f, 0.5f,
                                  -0.05f, 2.0f, std::numeric_limits<float>::infinity(), 1.0f};
    for (std::size_t i = 0; i < plate.pixels.size(); ++i) plate.pixels[i] = plate_values[i % 8];
    const float bubble[] = {0.25f, 0.5f, 0.125f, 0.5f};
    std::copy(std::begin(bubble), std::end(bubble), layer.row(0) + 4 * kBubble);
    layer.row(0)[4 * 3] = -0.0f;  // empty too
    EXPECT_EQ(sparkhost::count_non_finite(plate), std::size_t(kWidth));
    PlateImage out;
    sparkhost::composite_over(layer, plate, out);
    PlateImage in_place = plate;
    sparkhost::composite_over(layer, in_place);
    ASSERT_EQ(out.pixels.size(), plate.pixels.size());
    for (std::size_t i = 0; i < plate.pixels.size(); ++i) {
        EXPECT_EQ(bits(out.pixels[i]), bits(in_place.pixels[i])) << i;
        if (i / 4 != kBubble) {
            EXPECT_EQ(bits(out.pixels[i]), bits(plate.pixels[i])) << i;
        }
    }
    const float *under = out.row(0) + 4 * kBubble;
    EXPECT_FLOAT_EQ(under[0], 0.25f - 0.025f);
    EXPECT_FLOAT_EQ(under[1], 1.5f);
    EXPECT_EQ(under[2], std::numeric_limits<float>::infinity());
    EXPECT_FLOAT_EQ(under[3], 1.0f);
}

TEST(BubbleLayer, ConversionKeepsEmptyPixelsAtZeroAndWorksOnStraightColour) {
    auto config = sparkhost::open_colour_config(config_path());
    auto to_linear = config->conversion("sRGB", "lin_rec709");
    PlateImage layer(2, 1, 4);
    const float values[] = {0, 0, 0, 0, 0.25f, 0.25f, 0.25f, 0.5f};
    std::copy(std::begin(values), std::end(values), layer.pixels.begin());
    sparkhost::convert_layer(layer, *to_linear);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(bits(layer.pixels[i]), 0u);
    float straight[3] = {0.5f, 0.5f, 0.5f};
    to_linear->apply(straight, 1, 3);
    EXPECT_NEAR(layer.pixels[4], straight[0] * 0.5f, 1e-6);
    EXPECT_FLOAT_EQ(layer.pixels[7], 0.5f);
}

TEST(BubbleLayer, LightBeyondCoverageIsConvertedAsLightOverBlackNotDividedByTheCoverage) {
    auto config = sparkhost::open_colour_config(config_path());
    auto to_linear = config->conversion("sRGB", "lin_rec709");
    auto linear = [&to_linear](float value) {
        float pixel[3] = {value, value, value};
        to_linear->apply(pixel, 1, 3);
        return pixel[0];
    };
    // A highlight at coverage 0.01 (red far beyond it, green within it), and
    // light with no coverage at all.
    PlateImage layer(2, 1, 4);
    const float values[] = {0.38f, 0.005f, 0.0f, 0.01f, 0.2f, 0.2f, 0.2f, 0.0f};
    std::copy(std::begin(values), std::end(values), layer.pixels.begin());
    sparkhost::convert_layer(layer, *to_linear);
    EXPECT_NEAR(layer.pixels[0], 0.01f + linear(0.37f), 1e-6);
    EXPECT_NEAR(layer.pixels[1], 0.01f * linear(0.5f), 1e-7);
    EXPECT_EQ(layer.pixels[2], 0.0f);
    EXPECT_FLOAT_EQ(layer.pixels[3], 0.01f);
    for (int c = 4; c < 7; ++c) EXPECT_NEAR(layer.pixels[c], linear(0.2f), 1e-6);
    EXPECT_EQ(layer.pixels[7], 0.0f);
}

TEST(ColourConfig, DisplayTransformAgreesWithOiiotoolAndNamesWhatThereIs) {
    auto config = sparkhost::open_colour_config(config_path());
    EXPECT_EQ(config->displays(), std::vector<std::string>{"sRGB"});
    EXPECT_EQ(config->views("sRGB"), (std::vector<std::string>{"Display", "Raw"}));
    // Scene-linear values from below 0 to far above 1, through the view.
    PlateImage image(6, 1, 3);
    const float values[] = {-0.05f, 0.0f, 0.002f, 0.18f, 0.5f, 1.0f, 2.0f, 16.0f, 0.01f};
    for (std::size_t i = 0; i < image.pixels.size(); ++i) image.pixels[i] = values[i % 9];
    const std::string in = output_path("display_in.exr"), reference = output_path("display_reference.exr");
    sparkhost::AtomicFile file(in);
    sparkhost::write_plate(file, image, sparkhost::SampleType::Float, "");
    file.commit();
    const std::string command = "oiiotool --colorconfig '" + config_path() + "' '" + in +
                                "' --iscolorspace lin_rec709 --ociodisplay sRGB Display -d float -o '" + reference +
                                "' >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    const PlateImage expected = sparkhost::read_plate(reference);
    config->display_conversion("lin_rec709", "sRGB", "Display")->apply(image.pixels.data(), 6, 3);
    ASSERT_EQ(expected.pixels.size(), image.pixels.size());
    for (std::size_t i = 0; i < image.pixels.size(); ++i)
        EXPECT_NEAR(image.pixels[i], expected.pixels[i], 1e-5 * std::max(1.0f, std::fabs(expected.pixels[i]))) << i;

    try {
        config->display_conversion("lin_rec709", "sRGB", "Film");
        FAIL();
    } catch (const sparkhost::Error &error) {
        EXPECT_NE(std::string(error.what()).find("'Film'"), std::string::npos) << error.what();
        EXPECT_NE(std::string(error.what()).find("Display, Raw"), std::string::npos) << error.what();
    }
}
