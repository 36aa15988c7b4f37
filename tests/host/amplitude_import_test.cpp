// Amplitude control file import: parsing, the keys set on the host's
// curve, and the messages shown for unusable files.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "host/amplitude_import.h"

namespace {

struct CurveKey {
    int kind;
    int control;
    float frame;
    float value;
};

// What the import asked of the host during one test.
struct HostRecord {
    std::vector<CurveKey> keys;
    std::vector<std::string> messages;
    std::vector<unsigned> pauses;
    std::string browser_directory;
    std::string browser_extension;
    SparkFileBrowserCallback browser_callback = nullptr;
};
HostRecord *record = nullptr;

class AmplitudeImport : public ::testing::Test {
protected:
    void SetUp() override {
        saved_ = amplitude_import_host;
        record = &host_;
        amplitude_import_host.set_curve_key = [](int kind, int control, float frame, float value) {
            record->keys.push_back({kind, control, frame, value});
            return 1;
        };
        amplitude_import_host.message = [](const char *text) { record->messages.push_back(text); };
        amplitude_import_host.pause = [](unsigned seconds) { record->pauses.push_back(seconds); };
        amplitude_import_host.working_dir = [](char *buffer) { std::snprintf(buffer, 64, "/shots/sc042"); };
        amplitude_import_host.file_browser = [](const char *directory, const char *extension,
                                                SparkFileBrowserCallback callback) {
            record->browser_directory = directory;
            record->browser_extension = extension;
            record->browser_callback = callback;
        };
    }
    void TearDown() override {
        amplitude_import_host = saved_;
        record = nullptr;
    }

    void import(const std::string &name) {
        std::string path = std::string(FIZZLE_TEST_DATA) + "/" + name;
        aiff_file_CB(&path[0]);
    }

    HostRecord host_;
    AmplitudeImportHost saved_;
};

AmplitudeReadResult parse(const std::string &text, std::vector<CurveKey> &keys) {
    std::string copy = text;
    FILE *file = fmemopen(&copy[0], copy.size(), "r");
    AmplitudeReadResult result =
        read_amplitude_keys(file, [&keys](int key, int frame, float value) {
            keys.push_back({key, frame, 0.0f, value});
        });
    if (file) std::fclose(file);
    return result;
}

}  // namespace

TEST_F(AmplitudeImport, WellFormedFileSetsEveryKeyOnTheAmplitudeCurve) {
    import("well_formed.amp");
    ASSERT_EQ(host_.keys.size(), 3u);
    for (const CurveKey &key : host_.keys) {
        EXPECT_EQ(key.kind, 0);
        EXPECT_EQ(key.control, 93);
    }
    EXPECT_EQ(host_.keys[0].frame, 1.0f);
    EXPECT_EQ(host_.keys[0].value, 0.25f);
    EXPECT_EQ(host_.keys[2].frame, 3.0f);
    EXPECT_EQ(host_.keys[2].value, -1.75f);
    EXPECT_TRUE(host_.messages.empty());
    EXPECT_TRUE(host_.pauses.empty());
}

TEST_F(AmplitudeImport, KeyNumberNotFramePlacesTheKey) {
    import("frame_differs.amp");
    ASSERT_EQ(host_.keys.size(), 2u);
    EXPECT_EQ(host_.keys[0].frame, 10.0f);
    EXPECT_EQ(host_.keys[0].value, 1.5f);
    EXPECT_EQ(host_.keys[1].frame, 20.0f);
    EXPECT_EQ(host_.keys[1].value, 2.5f);
}

TEST_F(AmplitudeImport, SizeZeroImportsNothingAndSaysNothing) {
    import("size_zero.amp");
    EXPECT_TRUE(host_.keys.empty());
    EXPECT_TRUE(host_.messages.empty());
}

TEST_F(AmplitudeImport, BadHeaderIsReportedWithAPause) {
    import("bad_header.amp");
    EXPECT_TRUE(host_.keys.empty());
    ASSERT_EQ(host_.messages.size(), 1u);
    EXPECT_EQ(host_.messages[0], "Not a valid control file");
    EXPECT_EQ(host_.pauses, std::vector<unsigned>{2});
}

