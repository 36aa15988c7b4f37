// Amplitude control file import: parsing, the keys set on the host's
// curve, and the messages shown for unusable files.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "host/amplitude_import.h"

namespace {

// A key as the host's curve received it, or as the reader handed it on.
struct Key {
    float frame, value;
    bool operator==(const Key &other) const { return frame == other.frame && value == other.value; }
};

// What the import asked of the host during one test.
struct HostRecord {
    std::vector<Key> keys;
    std::vector<std::string> messages;
    std::vector<unsigned> pauses;
    std::string browser_directory, browser_extension;
    SparkFileBrowserCallback browser_callback = nullptr;
};
HostRecord *record = nullptr;

class AmplitudeImport : public ::testing::Test {
protected:
    void SetUp() override {
        saved_ = amplitude_import_host;
        record = &host_;
        amplitude_import_host.set_curve_key = [](int kind, int control, float frame, float value) {
            EXPECT_EQ(kind, 0);
            EXPECT_EQ(control, 93);
            record->keys.push_back({frame, value});
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

    HostRecord host_;
    AmplitudeImportHost saved_;
};

// Reads text as a file; keys are handed on as (key number, value), with the
// frame they name kept apart.
AmplitudeReadResult parse(const std::string &text, std::vector<Key> &keys, std::vector<int> *frames = nullptr) {
    std::string copy = text;
    FILE *file = fmemopen(&copy[0], copy.size(), "r");
    AmplitudeReadResult result = read_amplitude_keys(file, [&](int key, int frame, float value) {
        keys.push_back({float(key), value});
        if (frames) frames->push_back(frame);
    });
    if (file) std::fclose(file);
    return result;
}

}  // namespace

TEST_F(AmplitudeImport, FilesSetKeysAtTheirKeyNumbersOrSayWhyNot) {
    const std::vector<std::string> none, unreadable = {"Unable to open file"};
    struct Case {
        const char *file;
        std::vector<Key> keys;
        std::vector<std::string> messages;
    } cases[] = {
        {"well_formed.amp", {{1, 0.25f}, {2, 0.5f}, {3, -1.75f}}, none},
        {"frame_differs.amp", {{10, 1.5f}, {20, 2.5f}}, none},  // the Key number, not the Frame, places it
        {"size_zero.amp", {}, none},
        {"cut_short.amp", {{1, 0.1f}, {2, 0.2f}}, none},  // a key cut short ends the import silently
        {"bad_header.amp", {}, {"Not a valid control file"}},
        {"no_such_file.amp", {}, unreadable},
    };
    for (const Case &c : cases) {
        host_ = HostRecord{};
        std::string path = std::string(FIZZLE_TEST_DATA) + "/" + c.file;
        aiff_file_CB(&path[0]);
        EXPECT_EQ(host_.keys, c.keys) << c.file;
        EXPECT_EQ(host_.messages, c.messages) << c.file;
        EXPECT_EQ(host_.pauses, std::vector<unsigned>(c.messages.size(), 2u)) << c.file;
    }
    host_ = HostRecord{};
    aiff_file_CB(nullptr);
    EXPECT_EQ(host_.messages, unreadable);
    EXPECT_EQ(host_.pauses, std::vector<unsigned>{2});
}

TEST_F(AmplitudeImport, ButtonOpensTheFileBrowserInTheWorkingDirectory) {
    SparkInfoStruct info{};
    EXPECT_EQ(import_aiff_CB(1, info), nullptr);
    EXPECT_EQ(host_.browser_directory, "/shots/sc042");
    EXPECT_EQ(host_.browser_extension, "");
    EXPECT_EQ(host_.browser_callback, &aiff_file_CB);
}

TEST(AmplitudeReader, WhiteSpaceRunsMatchAnyWhiteSpace) {
    std::vector<Key> keys;
    std::vector<int> frames;
    AmplitudeReadResult result = parse(
        "Channel Amplitude 5:   Size 2 Key 4 Frame 9 Value 1e-3 End\r\n\n  Key 6\n Frame 0\n Value -2\nEnd", keys,
        &frames);
    EXPECT_TRUE(result.header_ok);
    EXPECT_EQ(result.channel, 5);
    EXPECT_EQ(result.size, 2);
    EXPECT_EQ(keys, (std::vector<Key>{{4, 0.001f}, {6, -2.0f}}));
    EXPECT_EQ(frames, (std::vector<int>{9, 0}));  // handed on for the caller to ignore
}

TEST(AmplitudeReader, StopsAtTheFirstMalformedKey) {
    const char *cases[] = {
        "\tKey x\n\t\tFrame 3\n\t\tValue 1\n\t\tEnd\n",    // key number not a number
        "\tKey 3\n\t\tFrame 3\n\t\tValue abc\n\t\tEnd\n",  // value not a number
        "\tKey 3\n\t\tValue 1\n\t\tEnd\n",                 // frame line missing
        "\tKey 3\n\t\tFrame 3\n\t\tValue nan\n\t\tEnd\n",  // value not finite
        "\tKey 3\n\t\tFrame 3\n\t\tValue inf\n\t\tEnd\n",
    };
    const std::string good = "\tKey 1\n\t\tFrame 1\n\t\tValue 0.5\n\t\tEnd\n";
    for (const char *bad : cases) {
        std::vector<Key> keys;
        AmplitudeReadResult result = parse("Channel Amplitude 1:\n\tSize 3\n" + good + bad + good, keys);
        EXPECT_TRUE(result.header_ok) << bad;
        EXPECT_EQ(result.keys_read, 1) << bad;
        EXPECT_EQ(keys.size(), 1u) << bad;
    }
}

TEST(AmplitudeReader, HeaderNeedsBothNumbersAndSizeIsOnlyAnUpperBound) {
    std::vector<Key> keys;
    EXPECT_FALSE(parse("Channel Amplitude 1:\n\tSize\n", keys).header_ok);
    EXPECT_FALSE(parse("Channel Amplitude :\n\tSize 3\n", keys).header_ok);
    EXPECT_FALSE(parse("", keys).header_ok);
    EXPECT_FALSE(read_amplitude_keys(nullptr, [](int, int, float) {}).header_ok);
    EXPECT_TRUE(parse("Channel Amplitude -4:\n\tSize -1\n", keys).header_ok);  // negative size: no keys
    EXPECT_TRUE(keys.empty());
    // A size larger than the file reads what is there.
    EXPECT_EQ(parse("Channel Amplitude 1:\n\tSize 2147483647\n\tKey 1\n\t\tFrame 1\n\t\tValue 0.5\n\t\tEnd\n", keys)
                  .keys_read,
              1);
}
