// Starting anywhere in a shot: chunks rendered in any order, one of them
// killed and run again, and the checkpoint cache, against one sequential run.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "render_run.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/files/image_io.h"

namespace fs = std::filesystem;

namespace {

constexpr int kFrames = 24;

class ShotRunnerRun : public RenderRun {
protected:
    void SetUp() override {
        RenderRun::SetUp();
        // A birth matte that moves: simulated frames must read their own.
        const sparkhost::FrameFormat format{64, 36, sparkhost::Depth::Bits8};
        for (int frame = 1; frame <= kFrames; ++frame) {
            sparkhost::Frame matte(format);
            for (int y = 0; y < format.height; ++y)
                for (int x = 0; x < format.width; ++x)
                    for (int c = 0; c < 3; ++c)
                        matte.set_value(x, y, c, std::abs(x - 2 * frame) < 8 && y > 24 ? 255 : 0);
            char name[32];
            std::snprintf(name, sizeof name, "birth.%04d.png", frame);
            sparkhost::write_image(path(name), matte);
        }
        fs::create_directory(path("sequential"));
        ASSERT_EQ(render("sequential", 1, kFrames, {}).exit_code, 0);
    }

    // Bursts, congregation, turbulence, the moving birth matte, pre-roll and
    // an animated control.
    std::vector<std::string> shot() const {
        return {"--preset",  "Gathering", "--preroll",   "--size",           "64x36",
                "--birth",   path("birth.####.png"),     "--set",            "Use Birth Matte=on",
                "--animate", "Density=1:8,24:40",        "--processors",     "2"};
    }

    RunResult render(const std::string &folder, int first, int last, std::vector<std::string> extra) const {
        std::vector<std::string> arguments = shot();
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        for (const std::string &word : {std::string("--frames"), std::to_string(first) + "-" + std::to_string(last),
                                        std::string("-o"), path(folder + "/f.####.png")})
            arguments.push_back(word);
        return run(arguments);
    }

    static std::string bytes(const std::string &file) {
        std::ifstream in(file, std::ios::binary);
        return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }

    // Every frame of first..last in folder equals the sequential render's.
    void expect_sequential(const std::string &folder, int first, int last) const {
        for (int frame = first; frame <= last; ++frame) {
            char name[32];
            std::snprintf(name, sizeof name, "/f.%04d.png", frame);
            const std::string ours = bytes(path(folder + name));
            EXPECT_FALSE(ours.empty()) << folder << name;
            EXPECT_TRUE(ours == bytes(path(std::string("sequential") + name))) << folder << name;
        }
    }

    std::string cache_file(const std::string &cache, int frame) const {
        char suffix[32];
        std::snprintf(suffix, sizeof suffix, ".%06d.state", frame);
        for (const auto &entry : fs::directory_iterator(path(cache)))
            if (entry.path().string().find(suffix) != std::string::npos) return entry.path().string();
        ADD_FAILURE() << "no checkpoint of frame " << frame << " in " << cache;
        return {};
    }
};

}  // namespace

TEST_F(ShotRunnerRun, ChunksInAnyOrderWithOneKilledAndRunAgainEqualOneSequentialRun) {
    fs::create_directory(path("chunks"));
    const std::vector<std::string> cache{"--cache", path("cache"), "--cache-every", "5"};
    RunResult fill = run([&] {
        std::vector<std::string> arguments = shot();
        arguments.insert(arguments.end(), cache.begin(), cache.end());
        for (const char *word : {"--simulate-only", "--frames", "1-16"}) arguments.push_back(word);
        return arguments;
    }());
    ASSERT_EQ(fill.exit_code, 0) << fill.err;

    std::vector<std::string> chunk = cache;
    chunk.push_back("--skip-existing");
    ASSERT_EQ(render("chunks", 17, 24, chunk).exit_code, 0);
    // A node dying in its chunk: killed outright, then the chunk is run again.
    // A whole chunk of this small shot takes a fraction of a second, so the
    // kill comes early, while the program starts (the image library alone
    // takes longer to load); kills while frames are written are the stop
    // tests' subject.
    std::string killed = "FIZZLE_NO_PAUSE=1 timeout -s KILL 0.05 " + quoted(FIZZLE_RENDER_PATH);
    for (const std::string &word : shot()) killed += " " + quoted(word);
    for (const std::string &word : chunk) killed += " " + quoted(word);
    killed += " --frames 9-16 -o " + quoted(path("chunks/f.####.png")) + " >/dev/null 2>&1";
    EXPECT_NE(std::system(killed.c_str()), 0);
    ASSERT_EQ(render("chunks", 1, 8, chunk).exit_code, 0);
    const RunResult again = render("chunks", 9, 16, chunk);
    ASSERT_EQ(again.exit_code, 0) << again.err;
    expect_sequential("chunks", 1, kFrames);
    for (const auto &entry : fs::directory_iterator(path("chunks")))
        EXPECT_EQ(entry.path().extension(), ".png") << "left behind: " << entry.path();

    // Without any cache, a late frame on its own is simulated up to.
    fs::create_directory(path("alone"));
    ASSERT_EQ(render("alone", 20, 21, {}).exit_code, 0);
    expect_sequential("alone", 20, 21);
}

