// The one header between the two rooms of host/: what the generic Spark
// adapter (host/adapter) asks of the effect built into it, in the
// framework's terms, and the little the effect's glue (host/glue) asks of
// the adapter. The adapter never names the effect's class, so another effect
// means another glue behind the same adapter; host/glue implements the
// effect's side for the one Bubbles instance.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/image.h"
#include "framework/overlay.h"
#include "framework/plugin.h"

// ---------------------------------------------------------------------------
// Start-up and the frame cycle.

// The one effect instance of the plug-in, made when the library is loaded.
PluginQv &effect_instance();

// The effect's input clip `index` (0 scene, 1 birth matte, 2 BorG,
// 3 reflection) and its output clip.
SourceQv &effect_source(int index);
ResultQv &effect_result();

// Current value of the resolution list (0 "FULL" .. 8 "1/32").
int resolution_list_value();

// Current value of the Blend control, 0..100.
double blend_control_value();

// Mixes the scene back into the result by amount (0..1]; the frame cycle
// calls it only for a positive amount.
void blend_with_scene(ImageQv &result, ImageQv &scene, double amount);

// Whether the effect, with its controls as last refreshed, reads input clip
// `index`; the frame cycle leaves the others unconverted.
bool effect_reads_source(int index);

// Copies the host control structures' values into the effect's controls.
void refresh_cached_control_values();

// Gives every framework control of the effect its host control.
void bind_framework_controls();

// Gives the control pages and the input clips their titles.
void title_pages_and_clips();

// Names the animatable parameters in the host's channel editor.
void rename_channel_editor_entries();

// ---------------------------------------------------------------------------
// The viewer (SparkOverlay, SparkInteract).

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

// ---------------------------------------------------------------------------
// Simulation without drawing, and the effect's state saved whole.

// Input clips (bit i: clip i) the effect reads when it only simulates,
// with the controls in force now.
unsigned simulated_clip_mask();

// Advances the effect one frame without drawing, from the sources and
// result the frame cycle prepared.
void simulate_effect_frame();

std::vector<uint8_t> export_effect_state();
bool import_effect_state(const uint8_t *data, size_t size);

// ---------------------------------------------------------------------------
// What the glue asks of the adapter.

// Whether the host's frames are 12-bit words rather than bytes, as start-up
// found from the frame depth; colours are packed differently in each.
bool host_frames_deep();
