// Every demo preset, pre-rolled, rendered through the real plug-in on 1, 2,
// 3 and 16 processors: the frames must match the hashes kept in
// tests/data/preset_hashes.txt whatever the processor count, so neither the
// way the rows are split into bands nor the clips a preset leaves unread
// change a pixel. The size gives 16 processors bands of a row or two.
//
// Dense configurations (thousands of bubbles a frame, with the lighting
// terms at values no preset uses) are kept in the same file.
//
// A change that alters pixels on purpose regenerates the file in the same
// commit, as the golden frames are regenerated:
//     FIZZLE_UPDATE_GOLDEN=1 build/tests/bubbles_tests --gtest_filter='EveryPreset.*'
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "bubbles/presets.h"
#include "preset_host.h"

namespace {

const char *const kHashFile = FIZZLE_TEST_DATA "/preset_hashes.txt";
constexpr int kFrames = 3;

struct DenseConfiguration {
    const char *name;  // the key's prefix in the hash file
    const char *preset;
    std::vector<std::pair<std::string, double>> settings;
};

const DenseConfiguration kDense[] = {
    {"Basic Density 5000", "Basic",
     {{"Density", 5000}, {"PreRoll", 12}, {"Reflections", 1}, {"Bubbles Burst", 1}}},
    {"Bubbly Density 500 glisten", "Bubbly",
     {{"Density", 500},
      {"PreRoll", 24},
      {"Reflections", 1},
      {"Glisten Tight", 7.5},
      {"Shine", 31.7},
      {"Highlight", 2.3}}},
    {"Champagne Density 2000 dim", "Champagne",
     {{"Density", 2000},
      {"PreRoll", 12},
      {"Min. Bright", 12.5},
      {"Shine", 1.3},
      {"Highlight", 187.9},
      {"Bubbles Burst", 1}}},
};

// "<preset> <frame>" to the frame's hash, for every preset.
std::map<std::string, std::string> render_presets(int processors) {
    std::map<std::string, std::string> hashes;
    for (const DemoPreset &preset : demo_presets()) {
        PresetHost rig(120, 90, processors);
        rig.choose(preset.name);
        rig.press_preroll();
        for (int number = 1; number <= kFrames; ++number)
            hashes[std::string(preset.name) + " " + std::to_string(number)] = frame_hash(rig.render(number));
    }
    for (const DenseConfiguration &dense : kDense) {
        PresetHost rig(120, 90, processors);
        rig.choose(dense.preset);
        rig.set_controls(dense.settings);
        rig.press_preroll();
        for (int number = 1; number <= kFrames; ++number)
            hashes[std::string(dense.name) + " " + std::to_string(number)] = frame_hash(rig.render(number));
    }
    return hashes;
}

std::map<std::string, std::string> read_hashes() {
    std::map<std::string, std::string> hashes;
    std::ifstream in(kHashFile);
    std::string line;
    while (std::getline(in, line)) {
        const size_t last = line.rfind(' ');
        if (!line.empty() && line[0] != '#' && last != std::string::npos)
            hashes[line.substr(0, last)] = line.substr(last + 1);
    }
    return hashes;
}

}  // namespace

TEST(EveryPreset, SameKeptFramesOnOneTwoThreeAndSixteenProcessors) {
    const char *update = std::getenv("FIZZLE_UPDATE_GOLDEN");
    if (update && std::string(update) == "1") {
        std::ofstream out(kHashFile);
        out << "# Frame hashes (64-bit FNV-1a of the 8-bit output) of every demo preset:\n"
               "# 120x90, one processor, preset chosen (then the dense settings), Restart+PreRoll pressed,\n"
               "# frames 1-"
            << kFrames << ".\n";
        for (const auto &[key, hash] : render_presets(1)) out << key << " " << hash << "\n";
        GTEST_SKIP() << "wrote " << kHashFile;
    }
    const std::map<std::string, std::string> kept = read_hashes();
    ASSERT_EQ(kept.size(), size_t((kDemoPresetCount + std::size(kDense)) * kFrames))
        << "no or incomplete " << kHashFile;
    for (int processors : {1, 2, 3, 16}) {
        const std::map<std::string, std::string> rendered = render_presets(processors);
        for (const auto &[key, hash] : rendered) EXPECT_EQ(hash, kept.at(key)) << key << " on " << processors;
    }
}
