// Setup files: a round trip of values, text and curves, refusal of bad files
// without side effects, and the setup host functions.
#include "sparkhost/files/setup_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "sparkhost/fake_plugin_fixture.h"

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
    SparkInfoStruct info_with_path(const std::string &path) {
        SparkInfoStruct info{};
        std::strncpy(info.SetupPath, path.c_str(), sizeof info.SetupPath - 1);
        return info;
    }

    std::string path_;
};

}  // namespace

TEST_F(SetupFileTest, RoundTripRestoresValuesTextAndCurvesWrittenAsTyped) {
    table().at(16).set_value(0.05);
    table().at(80).set_value(0x00ABCDEF);
    table().at(0).set_text("Sea floor");
    sparkhost::set_curve_key(93, 2.0f, 0.1f);
    const std::map<int, sparkhost::Curve> curves = sparkhost::all_curves();
    sparkhost::save_setup(path_);
    // Floats are written as the short decimals they were typed as (0.1, not 0.10000000149011612).
    // Held in a variable: a range-for over a member of a temporary reads freed memory.
    const nlohmann::json saved = nlohmann::json::parse(std::ifstream(path_));
    for (const auto &entry : saved["controls"])
        if (entry["number"] == 93) { EXPECT_EQ(entry["curve"], nlohmann::json::parse("[[2, 0.1]]")); }

    table().at(16).set_value(1);
    table().at(80).set_value(0);
    table().at(0).set_text("");
    sparkhost::clear_curves();
    sparkhost::set_curve_key(16, 0.0f, 5.0f);  // not in the file: the load drops it
    sparkhost::load_setup(path_);
    EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 0.05f);
    EXPECT_EQ(exported<SparkColorStruct>("SparkColor80").Value, 0x00ABCDEFu);
    EXPECT_STREQ(exported<SparkStringStruct>("SparkString0").Value, "Sea floor");
    EXPECT_EQ(sparkhost::all_curves(), curves);
}

// Every bad file but the first four starts by setting a valid Density and a curve on 93.
#define SETUP_HEAD R"({"format": "sparkhost-setup", "version": 1, "controls": [)" \
                   R"({"number": 16, "value": 33}, {"number": 93, "curve": [[0, 1]]}, )"

TEST_F(SetupFileTest, RefusedFileNamesTheProblemAndChangesNothing) {
    const std::pair<std::string, const char *> cases[] = {
        {SETUP_HEAD R"({"number": 9,)", "not valid JSON"},
        {R"({"format": "other", "version": 1, "controls": []})", "not a setup file"},
        {R"({"format": "sparkhost-setup", "version": 2, "controls": []})", "version 2 is not supported"},
        {R"({"format": "sparkhost-setup", "version": 1, "controls": 3})", R"("controls" must be a list)"},
        {SETUP_HEAD R"({"number": 47, "value": 1}]})", "control 47 is not a control"},
        {SETUP_HEAD R"({"number": 102, "value": "fifty"}]})", "must be a number"},
        {SETUP_HEAD R"({"number": 9, "kind": "Float", "value": 3}]})", "kind Int"},
        {SETUP_HEAD R"({"number": 9, "title": "Seed", "value": 3}]})", R"(titled "PreRoll")"},
        {SETUP_HEAD R"({"number": 16, "value": 3}]})", "listed twice"},
        {SETUP_HEAD R"({"number": 6, "value": 1}]})", R"(takes no "value")"},
        {SETUP_HEAD R"({"number": 102, "curve": [[1, 2], [1, 3]]}]})", "two keys at frame 1"},
        {SETUP_HEAD R"({"number": 102, "valeu": 3}]})", R"(unknown entry "valeu")"},
        // Found by fuzzing: these escaped as other exceptions, or were taken silently.
        {SETUP_HEAD R"({"number": 102, "value": 1e400}]})", "1e400"},
        {SETUP_HEAD R"({"number": 102, "value": 3, "value": 4}]})", R"("value" is given twice)"},
        {SETUP_HEAD R"({"number": 102, "curve": )" + std::string(100000, '[') + "]}", "levels deep"},
    };
    sparkhost::set_curve_key(102, 0.0f, 60.0f);
    const std::map<int, sparkhost::Curve> curves = sparkhost::all_curves();
    for (const auto &[text, message] : cases) {
        SCOPED_TRACE(message);
        std::ofstream(path_) << text;
        std::string error = "(no error)";
        try {
            sparkhost::load_setup(path_);
        } catch (const sparkhost::SetupError &refused) {
            error = refused.what();
        }
        EXPECT_LT(error.size(), 300u);
        EXPECT_THAT(error, HasSubstr(message));
        EXPECT_THAT(error, HasSubstr(path_));
        EXPECT_EQ(exported<SparkFloatStruct>("SparkFloat16").Value, 20.0f);
        EXPECT_EQ(sparkhost::all_curves(), curves);
    }
}

TEST_F(SetupFileTest, HostFunctionsReportBadFilesAndIgnoreMissingOnes) {
    SparkInfoStruct empty = info_with_path(""), info = info_with_path(path_);
    sparkLoadSetup(&empty);
    sparkLoadSetup(&info);  // not written yet
    EXPECT_EQ(sparkhost::last_setup_error(), "");

    std::ofstream(path_) << "{ nonsense";
    sparkLoadSetup(&info);
    EXPECT_THAT(sparkhost::last_setup_error(), HasSubstr("not valid JSON"));

    SparkInfoStruct unwritable = info_with_path("/nonexistent-directory/setup.json");
    sparkSaveSetup(&unwritable);
    EXPECT_THAT(sparkhost::last_setup_error(), HasSubstr("cannot write"));
}

// Whatever a setup holds can be loaded again: long curves are saved a few
// bytes a key (indented, a key took five lines and such setups were saved
// larger than a load accepts).
TEST_F(SetupFileTest, LongCurvesAreSavedCompactlyAndLoadBackWhole) {
    for (int key = 0; key < 100000; ++key) sparkhost::set_curve_key(93, float(key), float(key % 7) * 0.25f);
    const std::map<int, sparkhost::Curve> curves = sparkhost::all_curves();
    sparkhost::save_setup(path_);
    std::ifstream saved(path_, std::ios::binary | std::ios::ate);
    EXPECT_LT(std::size_t(saved.tellg()), 100000u * 16);
    sparkhost::clear_curves();
    sparkhost::load_setup(path_);
    EXPECT_EQ(sparkhost::all_curves(), curves);
    sparkhost::clear_curves();
}
