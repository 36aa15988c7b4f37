// fizzle-render run as a program: its one-line errors for bad arguments,
// inputs and outputs (with nothing written), and real renders.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "render_run.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/files/image_io.h"

using sparkhost::Depth;
using sparkhost::Frame;
using sparkhost::FrameFormat;

using FizzleRender = RenderRun;

TEST_F(FizzleRender, BadArgumentsFailNamingTheOption) {
    const std::string out = path("f.%04d.png");
    const std::vector<std::vector<std::string>> cases = {
        {"--frames", "3-1"}, {"--frames", "0-2"},  {"--frames", "1..4"},  {"--size", "640x"},
        {"--size", "0x480"}, {"--depth", "10"},    {"--aspect", "-1"},    {"--proxy", "1/5"},
        {"--processors", "0"}, {"--processors", "128"}, {"--bogus"},
    };
    for (std::vector<std::string> arguments : cases) {
        SCOPED_TRACE(arguments.front());
        arguments.insert(arguments.end(), {"-o", out});
        expect_refused(arguments, {arguments.front()});
    }
    expect_refused({"--frames", "1-3"}, {"--output"});
}

TEST_F(FizzleRender, HugeAndOverlongValuesAreRefusedInOneLineNotCrashedOn) {
    const std::string out = path("f.%04d.png");
    expect_refused({"--animate", "Density=" + std::string(400, '9') + ":5", "-o", out}, {"--animate", "out of range"});
    expect_refused({"--animate", "Density=1:" + std::string(100000, 'a'), "-o", out}, {"--animate", "Density"});
    expect_refused({"--frames", std::string(100000, '1'), "-o", out}, {"--frames"});
}

TEST_F(FizzleRender, BadInputsOutputsAndPluginFailAtOnceNamingTheFile) {
    const FrameFormat small{32, 24, Depth::Bits8};
    sparkhost::write_image(path("matte.0001.png"), Frame(small));
    sparkhost::write_image(path("matte.0003.png"), Frame(small));
    sparkhost::write_image(path("plate.png"), Frame(small));
    std::ofstream(path("notanimage.png")) << "not an image";
    const std::string x = path("x.%04d.png");
    const struct {
        std::vector<std::string> arguments;
        std::vector<std::string> needles;
    } cases[] = {
        {{"--frames", "1-3", "--scene", path("missing.%04d.exr"), "-o", x}, {"missing.0001.exr"}},
        {{"--frames", "1-3", "--size", "32x24", "--birth", path("matte.####.png"), "-o", x}, {"matte.0002.png"}},
        {{"--size", "64x48", "--reflection", path("plate.png"), "-o", x}, {"32x24", "64x48"}},
        {{"--burst", path("notanimage.png"), "-o", x}, {"notanimage.png"}},
        {{"-o", path("no/such/dir/x.%04d.png")}, {"no/such/dir"}},
        {{"--frames", "1-2", "-o", path("x.png")}, {"frame number"}},
        {{"-o", path("x.%04d.nosuchformat")}, {".nosuchformat"}},
        {{"-o", "/etc/passwd/x.png"}, {"/etc/passwd"}},
        {{"--plugin", path("nowhere.spark"), "-o", x}, {"nowhere.spark"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.needles.front());
        expect_refused(c.arguments, c.needles);
    }
}

TEST_F(FizzleRender, SoapPrerolledRendersEveryFrameQuietlyWhenNotOnATerminal) {
    const RunResult result = run({"--preset", "Soap", "--preroll", "--frames", "2-9", "--size", "160x90",
                                  "--processors", "3", "-o", path("soap.####.exr")});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(files(), 8);
    for (const char *name : {"soap.0002.exr", "soap.0009.exr"}) {
        const sparkhost::ImageSize size = sparkhost::probe_image(path(name));
        EXPECT_TRUE(size.width == 160 && size.height == 90) << name;
    }
}

TEST_F(FizzleRender, OutputDoesNotDependOnTheProcessorCount) {
    for (const char *processors : {"1", "5"}) {
        const RunResult result = run({"--frames", "1-3", "--size", "40x30", "--depth", "12", "--processors",
                                      processors, "-o", path(std::string("p") + processors + ".%04d.tif")});
        ASSERT_EQ(result.exit_code, 0) << result.err;
    }
    for (const char *number : {"0001", "0002", "0003"})
        EXPECT_TRUE(sparkhost::read_image(path(std::string("p1.") + number + ".tif"), Depth::Bits12) ==
                    sparkhost::read_image(path(std::string("p5.") + number + ".tif"), Depth::Bits12))
            << "frame " << number;
}

// --timings adds one line, and only it, to what a quiet render prints (on
// standard error; standard output stays empty); its
// frame count is the frames written, and the two shares of the frames' time add up.
TEST_F(FizzleRender, TimingsSayWhereTheFramesTimeWentInOneLine) {
    const RunResult result = run({"--preset", "Basic", "--frames", "3-6", "--size", "64x36", "--timings", "-q", "-o",
                                  path("t.####.png")});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(result.out, "");  // not even the plug-in's start-up banner
    ASSERT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_EQ(result.err.rfind("fizzle-render: timings: ", 0), 0u) << result.err;
    EXPECT_NE(result.err.find("then 4 frames in"), std::string::npos) << result.err;
    int inside = -1, outside = -1;
    const std::size_t cycle = result.err.find("frame cycle ");
    ASSERT_NE(cycle, std::string::npos);
    ASSERT_EQ(std::sscanf(result.err.c_str() + cycle, "frame cycle %*f s (%d%%), outside it %*f s (%d%%)", &inside,
                          &outside),
              2)
        << result.err;
    EXPECT_NEAR(inside + outside, 100, 1);
}
