// fizzle-render run as a program: its help, its one-line errors for bad
// arguments, inputs and outputs (with nothing written), and a real render.
#include <gtest/gtest.h>

#include <OpenImageIO/imageio.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "sparkhost/frame.h"
#include "sparkhost/host.h"
#include "sparkhost/image_io.h"

namespace fs = std::filesystem;
using sparkhost::Depth;
using sparkhost::Frame;
using sparkhost::FrameFormat;

namespace {

struct Outcome {
    int exit_code = -1;
    std::string out, err;
};

std::string quoted(const std::string &text) {
    std::string result = "'";
    for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string slurp(const fs::path &path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

int line_count(const std::string &text) {
    int lines = 0;
    for (char c : text) lines += c == '\n';
    return lines;
}

// Each test gets a fresh directory to run in and write to.
class FizzleRender : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "fizzle-render-XXXXXX").string();
        dir_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(dir_); }

    std::string path(const std::string &name) const { return (dir_ / name).string(); }

    Outcome run(const std::vector<std::string> &arguments) const {
        std::string command = quoted(FIZZLE_RENDER_PATH);
        for (const std::string &argument : arguments) command += " " + quoted(argument);
        command += " >" + quoted(path("stdout.txt")) + " 2>" + quoted(path("stderr.txt")) + " </dev/null";
        Outcome result;
        int status = std::system(command.c_str());
        result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = slurp(path("stdout.txt"));
        result.err = slurp(path("stderr.txt"));
        fs::remove(path("stdout.txt"));
        fs::remove(path("stderr.txt"));
        return result;
    }

    // Images the run left in the directory.
    int written_images() const {
        int count = 0;
        for (const auto &entry : fs::directory_iterator(dir_)) count += entry.path().extension() != ".txt";
        return count;
    }

    // Fails with a one-line message that names `needle`, and writes no frame.
    void expect_refused(const std::vector<std::string> &arguments, const std::string &needle) {
        int before = written_images();
        Outcome result = run(arguments);
        EXPECT_NE(result.exit_code, 0) << result.err;
        EXPECT_EQ(line_count(result.err), 1) << result.err;
        EXPECT_NE(result.err.find(needle), std::string::npos) << "wanted '" << needle << "' in: " << result.err;
        EXPECT_EQ(written_images(), before);
    }

    static bool plugin_renders() {
        sparkhost::Host host;
        host.load(FIZZLE_PLUGIN_PATH);
        return host.exports("SparkInitialise") && host.exports("SparkProcess");
    }

    fs::path dir_;
};

}  // namespace

TEST_F(FizzleRender, HelpExplainsEveryOption) {
    Outcome result = run({"--help"});
    EXPECT_EQ(result.exit_code, 0);
    for (const char *option : {"--frames", "--size", "--depth", "--aspect", "--proxy", "--processors", "--scene",
                               "--birth", "--burst", "--reflection", "--output", "--plugin", "--quiet"})
        EXPECT_NE(result.out.find(option), std::string::npos) << option;
}

TEST_F(FizzleRender, BadArgumentsFailNamingTheOption) {
    std::string out = path("f.%04d.png");
    struct Case {
        std::vector<std::string> arguments;
        const char *needle;
    };
    const Case cases[] = {
        {{"--frames", "3-1", "-o", out}, "--frames"},   {{"--frames", "0-2", "-o", out}, "--frames"},
        {{"--frames", "1..4", "-o", out}, "--frames"},  {{"--size", "640x", "-o", out}, "--size"},
        {{"--size", "0x480", "-o", out}, "--size"},     {{"--depth", "10", "-o", out}, "--depth"},
        {{"--aspect", "-1", "-o", out}, "--aspect"},    {{"--proxy", "1/5", "-o", out}, "--proxy"},
        {{"--processors", "0", "-o", out}, "--processors"}, {{"--processors", "128", "-o", out}, "--processors"},
        {{"--bogus", "-o", out}, "--bogus"},            {{"--frames", "1-3"}, "--output"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.arguments[0] + " " + c.arguments[1]);
        expect_refused(c.arguments, c.needle);
    }
}

