// The exported control table as the host sees it in the real plug-in: every
// number, kind, title, default, range and step, and the channel editor.
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "host/glue/expected_controls.h"
#include "host/plugin_host_fixture.h"

using sparkhost::ControlKind;
using namespace expected_controls;

namespace {

class ControlTableTest : public PluginHostTest {
protected:
    // The control's structure when it has this kind, else null and a failure; a missing control throws.
    template <class Structure>
    const Structure *exported(int number, ControlKind kind) {
        const sparkhost::Control &control = host().controls().at(number);
        EXPECT_EQ(control.kind(), kind) << "control " << number;
        return control.kind() == kind ? static_cast<const Structure *>(control.structure()) : nullptr;
    }
};

}  // namespace

TEST_F(ControlTableTest, EveryControlHasItsKindTitleDefaultRangeAndStepAndNothingElseIsExported) {
    for (const Number &n : kFloats)
        if (const auto *s = exported<SparkFloatStruct>(n.number, ControlKind::Float)) {
            EXPECT_STREQ(s->Title, n.title);
            EXPECT_EQ((std::vector<float>{s->Value, s->Min, s->Max, s->Increment}),
                      (std::vector<float>{float(n.value), float(n.min), float(n.max), float(n.step)}))
                << n.title;
            EXPECT_NE(s->Callback, nullptr) << n.title;
        }
    for (const Number &n : kIntegers)
        if (const auto *s = exported<SparkIntStruct>(n.number, ControlKind::Int)) {
            EXPECT_STREQ(s->Title, n.title);
            EXPECT_EQ((std::vector<int>{s->Value, s->Min, s->Max, s->Increment, s->Flags}),
                      (std::vector<int>{int(n.value), int(n.min), int(n.max), int(n.step), n.number == 9 ? 8 : 0}))
                << n.title;
            EXPECT_NE(s->Callback, nullptr) << n.title;
        }
    for (const Switch &sw : kSwitches)
        if (const auto *s = exported<SparkBooleanStruct>(sw.number, ControlKind::Boolean)) {
            EXPECT_STREQ(s->Title, sw.title) << sw.number;
            EXPECT_EQ(s->Value, sw.value) << sw.number;
            EXPECT_NE(s->Callback, nullptr) << sw.number;
        }
    for (const Button &button : kButtons)
        if (const auto *s = exported<SparkPushStruct>(button.number, ControlKind::Push)) {
            EXPECT_STREQ(s->Title, button.title) << button.number;
            EXPECT_NE(s->Callback, nullptr) << button.number;
        }
    for (const List &list : kLists)
        if (const auto *s = exported<SparkPupStruct>(list.number, ControlKind::Pup)) {
            std::vector<std::string> titles;  // every slot, so the unused ones must be null
            for (const char *title : s->Titles) titles.push_back(title ? title : "(null)");
            std::vector<std::string> expected = list.entries;
            expected.resize(SPARK_PUP_MAX_ENTRIES, "(null)");
            EXPECT_EQ(titles, expected) << list.number;
            EXPECT_EQ((std::vector<int>{s->Value, s->Count}), (std::vector<int>{list.value, int(list.entries.size())}));
            EXPECT_NE(s->Callback, nullptr) << list.number;
        }
    for (int number : kColours)
        if (const auto *s = exported<SparkColorStruct>(number, ControlKind::Color)) {
            EXPECT_EQ(s->Value, 0xFFFFFFFFu) << number;
            EXPECT_NE(s->Callback, nullptr) << number;
        }
    for (const auto &[number, value] : kStrings)
        if (const auto *s = exported<SparkStringStruct>(number, ControlKind::String)) {
            EXPECT_EQ((std::vector<std::string>{s->Value, s->Title, std::to_string(s->Flags)}),
                      (std::vector<std::string>{value, "%s", "16"}));
            EXPECT_EQ(s->Callback, nullptr);
        }
    EXPECT_EQ(host().controls().controls().size(), std::size(kFloats) + std::size(kIntegers) + std::size(kSwitches) +
                                                       std::size(kButtons) + std::size(kLists) + std::size(kColours) +
                                                       kStrings.size());
}

TEST_F(ControlTableTest, ChannelEditorListsTheFoldersInOrderAndStartUpNamesEachChannel) {
    const std::vector<std::pair<std::string, std::vector<int>>> expected = {
        {"Style", {26, 14, 24, 25}},    {"Location", {11, 12, 18, 19, 17}},  {"Bubbles", {16, 13}},
        {"Velocity", {20, 21, 22}},     {"Colour", {69, 70, 72, 73, 74}},    {"Gravity", {45, 46}},
        {"Friction", {43}},             {"Turbulence", {39, 40, 41}},        {"Burst", {50, 51, 52, 53}},
        {"Light", {100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 95, 96, 97}},
        {"Refelection", {99}},          {"Common", {27, 93}},
    };
    const sparkhost::UiRecord record = sparkhost::ui_record();  // as start-up left it
    sparkhost::clear_channel_editor();
    reinterpret_cast<void (*)()>(host().symbol("SparkChannelEditor"))();
    std::vector<std::pair<std::string, std::vector<int>>> folders;
    for (const sparkhost::ChannelEditorFolder &folder : sparkhost::channel_editor_folders())
        folders.emplace_back(folder.name, folder.controls);
    EXPECT_EQ(folders, expected);

    // Only the last channel, the amplitude curve, is left unflagged.
    const std::vector<sparkhost::ChannelEditorEntry> entries = sparkhost::ui_record().channel_editor;
    ASSERT_FALSE(entries.empty());
    for (size_t i = 0; i < entries.size(); ++i)
        if (entries[i].type != sparkhost::ChannelEditorEntry::Type::Folder) {
            EXPECT_EQ(entries[i].flags, i + 1 == entries.size() ? 0 : 1) << "control " << entries[i].control;
        }

    for (const auto &folder : expected)
        for (int number : folder.second) {
            auto name = record.control_names.find(number);
            ASSERT_NE(name, record.control_names.end()) << "control " << number << " has no name";
            EXPECT_EQ(name->second.find('%'), std::string::npos) << name->second;
        }
}

TEST_F(ControlTableTest, StartUpTitlesTheFourPagesAndTheThreeNamedClips) {
    const sparkhost::UiRecord record = sparkhost::ui_record();
    // Page 3 is first titled "Import AIFF"; the later "Light" stands.
    EXPECT_EQ(record.page_titles,
              (std::map<int, std::string>{{0, "Bubbles"}, {1, "Forces"}, {2, "Colour"}, {3, "Light"}}));
    EXPECT_EQ(record.clip_titles, (std::map<int, std::string>{{0, "Scene"}, {1, "Birth"}, {2, "BorG"}}));
}
