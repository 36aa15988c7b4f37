// BubblesInfo: the effect's clips, its overlay widgets and its controls, in
// the order the effect declares them.
#pragma once

#include <array>

#include "bubbles/bubbles_overlay.h"
#include "framework/controls.h"
#include "framework/overlay_widgets.h"
#include "framework/plugin.h"

// After the host adapter's per-frame refresh the position caches
// (cached_x, cached_y) and positionVar.cached hold fractions of the frame,
// and the colour caches 15-bit components; the effect reads those fields
// directly, because the static GetValue of these classes divides by 100 once
// more.
struct BubblesInfo {
    static constexpr int kControlCount = 62;

    // Every control, in declaration order.
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

    // Controls. The buttons come in three groups of four: the host's button
    // of that title on pages 0, 1 and 2, and a fourth bound to no button.
    ListControlQv demos;
    ButtonControlQv restart[4];
    ButtonControlQv restartPreRoll[4];
    ButtonControlQv doPreRoll[4];
    IntegerControlQv preRoll;
    ButtonControlQv advance;
    IntegerControlQv seed;
    PositionControlQv left;
    PositionControlQv right;
    SizeControlQv positionVar;
    FloatControlQv density;
    FloatControlQv lifetime;
    IntegerControlQv timeMaxSize;
    CheckboxControlQv useBirthMatte;
    FloatControlQv initialVelocity;
    FloatControlQv velocityVar;
    AngleControlQv velDir;
    ListControlQv growthMode;
    FloatControlQv bubbleSize;
    FloatControlQv bubbleSizeVar;
    FloatControlQv colourVar;
    FloatControlQv monoVar;
    ColourControlQv bubbleColour;
    ListControlQv fadeMode;
    CheckboxControlQv gravityOn;
    FloatControlQv gravity;
    AngleControlQv gravAngle;
    CheckboxControlQv frictionOn;
    FloatControlQv friction;
    CheckboxControlQv turbulenceOn;
    FloatControlQv swirlDens;
    FloatControlQv swirlAmp;
    FloatControlQv swirlMaxTime;
    CheckboxControlQv burstOn;
    FloatControlQv burstProbability;
    FloatControlQv burstQuantity;  // shared by bursting and congregation
    FloatControlQv burstExtent;    // shared
    IntegerControlQv afterlife;    // shared
    CheckboxControlQv congregate;
    CheckboxControlQv lightOn;
    PositionControlQv lightSource;
    PositionControlQv lightTarget;
    FloatControlQv lightZ;
    FloatControlQv glistenTight;
    AngleControlQv lightSpread;
    FloatControlQv lightIntensity;
    FloatControlQv minBright;
    FloatControlQv shine;
    FloatControlQv highlight;
    ColourControlQv lightColour;
    CheckboxControlQv reflectionsOn;
    FloatControlQv refIntensity;
    // Not read by the effect: it mirrors the first page's "Auto Preview",
    // which the host adapter reads from its own structure.
    CheckboxControlQv autoPreview;
};
