// fizzle-render's control options run as a program: presets, values,
// animation keys, setups and listings, and their one-line errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

namespace {

struct RunResult {
    int exit_code = -1;
    std::string out, err;
};

std::string shell_quoted(const std::string &text) {
    std::string result = "'";
    for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string slurp(const fs::path &path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

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

class FizzleRenderControls : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "fizzle-controls-XXXXXX").string();
        dir_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(dir_); }

    std::string path(const std::string &name) const { return (dir_ / name).string(); }

    RunResult run(const std::vector<std::string> &arguments) const {
        std::string command = "FIZZLE_NO_PAUSE=1 " + shell_quoted(FIZZLE_RENDER_PATH);
        for (const std::string &argument : arguments) command += " " + shell_quoted(argument);
        command += " >" + shell_quoted(path("out.txt")) + " 2>" + shell_quoted(path("err.txt")) + " </dev/null";
        RunResult result;
        const int status = std::system(command.c_str());
        result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = slurp(path("out.txt"));
        result.err = slurp(path("err.txt"));
        return result;
    }

    int images() const {
        int count = 0;
        for (const auto &entry : fs::directory_iterator(dir_)) count += entry.path().extension() == ".png";
        return count;
    }

    // Refused with one line on stderr containing every needle, no frame written.
    void expect_refused(std::vector<std::string> arguments, const std::vector<std::string> &needles) {
        arguments.insert(arguments.end(), {"--size", "32x24", "--frames", "1-2", "-o", path("f.####.png")});
        const RunResult result = run(arguments);
        EXPECT_NE(result.exit_code, 0);
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        for (const std::string &needle : needles)
            EXPECT_NE(result.err.find(needle), std::string::npos) << "wanted '" << needle << "' in: " << result.err;
        EXPECT_EQ(images(), 0);
    }

    fs::path dir_;
};

}  // namespace

TEST_F(FizzleRenderControls, MistakesAreRefusedBeforeAnyFrame) {
    expect_refused({"--set", "Light Intn=80"}, {"Light Intn", "did you mean \"Light Inten\""});
    expect_refused({"--set", "Light Inten=800"}, {"Light Inten", "out of range 0 to 500"});
    expect_refused({"--set", "Density=lots"}, {"lots", "not a number"});
    expect_refused({"--set", "Growth Mode=Huge"}, {"Huge", "Linear Growth"});
    expect_refused({"--set", "Growth Mode=5"}, {"1 to 4"});
    expect_refused({"--set", "Gravity=maybe"}, {"on or off"});
    expect_refused({"--set", "130=1"}, {"130"});
    expect_refused({"--set", "Density"}, {"NAME=VALUE"});
    expect_refused({"--preset", "Champange"}, {"Champange", "did you mean \"Champagne\""});
    expect_refused({"--animate", "Seed=1:5,10:0"}, {"Seed", "out of range"});
    expect_refused({"--animate", "Seed=1-5"}, {"FRAME:VALUE"});
    std::ofstream(path("broken.json")) << "{ \"format\": \"sparkhost-setup\", ";
    expect_refused({"--setup", path("broken.json")}, {"--setup", "broken.json"});
    expect_refused({"--setup", path("absent.json")}, {"absent.json"});
}

TEST_F(FizzleRenderControls, SoapPrerolledRendersItsFrames) {
    const RunResult result = run({"--preset", "Soap", "--preroll", "--frames", "1-24", "--size", "160x90", "-o",
                            path("soap.####.exr")});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    for (int frame = 1; frame <= 24; ++frame) {
        char name[32];
        std::snprintf(name, sizeof name, "soap.%04d.exr", frame);
        EXPECT_TRUE(fs::exists(path(name))) << name;
    }
}

