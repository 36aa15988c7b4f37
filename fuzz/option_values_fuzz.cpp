// libFuzzer entry point: the value parsers of fizzle-render's options. The
// first byte picks the option (or a frame pattern), the rest is the text typed after it. Only
// sparkhost::Error may come out, and what is accepted must be in range.
#include <cstdint>
#include <string>

#include "render/control_options.h"
#include "render/value_parsers.h"
#include "fuzz_controls.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/core/resolution.h"

namespace {

// Every control kind reads the value the way --set and --animate hand it on.
void parse_for_every_control(const std::string &text) {
    for (sparkhost::Control &control : fuzz_controls().controls()) {
        try {
            double value = parse_control_value(control, text, "--set");
            if (!control.check_value(value).empty()) __builtin_trap();
        } catch (const sparkhost::Error &) {
        }
    }
}

void parse_one(uint8_t option, const std::string &text) {
    switch (option % 6) {
    case 0: {
        FrameRange range = parse_frames(text);
        if (range.first < 1 || range.last < range.first) __builtin_trap();
        break;
    }
    case 1: {
        PixelSize size = parse_size(text);
        if (size.width < 1 || size.height < 1 || size.width > 16384 || size.height > 16384) __builtin_trap();
        break;
    }
    case 2: {
        ControlAssignment assignment = parse_assignment(text);
        if (assignment.name.empty() || assignment.value.empty()) __builtin_trap();
        parse_for_every_control(assignment.value);
        break;
    }
    case 3: {
        ControlAnimation animation = parse_animation(text);
        if (animation.keys.empty()) __builtin_trap();
        for (const auto &key : animation.keys) {
            if (!(key.first == key.first) || float(key.first - 1) - float(key.first - 1) != 0) __builtin_trap();
            parse_for_every_control(key.second);
        }
        break;
    }
    case 4: {
        int index = parse_proxy(text);
        if (index < 0 || index >= int(sparkhost::resolution_names().size())) __builtin_trap();
        break;
    }
    case 5: {
        // An output or input pattern: each frame's file names that frame.
        const sparkhost::FramePattern pattern(text);
        if (!pattern.is_sequence()) break;
        for (int frame : {1, 42, 999999999}) {
            const std::optional<int> back = pattern.frame_of(pattern.path(frame));
            if (!back || *back != frame) __builtin_trap();
        }
        break;
    }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    try {
        parse_one(data[0], std::string(reinterpret_cast<const char *>(data) + 1, size - 1));
    } catch (const sparkhost::Error &) {
    }
    return 0;
}
