// Setups, presets, values, animation keys and the pre-roll from the command
// line, applied to the plug-in's controls as a user would apply them.
#include "render/control_options.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "sparkhost/controls/curves.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/setup_file.h"
#include "sparkhost/controls/text_match.h"

using sparkhost::Control;
using sparkhost::ControlKind;
using sparkhost::ControlTable;
using sparkhost::Error;
using sparkhost::closest_text;
using sparkhost::lower;
using sparkhost::trim;

namespace {

std::string in_quotes(std::string_view text) { return "\"" + std::string(text) + "\""; }

std::string joined(const std::vector<std::string> &items) {
    std::string text;
    for (const std::string &item : items) text += (text.empty() ? "" : ", ") + item;
    return text;
}

const SparkPupStruct &list_of(const Control &control) {
    return *static_cast<const SparkPupStruct *>(control.structure());
}

bool parse_number(std::string_view text, double &value) {
    const std::string copy = trim(text);
    if (copy.empty()) return false;
    char *end = nullptr;
    errno = 0;
    value = std::strtod(copy.c_str(), &end);
    return end && *end == '\0' && errno == 0 && std::isfinite(value);
}

Control &control_named(ControlTable &controls, const std::string &name, const std::string &option) {
    try {
        double number = 0;
        if (parse_number(name, number) && number == std::trunc(number) && std::fabs(number) < 1e6)
            return controls.at(int(number));
        return controls.at(name);
    } catch (const sparkhost::ControlError &error) {
        throw Error(option + ": " + error.what());
    }
}

bool is_switch_word(std::string_view text) {
    const std::string word = lower(trim(text));
    return word == "on" || word == "1" || word == "true" || word == "yes" || word == "off" || word == "0" ||
           word == "false" || word == "no";
}

// "Gravity" and "Friction" name both a switch and its amount: a value that
// is no switch word goes to the amount.
Control &control_for_value(ControlTable &controls, const std::string &name, std::string_view typed,
                           const std::string &option) {
    Control &control = control_named(controls, name, option);
    if (control.kind() != ControlKind::Boolean || is_switch_word(typed)) return control;
    for (Control *other : controls.find_all(name))
        if (other->kind() == ControlKind::Float || other->kind() == ControlKind::Int) return *other;
    return control;
}

std::string colour_text(double packed) {
    const auto word = static_cast<uint32_t>(packed);
    char text[16];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", word & 0xFF, (word >> 8) & 0xFF, (word >> 16) & 0xFF);
    return text;
}

std::string number_text(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string value_text(Control &control) {
    switch (control.kind()) {
    case ControlKind::Float:
    case ControlKind::Int: return number_text(control.value());
    case ControlKind::Boolean: return control.value() != 0 ? "on" : "off";
    case ControlKind::Pup: {
        const std::vector<std::string> names = entry_names(control);
        const int index = int(control.value());
        if (index < 0 || index >= int(names.size())) return "(none)";
        return names[size_t(index)] + " (" + std::to_string(index + 1) + ")";
    }
    case ControlKind::Color: return colour_text(control.value());
    case ControlKind::Push: return "-";
    case ControlKind::String: return in_quotes(control.text());
    }
    return {};
}

std::string allowed_text(Control &control) {
    switch (control.kind()) {
    case ControlKind::Float:
    case ControlKind::Int: return number_text(control.range()->min) + " to " + number_text(control.range()->max);
    case ControlKind::Boolean: return "on/off";
    case ControlKind::Pup: {
        const std::vector<std::string> names = entry_names(control);
        return "1-" + std::to_string(names.size()) + ": " + joined(names);
    }
    case ControlKind::Color: return "#RRGGBB";
    case ControlKind::Push: return "button";
    case ControlKind::String: return "text";
    }
    return {};
}

void choose_preset(ControlTable &controls, const std::string &name, const UserAction &act) {
    const std::vector<std::string> names = preset_names(controls);
    for (size_t i = 0; i < names.size(); ++i)
        if (lower(names[i]) == lower(trim(name))) {
            const double index = double(i);
            act(*controls.find("Demos"), &index);
            return;
        }
    std::string message = "--preset: no preset named " + in_quotes(trim(name));
    const std::string nearest = closest_text(names, name);
    if (!nearest.empty()) message += "; did you mean " + in_quotes(nearest) + "?";
    throw Error(message + " (see --list-presets)");
}

void set_one(ControlTable &controls, const ControlAssignment &assignment, const UserAction &act) {
    const std::string option = "--set " + in_quotes(assignment.option);
    Control &control = control_for_value(controls, assignment.name, assignment.value, option);
    if (control.kind() == ControlKind::String) {
        const std::string problem = control.check_text(assignment.value);
        if (!problem.empty()) throw Error(option + ": " + problem);
        control.set_text(assignment.value);
        act(control, nullptr);
        return;
    }
    const double value = parse_control_value(control, assignment.value, option);
    // A value typed now replaces whatever animation the setup gave the control.
    sparkhost::remove_curve(control.number());
    act(control, &value);
}

void animate_one(ControlTable &controls, const ControlAnimation &animation) {
    const std::string option = "--animate " + in_quotes(animation.option);
    Control &control = control_for_value(controls, animation.name,
                                         animation.keys.empty() ? "" : animation.keys.front().second, option);
    sparkhost::Curve curve;
    for (const auto &[frame, text] : animation.keys) {
        const double value = parse_control_value(control, text, option);
        // Curves count frames as the info record does, one less than the user.
        curve.set_key(float(frame - 1), float(value));
    }
    sparkhost::set_curve(control.number(), curve);
}

}  // namespace

PreviewPause::PreviewPause(ControlTable &controls) {
    for (Control &control : controls.controls())
        if (control.kind() == ControlKind::Boolean && lower(control.name()) == "auto preview") {
            saved_.emplace_back(&control, control.value());
            control.assign_clamped(0);
        }
}

PreviewPause::~PreviewPause() {
    for (auto &[control, value] : saved_) control->assign_clamped(value);
}

std::vector<std::string> entry_names(const Control &control) {
    const SparkPupStruct &list = list_of(control);
    std::vector<std::string> names;
    const int count = std::clamp<int>(list.Count, 0, SPARK_PUP_MAX_ENTRIES);
    for (int i = 0; i < count; ++i) {
        std::string entry = trim(list.Titles[i] ? list.Titles[i] : "");
        const std::string prefix = control.name() + ":";
        if (lower(entry).compare(0, prefix.size(), lower(prefix)) == 0) entry = trim(entry.substr(prefix.size()));
        names.push_back(entry);
    }
    return names;
}

double parse_control_value(const Control &control, std::string_view text, const std::string &option) {
    const std::string typed = trim(text);
    double value = 0;
    switch (control.kind()) {
    case ControlKind::Boolean: {
        const std::string word = lower(typed);
        if (word == "on" || word == "1" || word == "true" || word == "yes")
            value = 1;
        else if (word == "off" || word == "0" || word == "false" || word == "no")
            value = 0;
        else
            throw Error(option + ": switch " + in_quotes(control.name()) + " takes on or off, not " + in_quotes(typed));
        break;
    }
    case ControlKind::Pup: {
        const std::vector<std::string> names = entry_names(control);
        bool found = false;
        for (size_t i = 0; i < names.size() && !found; ++i) {
            const std::string full = trim(list_of(control).Titles[i] ? list_of(control).Titles[i] : "");
            if (lower(typed) == lower(names[i]) || lower(typed) == lower(full)) {
                value = double(i);
                found = true;
            }
        }
        if (!found && parse_number(typed, value) && value == std::trunc(value)) {
            if (value < 1 || value > double(names.size()))
                throw Error(option + ": list " + in_quotes(control.name()) + " has entries 1 to " +
                            std::to_string(names.size()) + ", not " + typed);
            value -= 1;
            found = true;
        }
        if (!found) {
            std::string message = option + ": list " + in_quotes(control.name()) + " has no entry " + in_quotes(typed);
            const std::string nearest = closest_text(names, typed);
            if (!nearest.empty()) message += "; did you mean " + in_quotes(nearest) + "?";
            throw Error(message + " (entries: " + joined(names) + ")");
        }
        break;
    }
    case ControlKind::Color:
        if (typed.size() == 7 && typed[0] == '#' &&
            std::all_of(typed.begin() + 1, typed.end(), [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); })) {
            const unsigned long rgb = std::strtoul(typed.c_str() + 1, nullptr, 16);
            value = double(((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16));
        } else if (!parse_number(typed, value)) {
            throw Error(option + ": colour " + in_quotes(control.name()) + " takes #RRGGBB, not " + in_quotes(typed));
        }
        break;
    case ControlKind::Float:
    case ControlKind::Int:
        if (!parse_number(typed, value))
            throw Error(option + ": " + in_quotes(typed) + " is not a number for " + in_quotes(control.name()));
        break;
    case ControlKind::Push:
    case ControlKind::String: break;  // check_value names the problem
    }
    const std::string problem = control.check_value(value);
    if (!problem.empty()) throw Error(option + ": " + problem);
    return value;
}

std::vector<std::string> preset_names(ControlTable &controls) {
    Control *demos = controls.find("Demos");
    if (!demos || demos->kind() != ControlKind::Pup)
        throw Error("the plug-in has no \"Demos\" list, so it offers no presets");
    return entry_names(*demos);
}

void apply_control_options(ControlTable &controls, const RenderOptions &options, const UserAction &act) {
    if (!options.setup.empty()) {
        try {
            sparkhost::load_setup(options.setup, controls);
        } catch (const std::exception &error) {
            throw Error(std::string("--setup: ") + error.what());
        }
    }
    PreviewPause pause(controls);
    if (!options.preset.empty()) choose_preset(controls, options.preset, act);
    for (const ControlAssignment &assignment : options.sets) set_one(controls, assignment, act);
    for (const ControlAnimation &animation : options.animations) animate_one(controls, animation);
    if (!options.import_amplitude.empty()) {
        Control *button = controls.find("Import Amplitude File");
        if (!button || button->kind() != ControlKind::Push)
            throw Error("--import-amplitude: the plug-in has no \"Import Amplitude File\" button");
        act(*button, nullptr);
    }
    if (options.preroll) {
        Control *button = controls.find("Restart+PreRoll");
        if (!button || button->kind() != ControlKind::Push)
            throw Error("--preroll: the plug-in has no \"Restart+PreRoll\" button");
        act(*button, nullptr);
    }
}

void list_controls(ControlTable &controls, std::FILE *out) {
    std::fprintf(out, "%-5s %4s  %-8s %-24s %-24s %s\n", "page", "no.", "kind", "name", "value", "allowed");
    for (Control &control : controls.controls()) {
        const std::string page = control.page() < 0 ? "clip" : std::to_string(control.page());
        std::fprintf(out, "%-5s %4d  %-8s %-24s %-24s %s\n", page.c_str(), control.number(),
                     sparkhost::kind_name(control.kind()), control.name().c_str(), value_text(control).c_str(),
                     allowed_text(control).c_str());
    }
}

void list_presets(ControlTable &controls, std::FILE *out) {
    const std::vector<std::string> names = preset_names(controls);
    for (size_t i = 0; i < names.size(); ++i) std::fprintf(out, "%2zu  %s\n", i + 1, names[i].c_str());
}
