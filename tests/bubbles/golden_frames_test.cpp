// A fixed short sequence of two presets, pre-rolled, rendered through the
// real plug-in and compared frame by frame with hashes kept in
// tests/data/golden_hashes.txt.
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

#include "preset_host.h"

namespace {

const char *const kGoldenFile = FIZZLE_TEST_DATA "/golden_hashes.txt";
constexpr int kFrames = 6;

// "<preset> <frame> <hash>" for every frame of the sequence.
std::map<std::string, std::string> render_sequence(int processors) {
    std::map<std::string, std::string> hashes;
    for (const char *preset : {"Bubbly", "Champagne"}) {
        PresetHost rig(96, 64, processors);
        rig.choose(preset);
        rig.press_preroll();
        for (int number = 1; number <= kFrames; ++number)
            hashes[std::string(preset) + " " + std::to_string(number)] = frame_hash(rig.render(number));
    }
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
    out << "# Frame hashes (64-bit FNV-1a of the 8-bit output) of the golden sequence:\n"
           "# 96x64, two processors, preset chosen, Restart+PreRoll pressed, frames 1-"
        << kFrames << ".\n";
    for (const auto &[key, hash] : hashes) out << key << " " << hash << "\n";
}

}  // namespace

TEST(GoldenFrames, TwoPresetsRenderTheKeptFrames) {
    const std::map<std::string, std::string> rendered = render_sequence(2);
    const char *update = std::getenv("FIZZLE_UPDATE_GOLDEN");
    if (update && std::string(update) == "1") {
        write_golden(rendered);
        GTEST_SKIP() << "wrote " << kGoldenFile;
    }
    const std::map<std::string, std::string> golden = read_golden();
    ASSERT_EQ(golden.size(), rendered.size()) << "no or incomplete " << kGoldenFile;
    for (const auto &[key, hash] : rendered) EXPECT_EQ(hash, golden.at(key)) << key;
}

TEST(GoldenFrames, SameFramesOnOneOrThreeProcessors) {
    const std::map<std::string, std::string> two = render_sequence(2);
    EXPECT_EQ(render_sequence(1), two);
    EXPECT_EQ(render_sequence(3), two);
}
