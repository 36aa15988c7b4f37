// fizzle-render's control options run as a program: presets, values,
// animation keys, setups and listings, and their one-line errors.
#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

#include "render_run.h"

namespace {

// The line of a --list-controls listing that shows the control numbered `number`.
std::string listing_line(const std::string &listing, int number) {
    std::istringstream lines(listing);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string page;
        int n = -1;
        if (fields >> page >> n && n == number) return line;
    }
    return {};
}

}  // namespace

class FizzleRenderControls : public RenderRun {
protected:
    void expect_listed(const RunResult &result, int number, const std::string &part) {
        EXPECT_NE(listing_line(result.out, number).find(part), std::string::npos)
            << "wanted '" << part << "' in: " << listing_line(result.out, number);
    }
    void expect_refused_render(std::vector<std::string> arguments, const std::vector<std::string> &needles) {
        arguments.insert(arguments.end(), {"--size", "32x24", "--frames", "1-2", "-o", path("f.####.png")});
        expect_refused(arguments, needles);
    }
};

TEST_F(FizzleRenderControls, MistakesAreRefusedBeforeAnyFrame) {
    expect_refused_render({"--set", "Light Intn=80"}, {"Light Intn", "did you mean \"Light Inten\""});
    expect_refused_render({"--set", "Light Inten=800"}, {"Light Inten", "out of range 0 to 500"});
    expect_refused_render({"--set", "Density=lots"}, {"lots", "not a number"});
    expect_refused_render({"--set", "Growth Mode=Huge"}, {"Huge", "Linear Growth"});
    expect_refused_render({"--set", "Growth Mode=5"}, {"1 to 4"});
    expect_refused_render({"--set", "Auto Preview=maybe"}, {"on or off"});
    // Neither a switch word nor a number: "Gravity" also names an amount.
    expect_refused_render({"--set", "Gravity=maybe"}, {"\"maybe\" is not a number for \"Gravity\""});
    expect_refused_render({"--set", "130=1"}, {"130"});
    expect_refused_render({"--set", "Density"}, {"NAME=VALUE"});
    expect_refused_render({"--preset", "Champange"}, {"Champange", "did you mean \"Champagne\""});
    expect_refused_render({"--animate", "Seed=1:5,10:0"}, {"Seed", "out of range"});
    expect_refused_render({"--animate", "Seed=1-5"}, {"FRAME:VALUE"});
    std::ofstream(path("broken.json")) << "{ \"format\": \"sparkhost-setup\", ";
    expect_refused_render({"--setup", path("broken.json")}, {"--setup", "broken.json"});
    expect_refused_render({"--setup", path("absent.json")}, {"absent.json"});
    expect_refused_render({"--import-amplitude", path("absent.amp")}, {"absent.amp", "no such file"});
}

TEST_F(FizzleRenderControls, OptionsApplyInOrderAndTheSetupKeepsThem) {
    // The preset comes before the sets whatever the order typed; the setup
    // written afterwards restores the same controls and curves.
    const RunResult first = run({"--set", "Density=7", "--preset", "pipe", "--set", "Growth Mode=Shrinking", "--set",
                                 "Gravity=off", "--set", "102=80", "--animate", "Seed=1:5,11:15", "--save-setup",
                                 path("pipe.json"), "--list-controls"});
    ASSERT_EQ(first.exit_code, 0) << first.err;
    expect_listed(first, 16, " 7 ");
    expect_listed(first, 23, "Shrinking (2)");
    expect_listed(first, 102, " 80 ");
    expect_listed(first, 20, " 2000 ");  // Pipe's velocity
    expect_listed(first, 34, "on");      // Auto Preview is back on once the options are applied
    // Keys count frames as --frames does; the host's curves count from 0.
    const nlohmann::json saved = nlohmann::json::parse(slurp(path("pipe.json")));  // outlives the loop
    for (const nlohmann::json &entry : saved["controls"])
        if (entry["number"] == 26) { EXPECT_EQ(entry["curve"], nlohmann::json::parse("[[0, 5], [10, 15]]")); }

    const RunResult again = run({"--setup", path("pipe.json"), "--list-controls"});
    ASSERT_EQ(again.exit_code, 0) << again.err;
    for (int number : {16, 23, 29, 44, 102, 20})
        EXPECT_EQ(listing_line(again.out, number), listing_line(first.out, number));
}

TEST_F(FizzleRenderControls, ListsPresetsAndControlsWithoutRendering) {
    const RunResult presets = run({"--list-presets"});
    ASSERT_EQ(presets.exit_code, 0) << presets.err;
    EXPECT_EQ(presets.out.rfind(" 1  Basic\n", 0), 0u) << presets.out;
    EXPECT_EQ(std::count(presets.out.begin(), presets.out.end(), '\n'), 10);
    const RunResult controls = run({"--list-controls"});
    for (const char *part : {"Light Inten", "50", "0 to 500"}) expect_listed(controls, 102, part);
    EXPECT_EQ(files(), 0);
}

TEST_F(FizzleRenderControls, BadAmplitudeFileIsReportedByThePluginThenEndsTheRun) {
    const std::string file = std::string(FIZZLE_TEST_DATA) + "/bad_header.amp";
    const RunResult bad = run({"--import-amplitude", file, "--frames", "1", "--size", "32x24", "-o", path("b.png")});
    EXPECT_NE(bad.exit_code, 0);
    EXPECT_NE(bad.err.find("'" + file + "': Not a valid control file"), std::string::npos) << bad.err;
    EXPECT_EQ(files(), 0);
}

TEST_F(FizzleRenderControls, SwitchAndAmountSharingANameTakeTheirOwnValues) {
    const RunResult result = run({"--set", "Gravity=0.5", "--set", "Gravity=on", "--set", "friction=0.1",
                                  "--set", "Friction=off", "--list-controls"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    expect_listed(result, 44, " on ");
    expect_listed(result, 45, " 0.5 ");
    expect_listed(result, 42, " off ");
    expect_listed(result, 43, " 0.1 ");
}
