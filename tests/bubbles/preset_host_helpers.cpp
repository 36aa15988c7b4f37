// The real plug-in in our host, set up for preset renders.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "bubbles/presets.h"
#include "preset_host.h"
#include "sparkhost/controls/curves.h"

PresetHost::PresetHost(int width, int height, int processors, const PresetLook &look)
    : format{width, height, look.depth} {
    // A refused frame pauses for the user otherwise.
    setenv("FIZZLE_NO_PAUSE", "1", 1);
    sparkhost::clear_curves();
    sparkhost::Settings settings;
    settings.format = format;
    settings.processors = processors;
    settings.pixel_aspect = look.pixel_aspect;
    settings.proxy = look.proxy;
    settings.message_sink = [](const sparkhost::Message &) {};
    host = std::make_unique<sparkhost::Host>(settings);
    // Inputs of our own, so that the frames do not change with the host's
    // built-in pictures.
    sparkhost::Frame scene(format), birth(format), burst(format), reflection(format);
    std::fill(scene.bytes().begin(), scene.bytes().end(), uint8_t(kSceneGrey));
    const int full = format.max_value();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int dx = x - width / 2, dy = y - height * 2 / 3;
            for (int c = 0; c < 3; ++c) {
                birth.set_value(x, y, c, y < height / 5 ? full : 0);
                burst.set_value(x, y, c, dx * dx + dy * dy < height * height / 16 ? full : 0);
            }
            reflection.set_value(x, y, 0, full * x / width);
            reflection.set_value(x, y, 1, full * y / height);
            reflection.set_value(x, y, 2, full * 128 / 255);
        }
    host->set_input(sparkhost::kScene, scene);
    host->set_input(sparkhost::kBirth, birth);
    host->set_input(sparkhost::kBurst, burst);
    host->set_input(sparkhost::kReflection, reflection);
    host->load(FIZZLE_PLUGIN_PATH);
    host->initialise(1);
    host->set_control("Auto Preview", 0);
}

PresetHost::~PresetHost() { sparkhost::clear_curves(); }

void PresetHost::choose(const std::string &preset) {
    const int value = demo_preset_list_value(preset);
    ASSERT_GT(value, 0) << preset;
    host->set_control("Demos", value - 1);
}

void PresetHost::set_controls(const std::vector<std::pair<std::string, double>> &settings) {
    for (const auto &[name, value] : settings) host->set_control(name, value);
}

void PresetHost::press_preroll() { host->press_control("Restart+PreRoll"); }

sparkhost::Frame PresetHost::render(int number) {
    std::optional<sparkhost::Frame> frame = host->process(number);
    EXPECT_TRUE(frame) << host->last_failure();
    return frame ? *frame : sparkhost::Frame();
}

std::string PresetHost::first_error() const {
    for (const sparkhost::Message &message : host->messages())
        if (message.kind == sparkhost::Message::Kind::Error) return message.text;
    return {};
}

std::string frame_hash(const sparkhost::Frame &frame) {
    uint64_t hash = 14695981039346656037ull;
    for (uint8_t byte : frame.bytes()) {
        hash ^= byte;
        hash *= 1099511628211ull;
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}
