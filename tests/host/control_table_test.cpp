// The exported control table as the host sees it in the real plug-in: every
// number, kind, title, default, range and step, and the channel editor.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "plugin_host_fixture.h"
#include "sparkhost/controls.h"

using sparkhost::Control;
using sparkhost::ControlKind;

namespace {

// Written out from the product's control table, independently of the
// plug-in's own source of it.
struct Number {
    int number;
    const char *title;
    double value, min, max, step;
};
const Number kFloats[] = {
    {11, "Left X: %.2f", 1, -300, 300, 0.05},
    {12, "Left Y: %.2f", 1, -300, 300, 0.05},
    {13, "Lifetime: %.2f", 200, 1, 1000, 1},
    {16, "Density: %.2f", 20, 0, 10000, 1},
    {17, "Position Var: %.2f", 1, 0, 300, 0.05},
    {18, "Right X: %.2f", 90, -300, 300, 0.05},
    {19, "Right Y: %.2f", 1, -300, 300, 0.05},
    {20, "Initial Velocity: %.2f", 200, -2000, 2000, 1},
    {21, "Velocity Var: %.2f", 100, 0, 200, 0.5},
    {22, "Vel Dir: %.2f", 90, 0, 360, 0.01},
    {24, "Bubble Size: %.2f", 20, 1, 40, 0.1},
    {25, "Bubble Size Var: %.2f", 100, 0, 100, 0.5},
    {27, "Blend: %.2f", 0, 0, 100, 0.1},
    {39, "SwirlDens: %.2f", 60, 0, 100, 0.1},
    {40, "SwirlAmp: %.2f", 1, 0, 100, 0.2},
    {41, "SwlMaxTim: %.2f", 0, 0, 100, 1},
    {43, "Friction: %.3f", 0.05, 0, 1, 0.005},
    {45, "Gravity: %.2f", 0.2, 0, 10, 0.05},
    {46, "GravAngle: %.2f", 90, 0, 360, 0.005},
    {50, "Burst Probability: %.2f", 50, 0, 100, 0.5},
    {51, "Burst Quantity: %.2f", 80, 0, 100, 0.5},
    {52, "Burst Extent: %.2f", 5, 0, 10, 0.1},
    {69, "ColourVar: %.2f", 0, 0, 100, 0.5},
    {70, "MonoVar: %.2f", 0, 0, 100, 0.5},
    {72, "BubbleColour R: %.2f", 100, 0, 100, 0.2},
    {73, "BubbleColour G: %.2f", 100, 0, 100, 0.2},
    {74, "BubbleColour B: %.2f", 100, 0, 100, 0.2},
    {95, "Light Colour R: %.2f", 100, 0, 100, 0.2},
    {96, "Light Colour G: %.2f", 100, 0, 100, 0.2},
    {97, "Light Colour B: %.2f", 100, 0, 100, 0.2},
    {99, "Ref Intensity: %.2f", 100, 0, 200, 0.5},
    {100, "Light Source X: %.2f", 50, -300, 300, 0.05},
    {101, "Light Source Y: %.2f", 90, -300, 300, 0.05},
    {102, "Light Inten: %.2f", 50, 0, 500, 0.5},
    {103, "Light Spread: %.2f", 90, 0, 180, 0.005},
    {104, "Glisten Tight: %.2f", 30, 0, 1000, 1},
    {107, "Light Target X: %.2f", 50, -300, 300, 0.05},
    {108, "Light Target Y: %.2f", 1, -300, 300, 0.05},
    {109, "Light Z: %.3f", 0, -1, 1, 0.05},
    {111, "Min. Bright: %.2f", 60, 0, 100, 0.5},
    {112, "Shine: %.2f", 45, 1, 200, 0.1},
    {113, "Highlight: %.2f", 10, 1, 200, 0.1},
};
const Number kIntegers[] = {
    {9, "PreRoll: %d", 20, 1, 1000, 1},
    {14, "TimeMaxSize: %d", 25, 1, 500, 1},
    {26, "Seed: %d", 785, 1, 999999, 1},
    {53, "Afterlife: %d", 3, 0, 100, 1},
};
struct Switch {
    int number;
    const char *title;
    int value;
};
const Switch kSwitches[] = {
    {15, "Use Birth Matte   ", 0}, {28, "Clear Overlay", 0},  {34, "Auto Preview", 1},   {38, "Turbulence   ", 1},
    {42, "Friction   ", 1},        {44, "Gravity   ", 0},     {49, "Bubbles Burst   ", 0}, {54, "Congregate   ", 0},
    {57, "Clear Overlay", 0},      {63, "Auto Preview", 1},   {86, "Clear Overlay", 0},  {92, "Auto Preview", 1},
    {93, "Light   ", 0},           {98, "Reflections   ", 0}, {115, "Clear Overlay", 0}, {121, "Auto Preview", 1},
};
struct Button {
    int number;
    const char *title;
};
const Button kButtons[] = {
    {6, "Restart   "},   {7, "Restart+PreRoll   "},  {8, "Do PreRoll   "},  {10, "Advance   "},
    {31, "Help"},        {32, "Reset"},               {35, "Restart   "},     {36, "Restart+PreRoll   "},
    {37, "Do PreRoll   "}, {60, "Help"},              {61, "Reset"},          {64, "Restart   "},
    {65, "Restart+PreRoll   "}, {66, "Do PreRoll   "}, {89, "Help"},          {90, "Reset"},
    {114, "Import Amplitude File"}, {118, "Help"},     {119, "Reset"},
};
const std::vector<std::string> kResolutions = {"FULL", "1/2", "1/3", "1/4", "1/6", "1/8", "1/12", "1/16", "1/32"};
struct List {
    int number;
    int value;
    std::vector<std::string> entries;
};
const List kLists[] = {
    {23, 3, {"Growth Mode: Assorted  ", "Growth Mode: Shrinking  ", "Growth Mode: Variable Growth  ",
             "Growth Mode: Linear Growth  "}},
    {29, 0, {"Demos: Basic  ", "Demos: Soap  ", "Demos: Champagne  ", "Demos: Under Water  ", "Demos: Floating  ",
             "Demos: Bubbly  ", "Demos: Swirly  ", "Demos: Gathering  ", "Demos: Flurry  ", "Demos: Pipe  "}},
    {33, 0, kResolutions},
    {62, 0, kResolutions},
    {75, 2, {"Fade Mode: Col+Dens  ", "Fade Mode: Colour  ", "Fade Mode: Density  "}},
    {91, 0, kResolutions},
    {120, 0, kResolutions},
};
const int kColours[] = {71, 94};
const std::map<int, std::string> kStrings = {
    {0, "1: Background"}, {1, "2: Birth"}, {2, "3: Burst/Gather"}, {3, "4: Reflection"}};

class ControlTableTest : public PluginHostTest {
protected:
    void SetUp() override {
        PluginHostTest::SetUp();
        for (Control &control : host().controls().controls()) exported_[control.number()] = &control;
    }
    const Control *exported(int number, ControlKind kind) {
        auto found = exported_.find(number);
        if (found == exported_.end()) {
            ADD_FAILURE() << "control " << number << " is not exported";
            return nullptr;
        }
        EXPECT_EQ(found->second->kind(), kind) << "control " << number << " is a " << sparkhost::kind_name(found->second->kind());
        return found->second->kind() == kind ? found->second : nullptr;
    }
    std::map<int, Control *> exported_;
};

}  // namespace

