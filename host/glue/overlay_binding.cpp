// The viewer bridge's view of the effect: the one Bubbles instance as the
// overlay, the first page's "Clear Overlay" and "Auto Preview", and the
// caught and hovered flags of the effect's seven widgets.
#include "host/effect_seam.h"
#include "host/glue/control_table.h"
#include "host/glue/fizzle_effect.h"

OverlayQv &effect_overlay() { return fizzle_effect(); }

// The four pages' copies of each switch are kept equal; the first page's is read.
bool clear_overlay_on() { return SparkBoolean28.Value != 0; }
bool auto_preview_on() { return SparkBoolean34.Value != 0; }

void set_effect_pen_pressure(float pressure) { fizzle_effect().pen_pressure = pressure; }

bool any_widget_caught() {
    const BubblesInfo &c = fizzle_effect().info;
    return c.leftCross.grabbed || c.rightCross.grabbed || c.emitterLine.grabbed || c.lightSourceCross.grabbed ||
           c.lightTargetCross.grabbed || c.lightLine.grabbed || c.coneEditor.grabbed != 0;
}

bool any_widget_hovered() {
    const BubblesInfo &c = fizzle_effect().info;
    return c.leftCross.highlighted || c.rightCross.highlighted || c.emitterLine.highlighted ||
           c.lightSourceCross.highlighted || c.lightTargetCross.highlighted || c.lightLine.highlighted ||
           c.coneEditor.hover != 0;
}

// RenderOverlay puts the widgets where their controls say as it draws them.
void refresh_overlay_controls() { refresh_cached_control_values(); }
