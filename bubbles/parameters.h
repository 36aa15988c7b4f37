// The control values the bubble engine reads, in effect units (see
// bubbles/control_units.h), with the control table's defaults.
#pragma once

#include <cstdint>

#include "bubbles/control_units.h"

// Filled from the effect's controls once per frame; one field per control
// of bubbles/controls.def that names a parameter, a position's as _x and _y.
struct BubbleParameters {
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, parameter, ...) double parameter = value;
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, parameter, ...) \
    double parameter = value / kHostUnitsPerEffectUnit<cls>;
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, parameter, ...) \
    double parameter##_x = value / kHostUnitsPerFrameFraction;
#define FIZZLE_POSITION_Y(n, title, value, min, max, step, parameter, channel) \
    double parameter##_y = value / kHostUnitsPerFrameFraction;
#define FIZZLE_SWITCH(n, title, value, member, parameter, ...) bool parameter = value != 0;
#define FIZZLE_LIST(n, value, member, parameter, ...) int parameter = value + 1;
#define FIZZLE_COLOUR(n, value, member, parameter, shown) \
    uint16_t parameter[3] = {colour_component(value, 0), colour_component(value, 1), colour_component(value, 2)};
#include "bubbles/controls.def"
};
