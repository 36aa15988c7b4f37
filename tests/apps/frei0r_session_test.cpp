// The frei0r filter's effect sessions against fizzle-render's way of running
// the plug-in: frames asked for in any order, repeated, by two instances at
// once, and the parameters that reach the controls.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <vector>

#include "render/host_setup.h"
#include "effect_session.h"
#include "parameters.h"
#include "sparkhost/clips/default_clips.h"
#include "sparkhost/core/error.h"

namespace {

constexpr int kFrames = 24;
const sparkhost::FrameFormat kFormat{48, 32, sparkhost::Depth::Bits8};

RenderOptions shot_options() {
    RenderOptions options;
    options.format = kFormat;
    options.processors = 2;
    options.preset = "Swirly";
    options.preroll = true;
    options.sets.push_back({"Density=60", "Density", "60"});
    return options;
}

// One run from frame 1, as fizzle-render makes it.
const std::vector<sparkhost::Frame> &sequential() {
    static const std::vector<sparkhost::Frame> frames = [] {
        const RenderOptions options = shot_options();
        sparkhost::Settings settings;
        settings.format = options.format;
        settings.processors = 2;
        sparkhost::Host host(settings);
        host.load(FIZZLE_PLUGIN_PATH);
        host.initialise(1);
        configure_plugin(host, options);
        std::vector<sparkhost::Frame> out(1);
        for (int frame = 1; frame <= kFrames; ++frame) out.push_back(*host.process(frame));
        host.uninitialise(kFrames);
        return out;
    }();
    return frames;
}

const sparkhost::Frame &render(EffectSession &session, int frame) {
    session.scene() = sparkhost::default_frame(sparkhost::kScene, frame, kFormat);
    return session.render(frame);
}

}  // namespace

TEST(EffectSession, AnyOrderOfFramesGivesTheSequentialFrames) {
    EffectSession session(shot_options(), FIZZLE_PLUGIN_PATH);
    // Jumps ahead, back to the start, back a little, repeats and alternate frames.
    for (int frame : {5, 3, 3, 12, 1, 2, 24, 7, 6, 6, 8, 10, 9, 23, 21}) {
        ASSERT_EQ(render(session, frame), sequential()[size_t(frame)]) << "frame " << frame;
    }
}

TEST(EffectSession, ARepeatedFrameIsKeptOrDrawnAgainOverAnotherScene) {
    EffectSession session(shot_options(), FIZZLE_PLUGIN_PATH);
    for (int frame = 1; frame <= 4; ++frame) render(session, frame);
    const long simulated = session.simulated_frames();
    EXPECT_EQ(render(session, 4), sequential()[4]);
    EXPECT_EQ(session.simulated_frames(), simulated) << "the same frame over the same scene is the picture shown";
    session.scene() = sparkhost::Frame(kFormat);  // black
    const sparkhost::Frame over_black = session.render(4);
    EXPECT_NE(over_black, sequential()[4]);
    EXPECT_EQ(render(session, 4), sequential()[4]);
    EXPECT_EQ(render(session, 5), sequential()[5]);
}

TEST(EffectSession, TwoInstancesInOneProcessEachHaveTheirOwnEffect) {
    RenderOptions other = shot_options();
    other.preset = "Basic";
    EffectSession first(shot_options(), FIZZLE_PLUGIN_PATH);
    EffectSession second(other, FIZZLE_PLUGIN_PATH);
    // As MLT's two render threads take every other frame.
    for (int frame = 1; frame <= 8; frame += 2) {
        ASSERT_EQ(render(first, frame), sequential()[size_t(frame)]) << "frame " << frame;
        const sparkhost::Frame basic = render(second, frame + 1);
        ASSERT_NE(basic, sequential()[size_t(frame + 1)]);
    }
}

TEST(EffectSession, TheFirstFrameStartsFromTheNearestCheckpointOnDisk) {
    namespace fs = std::filesystem;
    const fs::path cache = fs::path(FIZZLE_TEST_OUTPUT) / "frei0r_checkpoints";
    fs::remove_all(cache);
    RenderOptions options = shot_options();
    options.cache_dir = cache.string();
    options.cache_every = 5;
    {
        EffectSession filling(options, FIZZLE_PLUGIN_PATH);
        for (int frame = 1; frame <= 12; ++frame) render(filling, frame);
    }
    EffectSession session(options, FIZZLE_PLUGIN_PATH);
    EXPECT_EQ(render(session, 12), sequential()[12]);
    EXPECT_EQ(session.simulated_frames(), 1) << "frame 11 only, after the checkpoint of frame 10";
    EXPECT_EQ(render(session, 3), sequential()[3]);
    fs::remove_all(cache);
}

TEST(EffectSession, BadSetUpIsAnErrorNamingIt) {
    RenderOptions options = shot_options();
    options.setup = "/nonexistent/look.setup";
    EXPECT_THROW(EffectSession(options, FIZZLE_PLUGIN_PATH), sparkhost::Error);
    options = shot_options();
    options.preset = "Fizzy";
    try {
        EffectSession session(options, FIZZLE_PLUGIN_PATH);
        ADD_FAILURE() << "an unknown preset was accepted";
    } catch (const sparkhost::Error &error) {
        EXPECT_NE(std::string(error.what()).find("Fizzy"), std::string::npos) << error.what();
    }
    options = shot_options();
    options.format = {0, 32, sparkhost::Depth::Bits8};
    EXPECT_THROW(EffectSession(options, FIZZLE_PLUGIN_PATH), sparkhost::Error);
}

TEST(FilterParameters, ControlsLeftAtTheirDefaultsLeaveTheSetupAlone) {
    sparkhost::Settings settings;
    settings.format = kFormat;
    sparkhost::Host host(settings);
    host.load(FIZZLE_PLUGIN_PATH);
    const ParameterTable table(host.controls());
    std::map<std::string, size_t> index;
    for (size_t i = 0; i < table.parameters().size(); ++i) {
        const std::string &name = table.parameters()[i].name;
        EXPECT_TRUE(index.emplace(name, i).second) << "two parameters named " << name;
    }
    ASSERT_GE(table.size(), 5);
    EXPECT_EQ(table.parameters()[0].name, "setup");
    EXPECT_EQ(table.parameters()[1].name, "preset");
    EXPECT_EQ(table.parameters()[2].name, "preroll");
    EXPECT_EQ(table.parameters()[3].name, "frame rate");
    // A switch and a value sharing a title, and a control named like ours.
    for (const char *name : {"Friction", "Friction value", "Gravity value", "PreRoll value", "Density", "Growth Mode"})
        EXPECT_TRUE(index.count(name)) << name;

    std::vector<ParameterValue> values = table.defaults();
    EXPECT_TRUE(render_options(table, values, 48, 32).sets.empty());
    values[index.at("Density")].number = 0.005;  // 0 to 10000
    values[index.at("Friction")].number = 0.0;
    values[index.at("Growth Mode")].text = "Shrinking";
    const RenderOptions options = render_options(table, values, 48, 32);
    ASSERT_EQ(options.sets.size(), 3u);
    std::map<std::string, std::string> sets;
    for (const ControlAssignment &set : options.sets) sets[set.name] = set.value;
    EXPECT_EQ(sets.at(std::to_string(host.controls().at("Density").number())), "50");
    EXPECT_EQ(sets.at("42"), "off");  // the switch, by number: the value after it shares its title
    EXPECT_EQ(sets.at(std::to_string(host.controls().at("Growth Mode").number())), "Shrinking");
}
