// The exported control table as the host sees it in the real plug-in: every
// number, kind, title, default, range and step, and the channel editor.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "expected_controls.h"
#include "plugin_host_fixture.h"
#include "sparkhost/controls.h"

using sparkhost::Control;
using sparkhost::ControlKind;

using namespace expected_controls;

namespace {

class ControlTableTest : public PluginHostTest {
protected:
    void SetUp() override {
        PluginHostTest::SetUp();
        for (Control &control : host().controls().controls()) exported_[control.number()] = &control;
        for (const auto &entry : exported_) unchecked_.insert(entry.first);
    }
    // The control's structure when it is exported with this kind, else null (and a failure).
    template <class Structure>
    const Structure *exported(int number, ControlKind kind) {
        unchecked_.erase(number);
        auto found = exported_.find(number);
        if (found == exported_.end()) {
            ADD_FAILURE() << "control " << number << " is not exported";
            return nullptr;
        }
        EXPECT_EQ(found->second->kind(), kind) << "control " << number << " is a " << sparkhost::kind_name(found->second->kind());
        return found->second->kind() == kind ? static_cast<const Structure *>(found->second->structure()) : nullptr;
    }
    template <class Structure>
    const Structure &at(int number) { return *static_cast<const Structure *>(exported_.at(number)->structure()); }
    std::map<int, Control *> exported_;
    std::set<int> unchecked_;  // exported but not (yet) found in the table
};

const std::vector<std::pair<std::string, std::vector<int>>> kFolders = {
    {"Style", {26, 14, 24, 25}},    {"Location", {11, 12, 18, 19, 17}},  {"Bubbles", {16, 13}},
    {"Velocity", {20, 21, 22}},     {"Colour", {69, 70, 72, 73, 74}},    {"Gravity", {45, 46}},
    {"Friction", {43}},             {"Turbulence", {39, 40, 41}},        {"Burst", {50, 51, 52, 53}},
    {"Light", {100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 95, 96, 97}},
    {"Refelection", {99}},          {"Common", {27, 93}},
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
            EXPECT_EQ(s->Value, list.value) << list.number;
            std::vector<std::string> titles;  // every slot, so the unused ones must be null
            for (const char *title : s->Titles) titles.push_back(title ? title : "(null)");
            std::vector<std::string> expected = list.entries;
            expected.resize(SPARK_PUP_MAX_ENTRIES, "(null)");
            EXPECT_EQ(s->Count, int(list.entries.size())) << list.number;
            EXPECT_EQ(titles, expected) << list.number;
            EXPECT_NE(s->Callback, nullptr) << list.number;
        }
    for (int number : kColours)
        if (const auto *s = exported<SparkColorStruct>(number, ControlKind::Color)) {
            EXPECT_EQ(s->Value, 0xFFFFFFFFu) << number;
            EXPECT_NE(s->Callback, nullptr) << number;
        }
    for (const auto &[number, value] : kStrings)
        if (const auto *s = exported<SparkStringStruct>(number, ControlKind::String)) {
            EXPECT_STREQ(s->Value, value.c_str());
            EXPECT_STREQ(s->Title, "%s");
            EXPECT_EQ(s->Flags, 16);
            EXPECT_EQ(s->Callback, nullptr);
        }
    EXPECT_TRUE(unchecked_.empty()) << "exported beyond the table: " << ::testing::PrintToString(unchecked_);
}

// Pairs share one callback; the common block repeats the same behaviour.
TEST_F(ControlTableTest, PositionPairsAndHelpButtonsShareOneCallback) {
    for (int x : {11, 18, 100, 107})
        EXPECT_EQ(at<SparkFloatStruct>(x).Callback, at<SparkFloatStruct>(x + 1).Callback) << x;
    for (int number : {60, 89, 118}) EXPECT_EQ(at<SparkPushStruct>(number).Callback, at<SparkPushStruct>(31).Callback);
}

TEST_F(ControlTableTest, ChannelEditorListsTheFoldersInOrderAndStartUpNamesEachChannel) {
    auto editor = reinterpret_cast<void (*)()>(host().symbol("SparkChannelEditor"));
    ASSERT_NE(editor, nullptr);
    const sparkhost::UiRecord record = sparkhost::ui_record();  // as start-up left it
    sparkhost::clear_channel_editor();
    editor();
    std::vector<std::pair<std::string, std::vector<int>>> folders;
    for (const sparkhost::ChannelEditorFolder &folder : sparkhost::channel_editor_folders())
        folders.emplace_back(folder.name, folder.controls);
    EXPECT_EQ(folders, kFolders);

    const std::vector<sparkhost::ChannelEditorEntry> entries = sparkhost::ui_record().channel_editor;
    ASSERT_FALSE(entries.empty());
    for (size_t i = 0; i < entries.size(); ++i) {
        const bool folder = entries[i].type == sparkhost::ChannelEditorEntry::Type::Folder;
        EXPECT_EQ(entries[i].level, folder ? 1 : 2);
        // Only the last channel, the amplitude curve, is left unflagged.
        if (!folder) {
            EXPECT_EQ(entries[i].flags, i + 1 == entries.size() ? 0 : 1) << "control " << entries[i].control;
        }
    }

    for (const auto &folder : kFolders)
        for (int number : folder.second) {
            auto name = record.control_names.find(number);
            ASSERT_NE(name, record.control_names.end()) << "control " << number << " has no name";
            EXPECT_FALSE(name->second.empty());
            EXPECT_EQ(name->second.find('%'), std::string::npos) << name->second;
        }
}

TEST_F(ControlTableTest, PluginExportsOnlyItsEntryPointsAndControlStructures) {
    for (const char *hidden : {"Instance", "DefaultCB", "dlcb_16", "SetRes1CB", "Reset1CB", "HelpCB",
                               "_Z9DefaultCBi15SparkInfoStruct", "_Z7dlcb_16i15SparkInfoStruct"})
        EXPECT_EQ(host().symbol(hidden), nullptr) << hidden;
    for (const char *entry : {"SparkInitialise", "SparkProcess", "SparkUnInitialise", "SparkClips",
                              "SparkProcessStart", "SparkMemoryTempBuffers", "SparkChannelEditor"})
        EXPECT_NE(host().symbol(entry), nullptr) << entry;
}
