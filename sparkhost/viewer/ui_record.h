// What the plug-in tells the host about its user interface: page and clip
// titles, the channel-editor tree and display names, kept for tests and tools.
#ifndef SPARKHOST_UI_RECORD_H
#define SPARKHOST_UI_RECORD_H

#include <map>
#include <string>
#include <vector>

namespace sparkhost {

struct ChannelEditorEntry {
    enum class Type { Folder, Control };
    Type type;
    int level;
    std::string folder;  // folders only
    int flags = 0;       // controls only
    int control = -1;    // controls only
};

struct ChannelEditorFolder {
    std::string name;  // empty for controls added before any folder
    std::vector<int> controls;
};

struct UiRecord {
    std::map<int, std::string> page_titles;  // the last title given wins
    std::map<int, std::string> clip_titles;
    std::vector<ChannelEditorEntry> channel_editor;  // in the order added
    std::map<int, std::string> control_names;
};

UiRecord ui_record();  // a snapshot
void clear_ui_record();
// The plug-in declares the whole tree on every call of its channel-editor
// entry point, so the host clears it before each call.
void clear_channel_editor();
// The channel editor as folders with their controls, in order.
std::vector<ChannelEditorFolder> channel_editor_folders();

}  // namespace sparkhost

#endif  // SPARKHOST_UI_RECORD_H
