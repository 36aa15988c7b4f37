// Every point where the viewer bridge (SparkOverlay, SparkInteract) touches
// the effect: the effect's overlay, the two viewer switches, the pen pressure
// and the widgets' caught and hovered flags. One source file implements the
// functions for the effect that is built in.
#pragma once

#include "framework/overlay.h"
#include "spark/spark.h"

// The effect's overlay object, whose RenderOverlay and HandleInteraction the
// viewer reaches.
OverlayQv &effect_overlay();

// "Clear Overlay": nothing is drawn and the pen is ignored.
bool clear_overlay_on();
// "Auto Preview": a release of a caught widget re-renders the frame.
bool auto_preview_on();

// The effect's pen-pressure field, set at every pen sample.
void set_effect_pen_pressure(float pressure);

// Whether any of the effect's widgets holds the pen since the last press,
// and whether the pointer is over any of them.
bool any_widget_caught();
bool any_widget_hovered();

// Refreshes the effect's cached control values from the host structures, as
// the frame cycle does, and puts the widgets where their controls say.
void refresh_overlay_controls();

// What the bridge calls. It starts as the functions above (and SparkProcess
// for a re-render); a test may put its own in place and restore them after.
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
