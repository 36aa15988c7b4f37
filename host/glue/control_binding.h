// Which framework control of the effect each host control drives, how the
// host adapter binds them, and the per-frame refresh of their caches.
#pragma once

#include "bubbles/bubbles.h"

// Host control numbers by the framework control they drive (a position by
// its X), from the table, so that code naming a control does not repeat its
// number: number_of::lightIntensity is 102.
namespace number_of {
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, ...) constexpr int member = n;
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, ...) constexpr int member = n;
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, ...) constexpr int member = n;
#define FIZZLE_SWITCH(n, title, value, member, ...) constexpr int member = n;
#define FIZZLE_LIST(n, value, member, ...) constexpr int member = n;
#define FIZZLE_COLOUR(n, value, member, ...) constexpr int member = n;
#define FIZZLE_DEMOS(n, value, member, ...) constexpr int member = n;
#include "bubbles/controls.def"
}  // namespace number_of

// The framework class of a bound control, as far as the adapter cares.
enum class BoundKind { Button, Integer, Float, Angle, Size, Position, Checkbox, List, Colour };

// What a parameter callback does after it synchronised its control:
// nothing more, run SyncControls, or run SyncControls and then the effect's
// handler (a preset, which rewrites switches, is followed by SyncControls
// once more); colours fill their percent sliders.
enum class Reaction { None, Sync, Handler, Preset, ColourSliders };

struct ControlBinding {
    int number;  // host number; a position's X, a colour's word
    BoundKind kind;
    ControlQv &(*control)(BubblesInfo &info);
    Reaction reaction;
    void (Bubbles::*handler)(ControlQv &, double);
};

// The binding of host control number (a position's Y finds its pair); null
// for host controls the effect does not own (Blend, Help, the lists of
// resolutions and the like).
const ControlBinding *binding_for(int number);
ControlQv *framework_control(BubblesInfo &info, int number);

// Binds every framework control and overlay widget of the effect to the
// exported structures; the fourth button of each group stays unbound.
void bind_effect_controls(Bubbles &effect);

// Refreshes every bound control's cache from its structure (see
// ControlQv::Refresh).
void refresh_control_caches(Bubbles &effect);

// The value handed to an effect handler: a switch's state, a list's item
// from 1, a number's cached value; 0 for buttons and colours.
double handler_value(const ControlBinding &binding, ControlQv &control);
