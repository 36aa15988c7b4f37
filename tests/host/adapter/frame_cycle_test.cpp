// The exported entry points driven by our host: start-up, refusal, and
// frames passed through the frame cycle at every depth and proxy.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "host/adapter/conversion.h"
#include "host/plugin_host_fixture.h"

using namespace sparkhost;

namespace {

Settings settings_for(int width, int height, Depth depth) {
    Settings settings = quiet_host_settings(depth);
    settings.format = {width, height, depth};
    settings.processors = 3;  // bands of unequal height
    return settings;
}

// Each pixel (x, y) of a frame through a 1/s proxy is the one its proxy sample
// came from: proxy row y/s read row s/2 + (y/s)*s, proxy column x/s read
// column (x/s)*s, both clamped to the proxy. Where the proxy row or column
// was never sampled (past the frame), the cleared output stays black.
Frame after_proxy(const Frame &scene, int s) {
    const int width = scene.width(), height = scene.height();
    const int pw = ProxyExtent(width, s), ph = ProxyExtent(height, s);
    const size_t pixel = size_t(scene.format().bytes_per_pixel());
    Frame expected(scene.format());
    for (int y = 0; y < height && pw > 0 && ph > 0; ++y)
        for (int x = 0; x < width; ++x) {
            const int row = s / 2 + std::min(y / s, ph - 1) * s, column = std::min(x / s, pw - 1) * s;
            if (row < height && s / 2 + column < width)
                std::memcpy(expected.data() + (size_t(y) * width + x) * pixel,
                            scene.data() + (size_t(row) * width + column) * pixel, pixel);
        }
    return expected;
}

// A random picture; in 12-bit the words' low 4 bits are 0, as the host's
// cleared output buffer has them, so the frame can come back byte for byte.
Frame random_frame(const FrameFormat &format, unsigned seed) {
    Frame frame(format);
    std::mt19937 generator(seed);
    for (int y = 0; y < format.height; ++y)
        for (int x = 0; x < format.width; ++x)
            for (int c = 0; c < 3; ++c) frame.set_value(x, y, c, int(generator() % (format.max_value() + 1)));
    return frame;
}

// Loads the plug-in and starts it (its banner kept off the test output). With
// no bubbles born the effect leaves the scene as it is, so a frame shows the
// conversions alone.
std::unique_ptr<Host> started_host(const Settings &settings, std::string *banner = nullptr) {
    auto host = std::make_unique<Host>(settings);
    host->load(FIZZLE_PLUGIN_PATH);
    testing::internal::CaptureStdout();
    EXPECT_EQ(host->initialise(), 2u);
    const std::string out = testing::internal::GetCapturedStdout();
    if (banner) *banner = out;
    host->controls().at("Density").set_value(0);
    return host;
}

bool has_message(const Host &host, Message::Kind kind, const std::string &text) {
    for (const Message &message : host.messages())
        if (message.kind == kind && message.text == text) return true;
    return false;
}

// Sends a random scene and checks that it comes back unchanged.
void expect_scene_returned(Host &host, int frame) {
    Frame scene = random_frame(host.settings().format, unsigned(frame));
    host.set_input(kScene, scene);
    std::optional<Frame> out = host.process(frame);
    ASSERT_TRUE(out) << host.last_failure();
    EXPECT_TRUE(*out == scene) << "frame " << frame;
}

// Bytes the C library has handed out and not had back.
size_t heap_in_use() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace

TEST(FrameCycle, StartUpPrintsTheBannerAndModeAndFullResolutionComesBackByteForByte) {
    const std::string rule(51, '=');
    for (Depth depth : {Depth::Bits8, Depth::Bits12}) {
        std::string banner;
        auto host = started_host(settings_for(37, 23, depth), &banner);
        EXPECT_EQ(host->clips(), 4);
        EXPECT_EQ(banner.rfind(rule + "\nCorvale MP-V5.0.7 Tallow Fizzle for Discreet  \n    UCAPI  Built ", 0), 0u);
        const std::string end = rule + "\n... " + (depth == Depth::Bits12 ? "12 bit" : "8-10 bit") +
                                " mode selected.\nAvailable buffers = 8\n" + std::string(51, '+') + "\n\n";
        EXPECT_EQ(banner.substr(banner.size() - std::min(banner.size(), end.size())), end) << banner;
        EXPECT_TRUE(host->messages().empty());
        for (int frame = 1; frame <= 3; ++frame) expect_scene_returned(*host, frame);
        host->uninitialise();
    }
}

TEST(FrameCycle, EveryProxyDivisorReturnsWholeBlocks) {
    const int divisors[] = {1, 2, 3, 4, 6, 8, 12, 16, 32};
    for (Depth depth : {Depth::Bits8, Depth::Bits12}) {
        auto host = started_host(settings_for(725, 67, depth));
        Frame scene = random_frame(host->settings().format, 7);
        host->set_input(kScene, scene);
        for (int value = 0; value <= 9; ++value) {
            host->settings().proxy = value;
            std::optional<Frame> out = host->process(value + 1);
            ASSERT_TRUE(out) << host->last_failure();
            const int s = value <= 8 ? divisors[value] : 1;  // beyond the list: full resolution
            EXPECT_TRUE(*out == after_proxy(scene, s)) << "1/" << s;
        }
    }
}

TEST(FrameCycle, TooFewBuffersRefusesEveryFrameUntilRestarted) {
    Settings settings = settings_for(64, 48, Depth::Bits8);
    settings.free_buffers = 1;
    std::string banner;
    auto host = started_host(settings, &banner);
    EXPECT_NE(banner.find("ERROR: we need 2 image buffers, but we only got 1.\n"
                          "... Processing will be turned off ...\n"), std::string::npos) << banner;
    EXPECT_TRUE(has_message(*host, Message::Kind::Message, "Insufficient image buffers available! Giving up!"));
    host->clear_messages();
    EXPECT_FALSE(host->process(1));
    EXPECT_FALSE(host->process(2));
    EXPECT_TRUE(has_message(*host, Message::Kind::Message, " Fizzle cannot run due to insufficient buffers."));

    host->settings().free_buffers = 2;
    testing::internal::CaptureStdout();
    host->initialise();
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(host->process(3));
}

TEST(FrameCycle, OldInterfaceWarnsAndStillWorks) {
    Settings settings = settings_for(64, 48, Depth::Bits8);
    settings.api_version = 3.9;
    auto host = started_host(settings);
    EXPECT_TRUE(has_message(*host, Message::Kind::Error,
                            "This version of \"Fizzle\" needs IFFFS 7.0/4.0 (sparks API 4.0) or higher."));
    expect_scene_returned(*host, 1);
}

TEST(FrameCycle, MissingBufferReturnsNothingQuietlyAndTheNextFrameRuns) {
    Settings settings = settings_for(64, 48, Depth::Bits12);
    settings.unavailable_buffers = {5};
    auto host = started_host(settings);
    host->clear_messages();
    EXPECT_FALSE(host->process(1));
    EXPECT_TRUE(host->messages().empty());
    host->settings().unavailable_buffers.clear();
    expect_scene_returned(*host, 2);
}

// Each Host loads its own copy of the plug-in, so a program that starts a
// host per job loads and unloads it again and again; the frame-sized pixel
// blocks the plug-in keeps for reuse must not be lost with each copy.
// (Under the sanitizers the C library's heap is bypassed and this passes as
// it is; their leak check at exit reports the same fault.)
TEST(FrameCycle, UnloadingThePluginGivesItsFrameSizedPixelBlocksBack) {
    auto load_render_unload = [] {
        auto host = started_host(settings_for(1024, 512, Depth::Bits12));  // 4 MB blocks
        ASSERT_TRUE(host->process(1)) << host->last_failure();
        host->uninitialise();
    };
    load_render_unload();  // the host's and libraries' first-use allocations
    const size_t before = heap_in_use();
    for (int run = 0; run < 3; ++run) load_render_unload();
    EXPECT_LT(heap_in_use(), before + (size_t(4) << 20)) << "bytes in use before: " << before;
}
