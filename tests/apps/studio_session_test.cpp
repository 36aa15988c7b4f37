// The studio's timeline: wherever the user jumps, the frame shown is the one
// a run from the first frame with the settings in force gives.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <map>

#include "apps/fizzle-studio/history.h"
#include "apps/fizzle-studio/session.h"
#include "sparkhost/core/state_cache.h"

namespace {

std::unique_ptr<Session> basic_session(int last, const std::string &cache) {
    RenderOptions options;
    options.cache_dir = cache;
    options.format = {96, 54, sparkhost::Depth::Bits8};
    options.preset = "Basic";
    options.processors = 2;
    options.plugin = FIZZLE_PLUGIN_PATH;
    return std::make_unique<Session>(options, std::filesystem::current_path().string(), 1, last);
}

int control_number(Session &session, const std::string &name) {
    const nlohmann::json listed = session.controls();
    for (const auto &control : listed["controls"])
        if (control["name"] == name) return control["number"].get<int>();
    ADD_FAILURE() << "no control " << name;
    return 0;
}

// One session for the whole suite: the plug-in is one instance a process.
class StudioTimeline : public testing::Test {
protected:
    static std::string cache() {
        return (std::filesystem::temp_directory_path() / ("fizzle-studio-cache-" + std::to_string(getpid()))).string();
    }
    static void SetUpTestSuite() { session_ = basic_session(60, cache()).release(); }
    static void TearDownTestSuite() {
        delete session_;
        session_ = nullptr;
        std::filesystem::remove_all(cache());
    }
    static std::vector<uint8_t> shown_at(int frame) {
        session_->go_to(frame);
        EXPECT_EQ(session_->state(0)["frame"], frame);
        return *session_->picture().rgb;
    }
    // Frames 1..last one after the other, as a render from the first frame makes them.
    static std::map<int, std::vector<uint8_t>> step_through(int last) {
        std::map<int, std::vector<uint8_t>> pictures;
        pictures[1] = shown_at(1);
        for (int frame = 2; frame <= last; ++frame) pictures[frame] = shown_at(frame);
        return pictures;
    }
    static Session *session_;
};

Session *StudioTimeline::session_ = nullptr;

TEST_F(StudioTimeline, JumpsBackAndFarForwardShowTheFramesOfOneRunFromTheFirst) {
    session_->press(control_number(*session_, "Restart+PreRoll"));
    const auto sequential = step_through(40);
    // Back past kept states, back before the first one, then far forwards.
    for (int frame : {13, 3, 37, 20, 21, 9, 40, 1}) EXPECT_EQ(shown_at(frame), sequential.at(frame)) << "frame " << frame;
    // Only the frames after the nearest kept state are run again.
    EXPECT_EQ(session_->go_to(34)["from"], 31);
    EXPECT_EQ(session_->go_to(8)["from"], 1);
    // A range starting later only frames the same shot, as fizzle-render's
    // --frames does: a jump back still runs the bubbles from frame 1.
    session_->set_range(10, 60);
    session_->go_to(30);
    EXPECT_EQ(shown_at(12), sequential.at(12));
    session_->set_range(1, 60);
}

TEST_F(StudioTimeline, AChangeMakesEarlierStatesUselessSoJumpsUseTheNewSettings) {
    const auto before = step_through(30);
    session_->set_value(control_number(*session_, "Density"), "80");
    const std::vector<uint8_t> jumped = shown_at(25);
    EXPECT_NE(jumped, before.at(25)) << "the new density must show";
    EXPECT_EQ(jumped, step_through(25).at(25));
    // Dragging on from a changed frame is no run from the first either.
    session_->go_to(12);
    session_->set_value(control_number(*session_, "Density"), "30");
    session_->go_to(22);
    const std::vector<uint8_t> again = shown_at(21);
    EXPECT_EQ(again, step_through(21).at(21));
}

std::string value_of(Session &session, int number) {
    const nlohmann::json listed = session.controls();
    for (const auto &control : listed["controls"])
        if (control["number"] == number) return control["value"].dump();
    return {};
}

TEST_F(StudioTimeline, AfterAChangeAndItsUndoTheFrameShownIsThatFrameOfARunWithTheSettingsInForce) {
    const auto before = step_through(20);
    const int light = control_number(*session_, "Light Inten");
    const int density = control_number(*session_, "Density");
    const std::string light_was = value_of(*session_, light), density_was = value_of(*session_, density);
    // A look-only control and one the bubbles' run depends on: neither
    // advances the bubbles, both show frame 20 as a run with them makes it.
    for (const auto &[number, value] : {std::pair{light, std::string("150")}, std::pair{density, std::string("90")}}) {
        const std::string was = value_of(*session_, number);
        session_->set_value(number, value);
        EXPECT_EQ(session_->state(0)["frame"], 20);
        const std::vector<uint8_t> changed = *session_->picture().rgb;
        EXPECT_NE(changed, before.at(20)) << "control " << number;
        session_->set_value(number, was);
        EXPECT_EQ(*session_->picture().rgb, before.at(20)) << "undoing control " << number;
        session_->set_value(number, value);
        EXPECT_EQ(*session_->picture().rgb, changed) << "redoing control " << number;
        EXPECT_EQ(step_through(20).at(20), changed) << "control " << number;
        session_->set_value(number, was);
    }
    EXPECT_EQ(value_of(*session_, light), light_was);
    EXPECT_EQ(value_of(*session_, density), density_was);
    // The states of the settings before the change serve again after its undo.
    session_->set_value(density, "90");
    session_->set_value(density, density_was);
    EXPECT_GE(session_->go_to(19)["from"].get<int>(), 11);
    EXPECT_EQ(*session_->picture().rgb, before.at(19));
}

TEST_F(StudioTimeline, UndoAndRedoPutBackValuesPresetsAndKeysWithTheirFrames) {
    const auto before = step_through(12);
    const int density = control_number(*session_, "Density");
    const int demos = control_number(*session_, "Demos");
    const std::string density_was = value_of(*session_, density), demos_was = value_of(*session_, demos);
    // A drag is one step however many values it sent.
    session_->set_value(density, "60");
    session_->set_value(density, "70", false);
    session_->set_value(demos, "Soap");
    const std::vector<uint8_t> soap = *session_->picture().rgb;
    session_->set_key(density);
    EXPECT_TRUE(sparkhost::curve_of(density));
    session_->undo();
    EXPECT_FALSE(sparkhost::curve_of(density));
    session_->undo();
    EXPECT_EQ(std::stod(value_of(*session_, density)), 70.0);
    EXPECT_EQ(value_of(*session_, demos), demos_was);
    session_->undo();
    EXPECT_EQ(value_of(*session_, density), density_was);
    EXPECT_EQ(*session_->picture().rgb, before.at(12));
    session_->redo();
    session_->redo();
    EXPECT_EQ(*session_->picture().rgb, soap);
    session_->redo();
    EXPECT_TRUE(sparkhost::curve_of(density));
    EXPECT_THROW(session_->redo(), RequestError);
    for (int i = 0; i < 3; ++i) session_->undo();
    EXPECT_EQ(*session_->picture().rgb, before.at(12));
    // A new step after undoing drops what could be redone.
    session_->set_value(density, density_was);
    EXPECT_THROW(session_->redo(), RequestError);
}

TEST(StudioHistory, KeepsItsNewestStepsAndPassesOverStepsThatChangedNothing) {
    History history(150);
    ShotSettings settings;
    for (int i = 0; i < 200; ++i) {
        settings.values[16] = i;
        history.step(settings);
    }
    EXPECT_EQ(history.undoable(), 150u);
    settings.values[16] = 200;
    // The newest step is put back first; one equal to now is passed over.
    history.step(settings);
    std::optional<ShotSettings> back = history.undo(settings);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->values[16], 199);
    for (int i = 0; i < 148; ++i) back = history.undo(*back);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->values[16], 51);
    EXPECT_FALSE(history.undo(*back));
    EXPECT_EQ(history.redoable(), 149u);
    EXPECT_EQ(history.redo(*back)->values[16], 52);
}

