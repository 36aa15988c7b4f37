// BubblesInfo: the list of its controls.
#include "bubbles/effect/bubbles_info.h"

std::array<ControlQv *, BubblesInfo::kControlCount> BubblesInfo::controls() {
    return {&restart[0], &restart[1], &restart[2], &restart[3],
            &restartPreRoll[0], &restartPreRoll[1], &restartPreRoll[2], &restartPreRoll[3],
            &doPreRoll[0], &doPreRoll[1], &doPreRoll[2], &doPreRoll[3], &advance,
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, ...) &member,
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, ...) &member,
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, ...) &member,
#define FIZZLE_SWITCH(n, title, value, member, ...) &member,
#define FIZZLE_MIRRORED_SWITCH(n, title, value, callback, member) &member,
#define FIZZLE_LIST(n, value, member, ...) &member,
#define FIZZLE_COLOUR(n, value, member, ...) &member,
#define FIZZLE_DEMOS(n, value, member, ...) &member,
#include "bubbles/controls.def"
    };
}
