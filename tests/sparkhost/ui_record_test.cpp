// The record of page and clip titles, the channel-editor tree and names.
#include "sparkhost/ui_record.h"

#include <gtest/gtest.h>

#include "fake_plugin_fixture.h"

using sparkhost::ChannelEditorFolder;

using UiRecordTest = FakePluginTest;

TEST_F(UiRecordTest, LastTitleOfAPageOrClipWins) {
    sparkControlTitle(3, "Import AIFF");
    sparkControlTitle(0, "Bubbles");
    sparkControlTitle(3, "Light");
    sparkClipControlTitle(1, "Birth");
    sparkClipControlTitle(1, "BorG");
    sparkhost::UiRecord record = sparkhost::ui_record();
    EXPECT_EQ(record.page_titles, (std::map<int, std::string>{{0, "Bubbles"}, {3, "Light"}}));
    EXPECT_EQ(record.clip_titles, (std::map<int, std::string>{{1, "BorG"}}));
}

TEST_F(UiRecordTest, ControlsBeforeAnyFolderGoIntoAnUnnamedOne) {
    sparkCeAddControl(1, 1, 27);
    sparkCeAddFolder(1, "Light");
    std::vector<ChannelEditorFolder> folders = sparkhost::channel_editor_folders();
    ASSERT_EQ(folders.size(), 2u);
    EXPECT_EQ(folders[0].name, "");
    EXPECT_EQ(folders[0].controls, std::vector<int>{27});
    EXPECT_TRUE(folders[1].controls.empty());
}

TEST_F(UiRecordTest, CallsThatCannotBeRecordedAreRefusedNotStored) {
    sparkControlTitle(4, "Beyond the pages");
    sparkControlTitle(-1, "Before the pages");
    sparkControlTitle(0, nullptr);
    sparkClipControlTitle(-2, "Nothing");
    sparkCeAddFolder(1, nullptr);
    sparkCeAddControl(2, 1, 122);
    sparkCeAddControl(-1, 1, 16);
    sparkSetControlName(-1, "Nobody");
    sparkSetControlName(16, nullptr);
    sparkhost::UiRecord record = sparkhost::ui_record();
    EXPECT_TRUE(record.page_titles.empty());
    EXPECT_TRUE(record.clip_titles.empty());
    EXPECT_TRUE(record.channel_editor.empty());
    EXPECT_TRUE(record.control_names.empty());
}
