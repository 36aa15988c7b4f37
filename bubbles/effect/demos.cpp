// Bubbles::DemosCB: loads the preset chosen in the "Demos" list into the
// controls and asks for a fresh start.
#include "bubbles/bubbles.h"
#include "bubbles/presets.h"

namespace {

using Value = DemoPreset::Value;

// Numeric controls take the value at the callback's time; lists, switches
// and colours are written as the current value (-1.0).
void write(IntegerControlQv &control, const Value &value, double time) {
    if (value) control.SetValue(time, long(*value));
}

void write(FloatControlQv &control, const Value &value, double time) {
    if (value) control.SetValue(time, *value);
}

void write(SizeControlQv &control, const Value &value, double time) {
    if (value) control.SetValue(time, *value);
}

void write(PositionControlQv &control, const Value &x, const Value &y, double time) {
    if (x && y) control.SetValue(time, *x, *y);
}

void write(ListControlQv &control, const Value &value) {
    if (value) control.SetValue(-1.0, long(*value));
}

void write(CheckboxControlQv &control, const Value &value) {
    if (value) control.SetValue(-1.0, int(*value));
}

void write(ColourControlQv &control, const std::array<uint16_t, 4> &colour) {
    control.SetValue(-1.0, colour[0], colour[1], colour[2], colour[3]);
}

}  // namespace

void Bubbles::DemosCB(ControlQv &, double time) {
    // Whatever the list says, choosing a demo empties the set at the next frame.
    engine.restartPending = 1;
    BubblesInfo &c = info;
    const DemoPreset &p = demo_preset_for_list_value(c.demos.GetValue(-1.0));

#define FIZZLE_INT(n, title, value, min, max, step, flags, member, parameter, ...) \
    write(c.member, p.parameter, time);
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, parameter, ...) \
    write(c.member, p.parameter, time);
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, parameter, ...) \
    write(c.member, p.parameter##_x, p.parameter##_y, time);
#define FIZZLE_SWITCH(n, title, value, member, parameter, ...) write(c.member, p.parameter);
#define FIZZLE_LIST(n, value, member, parameter, ...) write(c.member, p.parameter);
#define FIZZLE_COLOUR(n, value, member, parameter, shown) write(c.member, p.parameter);
#include "bubbles/controls.def"
}
