// The channel editor: the animatable parameters in folders, and the names
// the editor shows for them.
#include <cstddef>

#include "host/control_callbacks.h"
#include "spark/spark.h"

namespace {

struct Channel {
    int number;
    const char *name;
};

struct Folder {
    const char *name;
    const Channel *channels;
    std::size_t count;
};

const Channel kStyle[] = {
    {26, "Random Seed"}, {14, "Frames to Full Size"}, {24, "Bubble Size"}, {25, "Bubble Size Variation"}};
const Channel kLocation[] = {{11, "Emitter Left X"},
                             {12, "Emitter Left Y"},
                             {18, "Emitter Right X"},
                             {19, "Emitter Right Y"},
                             {17, "Birth Position Variation"}};
const Channel kBubbles[] = {{16, "Density"}, {13, "Lifetime"}};
const Channel kVelocity[] = {{20, "Initial Velocity"}, {21, "Velocity Variation"}, {22, "Velocity Direction"}};
const Channel kColour[] = {{69, "Colour Variation"},
                           {70, "Brightness Variation"},
                           {72, "Bubble Colour Red"},
                           {73, "Bubble Colour Green"},
                           {74, "Bubble Colour Blue"}};
const Channel kGravity[] = {{45, "Gravity Strength"}, {46, "Gravity Angle"}};
const Channel kFriction[] = {{43, "Friction"}};
const Channel kTurbulence[] = {{39, "Swirl Density"}, {40, "Swirl Amplitude"}, {41, "Swirl Max Time"}};
const Channel kBurst[] = {
    {50, "Burst Probability"}, {51, "Burst Quantity"}, {52, "Burst Extent"}, {53, "Afterlife"}};
const Channel kLight[] = {{100, "Light Source X"},    {101, "Light Source Y"},  {107, "Light Target X"},
                          {108, "Light Target Y"},    {109, "Light Height"},    {104, "Glisten Tightness"},
                          {103, "Light Spread"},      {102, "Light Intensity"}, {111, "Minimum Brightness"},
                          {112, "Shine"},             {113, "Highlight"},       {95, "Light Colour Red"},
                          {96, "Light Colour Green"}, {97, "Light Colour Blue"}};
const Channel kReflection[] = {{99, "Reflection Intensity"}};
// The light switch's curve is where "Import Amplitude File" puts its keys.
const Channel kCommon[] = {{27, "Blend"}, {93, "Amplitude"}};

#define FOLDER(name, channels) {name, channels, sizeof channels / sizeof channels[0]}
const Folder kFolders[] = {
    FOLDER("Style", kStyle),
    FOLDER("Location", kLocation),
    FOLDER("Bubbles", kBubbles),
    FOLDER("Velocity", kVelocity),
    FOLDER("Colour", kColour),
    FOLDER("Gravity", kGravity),
    FOLDER("Friction", kFriction),
    FOLDER("Turbulence", kTurbulence),
    FOLDER("Burst", kBurst),
    FOLDER("Light", kLight),
    FOLDER("Refelection", kReflection),  // spelled so: the host shows this name
    FOLDER("Common", kCommon),
};
#undef FOLDER

constexpr int kFolderLevel = 1;
constexpr int kControlLevel = 2;

}  // namespace

extern "C" SPARK_EXPORT void SparkChannelEditor(void) {
    const Folder &last_folder = kFolders[sizeof kFolders / sizeof kFolders[0] - 1];
    const Channel *last = &last_folder.channels[last_folder.count - 1];
    for (const Folder &folder : kFolders) {
        sparkCeAddFolder(kFolderLevel, folder.name);
        for (std::size_t i = 0; i < folder.count; ++i) {
            const Channel &channel = folder.channels[i];
            sparkCeAddControl(kControlLevel, &channel == last ? 0 : 1, channel.number);
        }
    }
}

void RenameChannelEditorEntries() {
    for (const Folder &folder : kFolders)
        for (std::size_t i = 0; i < folder.count; ++i) sparkSetControlName(folder.channels[i].number, folder.channels[i].name);
}
