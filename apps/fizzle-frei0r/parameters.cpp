// The filter's parameter table and the options a host's values make.
#include "parameters.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <set>

#include "render/control_options.h"
#include "sparkhost/core/error.h"

using sparkhost::Control;
using sparkhost::ControlKind;

namespace {

// GStreamer makes property names lower case with '-' for anything else, so
// names must differ in that form too.
std::string canonical(const std::string &name) {
    std::string text;
    for (char c : name) text += std::isalnum(static_cast<unsigned char>(c)) ? char(std::tolower(c)) : '-';
    return text;
}

Parameter own(const char *name, ParameterType type, ParameterRole role, const char *explanation,
              const std::string &text = {}, double number = 0) {
    Parameter parameter{name, type, explanation, role, -1, ControlKind::Float, 0, 1, {}};
    parameter.value.text = text;
    parameter.value.number = number;
    return parameter;
}

// Lists the resolution (proxy) controls, whose names are only "Pup N": the
// frame size is the host's.
bool is_resolution_list(const Control &control) { return control.name().rfind("Pup ", 0) == 0; }

std::string number_text(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

int channel(float value) {
    const double clamped = value < 0 ? 0.0 : value > 1 ? 1.0 : double(value);
    return int(std::lround(clamped * 255.0));
}

std::string colour_text(const Colour &colour) {
    char text[16];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", channel(colour.r), channel(colour.g), channel(colour.b));
    return text;
}

// The control's value text for fizzle-render's --set, or empty when the
// host left it at its default.
std::string set_text(const Parameter &parameter, const ParameterValue &value) {
    const ParameterValue &fallback = parameter.value;
    switch (parameter.kind) {
    case ControlKind::Boolean:
        if ((value.number >= 0.5) == (fallback.number >= 0.5)) return {};
        return value.number >= 0.5 ? "on" : "off";
    case ControlKind::Float:
    case ControlKind::Int: {
        if (std::fabs(value.number - fallback.number) < 1e-9) return {};
        const double x = value.number < 0 ? 0.0 : value.number > 1 ? 1.0 : value.number;
        const double typed = parameter.min + x * (parameter.max - parameter.min);
        return number_text(parameter.kind == ControlKind::Int ? std::round(typed) : typed);
    }
    case ControlKind::Color: {
        const std::string text = colour_text(value.colour);
        return text == colour_text(fallback.colour) ? std::string() : text;
    }
    case ControlKind::Pup: return value.text == fallback.text ? std::string() : value.text;
    default: return {};
    }
}

std::string trimmed(const std::string &text) {
    size_t begin = 0, end = text.size();
    while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) ++begin;
    while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
    return text.substr(begin, end - begin);
}

}  // namespace

ParameterTable::ParameterTable(sparkhost::ControlTable &controls) {
    parameters_ = {
        own("setup", ParameterType::String, ParameterRole::Setup,
            "Setup file to load first, as fizzle-studio and fizzle-render --save-setup write it; empty: the "
            "effect's defaults"),
        own("preset", ParameterType::String, ParameterRole::Preset,
            "A demo preset chosen after the setup (Basic, Soap, Champagne, ...); empty: none"),
        own("preroll", ParameterType::Bool, ParameterRole::Preroll,
            "Press Restart+PreRoll before the first frame, so it starts with bubbles in flight"),
        own("frame rate", ParameterType::String, ParameterRole::FrameRate,
            "Frames a second of the clip (25, 29.97, 30000/1001): the host's time times this rate is the frame "
            "number, from 1 at time 0",
            "25"),
        own("time unit", ParameterType::String, ParameterRole::TimeUnit,
            "How the host counts time: auto, seconds or milliseconds (auto: milliseconds in ffmpeg, seconds "
            "elsewhere)",
            "auto"),
        own("birth", ParameterType::String, ParameterRole::Birth,
            "Birth matte: an image or a sequence (name.%04d.png, numbered as the frames); empty: the bottom tenth"),
        own("burst", ParameterType::String, ParameterRole::Burst,
            "Burst-or-gather matte: an image or a sequence; empty: a soft disc in the upper middle"),
        own("reflection", ParameterType::String, ParameterRole::Reflection,
            "Image the bubbles reflect: an image or a sequence; empty: a built-in colourful picture"),
        own("cache", ParameterType::String, ParameterRole::Cache,
            "Directory of simulation checkpoints, as fizzle-render --cache keeps them; empty: none"),
    };
    std::set<std::string> taken;
    for (const Parameter &parameter : parameters_) taken.insert(canonical(parameter.name));
    for (Control &control : controls.controls()) {
        Parameter parameter{control.name(), ParameterType::Double, {}, ParameterRole::Control, control.number(),
                            control.kind(), 0, 1, {}};
        switch (control.kind()) {
        case ControlKind::Float:
        case ControlKind::Int: {
            const sparkhost::ValueRange range = *control.range();
            parameter.min = range.min;
            parameter.max = range.max;
            const double span = range.max - range.min;
            parameter.value.number = span > 0 ? (control.value() - range.min) / span : 0.0;
            parameter.explanation = control.name() + ", " + number_text(range.min) + " to " +
                                    number_text(range.max) + " mapped to 0 to 1";
            break;
        }
        case ControlKind::Boolean:
            parameter.type = ParameterType::Bool;
            parameter.value.number = control.value() != 0 ? 1.0 : 0.0;
            parameter.explanation = control.name() + ", on or off";
            break;
        case ControlKind::Color: {
            // Its R, G and B sliders say the same more finely, and GStreamer
            // would name a colour's parts as it names them.
            if (controls.find(control.name() + " R")) continue;
            parameter.type = ParameterType::Colour;
            const auto word = static_cast<uint32_t>(control.value());
            parameter.value.colour = {float(word & 0xFF) / 255.0f, float((word >> 8) & 0xFF) / 255.0f,
                                      float((word >> 16) & 0xFF) / 255.0f};
            parameter.explanation = control.name();
            break;
        }
        case ControlKind::Pup: {
            if (control.name() == "Demos" || is_resolution_list(control)) continue;
            parameter.type = ParameterType::String;
            const std::vector<std::string> names = entry_names(control);
            const int index = int(control.value());
            if (index >= 0 && index < int(names.size())) parameter.value.text = names[size_t(index)];
            parameter.explanation = control.name() + ": one of ";
            for (size_t i = 0; i < names.size(); ++i) parameter.explanation += (i ? ", " : "") + names[i];
            break;
        }
        default: continue;  // buttons, the clip names
        }
        // Pages repeat some controls: the first one stands for them all.
        if (taken.count(canonical(parameter.name))) {
            bool repeated = false;
            for (const Parameter &other : parameters_)
                repeated |= other.role == ParameterRole::Control && other.name == parameter.name &&
                            other.kind == parameter.kind;
            if (repeated) continue;
            // A switch sharing its title with the value it switches on.
            parameter.name += parameter.kind == ControlKind::Boolean ? " on" : " value";
            if (taken.count(canonical(parameter.name))) continue;
        }
        taken.insert(canonical(parameter.name));
        parameters_.push_back(parameter);
    }
}