TEST_F(AmplitudeImport, KeyCutShortEndsTheImportSilentlyKeepingEarlierKeys) {
    import("cut_short.amp");
    ASSERT_EQ(host_.keys.size(), 2u);
    EXPECT_EQ(host_.keys[1].frame, 2.0f);
    EXPECT_FLOAT_EQ(host_.keys[1].value, 0.2f);
    EXPECT_TRUE(host_.messages.empty());
}

TEST_F(AmplitudeImport, UnreadableFileIsReportedWithAPause) {
    import("no_such_file.amp");
    aiff_file_CB(nullptr);
    EXPECT_TRUE(host_.keys.empty());
    EXPECT_EQ(host_.messages, (std::vector<std::string>{"Unable to open file", "Unable to open file"}));
    EXPECT_EQ(host_.pauses, (std::vector<unsigned>{2, 2}));
}

TEST_F(AmplitudeImport, ButtonOpensTheFileBrowserInTheWorkingDirectory) {
    SparkInfoStruct info{};
    EXPECT_EQ(import_aiff_CB(1, info), nullptr);
    EXPECT_EQ(host_.browser_directory, "/shots/sc042");
    EXPECT_EQ(host_.browser_extension, "");
    EXPECT_EQ(host_.browser_callback, &aiff_file_CB);
}

TEST(AmplitudeReader, WhiteSpaceRunsMatchAnyWhiteSpace) {
    std::vector<CurveKey> keys;
    AmplitudeReadResult result =
        parse("Channel Amplitude 5:   Size 2 Key 4 Frame 9 Value 1e-3 End\r\n\n  Key 6\n Frame 0\n Value -2\nEnd",
              keys);
    EXPECT_TRUE(result.header_ok);
    EXPECT_EQ(result.channel, 5);
    EXPECT_EQ(result.size, 2);
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0].kind, 4);     // key number
    EXPECT_EQ(keys[0].control, 9);  // frame, handed on for the caller to ignore
    EXPECT_FLOAT_EQ(keys[0].value, 0.001f);
    EXPECT_EQ(keys[1].value, -2.0f);
}

TEST(AmplitudeReader, StopsAtTheFirstMalformedKey) {
    const char *cases[] = {
        "\tKey x\n\t\tFrame 3\n\t\tValue 1\n\t\tEnd\n",   // key number not a number
        "\tKey 3\n\t\tFrame 3\n\t\tValue abc\n\t\tEnd\n", // value not a number
        "\tKey 3\n\t\tValue 1\n\t\tEnd\n",                // frame line missing
        "\tKey 3\n\t\tFrame 3\n\t\tValue nan\n\t\tEnd\n", // value not finite
        "\tKey 3\n\t\tFrame 3\n\t\tValue inf\n\t\tEnd\n",
    };
    for (const char *bad : cases) {
        std::vector<CurveKey> keys;
        std::string text = std::string("Channel Amplitude 1:\n\tSize 3\n\tKey 1\n\t\tFrame 1\n\t\tValue 0.5\n\t\tEnd\n") +
                           bad + "\tKey 4\n\t\tFrame 4\n\t\tValue 0.5\n\t\tEnd\n";
        AmplitudeReadResult result = parse(text, keys);
        EXPECT_TRUE(result.header_ok) << bad;
        EXPECT_EQ(result.keys_read, 1) << bad;
        EXPECT_EQ(keys.size(), 1u) << bad;
    }
}

TEST(AmplitudeReader, HeaderNeedsBothNumbersAndSizeIsOnlyAnUpperBound) {
    std::vector<CurveKey> keys;
    EXPECT_FALSE(parse("Channel Amplitude 1:\n\tSize\n", keys).header_ok);
    EXPECT_FALSE(parse("Channel Amplitude :\n\tSize 3\n", keys).header_ok);
    EXPECT_FALSE(parse("", keys).header_ok);
    EXPECT_FALSE(read_amplitude_keys(nullptr, [](int, int, float) {}).header_ok);
    EXPECT_TRUE(parse("Channel Amplitude -4:\n\tSize -1\n", keys).header_ok);  // negative size: no keys
    EXPECT_TRUE(keys.empty());
    // A size larger than the file reads what is there.
    AmplitudeReadResult result =
        parse("Channel Amplitude 1:\n\tSize 2147483647\n\tKey 1\n\t\tFrame 1\n\t\tValue 0.5\n\t\tEnd\n", keys);
    EXPECT_EQ(result.keys_read, 1);
}
