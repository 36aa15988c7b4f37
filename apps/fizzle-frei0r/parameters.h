// The frei0r parameters of the filter: our own (setup, preset, pre-roll,
// timing, mattes, checkpoints) first, then every control a user sets, by
// its title. A host's values become fizzle-render's options, so the effect
// is set up exactly as fizzle-render sets it up.
#pragma once

#include <string>
#include <vector>

#include "render/options.h"
#include "frame_clock.h"
#include "sparkhost/controls/controls.h"

enum class ParameterRole { Setup, Preset, Preroll, FrameRate, TimeUnit, Birth, Burst, Reflection, Cache, Control };

// frei0r's types (frei0r.h's F0R_PARAM_*).
enum class ParameterType { Bool = 0, Double = 1, Colour = 2, String = 4 };

struct Colour {
    float r = 0, g = 0, b = 0;
};

// What a host sets: a number for switches and doubles (0..1), a colour, a text.
struct ParameterValue {
    double number = 0;
    Colour colour;
    std::string text;
};

struct Parameter {
    std::string name;
    ParameterType type;
    std::string explanation;
    ParameterRole role;
    // Controls only: the control, its kind and the range 0..1 stands for.
    int control = -1;
    sparkhost::ControlKind kind = sparkhost::ControlKind::Float;
    double min = 0, max = 1;
    ParameterValue value;  // the default, as a host reads it before setting one
};

class ParameterTable {
public:
    ParameterTable() = default;
    // From the controls of a freshly loaded plug-in (their values are the defaults).
    explicit ParameterTable(sparkhost::ControlTable &controls);

    const std::vector<Parameter> &parameters() const { return parameters_; }
    int size() const { return int(parameters_.size()); }
    std::vector<ParameterValue> defaults() const;

private:
    std::vector<Parameter> parameters_;
};

// How the instance's time becomes a frame number.
struct ClockSettings {
    double rate = 25;
    TimeUnit unit = TimeUnit::Seconds;
    bool operator==(const ClockSettings &other) const { return rate == other.rate && unit == other.unit; }
};

// The host's values as fizzle-render's options for a frame size. A control
// left at its default is not set, so the setup's value stands. Throws
// sparkhost::Error for a value that names nothing (an unknown unit or rate).
RenderOptions render_options(const ParameterTable &table, const std::vector<ParameterValue> &values, int width,
                             int height);
ClockSettings clock_settings(const ParameterTable &table, const std::vector<ParameterValue> &values);
// Everything render_options depends on, as one text: a session is started
// again when it changes.
std::string options_key(const RenderOptions &options);
