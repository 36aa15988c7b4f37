// fizzle-render with float plates and the bubbles layer, checked against
// oiiotool's over and against the plate's own bits.
#include <OpenImageIO/imagebuf.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "render_run.h"

namespace {

using Pixels = std::vector<float>;

Pixels read_pixels(const std::string &path, int channels) {
    OIIO::ImageBuf image(path);
    EXPECT_TRUE(image.read(0, 0, true, OIIO::TypeDesc::FLOAT)) << path << ": " << image.geterror();
    const OIIO::ImageSpec &spec = image.spec();
    Pixels pixels(std::size_t(spec.width) * spec.height * channels);
    image.get_pixels(OIIO::ROI(0, spec.width, 0, spec.height, 0, 1, 0, channels), OIIO::TypeDesc::FLOAT, pixels.data());
    return pixels;
}

void write_pixels(const std::string &path, int width, int height, int channels, const Pixels &pixels,
                  OIIO::TypeDesc type) {
    OIIO::ImageBuf image(OIIO::ImageSpec(width, height, channels, type));
    image.set_pixels(OIIO::ROI(0, width, 0, height, 0, 1, 0, channels), OIIO::TypeDesc::FLOAT, pixels.data());
    ASSERT_TRUE(image.write(path)) << image.geterror();
}

uint32_t bits(float value) {
    uint32_t out;
    std::memcpy(&out, &value, 4);
    return out;
}

constexpr int kWidth = 160, kHeight = 90;

// Values from -0.05 to 16 across the frame, and -0 in one column.
Pixels scene_linear_plate() {
    Pixels plate(std::size_t(kWidth) * kHeight * 3);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (int c = 0; c < 3; ++c) {
                const float t = float(x + c * 7) / float(kWidth + 14);
                plate[(std::size_t(y) * kWidth + x) * 3 + c] = x == 5 ? -0.0f : -0.05f + 16.05f * t * t * float(y + 1) / kHeight;
            }
    return plate;
}

class PlatesRender : public RenderRun {
protected:
    std::vector<std::string> basic(const std::vector<std::string> &more) const {
        std::vector<std::string> arguments = {"--preset", "Basic", "--preroll", "--frames", "3-4", "--size", "160x90",
                                              "--depth", "12", "-q"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
};

}  // namespace

TEST_F(PlatesRender, FloatPlateKeepsItsBitsOutsideTheBubblesAndIsTheLayerOverItInside) {
    const Pixels plate = scene_linear_plate();
    write_pixels(path("plate.exr"), kWidth, kHeight, 3, plate, OIIO::TypeDesc::FLOAT);
    const RunResult result = run(basic({"--scene", path("plate.exr"), "--layer", path("layer.%04d.exr"), "-o",
                                        path("out.%04d.exr")}));
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const Pixels layer = read_pixels(path("layer.0004.exr"), 4);
    const Pixels out = read_pixels(path("out.0004.exr"), 3);
    ASSERT_EQ(0, std::system(("oiiotool " + quoted(path("layer.0004.exr")) + " " + quoted(path("plate.exr")) +
                              " --ch R,G,B,A=1.0 --over --ch R,G,B -d float -o " + quoted(path("reference.exr")))
                                 .c_str()));
    const Pixels reference = read_pixels(path("reference.exr"), 3);
    std::size_t empty = 0, covered = 0;
    float brightest_thin = 0;  // the layer's largest colour where coverage is under 0.1
    for (std::size_t i = 0; i < std::size_t(kWidth) * kHeight; ++i) {
        const float *l = &layer[i * 4];
        const bool is_empty = l[0] == 0 && l[1] == 0 && l[2] == 0 && l[3] == 0;
        (is_empty ? empty : covered) += 1;
        if (l[3] < 0.1f) brightest_thin = std::max({brightest_thin, l[0], l[1], l[2]});
        for (int c = 0; c < 3; ++c) {
            const std::size_t at = i * 3 + c;
            if (is_empty) {
                ASSERT_EQ(bits(out[at]), bits(plate[at])) << "pixel " << i;
            } else {
                const float tolerance = std::ldexp(1.0f, -10) * std::max(1.0f, std::fabs(reference[at]));
                ASSERT_NEAR(out[at], reference[at], tolerance) << "pixel " << i;
            }
        }
    }
    EXPECT_GT(covered, 100u);
    EXPECT_GT(empty, 1000u);
    // Highlights beyond a bubble's coverage are light over black: converted
    // to linear they stay within what white over black gives.
    EXPECT_GT(brightest_thin, 0.0f);
    EXPECT_LE(brightest_thin, 1.1f);
}

TEST_F(PlatesRender, NonFiniteSceneValuesAreKeptWhereNoBubbleFallsWithOneWarning) {
    Pixels plate = scene_linear_plate();
    // The top rows: bubbles rise from the bottom tenth and do not get there by frame 4.
    plate[0] = std::numeric_limits<float>::quiet_NaN();
    plate[4] = std::numeric_limits<float>::infinity();
    plate[8] = -std::numeric_limits<float>::infinity();
    write_pixels(path("plate.exr"), kWidth, kHeight, 3, plate, OIIO::TypeDesc::HALF);
    const RunResult result = run(basic({"--scene", path("plate.exr"), "-o", path("out.%04d.exr")}));
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find("warning: "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("3 NaN or infinite"), std::string::npos) << result.err;
    const Pixels out = read_pixels(path("out.0003.exr"), 3);
    EXPECT_TRUE(std::isnan(out[0]));
    EXPECT_EQ(out[4], std::numeric_limits<float>::infinity());
    EXPECT_EQ(out[8], -std::numeric_limits<float>::infinity());
    OIIO::ImageBuf written(path("out.0003.exr"));
    ASSERT_TRUE(written.init_spec(written.name(), 0, 0));
    EXPECT_EQ(written.spec().format, OIIO::TypeDesc::HALF);  // the plate's own type
}

TEST_F(PlatesRender, IntegerScenesKeepTheirBytesAndTheLayerIsTheSameOnAnyProcessorCount) {
    const RunResult plain = run(basic({"-o", path("plain.%04d.png"), "--processors", "2"}));
    ASSERT_EQ(plain.exit_code, 0) << plain.err;
    const RunResult one = run(basic({"-o", path("one.%04d.png"), "--layer", path("one.%04d.tif"), "--processors", "1"}));
    const RunResult three =
        run(basic({"-o", path("three.%04d.png"), "--layer", path("three.%04d.exr"), "--processors", "3"}));
    ASSERT_EQ(one.exit_code, 0) << one.err;
    ASSERT_EQ(three.exit_code, 0) << three.err;
    for (const char *frame : {"0003", "0004"}) {
        const std::string plain_bytes = slurp(path(std::string("plain.") + frame + ".png"));
        EXPECT_EQ(slurp(path(std::string("one.") + frame + ".png")), plain_bytes);
        EXPECT_EQ(slurp(path(std::string("three.") + frame + ".png")), plain_bytes);
        // 16-bit and half samples of the same layer.
        const Pixels a = read_pixels(path(std::string("one.") + frame + ".tif"), 4);
        const Pixels b = read_pixels(path(std::string("three.") + frame + ".exr"), 4);
        ASSERT_EQ(a.size(), b.size());
        for (std::size_t i = 0; i < a.size(); ++i) ASSERT_NEAR(a[i], b[i], 1e-3) << i;
    }
}

TEST_F(PlatesRender, TheLayerOverAnIntegerPlateIsTheRenderWithinItsQuantisation) {
    Pixels plate(std::size_t(kWidth) * kHeight * 3);
    for (std::size_t i = 0; i < plate.size(); ++i) plate[i] = float((i * 37) % 256) / 255.0f;
    write_pixels(path("plate.tif"), kWidth, kHeight, 3, plate, OIIO::TypeDesc::UINT16);
    const RunResult result = run(basic({"--scene", path("plate.tif"), "--layer", path("layer.%04d.exr"), "-o",
                                        path("out.%04d.tif")}));
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const Pixels scene = read_pixels(path("plate.tif"), 3);
    const Pixels layer = read_pixels(path("layer.0004.exr"), 4);
    const Pixels out = read_pixels(path("out.0004.tif"), 3);
    std::size_t close = 0, samples = 0;
    double total = 0;
    for (std::size_t i = 0; i < std::size_t(kWidth) * kHeight; ++i)
        for (int c = 0; c < 3; ++c) {
            // The scene as the 12-bit host holds it; the render clamps to 1.
            const float held = std::floor(scene[i * 3 + c] * 4095.0f + 0.5f) / 4095.0f;
            const float over = std::min(1.0f, layer[i * 4 + c] + held * (1.0f - layer[i * 4 + 3]));
            const double error = std::fabs(over - out[i * 3 + c]);
            close += error <= 3.0 / 4095.0;
            total += error;
            ++samples;
        }
    // A few 12-bit levels (each render rounds, half floats hold the layer),
    // except where overlapping bubbles clamped inside the effect over this
    // plate: no layer can repeat that.
    EXPECT_GT(double(close) / double(samples), 0.99);
    EXPECT_LT(total / double(samples), 2.0 / 4095.0);
}

TEST_F(PlatesRender, BadColourAndLayerSettingsAreRefusedInOneLine) {
    write_pixels(path("plate.exr"), kWidth, kHeight, 3, scene_linear_plate(), OIIO::TypeDesc::HALF);
    std::ofstream(path("garbage.ocio")) << "this: [is not a config\n";
    const std::string config = std::string(FIZZLE_TEST_DATA) + "/scene_linear.ocio";
    const std::string out = path("out.%04d.exr");
    expect_refused(basic({"--layer", path("./out.####.exr"), "-o", out}), {"--layer", "same files"});
    expect_refused(basic({"--scene", path("plate.exr"), "--scene-space", "ACEScg", "--colour-config", config, "-o", out}),
                   {"ACEScg", "lin_rec709", "sRGB"});
    expect_refused(basic({"--working-space", "nonesuch", "-o", out}), {"nonesuch", "linear"});
    expect_refused(basic({"--colour-config", path("missing.ocio"), "-o", out}), {"missing.ocio"});
    expect_refused(basic({"--colour-config", path("garbage.ocio"), "-o", out}), {"garbage.ocio"});
    expect_refused(basic({"--scene", path("plate.exr"), "-o", path("out.%04d.png")}), {"float"});
    expect_refused(basic({"--layer", path("layer.%04d.png"), "--layer-type", "half", "-o", out}), {"--layer"});
}
