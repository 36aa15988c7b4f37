// The viewer entry points' hooks: what SparkOverlay and SparkInteract call,
// so that a test can put a stand-in effect behind the real bridge.
#pragma once

#include "framework/overlay.h"
#include "spark/spark.h"

// It starts as the effect's viewer functions of host/effect_seam.h (and
// SparkProcess for a re-render); a test may put its own in place and
// restore them after.
struct OverlayHooks {
    OverlayQv &(*overlay)();
    bool (*clear_overlay_on)();
    bool (*auto_preview_on)();
    void (*set_pen_pressure)(float);
    bool (*any_widget_caught)();
    bool (*any_widget_hovered)();
    void (*refresh_controls)();
    unsigned long *(*render)(SparkInfoStruct);
};

OverlayHooks &overlay_hooks();
// The hooks as the plug-in starts with them.
OverlayHooks effect_overlay_hooks();