TEST_F(StudioTimeline, CheckpointsOnDiskServeTheSameSettingsAgainAfterAChangeWasUndone) {
    const auto sequential = step_through(30);
    const int density = control_number(*session_, "Density");
    const nlohmann::json listed = session_->controls();
    std::string before;
    for (const auto &control : listed["controls"])
        if (control["number"] == density) before = control["value"].dump();
    session_->set_value(density, "80");
    session_->set_value(density, before);
    const nlohmann::json answer = session_->go_to(28);
    EXPECT_EQ(answer["from"], 26) << "the checkpoint after frame 25 was not used";
    EXPECT_EQ(*session_->picture().rgb, sequential.at(28));
}

TEST(StudioStateCache, ThinsToEveryOtherStateWhenOverItsBudget) {
    sparkhost::StateCache cache(2, 100);
    for (int frame = 1; frame <= 12; ++frame)
        if (cache.wants(frame)) cache.keep(frame, std::vector<uint8_t>(20, uint8_t(frame)));
    EXPECT_LE(cache.bytes(), 100u);
    EXPECT_EQ(cache.every(), 4);
    EXPECT_EQ(cache.size(), 3u);  // 4, 8, 12
    auto kept = cache.nearest(11);
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->first, 8);
    EXPECT_EQ((*kept->second)[0], 8);
    EXPECT_FALSE(cache.nearest(3));
    cache.clear();
    EXPECT_EQ(cache.every(), 2);
    EXPECT_FALSE(cache.nearest(100));
}

}  // namespace
