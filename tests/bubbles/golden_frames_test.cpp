// A few fixed short shots of demo presets, pre-rolled, rendered through the
// real plug-in and compared frame by frame with hashes kept in
// tests/data/golden_hashes.txt. A frame that differs is written to the test
// output folder with a difference picture against the last frame that passed.
//
// A change that alters pixels on purpose regenerates the file in the same
// commit, saying why in the commit message:
//     FIZZLE_UPDATE_GOLDEN=1 build/tests/bubbles_tests --gtest_filter='GoldenFrames.*'
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "golden_report.h"
#include "preset_host.h"

namespace {

const char *const kGoldenFile = FIZZLE_TEST_DATA "/golden_hashes.txt";
constexpr int kFrames = 6;

struct GoldenShot {
    const char *name;  // the key's prefix in the golden file
    const char *preset;
    int width, height;
    PresetLook look;
    std::vector<std::pair<std::string, double>> settings;  // set after the preset is chosen
};

// Light and reflections on at a pixel aspect that is no power of two, in
// 12-bit at proxy 1/3: the sprite resamplers and the proxy path together.
// The dense shot draws thousands of overlapping lit, reflecting and bursting
// bubbles a frame, where the shading's every path is taken many times over.
const GoldenShot kShots[] = {
    {"Basic", "Basic", 96, 64, {}, {}},
    {"Bubbly", "Bubbly", 96, 64, {}, {}},
    {"Champagne", "Champagne", 96, 64, {}, {}},
    {"Under Water 12-bit aspect 0.9 proxy 1/3", "Under Water", 192, 108,
     {sparkhost::Depth::Bits12, 0.9f, 2}, {}},
    {"Basic Density 5000 reflections bursts", "Basic", 96, 64, {},
     {{"Density", 5000}, {"PreRoll", 12}, {"Reflections", 1}, {"Bubbles Burst", 1}}},
};

// Every frame of every shot under "<shot> <frame>".
std::map<std::string, sparkhost::Frame> render_sequence(int processors) {
    std::map<std::string, sparkhost::Frame> frames;
    for (const GoldenShot &shot : kShots) {
        PresetHost rig(shot.width, shot.height, processors, shot.look);
        rig.choose(shot.preset);
        rig.set_controls(shot.settings);
        rig.press_preroll();
        for (int number = 1; number <= kFrames; ++number)
            frames[std::string(shot.name) + " " + std::to_string(number)] = rig.render(number);
    }
    return frames;
}

std::map<std::string, std::string> hashes_of(const std::map<std::string, sparkhost::Frame> &frames) {
    std::map<std::string, std::string> hashes;
    for (const auto &[key, frame] : frames) hashes[key] = frame_hash(frame);
    return hashes;
}

std::map<std::string, std::string> read_golden() {
    std::map<std::string, std::string> hashes;
    std::ifstream in(kGoldenFile);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        const size_t last = line.rfind(' ');
        if (last != std::string::npos) hashes[line.substr(0, last)] = line.substr(last + 1);
    }
    return hashes;
}

void write_golden(const std::map<std::string, std::string> &hashes) {
    std::ofstream out(kGoldenFile);
    out << "# Frame hashes (64-bit FNV-1a of the output bytes) of the golden shots:\n"
           "# two processors, preset chosen, Restart+PreRoll pressed, frames 1-"
        << kFrames << ".\n";
    for (const auto &[key, hash] : hashes) out << key << " " << hash << "\n";
}

}  // namespace

TEST(GoldenFrames, EveryShotRendersTheKeptFrames) {
    const std::map<std::string, sparkhost::Frame> frames = render_sequence(2);
    const std::map<std::string, std::string> rendered = hashes_of(frames);
    const char *update = std::getenv("FIZZLE_UPDATE_GOLDEN");
    if (update && std::string(update) == "1") {
        write_golden(rendered);
        GTEST_SKIP() << "wrote " << kGoldenFile;
    }
    const std::map<std::string, std::string> golden = read_golden();
    ASSERT_EQ(golden.size(), rendered.size()) << "no or incomplete " << kGoldenFile;
    for (const auto &[key, hash] : rendered) {
        if (hash == golden.at(key))
            keep_reference(key, frames.at(key));
        else
            ADD_FAILURE() << key << ": hash " << hash << ", expected " << golden.at(key) << "; "
                          << report_mismatch(key, frames.at(key), golden.at(key));
    }
}

TEST(GoldenFrames, SameFramesOnOneOrThreeProcessors) {
    const std::map<std::string, std::string> two = hashes_of(render_sequence(2));
    EXPECT_EQ(hashes_of(render_sequence(1)), two);
    EXPECT_EQ(hashes_of(render_sequence(3)), two);
}