TEST_F(FizzleRenderControls, OptionsApplyInOrderAndTheSetupKeepsThem) {
    // The preset comes before the sets whatever the order typed; the setup
    // written afterwards restores the same controls and curves.
    RunResult first = run({"--set", "Density=7", "--preset", "pipe", "--set", "Growth Mode=Shrinking", "--set",
                     "Gravity=off", "--set", "102=80", "--animate", "Seed=1:5,11:15", "--save-setup",
                     path("pipe.json"), "--list-controls"});
    ASSERT_EQ(first.exit_code, 0) << first.err;
    EXPECT_NE(listing_line(first.out, 16).find(" 7 "), std::string::npos) << listing_line(first.out, 16);
    EXPECT_NE(listing_line(first.out, 29).find("Pipe (10)"), std::string::npos) << listing_line(first.out, 29);
    EXPECT_NE(listing_line(first.out, 23).find("Shrinking (2)"), std::string::npos);
    EXPECT_NE(listing_line(first.out, 44).find("off"), std::string::npos);
    EXPECT_NE(listing_line(first.out, 102).find(" 80 "), std::string::npos);
    EXPECT_NE(listing_line(first.out, 20).find(" 2000 "), std::string::npos);  // Pipe's velocity
    // Auto Preview is back on once the options are applied.
    EXPECT_NE(listing_line(first.out, 34).find("on"), std::string::npos);
    // Keys count frames as --frames does; the host's curves count from 0.
    const nlohmann::json setup = nlohmann::json::parse(slurp(path("pipe.json")));
    nlohmann::json seed_curve;
    for (const nlohmann::json &entry : setup["controls"])
        if (entry["number"] == 26) seed_curve = entry["curve"];
    EXPECT_EQ(seed_curve, nlohmann::json::parse("[[0, 5], [10, 15]]"));

    RunResult again = run({"--setup", path("pipe.json"), "--list-controls"});
    ASSERT_EQ(again.exit_code, 0) << again.err;
    for (int number : {16, 23, 29, 44, 102, 20}) EXPECT_EQ(listing_line(again.out, number), listing_line(first.out, number));
}

TEST_F(FizzleRenderControls, ListsPresetsAndControlsWithoutRendering) {
    const RunResult presets = run({"--list-presets"});
    ASSERT_EQ(presets.exit_code, 0) << presets.err;
    EXPECT_EQ(presets.out.rfind(" 1  Basic\n", 0), 0u) << presets.out;
    EXPECT_NE(presets.out.find("10  Pipe\n"), std::string::npos);
    EXPECT_EQ(std::count(presets.out.begin(), presets.out.end(), '\n'), 10);

    const RunResult controls = run({"--list-controls"});
    ASSERT_EQ(controls.exit_code, 0) << controls.err;
    const std::string light = listing_line(controls.out, 102);
    for (const char *part : {"Light Inten", "50", "0 to 500"}) EXPECT_NE(light.find(part), std::string::npos) << light;
    EXPECT_EQ(images(), 0);
}

TEST_F(FizzleRenderControls, AmplitudeImportPutsTheFileKeysOnControl93AtTheirKeyNumbers) {
    const std::string data = FIZZLE_TEST_DATA;
    const RunResult result = run({"--preset", "Basic", "--import-amplitude", data + "/frame_differs.amp", "--frames",
                                  "1-2", "--size", "32x24", "-o", path("a.####.png"), "--save-setup",
                                  path("amp.json")});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(images(), 2);
    const nlohmann::json setup = nlohmann::json::parse(slurp(path("amp.json")));
    nlohmann::json curve;
    for (const nlohmann::json &entry : setup["controls"])
        if (entry["number"] == 93) curve = entry["curve"];
    // The file's Frame fields (3 and 7) are ignored; the Key numbers place the keys.
    EXPECT_EQ(curve, nlohmann::json::parse("[[10.0, 1.5], [20.0, 2.5]]"));

    for (const auto &entry : fs::directory_iterator(dir_))
        if (entry.path().extension() == ".png") fs::remove(entry.path());

    expect_refused({"--import-amplitude", path("absent.amp")}, {"absent.amp", "cannot read"});
    // The plug-in tells the user first, then the run ends naming the file.
    const RunResult bad = run({"--import-amplitude", data + "/bad_header.amp", "--frames", "1", "--size", "32x24",
                               "-o", path("b.png")});
    EXPECT_NE(bad.exit_code, 0);
    EXPECT_NE(bad.err.find("'" + data + "/bad_header.amp': Not a valid control file"), std::string::npos) << bad.err;
    EXPECT_EQ(images(), 0);
}

TEST_F(FizzleRenderControls, SwitchAndAmountSharingANameTakeTheirOwnValues) {
    const RunResult result = run({"--set", "Gravity=0.5", "--set", "Gravity=on", "--set", "friction=0.1",
                                  "--set", "Friction=off", "--list-controls"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_NE(listing_line(result.out, 44).find(" on "), std::string::npos) << listing_line(result.out, 44);
    EXPECT_NE(listing_line(result.out, 45).find(" 0.5 "), std::string::npos) << listing_line(result.out, 45);
    EXPECT_NE(listing_line(result.out, 42).find(" off "), std::string::npos) << listing_line(result.out, 42);
    EXPECT_NE(listing_line(result.out, 43).find(" 0.1 "), std::string::npos) << listing_line(result.out, 43);
}
