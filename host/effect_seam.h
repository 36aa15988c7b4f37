// Every point where the host adapter's entry points touch the effect. The
// entry points know the effect only through these few functions, so the
// effect can be swapped without touching the frame cycle: one source file
// implements all of them for the effect that is built in.
#pragma once

#include "framework/image.h"
#include "framework/plugin.h"

// The one effect instance of the plug-in.
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

// Names the animatable parameters in the host's channel editor.
void rename_channel_editor_entries();
