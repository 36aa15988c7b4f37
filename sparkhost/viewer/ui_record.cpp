// Records page and clip titles, the channel-editor tree and display names.
#include "sparkhost/viewer/ui_record.h"

#include <mutex>

#include "spark/spark.h"

namespace sparkhost {
namespace {

struct Recorder {
    std::mutex mutex;
    UiRecord record;
};

Recorder &recorder() {
    static Recorder instance;
    return instance;
}

// Refuses what a plug-in should never pass, through the host's error
// report, so that a bad call is visible instead of recorded as garbage.
bool refuse(const std::string &message) {
    sparkError(message.c_str());
    return false;
}

bool valid_text(const char *function, const char *text) {
    return text || refuse(std::string(function) + ": the text is null");
}

bool valid_control(const char *function, int control) {
    return (control >= 0 && control <= SPARK_MAX_CONTROL) ||
           refuse(std::string(function) + ": no control " + std::to_string(control) +
                  " (numbers run from 0 to " + std::to_string(SPARK_MAX_CONTROL) + ")");
}

bool valid_level(const char *function, int level) {
    return level >= 0 || refuse(std::string(function) + ": negative level " + std::to_string(level));
}

}  // namespace

UiRecord ui_record() {
    std::lock_guard<std::mutex> lock(recorder().mutex);
    return recorder().record;
}

void clear_ui_record() {
    std::lock_guard<std::mutex> lock(recorder().mutex);
    recorder().record = UiRecord();
}

void clear_channel_editor() {
    std::lock_guard<std::mutex> lock(recorder().mutex);
    recorder().record.channel_editor.clear();
}

std::vector<ChannelEditorFolder> channel_editor_folders() {
    std::vector<ChannelEditorFolder> folders;
    for (const ChannelEditorEntry &entry : ui_record().channel_editor) {
        if (entry.type == ChannelEditorEntry::Type::Folder) {
            folders.push_back({entry.folder, {}});
        } else {
            if (folders.empty()) folders.push_back({});
            folders.back().controls.push_back(entry.control);
        }
    }
    return folders;
}

}  // namespace sparkhost

// ---------------------------------------------------------------------------
// Host functions

extern "C" {

void sparkControlTitle(int page, const char *title) {
    if (!sparkhost::valid_text("sparkControlTitle", title)) return;
    if (page < 0 || page >= SPARK_PAGE_COUNT) {
        sparkhost::refuse("sparkControlTitle: no page " + std::to_string(page) + " (pages run from 0 to " +
                          std::to_string(SPARK_PAGE_COUNT - 1) + ")");
        return;
    }
    std::lock_guard<std::mutex> lock(sparkhost::recorder().mutex);
    sparkhost::recorder().record.page_titles[page] = title;
}

void sparkClipControlTitle(int clip, const char *title) {
    if (!sparkhost::valid_text("sparkClipControlTitle", title)) return;
    if (clip < 0) {
        sparkhost::refuse("sparkClipControlTitle: negative clip " + std::to_string(clip));
        return;
    }
    std::lock_guard<std::mutex> lock(sparkhost::recorder().mutex);
    sparkhost::recorder().record.clip_titles[clip] = title;
}

void sparkCeAddFolder(int level, const char *name) {
    if (!sparkhost::valid_text("sparkCeAddFolder", name) || !sparkhost::valid_level("sparkCeAddFolder", level)) return;
    std::lock_guard<std::mutex> lock(sparkhost::recorder().mutex);
    sparkhost::recorder().record.channel_editor.push_back(
        {sparkhost::ChannelEditorEntry::Type::Folder, level, name, 0, -1});
}

void sparkCeAddControl(int level, int flags, int control) {
    if (!sparkhost::valid_level("sparkCeAddControl", level) || !sparkhost::valid_control("sparkCeAddControl", control)) return;
    std::lock_guard<std::mutex> lock(sparkhost::recorder().mutex);
    sparkhost::recorder().record.channel_editor.push_back(
        {sparkhost::ChannelEditorEntry::Type::Control, level, {}, flags, control});
}

void sparkSetControlName(int control, const char *name) {
    if (!sparkhost::valid_text("sparkSetControlName", name) || !sparkhost::valid_control("sparkSetControlName", control)) return;
    std::lock_guard<std::mutex> lock(sparkhost::recorder().mutex);
    sparkhost::recorder().record.control_names[control] = name;
}

}  // extern "C"
