// Amplitude control file import: parsing, the keys set on the host's
// curve, and the messages shown for unusable files.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "host/glue/amplitude_import.h"

namespace {

// A key as the host's curve received it, or as the reader handed it on.
using Key = std::pair<float, float>;

// What the import asked of the host.
struct HostRecord {
    std::vector<Key> keys;
    std::vector<std::string> messages;
    std::vector<unsigned> pauses;
} record;

// Reads text as a file; keys are handed on as (key number, value).
AmplitudeReadResult parse(const std::string &text, std::vector<Key> &keys) {
    std::string copy = text;
    FILE *file = fmemopen(&copy[0], copy.size(), "r");
    AmplitudeReadResult result =
        read_amplitude_keys(file, [&](int key, int, float value) { keys.push_back({float(key), value}); });
    if (file) std::fclose(file);
    return result;
}

}  // namespace

TEST(AmplitudeImport, FilesSetKeysOnTheLightCurveOrSayWhyNot) {
    const AmplitudeImportHost saved = amplitude_import_host;
    amplitude_import_host.set_curve_key = [](int kind, int control, float frame, float value) {
        EXPECT_EQ(kind, 0);
        EXPECT_EQ(control, 93);
        record.keys.push_back({frame, value});
        return 1;
    };
    amplitude_import_host.message = [](const char *text) { record.messages.push_back(text); };
    amplitude_import_host.pause = [](unsigned seconds) { record.pauses.push_back(seconds); };
    const std::vector<std::string> none, unreadable = {"Unable to open file"};
    struct Case {
        const char *file;
        std::vector<Key> keys;
        std::vector<std::string> messages;
    } cases[] = {
        {"well_formed.amp", {{1, 0.25f}, {2, 0.5f}, {3, -1.75f}}, none},
        {"cut_short.amp", {{1, 0.1f}, {2, 0.2f}}, none},  // a key cut short ends the import silently
        {"bad_header.amp", {}, {"Not a valid control file"}},
        {"no_such_file.amp", {}, unreadable},
        {nullptr, {}, unreadable},
    };
    for (const Case &c : cases) {
        record = HostRecord{};
        std::string path = c.file ? std::string(FIZZLE_TEST_DATA) + "/" + c.file : "";
        aiff_file_CB(c.file ? &path[0] : nullptr);
        EXPECT_EQ(record.keys, c.keys) << path;
        EXPECT_EQ(record.messages, c.messages) << path;
        EXPECT_EQ(record.pauses, std::vector<unsigned>(c.messages.size(), 2u)) << path;
    }
    amplitude_import_host = saved;
}

TEST(AmplitudeReader, WhiteSpaceRunsMatchAnyWhiteSpace) {
    std::vector<Key> keys;
    AmplitudeReadResult result =
        parse("Channel Amplitude 5:   Size 2 Key 4 Frame 9 Value 1e-3 End\r\n\n  Key 6\n Frame 0\n Value -2\nEnd", keys);
    EXPECT_TRUE(result.header_ok);
    EXPECT_EQ(result.channel, 5);
    EXPECT_EQ(result.size, 2);
    EXPECT_EQ(keys, (std::vector<Key>{{4, 0.001f}, {6, -2.0f}}));
}

TEST(AmplitudeReader, StopsAtTheFirstMalformedKey) {
    const char *cases[] = {
        "\tKey 3\n\t\tFrame 3\n\t\tValue abc\n\t\tEnd\n",  // value not a number
        "\tKey 3\n\t\tValue 1\n\t\tEnd\n",                 // frame line missing
        "\tKey 3\n\t\tFrame 3\n\t\tValue nan\n\t\tEnd\n",  // value not finite
    };
    const std::string good = "\tKey 1\n\t\tFrame 1\n\t\tValue 0.5\n\t\tEnd\n";
    for (const char *bad : cases) {
        std::vector<Key> keys;
        EXPECT_EQ(parse("Channel Amplitude 1:\n\tSize 3\n" + good + bad + good, keys).keys_read, 1) << bad;
        EXPECT_EQ(keys.size(), 1u) << bad;
    }
}

TEST(AmplitudeReader, HeaderNeedsBothNumbersAndSizeIsOnlyAnUpperBound) {
    std::vector<Key> keys;
    EXPECT_FALSE(parse("Channel Amplitude 1:\n\tSize\n", keys).header_ok);
    EXPECT_FALSE(parse("Channel Amplitude :\n\tSize 3\n", keys).header_ok);
    EXPECT_TRUE(parse("Channel Amplitude -4:\n\tSize -1\n", keys).header_ok);  // negative size: no keys
    EXPECT_TRUE(keys.empty());
    EXPECT_EQ(parse("Channel Amplitude 1:\n\tSize 2147483647\n\tKey 1\n\t\tFrame 1\n\t\tValue 0.5\n\t\tEnd\n", keys)
                  .keys_read,
              1);
}
