// Setup files: round trips of values and curves, refusal of bad files
// without side effects, and the setup host functions.
#include "sparkhost/setup_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <tuple>
#include <utility>

#include "fake_plugin_fixture.h"

using ::testing::HasSubstr;

namespace {

class SetupFileTest : public FakePluginTest {
protected:
    void SetUp() override {
        FakePluginTest::SetUp();
        path_ = ::testing::TempDir() + "setup_" + std::to_string(getpid()) + ".json";
    }
    void TearDown() override {
        std::remove(path_.c_str());
        FakePluginTest::TearDown();
    }

    void write(const std::string &text) { std::ofstream(path_) << text; }
    std::string load_error() { return error_of([&] { sparkhost::load_setup(path_); }); }
    SparkInfoStruct info_with_path(const std::string &path) {
        SparkInfoStruct info{};
        std::strncpy(info.SetupPath, path.c_str(), sizeof info.SetupPath - 1);
        return info;
    }

    std::string path_;
};

}  // namespace

TEST_F(SetupFileTest, RoundTripRestoresValuesTextAndCurves) {
    // number, value saved, value set before loading
    const std::tuple<int, double, double> values[] = {
        {16, 0.05, 1}, {9, 500, 1}, {15, 1, 0}, {23, 1, 3}, {80, 0x00ABCDEF, 0}};
    for (auto [number, saved, other] : values) table().at(number).set_value(saved);
    table().at(0).set_text("Sea floor");
    sparkhost::set_curve_key(93, 0.0f, 0.1f);
    sparkhost::set_curve_key(93, 3.0f, 0.7f);
    sparkhost::set_curve_key(102, 12.5f, 250.0f);
    const std::map<int, sparkhost::Curve> curves = sparkhost::all_curves();
    sparkhost::save_setup(path_);

    for (auto [number, saved, other] : values) table().at(number).set_value(other);
    table().at(0).set_text("");
    sparkhost::clear_curves();
    sparkhost::set_curve_key(16, 0.0f, 5.0f);  // not in the file: the load drops it

    sparkhost::load_setup(path_);
    for (auto [number, saved, other] : values) EXPECT_EQ(table().at(number).value(), double(float(saved))) << number;
    EXPECT_STREQ(exported<SparkStringStruct>("SparkString0").Value, "Sea floor");
    EXPECT_EQ(sparkhost::all_curves(), curves);
}

TEST_F(SetupFileTest, FileNamesEachControlByNumberAndTitle) {
    sparkhost::set_curve_key(93, 2.0f, 0.1f);
    sparkhost::save_setup(path_);
    std::ifstream in(path_);
    const nlohmann::json document = nlohmann::json::parse(in);
    EXPECT_EQ(document["format"], sparkhost::kSetupFormat);
    EXPECT_EQ(document["version"], sparkhost::kSetupVersion);
    std::map<int, nlohmann::json> entries;
    for (const auto &entry : document["controls"]) entries[entry["number"].get<int>()] = entry;
    EXPECT_EQ(entries.size(), table().controls().size());
    EXPECT_EQ(entries[16]["title"], "Density");
    EXPECT_EQ(entries[16]["kind"], "Float");
    EXPECT_EQ(entries[93]["value"], false);
    // Floats are written as the short decimals they were typed as (0.1,
    // not the float's 0.10000000149011612).
    EXPECT_EQ(entries[93]["curve"], nlohmann::json::parse("[[2, 0.1]]"));
    EXPECT_EQ(entries[23]["title"], "Growth Mode");
    EXPECT_FALSE(entries[6].contains("value"));
}

// Every bad file but the first five starts by setting a valid Density and a curve on 93.
#define SETUP_HEAD R"({"format": "sparkhost-setup", "version": 1, "controls": [)" \
                   R"({"number": 16, "value": 33}, {"number": 93, "curve": [[0, 1]]}, )"