TEST_F(FizzleRender, MissingInputFailsAtOnceNamingTheFile) {
    expect_refused({"--frames", "1-3", "--scene", path("missing.%04d.exr"), "-o", path("x.%04d.png")},
                   "missing.0001.exr");
}

TEST_F(FizzleRender, GapInAnInputSequenceFailsBeforeTheFirstFrame) {
    FrameFormat format{32, 24, Depth::Bits8};
    sparkhost::write_image(path("matte.0001.png"), Frame(format));
    sparkhost::write_image(path("matte.0003.png"), Frame(format));
    expect_refused({"--frames", "1-3", "--size", "32x24", "--birth", path("matte.####.png"), "-o",
                    path("x.%04d.png")},
                   "matte.0002.png");
}

TEST_F(FizzleRender, InputOfAnotherSizeFailsNamingBothSizes) {
    sparkhost::write_image(path("plate.png"), Frame(FrameFormat{32, 24, Depth::Bits8}));
    expect_refused({"--size", "64x48", "--reflection", path("plate.png"), "-o", path("x.png")}, "32x24");
    expect_refused({"--size", "64x48", "--reflection", path("plate.png"), "-o", path("x.png")}, "64x48");
}

TEST_F(FizzleRender, UnreadableInputFailsNamingTheFile) {
    std::ofstream(path("notanimage.png")) << "not an image";
    expect_refused({"--burst", path("notanimage.png"), "-o", path("x.png")}, "notanimage.png");
}

TEST_F(FizzleRender, UnwritableOutputFailsBeforeRendering) {
    expect_refused({"-o", path("no/such/dir/x.%04d.png")}, "no/such/dir");
    expect_refused({"--frames", "1-2", "-o", path("x.png")}, "frame number");
    expect_refused({"-o", path("x.%04d.nosuchformat")}, ".nosuchformat");
    expect_refused({"-o", "/etc/passwd/x.png"}, "/etc/passwd");
}

TEST_F(FizzleRender, MissingPluginFailsNamingIt) {
    expect_refused({"--plugin", path("nowhere.spark"), "-o", path("x.png")}, "nowhere.spark");
}

TEST_F(FizzleRender, RendersEveryFrameQuietlyWhenNotOnATerminal) {
    if (!plugin_renders()) GTEST_SKIP() << "plug-in exports no frame cycle yet";
    Outcome result = run({"--frames", "2-4", "--size", "48x32", "--processors", "3", "-o", path("out.%04d.png")});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(result.err, "");
    for (int frame = 2; frame <= 4; ++frame) {
        std::string file = path("out.000" + std::to_string(frame) + ".png");
        ASSERT_TRUE(fs::exists(file)) << file;
        sparkhost::ImageSize size = sparkhost::probe_image(file);
        EXPECT_EQ(size.width, 48);
        EXPECT_EQ(size.height, 32);
    }
    EXPECT_EQ(written_images(), 3);
}

TEST_F(FizzleRender, OutputDoesNotDependOnTheProcessorCount) {
    if (!plugin_renders()) GTEST_SKIP() << "plug-in exports no frame cycle yet";
    for (const char *processors : {"1", "5"}) {
        Outcome result = run({"--frames", "1-3", "--size", "40x30", "--depth", "12", "--processors", processors,
                          "-o", path(std::string("p") + processors + ".%04d.tif")});
        ASSERT_EQ(result.exit_code, 0) << result.err;
    }
    FrameFormat format{40, 30, Depth::Bits12};
    for (int frame = 1; frame <= 3; ++frame) {
        std::string number = "000" + std::to_string(frame);
        EXPECT_TRUE(sparkhost::read_image(path("p1." + number + ".tif"), format.depth) ==
                    sparkhost::read_image(path("p5." + number + ".tif"), format.depth))
            << "frame " << frame;
    }
}
