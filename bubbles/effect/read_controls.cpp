// Bubbles::ReadControls: the controls' per-frame caches into the parameters
// the particle engine reads.
#include "bubbles/bubbles.h"

// Static reads: the values the host adapter refreshed for this frame.
// Positions come straight from their caches, which already hold fractions
// of the frame.
void Bubbles::ReadControls() {
    BubblesInfo &c = info;
    BubbleParameters &p = engine.parameters;
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, parameter, ...) \
    p.parameter = effect_value(c.member);
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, parameter, ...) \
    p.parameter = effect_value(c.member);
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, parameter, ...) \
    p.parameter##_x = c.member.cached_x;                                            \
    p.parameter##_y = c.member.cached_y;
#define FIZZLE_SWITCH(n, title, value, member, parameter, ...) p.parameter = effect_value(c.member);
#define FIZZLE_LIST(n, value, member, parameter, ...) p.parameter = effect_value(c.member);
#define FIZZLE_COLOUR(n, value, member, parameter, shown) \
    for (int i = 0; i < 3; ++i) p.parameter[i] = static_cast<uint16_t>(c.member.cached[i]);
#include "bubbles/controls.def"
}