TEST_F(SetupFileTest, RefusedFileNamesTheProblemAndChangesNothing) {
    const std::pair<std::string, const char *> cases[] = {
        {SETUP_HEAD R"({"number": 9,)", "not valid JSON"},
        {"[1, 2]", "JSON object"},
        {R"({"format": "other", "version": 1, "controls": []})", "not a setup file"},
        {R"({"format": "sparkhost-setup", "version": 2, "controls": []})", "version 2 is not supported"},
        {R"({"format": "sparkhost-setup", "version": 1, "controls": 3})", R"("controls" must be a list)"},
        {SETUP_HEAD R"({"number": 47, "value": 1}]})", "control 47 is not a control"},
        {SETUP_HEAD R"({"number": 300, "value": 1}]})", "control 300"},
        {SETUP_HEAD R"({"number": 102, "value": "fifty"}]})", "must be a number"},
        {SETUP_HEAD R"({"number": 102, "value": 900}]})", "0 to 500"},
        {SETUP_HEAD R"({"number": 23, "value": 7}]})", "Growth Mode"},
        {SETUP_HEAD R"({"number": 9, "kind": "Float", "value": 3}]})", "kind Int"},
        {SETUP_HEAD R"({"number": 9, "title": "Seed", "value": 3}]})", R"(titled "PreRoll")"},
        {SETUP_HEAD R"({"number": 16, "value": 3}]})", "listed twice"},
        {SETUP_HEAD R"({"number": 6, "value": 1}]})", R"(takes no "value")"},
        {SETUP_HEAD R"({"number": 0, "text": ")" + std::string(250, 'x') + R"("}]})", "too long"},
        {SETUP_HEAD R"({"number": 102, "curve": [[1, 2, 3]]}]})", "[frame, value]"},
        {SETUP_HEAD R"({"number": 102, "curve": [[1, 2], [1, 3]]}]})", "two keys at frame 1"},
        {SETUP_HEAD R"({"number": 102, "valeu": 3}]})", R"(unknown entry "valeu")"},
    };
    sparkhost::set_curve_key(102, 0.0f, 60.0f);
    const std::map<int, sparkhost::Curve> curves = sparkhost::all_curves();
    for (const auto &[text, message] : cases) {
        SCOPED_TRACE(message);
        write(text);
        const std::string error = load_error();
        EXPECT_THAT(error, HasSubstr(message));
        EXPECT_THAT(error, HasSubstr(path_));
        EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 20.0f);
        EXPECT_EQ(sparkhost::all_curves(), curves);
    }
}

TEST_F(SetupFileTest, MissingFileOrMissingControlsAreErrors) {
    EXPECT_THAT(load_error(), HasSubstr("cannot open"));
    sparkhost::save_setup(path_);
    sparkhost::unregister_plugin_controls();
    EXPECT_THAT(load_error(), HasSubstr("no plug-in controls"));
}

TEST_F(SetupFileTest, BooleansAcceptZeroAndOneAndControlsNotListedKeepTheirState) {
    table().at(9).set_value(77);
    write("{\"format\": \"sparkhost-setup\", \"version\": 1, \"controls\": [{\"number\": 93, \"value\": 1}]}");
    sparkhost::load_setup(path_);
    EXPECT_EQ(exported<SparkBooleanStruct>("SparkBoolean93").Value, 1);
    EXPECT_EQ(exported<SparkIntStruct>("SparkInt9").Value, 77);
}

TEST_F(SetupFileTest, HostFunctionsReportBadFilesAndIgnoreMissingOnes) {
    // No path, or a file not written yet: nothing happens and nothing is reported.
    SparkInfoStruct empty = info_with_path(""), info = info_with_path(path_);
    sparkSaveSetup(&empty);
    sparkLoadSetup(&empty);
    sparkLoadSetup(&info);
    EXPECT_EQ(sparkhost::last_setup_error(), "");
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 20.0f);

    // A bad file is reported and leaves the controls as they were.
    write("{ nonsense");
    table().at(102).set_value(1);
    sparkLoadSetup(&info);
    EXPECT_THAT(sparkhost::last_setup_error(), HasSubstr("not valid JSON"));
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat102").Value, 1.0f);

    SparkInfoStruct unwritable = info_with_path("/nonexistent-directory/setup.json");
    sparkSaveSetup(&unwritable);
    EXPECT_THAT(sparkhost::last_setup_error(), HasSubstr("cannot write"));
}