TEST_F(ShotRunnerRun, DamagedForeignNewerOrStaleCheckpointsAreIgnoredWithANote) {
    const std::vector<std::string> cache{"--cache", path("cache"), "--cache-every", "5"};
    fs::create_directory(path("fill"));
    ASSERT_EQ(render("fill", 1, 10, cache).exit_code, 0);
    const std::string newest = cache_file("cache", 10), older = cache_file("cache", 5);
    const std::string good = bytes(newest);

    struct Case {
        const char *why;
        std::function<std::string(std::string)> damage;
    };
    const Case cases[] = {
        {"truncated", [](std::string b) { return b.substr(0, b.size() - 3); }},
        {"not a checkpoint", [](std::string b) { return b.replace(0, 2, "XX"); }},
        {"newer version", [](std::string b) { return b.replace(8, 1, "\x07"); }},
        {"bad checksum", [](std::string b) { return b.replace(b.size() - 1, 1, b.back() == 'a' ? "b" : "a"); }},
        {"another setup or other inputs", [&](std::string) { return bytes(older); }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.why);
        std::ofstream(newest, std::ios::binary | std::ios::trunc) << c.damage(good);
        const std::string folder = std::string("out-") + std::to_string(&c - cases);
        fs::create_directory(path(folder));
        const RunResult result = render(folder, 12, 13, cache);
        ASSERT_EQ(result.exit_code, 0) << result.err;
        EXPECT_NE(result.err.find("ignored: "), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(c.why), std::string::npos) << result.err;
        EXPECT_NE(result.err.find("starting from the checkpoint after frame 5"), std::string::npos) << result.err;
        expect_sequential(folder, 12, 13);
    }

    // An input changed since: every checkpoint after it is stale.
    std::ofstream(newest, std::ios::binary | std::ios::trunc) << good;
    fs::copy_file(path("birth.0004.png"), path("birth.0003.png"), fs::copy_options::overwrite_existing);
    const RunResult result = render("fill", 12, 12, cache);
    EXPECT_NE(result.err.find("another setup or other inputs"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("starting from the checkpoint"), std::string::npos) << result.err;
}

TEST_F(ShotRunnerRun, AnUnwritableCacheOnlyCostsTheCheckpoints) {
    std::ofstream(path("plain-file")) << "not a folder";
    const std::string cache = path("plain-file/cache");
    fs::create_directory(path("out"));
    const RunResult rendered = render("out", 3, 4, {"--cache", cache});
    EXPECT_EQ(rendered.exit_code, 0) << rendered.err;
    EXPECT_NE(rendered.err.find("is not writable"), std::string::npos) << rendered.err;
    expect_sequential("out", 3, 4);

    std::vector<std::string> fill = shot();
    for (const std::string &word : {std::string("--simulate-only"), std::string("--cache"), cache})
        fill.push_back(word);
    expect_refused(fill, {"--cache", "plain-file/cache", "not writable"});
    std::vector<std::string> no_cache = shot();
    no_cache.push_back("--simulate-only");
    expect_refused(no_cache, {"--simulate-only", "--cache"});
}