TEST_F(ControlTableTest, ExportsExactlyTheTableNumbersAndNothingElse) {
    std::set<int> expected;
    for (const Number &n : kFloats) expected.insert(n.number);
    for (const Number &n : kIntegers) expected.insert(n.number);
    for (const Switch &s : kSwitches) expected.insert(s.number);
    for (const Button &b : kButtons) expected.insert(b.number);
    for (const List &l : kLists) expected.insert(l.number);
    for (int c : kColours) expected.insert(c);
    for (const auto &s : kStrings) expected.insert(s.first);
    std::set<int> found;
    for (const auto &entry : exported_) found.insert(entry.first);
    EXPECT_EQ(found, expected);
}

TEST_F(ControlTableTest, NumbersHaveTheirTitlesDefaultsRangesAndSteps) {
    for (const Number &n : kFloats) {
        SCOPED_TRACE(n.title);
        const Control *control = exported(n.number, ControlKind::Float);
        if (!control) continue;
        const auto *s = static_cast<const SparkFloatStruct *>(control->structure());
        EXPECT_STREQ(s->Title, n.title);
        EXPECT_FLOAT_EQ(s->Value, float(n.value));
        EXPECT_FLOAT_EQ(s->Min, float(n.min));
        EXPECT_FLOAT_EQ(s->Max, float(n.max));
        EXPECT_FLOAT_EQ(s->Increment, float(n.step));
        EXPECT_NE(s->Callback, nullptr);
    }
    for (const Number &n : kIntegers) {
        SCOPED_TRACE(n.title);
        const Control *control = exported(n.number, ControlKind::Int);
        if (!control) continue;
        const auto *s = static_cast<const SparkIntStruct *>(control->structure());
        EXPECT_STREQ(s->Title, n.title);
        EXPECT_EQ(s->Value, int(n.value));
        EXPECT_EQ(s->Min, int(n.min));
        EXPECT_EQ(s->Max, int(n.max));
        EXPECT_EQ(s->Increment, int(n.step));
        EXPECT_EQ(s->Flags, n.number == 9 ? 8 : 0);
        EXPECT_NE(s->Callback, nullptr);
    }
}

