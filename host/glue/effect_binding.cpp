// The adapter's view of the effect at start-up and in the frame cycle: the
// one Bubbles instance, its clips and the controls the frame cycle reads.
#include "host/effect_seam.h"

#include "host/glue/channel_editor.h"
#include "host/glue/control_binding.h"
#include "host/glue/control_table.h"
#include "host/glue/fizzle_effect.h"

PluginQv &effect_instance() { return fizzle_effect(); }
SourceQv &effect_source(int index) { return fizzle_effect().info.inputs[index]; }
ResultQv &effect_result() { return fizzle_effect().info.output; }
int resolution_list_value() { return SparkPup33.Value; }
double blend_control_value() { return SparkFloat27.Value; }

void blend_with_scene(ImageQv &result, ImageQv &scene, double amount) {
    result.InBlend(float(amount), &scene);
}

bool effect_reads_source(int index) { return fizzle_effect().reads_input(index); }

void refresh_cached_control_values() {
    Bubbles &effect = fizzle_effect();
    refresh_control_caches(effect);
    effect.ReadControls();
}

void bind_framework_controls() { bind_effect_controls(fizzle_effect()); }

void rename_channel_editor_entries() { RenameChannelEditorEntries(); }
