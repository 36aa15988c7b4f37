// Bubbles::ProcessFrame for now: the scene passes through unchanged and the
// control values are converted into the particle set's parameters.
#include "bubbles/bubbles.h"

void Bubbles::ProcessFrame() {
    ImageQv *scene = info.inputs[0].image;
    ImageQv *out = info.output.image;
    if (!scene || !out) return;
    out->CopyValues(scene, 1.0f, 1.0f, 1.0f, 1.0f);
    out->CopyAlpha(scene);
    part_info_from_spark(partSet);
}
