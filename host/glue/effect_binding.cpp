// The host adapter's view of the effect: the one Bubbles instance, its clips
// and the controls the frame cycle reads.
#include "host/effect_seam.h"

#include "host/glue/control_binding.h"
#include "host/glue/control_callbacks.h"
#include "host/glue/control_table.h"
#include "host/instance.h"

Bubbles Instance;

PluginQv &effect_instance() { return Instance; }
SourceQv &effect_source(int index) { return Instance.info.inputs[index]; }
ResultQv &effect_result() { return Instance.info.output; }
int resolution_list_value() { return SparkPup33.Value; }
double blend_control_value() { return SparkFloat27.Value; }

void blend_with_scene(ImageQv &result, ImageQv &scene, double amount) {
    result.InBlend(float(amount), &scene);
}

bool effect_reads_source(int index) { return Instance.reads_input(index); }

void refresh_cached_control_values() {
    refresh_control_caches(Instance);
    Instance.ReadControls();
}

void bind_framework_controls() { bind_effect_controls(Instance); }

void rename_channel_editor_entries() { RenameChannelEditorEntries(); }
