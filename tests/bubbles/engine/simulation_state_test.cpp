// Frames simulated without drawing, and the state carried from one plug-in
// instance to another, must leave the shot exactly as rendering every frame.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../preset_host.h"

namespace {

constexpr int kWidth = 96, kHeight = 54;
constexpr int kJoin = 14, kLast = 24;  // frames before kJoin are skipped over

// Presets with bursts (Bubbly), bursts and congregation (Gathering), a birth
// matte (Champagne) and strong turbulence (Swirly).
const char *const kPresets[] = {"Bubbly", "Gathering", "Champagne", "Swirly"};

void start(PresetHost &rig, const std::string &preset, bool preroll) {
    rig.choose(preset);
    if (preroll) rig.press_preroll();
}

std::vector<std::string> rendered(PresetHost &rig, int first, int last) {
    std::vector<std::string> hashes;
    for (int frame = first; frame <= last; ++frame) hashes.push_back(frame_hash(rig.render(frame)));
    return hashes;
}

}  // namespace

TEST(SimulatedFrames, LeaveTheShotAsRenderingThemWouldForEveryKindOfPreset) {
    for (const char *preset : kPresets)
        for (bool preroll : {false, true}) {
            SCOPED_TRACE(std::string(preset) + (preroll ? " with pre-roll" : ""));
            PresetHost drawn(kWidth, kHeight, 2), simulated(kWidth, kHeight, 3);
            start(drawn, preset, preroll);
            start(simulated, preset, preroll);
            rendered(drawn, 1, kJoin - 1);
            for (int frame = 1; frame < kJoin; ++frame) simulated.host->simulate(frame);
            EXPECT_EQ(rendered(drawn, kJoin, kLast), rendered(simulated, kJoin, kLast));
        }
}

TEST(EffectState, ImportedIntoAFreshInstanceContinuesTheShotByteForByte) {
    for (const char *preset : {"Gathering", "Champagne"}) {
        SCOPED_TRACE(preset);
        PresetHost first(kWidth, kHeight), second(kWidth, kHeight);
        start(first, preset, true);
        start(second, preset, true);
        rendered(first, 1, kJoin - 1);
        const std::vector<uint8_t> state = first.host->export_state();
        ASSERT_TRUE(second.host->import_state(state));
        EXPECT_EQ(second.host->export_state(), state);
        EXPECT_EQ(rendered(first, kJoin, kLast), rendered(second, kJoin, kLast));
    }
}

TEST(EffectState, RefusesDamagedOrForeignStatesAndKeepsItsOwn) {
    PresetHost rig(kWidth, kHeight);
    start(rig, "Bubbly", true);
    rendered(rig, 1, 5);
    const std::vector<uint8_t> good = rig.host->export_state();
    std::vector<uint8_t> truncated(good.begin(), good.end() - 1);
    std::vector<uint8_t> foreign = good;
    foreign[0] = 'X';
    std::vector<uint8_t> newer = good;
    newer[4] += 1;  // the layout's version
    for (const auto &bad : {truncated, foreign, newer, std::vector<uint8_t>()}) {
        EXPECT_FALSE(rig.host->import_state(bad));
        EXPECT_EQ(rig.host->export_state(), good);
    }
}

TEST(SimulatedFrames, AndImportedStatesHoldAtAProxyAnOddSizeAnotherAspectAndTwelveBits) {
    const PresetLook look{sparkhost::Depth::Bits12, 0.9f, 2};  // proxy 1/3
    PresetHost drawn(97, 55, 2, look), simulated(97, 55, 1, look), imported(97, 55, 2, look);
    for (PresetHost *rig : {&drawn, &simulated, &imported}) start(*rig, "Gathering", true);
    rendered(drawn, 1, kJoin - 1);
    for (int frame = 1; frame < kJoin; ++frame) simulated.host->simulate(frame);
    ASSERT_TRUE(imported.host->import_state(simulated.host->export_state()));
    const std::vector<std::string> expected = rendered(drawn, kJoin, kLast);
    EXPECT_EQ(expected, rendered(simulated, kJoin, kLast));
    EXPECT_EQ(expected, rendered(imported, kJoin, kLast));
}

// A state with a good layout (a checkpoint's checksum is easily recomputed)
// but what the simulation cannot make is refused whole.
TEST(EffectState, RefusesStatesTheSimulationCannotMake) {
    PresetHost rig(kWidth, kHeight);
    start(rig, "Bubbly", true);
    rendered(rig, 1, 5);
    const std::vector<uint8_t> good = rig.host->export_state();
    constexpr size_t kHeader = 60, kParticle = 72;
    ASSERT_GT(good.size(), kHeader + kParticle);
    const auto with_word = [&good](size_t at, uint32_t word) {
        std::vector<uint8_t> state = good;
        for (int i = 0; i < 4; ++i) state[at + i] = uint8_t(word >> (8 * i));
        return state;
    };
    const uint32_t nan = 0x7FC00000u, infinite = 0x7F800000u;
    std::vector<std::vector<uint8_t>> forged = {
        with_word(kHeader + 8, nan),                    // x
        with_word(kHeader + 20, infinite),              // vy
        with_word(kHeader + 8, 0x5F000000u),            // x = 9.2e18, no pixel
        with_word(kHeader + 40, uint32_t(-1000)),       // age
        with_word(kHeader + 44, 0),                     // life
        with_word(kHeader + 44, 100000),                // life beyond "Lifetime"
        with_word(kHeader + 52, 7),                     // bursting
        with_word(kHeader + 56, 3),                     // gather state
        with_word(kHeader + 60, 5000),                  // sprite index
    };
    // 20,000 copies of one bubble: more born in one frame than "Density" allows.
    std::vector<uint8_t> crowded = good;
    size_t plain = kHeader;  // a bubble that has neither burst nor left a gathering
    while (plain + kParticle < good.size() && (good[plain + 52] != 0 || good[plain + 56] == 2)) plain += kParticle;
    const std::vector<uint8_t> one(good.begin() + plain, good.begin() + plain + kParticle);
    for (int copy = 0; copy < 20000; ++copy) crowded.insert(crowded.end(), one.begin(), one.end());
    const uint32_t count = uint32_t((crowded.size() - kHeader) / kParticle);
    for (int i = 0; i < 4; ++i) crowded[kHeader - 4 + i] = uint8_t(count >> (8 * i));
    forged.push_back(crowded);
    for (size_t i = 0; i < forged.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_FALSE(rig.host->import_state(forged[i]));
        EXPECT_EQ(rig.host->export_state(), good);
    }
    EXPECT_TRUE(rig.host->import_state(good));
}
