// fizzle-render's --overlay and --overlay-svg: the viewer overlay drawn over
// the written frames exactly as the host's viewer records it, SVG files per
// frame, and refusals that write nothing.
#include <fstream>
#include <string>
#include <vector>

#include "render_run.h"
#include "sparkhost/core/host.h"
#include "sparkhost/files/image_io.h"
#include "sparkhost/viewer/viewer.h"

using namespace sparkhost;

using OverlayOutput = RenderRun;

TEST_F(OverlayOutput, FramesCarryTheOverlayTheViewerDrawsAndSvgFilesFollow) {
    const std::vector<std::string> common = {"--size", "80x60", "--processors", "2", "--frames", "1-2"};
    std::vector<std::string> plain = common, over = common;
    plain.insert(plain.end(), {"-o", path("plain.%04d.png")});
    over.insert(over.end(), {"--overlay", "--overlay-svg", path("ov.####.svg"), "-o", path("over.%04d.png")});
    for (const auto *arguments : {&plain, &over}) {
        const RunResult result = run(*arguments);
        ASSERT_EQ(result.exit_code, 0) << result.err;
    }

    // The same overlay as our viewer draws it, over the plain frame.
    Settings settings;
    settings.format = {80, 60, Depth::Bits8};
    settings.processors = 2;
    settings.message_sink = [](const Message &) {};
    Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    host.initialise();
    ASSERT_TRUE(host.process(1));
    const std::vector<GlPrimitive> overlay = Viewer(host).draw();
    EXPECT_FALSE(overlay.empty()) << "the emitter and its band are always drawn";
    Frame expected = read_image(path("plain.0001.png"), Depth::Bits8);
    DrawOverFrame(overlay, expected);
    EXPECT_TRUE(read_image(path("over.0001.png"), Depth::Bits8) == expected);

    for (const char *name : {"ov.0001.svg", "ov.0002.svg"}) {
        const std::string svg = slurp(path(name));
        EXPECT_TRUE(svg.rfind("<svg", 0) == 0 && svg.find("width=\"80\" height=\"60\"") != std::string::npos) << svg;
    }
}

TEST_F(OverlayOutput, BadSvgPatternsAreRefusedBeforeAnyFrame) {
    expect_refused({"--frames", "1-2", "--overlay-svg", path("one.svg"), "-o", path("out.%04d.png")},
                   {"--overlay-svg", "frame number"});
    expect_refused({"--overlay-svg", path("missing/ov.svg"), "-o", path("out.%04d.png")},
                   {"--overlay-svg", "does not exist"});
}
