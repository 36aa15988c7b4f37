// fizzle-render's --overlay and --overlay-svg: the viewer overlay drawn over
// the written frames exactly as the host's viewer records it, SVG files per
// frame, and refusals that write nothing.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "sparkhost/frame.h"
#include "sparkhost/host.h"
#include "sparkhost/image_io.h"
#include "sparkhost/viewer.h"

namespace fs = std::filesystem;
using namespace sparkhost;

namespace {

std::string quoted(const std::string &text) {
    std::string result = "'";
    for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

class OverlayOutput : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "fizzle-overlay-XXXXXX").string();
        dir_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(dir_); }

    std::string path(const std::string &name) const { return (dir_ / name).string(); }

    // Exit code; stderr is left in err_.
    int run(const std::vector<std::string> &arguments) {
        std::string command = quoted(FIZZLE_RENDER_PATH) + " -q --size 80x60 --processors 2";
        for (const std::string &argument : arguments) command += " " + quoted(argument);
        command += " 2>" + quoted(path("err.txt")) + " >/dev/null </dev/null";
        int status = std::system(command.c_str());
        std::ifstream in(path("err.txt"));
        std::stringstream text;
        text << in.rdbuf();
        err_ = text.str();
        fs::remove(path("err.txt"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    int files() const {
        int count = 0;
        for (const auto &entry : fs::directory_iterator(dir_)) count += entry.is_regular_file();
        return count;
    }

    fs::path dir_;
    std::string err_;
};

}  // namespace

TEST_F(OverlayOutput, FramesCarryTheOverlayTheViewerDrawsAndSvgFilesFollow) {
    ASSERT_EQ(run({"--frames", "1-2", "-o", path("plain.%04d.png")}), 0) << err_;
    ASSERT_EQ(run({"--frames", "1-2", "--overlay", "--overlay-svg", path("ov.####.svg"), "-o",
                   path("over.%04d.png")}),
              0)
        << err_;

    // The same overlay as our viewer draws it, over the plain frame.
    Settings settings;
    settings.format = {80, 60, Depth::Bits8};
    settings.processors = 2;
    settings.message_sink = [](const Message &) {};
    Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    host.initialise();
    ASSERT_TRUE(host.process(1));
    Viewer viewer(host);
    const std::vector<GlPrimitive> overlay = viewer.draw();
    Frame expected = read_image(path("plain.0001.png"), Depth::Bits8);
    DrawOverFrame(overlay, expected);
    EXPECT_FALSE(overlay.empty()) << "the emitter and its band are always drawn";
    EXPECT_TRUE(read_image(path("over.0001.png"), Depth::Bits8) == expected);

    for (const char *name : {"ov.0001.svg", "ov.0002.svg"}) {
        std::ifstream svg(path(name));
        std::string first_line;
        std::getline(svg, first_line);
        EXPECT_EQ(first_line.rfind("<svg", 0), 0u) << name;
        EXPECT_NE(first_line.find("width=\"80\" height=\"60\""), std::string::npos) << first_line;
    }
}

TEST_F(OverlayOutput, BadSvgPatternsAreRefusedBeforeAnyFrame) {
    struct Case {
        std::vector<std::string> arguments;
        const char *needle;
    };
    const Case cases[] = {
        {{"--frames", "1-2", "--overlay-svg", path("one.svg")}, "frame number"},
        {{"--overlay-svg", path("missing/ov.svg")}, "does not exist"},
    };
    for (const Case &c : cases) {
        std::vector<std::string> arguments = c.arguments;
        arguments.insert(arguments.end(), {"-o", path("out.%04d.png")});
        EXPECT_NE(run(arguments), 0);
        EXPECT_NE(err_.find("--overlay-svg"), std::string::npos) << err_;
        EXPECT_NE(err_.find(c.needle), std::string::npos) << err_;
        EXPECT_EQ(files(), 0);
    }
}