TEST_F(ControlTableTest, SwitchesButtonsListsColoursAndClipNamesMatchTheTable) {
    for (const Switch &sw : kSwitches) {
        const Control *control = exported(sw.number, ControlKind::Boolean);
        if (!control) continue;
        const auto *s = static_cast<const SparkBooleanStruct *>(control->structure());
        EXPECT_STREQ(s->Title, sw.title) << sw.number;
        EXPECT_EQ(s->Value, sw.value) << sw.number;
        EXPECT_NE(s->Callback, nullptr) << sw.number;
    }
    for (const Button &button : kButtons) {
        const Control *control = exported(button.number, ControlKind::Push);
        if (!control) continue;
        const auto *s = static_cast<const SparkPushStruct *>(control->structure());
        EXPECT_STREQ(s->Title, button.title) << button.number;
        EXPECT_NE(s->Callback, nullptr) << button.number;
    }
    for (const List &list : kLists) {
        const Control *control = exported(list.number, ControlKind::Pup);
        if (!control) continue;
        const auto *s = static_cast<const SparkPupStruct *>(control->structure());
        EXPECT_EQ(s->Value, list.value) << list.number;
        ASSERT_EQ(s->Count, int(list.entries.size())) << list.number;
        for (int i = 0; i < SPARK_PUP_MAX_ENTRIES; ++i) {
            if (i < s->Count)
                EXPECT_EQ(std::string(s->Titles[i] ? s->Titles[i] : "(null)"), list.entries[i]) << list.number;
            else
                EXPECT_EQ(s->Titles[i], nullptr) << list.number << " entry " << i;
        }
        EXPECT_NE(s->Callback, nullptr) << list.number;
    }
    for (int number : kColours) {
        const Control *control = exported(number, ControlKind::Color);
        if (!control) continue;
        const auto *s = static_cast<const SparkColorStruct *>(control->structure());
        EXPECT_EQ(s->Value, 0xFFFFFFFFu) << number;
        EXPECT_NE(s->Callback, nullptr) << number;
    }
    for (const auto &[number, value] : kStrings) {
        const Control *control = exported(number, ControlKind::String);
        if (!control) continue;
        const auto *s = static_cast<const SparkStringStruct *>(control->structure());
        EXPECT_STREQ(s->Value, value.c_str());
        EXPECT_STREQ(s->Title, "%s");
        EXPECT_EQ(s->Flags, 16);
        EXPECT_EQ(s->Callback, nullptr);
    }
}

