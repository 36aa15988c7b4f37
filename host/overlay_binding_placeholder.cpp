// Stand-in for the effect's overlay until the effect draws its widgets: an
// overlay that draws nothing and no widget to catch, "Clear Overlay" off and
// "Auto Preview" on.
#include "host/effect_binding.h"
#include "host/overlay_binding.h"

namespace {
OverlayQv blank_overlay;
}

OverlayQv &effect_overlay() { return blank_overlay; }
bool clear_overlay_on() { return false; }
bool auto_preview_on() { return true; }
void set_effect_pen_pressure(float pressure) { effect_instance().pen_pressure = pressure; }
bool any_widget_caught() { return false; }
bool any_widget_hovered() { return false; }
void refresh_overlay_controls() { refresh_cached_control_values(); }
