// The channel editor: the animatable parameters in folders, and the names
// the editor shows for them, all from the channel column of the control table.
#include "host/glue/channel_editor.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "spark/spark.h"

namespace {

// In the order the editor shows them.
enum class Folder { Style, Location, Bubbles, Velocity, Colour, Gravity, Friction, Turbulence, Burst, Light,
                    Reflection, Common, None };

const char *const kFolderNames[] = {
    "Style", "Location", "Bubbles", "Velocity", "Colour", "Gravity", "Friction", "Turbulence", "Burst", "Light",
    "Refelection",  // spelled so: the host shows this name
    "Common",
};

struct Channel {
    int number;
    Folder folder;
    int place;  // within the folder, from 1
    const char *name;
};

#define CHANNEL(folder, place, name) Folder::folder, place, name
#define NO_CHANNEL Folder::None, 0, nullptr
const Channel kTableChannels[] = {
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, parameter, on_change, shown, channel) {n, channel},
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, parameter, on_change, shown, channel) {n, channel},
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, parameter, on_change, shown, channel) \
    {n, channel},
#define FIZZLE_POSITION_Y(n, title, value, min, max, step, parameter, channel) {n, channel},
#define FIZZLE_SWITCH(n, title, value, member, parameter, on_change, shown, channel) {n, channel},
#define FIZZLE_HOST_FLOAT(n, title, value, min, max, step, callback, channel) {n, channel},
#include "bubbles/controls.def"
};
#undef NO_CHANNEL
#undef CHANNEL

// The table's channels in the editor's order.
const std::vector<Channel> &channels() {
    static const std::vector<Channel> ordered = [] {
        std::vector<Channel> list;
        for (const Channel &channel : kTableChannels)
            if (channel.folder != Folder::None) list.push_back(channel);
        std::sort(list.begin(), list.end(), [](const Channel &a, const Channel &b) {
            return a.folder != b.folder ? a.folder < b.folder : a.place < b.place;
        });
        return list;
    }();
    return ordered;
}

constexpr int kFolderLevel = 1;
constexpr int kControlLevel = 2;

}  // namespace

extern "C" SPARK_EXPORT void SparkChannelEditor(void) {
    const std::vector<Channel> &list = channels();
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i == 0 || list[i].folder != list[i - 1].folder)
            sparkCeAddFolder(kFolderLevel, kFolderNames[int(list[i].folder)]);
        sparkCeAddControl(kControlLevel, i + 1 == list.size() ? 0 : 1, list[i].number);
    }
}

void RenameChannelEditorEntries() {
    for (const Channel &channel : channels()) sparkSetControlName(channel.number, channel.name);
}