// Pairs share one callback; the common block repeats the same behaviour.
TEST_F(ControlTableTest, PositionPairsShareOneCallback) {
    for (int x : {11, 18, 100, 107}) {
        const auto *first = static_cast<const SparkFloatStruct *>(exported_.at(x)->structure());
        const auto *second = static_cast<const SparkFloatStruct *>(exported_.at(x + 1)->structure());
        EXPECT_EQ(first->Callback, second->Callback) << x;
    }
    const auto *help = static_cast<const SparkPushStruct *>(exported_.at(31)->structure());
    for (int number : {60, 89, 118})
        EXPECT_EQ(static_cast<const SparkPushStruct *>(exported_.at(number)->structure())->Callback, help->Callback);
}

TEST_F(ControlTableTest, ChannelEditorListsTheFoldersInOrderEndingWithTheAmplitudeCurve) {
    auto editor = reinterpret_cast<void (*)()>(host().symbol("SparkChannelEditor"));
    ASSERT_NE(editor, nullptr);
    sparkhost::clear_channel_editor();
    editor();
    const std::vector<std::pair<std::string, std::vector<int>>> expected = {
        {"Style", {26, 14, 24, 25}},
        {"Location", {11, 12, 18, 19, 17}},
        {"Bubbles", {16, 13}},
        {"Velocity", {20, 21, 22}},
        {"Colour", {69, 70, 72, 73, 74}},
        {"Gravity", {45, 46}},
        {"Friction", {43}},
        {"Turbulence", {39, 40, 41}},
        {"Burst", {50, 51, 52, 53}},
        {"Light", {100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 95, 96, 97}},
        {"Refelection", {99}},
        {"Common", {27, 93}},
    };
    std::vector<std::pair<std::string, std::vector<int>>> folders;
    for (const sparkhost::ChannelEditorFolder &folder : sparkhost::channel_editor_folders())
        folders.emplace_back(folder.name, folder.controls);
    EXPECT_EQ(folders, expected);

    const std::vector<sparkhost::ChannelEditorEntry> entries = sparkhost::ui_record().channel_editor;
    ASSERT_FALSE(entries.empty());
    for (size_t i = 0; i < entries.size(); ++i) {
        const sparkhost::ChannelEditorEntry &entry = entries[i];
        if (entry.type == sparkhost::ChannelEditorEntry::Type::Folder) {
            EXPECT_EQ(entry.level, 1);
        } else {
            EXPECT_EQ(entry.level, 2);
            EXPECT_EQ(entry.flags, i + 1 == entries.size() ? 0 : 1) << "control " << entry.control;
        }
    }
}

TEST_F(ControlTableTest, StartUpNamesEveryChannelForUsers) {
    const sparkhost::UiRecord record = sparkhost::ui_record();
    for (int number : {26, 14, 24, 25, 11, 12, 18, 19, 17, 16, 13, 20, 21, 22, 69, 70, 72, 73, 74, 45, 46, 43,
                       39, 40, 41, 50, 51, 52, 53, 100, 101, 107, 108, 109, 104, 103, 102, 111, 112, 113, 95, 96,
                       97, 99, 27, 93}) {
        auto name = record.control_names.find(number);
        ASSERT_NE(name, record.control_names.end()) << "control " << number << " has no name";
        EXPECT_EQ(name->second.find('%'), std::string::npos) << name->second;
        EXPECT_FALSE(name->second.empty());
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
