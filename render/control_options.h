// fizzle-render's options that act on the plug-in's controls: setups,
// presets, single values, animation keys, the pre-roll and the listings.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "render/options.h"
#include "sparkhost/controls/controls.h"

// What a user does at the host: set a control's value (then its callback
// runs with reason 1), or press a button (value null).
using UserAction = std::function<void(sparkhost::Control &control, const double *value)>;

// The value text of --set or --animate for this control, as the control
// stores it: numbers as typed, list entries by name or by number counted
// from 1, switches on/off/1/0. Throws sparkhost::Error naming the option,
// the control and the problem (out of range, unknown entry, ...).
double parse_control_value(const sparkhost::Control &control, std::string_view text, const std::string &option);

// A list's entries as the user reads them: without the label they share
// ("Growth Mode: Shrinking" gives "Shrinking").
std::vector<std::string> entry_names(const sparkhost::Control &control);

// The entries of the "Demos" list without their "Demos:" prefix, in list
// order; throws sparkhost::Error when the plug-in has no such list.
std::vector<std::string> preset_names(sparkhost::ControlTable &controls);

// "Auto Preview" switched off for as long as it lives, so that no callback
// renders a frame and advances the bubbles; put back as it was afterwards.
class PreviewPause {
public:
    explicit PreviewPause(sparkhost::ControlTable &controls);
    ~PreviewPause();
    PreviewPause(const PreviewPause &) = delete;
    PreviewPause &operator=(const PreviewPause &) = delete;

private:
    std::vector<std::pair<sparkhost::Control *, double>> saved_;
};

// Applies the setup, preset, sets, animations and pre-roll of options, in
// that order. Auto Preview is off meanwhile, so that no change renders a
// frame of its own; it is put back as it was afterwards. Throws
// sparkhost::Error for the first problem.
void apply_control_options(sparkhost::ControlTable &controls, const RenderOptions &options, const UserAction &act);

// One line per control: page, number, kind, name, value, allowed values.
void list_controls(sparkhost::ControlTable &controls, std::FILE *out);
// One line per preset: its number in the list and its name.
void list_presets(sparkhost::ControlTable &controls, std::FILE *out);