std::vector<ParameterValue> ParameterTable::defaults() const {
    std::vector<ParameterValue> values;
    for (const Parameter &parameter : parameters_) values.push_back(parameter.value);
    return values;
}

RenderOptions render_options(const ParameterTable &table, const std::vector<ParameterValue> &values, int width,
                             int height) {
    RenderOptions options;
    options.format = {width, height, sparkhost::Depth::Bits8};
    options.size_text = options.format.size_text();
    const std::vector<Parameter> &parameters = table.parameters();
    for (size_t i = 0; i < parameters.size() && i < values.size(); ++i) {
        const Parameter &parameter = parameters[i];
        const ParameterValue &value = values[i];
        const std::string text = trimmed(value.text);
        switch (parameter.role) {
        case ParameterRole::Setup: options.setup = text; break;
        case ParameterRole::Preset: options.preset = text; break;
        case ParameterRole::Preroll: options.preroll = value.number >= 0.5; break;
        case ParameterRole::Birth: options.inputs[sparkhost::kBirth] = text; break;
        case ParameterRole::Burst: options.inputs[sparkhost::kBurst] = text; break;
        case ParameterRole::Reflection: options.inputs[sparkhost::kReflection] = text; break;
        case ParameterRole::Cache: options.cache_dir = text; break;
        case ParameterRole::FrameRate:
        case ParameterRole::TimeUnit: break;
        case ParameterRole::Control: {
            const std::string typed = set_text(parameter, value);
            if (typed.empty()) break;
            const std::string number = std::to_string(parameter.control);
            options.set_texts.push_back(parameter.name + "=" + typed);
            // By number: pages repeat titles, and a switch may share its value's title.
            options.sets.push_back({parameter.name + "=" + typed, number, typed});
            break;
        }
        }
    }
    return options;
}

ClockSettings clock_settings(const ParameterTable &table, const std::vector<ParameterValue> &values) {
    ClockSettings clock;
    const std::vector<Parameter> &parameters = table.parameters();
    for (size_t i = 0; i < parameters.size() && i < values.size(); ++i) {
        if (parameters[i].role == ParameterRole::FrameRate) clock.rate = parse_frame_rate(values[i].text);
        if (parameters[i].role == ParameterRole::TimeUnit) clock.unit = parse_time_unit(values[i].text);
    }
    return clock;
}

std::string options_key(const RenderOptions &options) {
    std::string key = options.format.size_text();
    for (const std::string &part : {options.setup, options.preset, std::string(options.preroll ? "1" : "0"),
                                    options.inputs[1], options.inputs[2], options.inputs[3], options.cache_dir})
        key += '\n' + part;
    for (const std::string &set : options.set_texts) key += '\n' + set;
    return key;
}
