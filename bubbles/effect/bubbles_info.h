// BubblesInfo: the effect's clips, its overlay widgets and its controls, in
// the order the effect declares them.
#pragma once

#include <array>

#include "bubbles/effect/bubbles_overlay.h"
#include "framework/controls.h"
#include "framework/overlay_widgets.h"
#include "framework/plugin.h"

// After the host adapter's per-frame refresh the position caches
// (cached_x, cached_y) and positionVar.cached hold fractions of the frame,
// and the colour caches 15-bit components; the effect reads those fields
// directly, because the static GetValue of these classes divides by 100 once
// more.
struct BubblesInfo {
    static constexpr int kControlCount = 13
#define FIZZLE_INT(...) +1
#define FIZZLE_FLOAT(...) +1
#define FIZZLE_POSITION_X(...) +1
#define FIZZLE_SWITCH(...) +1
#define FIZZLE_MIRRORED_SWITCH(...) +1
#define FIZZLE_LIST(...) +1
#define FIZZLE_COLOUR(...) +1
#define FIZZLE_DEMOS(...) +1
#include "bubbles/controls.def"
        ;

    // Every control: the buttons, then the others in control-table order.
    std::array<ControlQv *, kControlCount> controls();

    SourceQv inputs[4];  // 0 the scene (copied to the output), 1 birth matte, 2 burst/gather matte, 3 reflection
    ResultQv output;

    // Overlay widgets; each starts white (65535) and shown.
    CrosshairOverlayQv leftCross;
    CrosshairOverlayQv rightCross;
    LineOverlayQv emitterLine;
    CrosshairOverlayQv lightSourceCross;
    CrosshairOverlayQv lightTargetCross;
    LineOverlayQv lightLine;
    BubblesOverlayQv coneEditor;

    // The buttons come in three groups of four: the host's button of that
    // title on pages 0, 1 and 2, and a fourth bound to no button.
    ButtonControlQv restart[4];
    ButtonControlQv restartPreRoll[4];
    ButtonControlQv doPreRoll[4];
    ButtonControlQv advance;

    // The other controls, as the control table describes them. The "Auto
    // Preview" switch is not read by the effect: it mirrors the first page's,
    // which the host adapter reads from its own structure.
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, ...) IntegerControlQv member;
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, ...) cls member;
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, ...) PositionControlQv member;
#define FIZZLE_SWITCH(n, title, value, member, ...) CheckboxControlQv member;
#define FIZZLE_MIRRORED_SWITCH(n, title, value, callback, member) CheckboxControlQv member;
#define FIZZLE_LIST(n, value, member, ...) ListControlQv member;
#define FIZZLE_COLOUR(n, value, member, ...) ColourControlQv member;
#define FIZZLE_DEMOS(n, value, member, ...) ListControlQv member;
#include "bubbles/controls.def"
};
