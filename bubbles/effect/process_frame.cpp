// Bubbles::ProcessFrame: the frame's images from the effect's clips, handed
// to the particle engine with a renderer made for the frame.
#include "bubbles/bubbles.h"
#include "bubbles/render/bubble_renderer.h"

bool Bubbles::reads_input(int index) const {
    switch (index) {
    case 1:
        return engine.parameters.use_birth_matte;
    case 2:
        return engine.parameters.burst_on || engine.parameters.congregate;
    case 3:
        return engine.parameters.reflections_on;
    default:
        return true;
    }
}

void Bubbles::ProcessFrame() {
    process_frame_images(info.inputs[0].image, info.inputs[1].image, info.inputs[2].image, info.inputs[3].image,
                         info.output.image, current_frame);
}

void Bubbles::process_frame_images(ImageQv *scene, ImageQv *birth, ImageQv *burst, ImageQv *reflection,
                                   ImageQv *output, double frame) {
    if ((drawing && !scene) || !output || !engine.partSet) return;
    if (AbortRender()) return;
    if (!engine.prepare_frame(birth, burst, reflection, output, frame)) return;
    if (drawing) output->CopyValues(scene, 1.0f, 1.0f, 1.0f, 1.0f);
    // The renderer lives for this frame only: its burst decisions and band
    // plan never outlast the step that made them.
    BubbleRenderer renderer(*this, engine, drawing);
    engine.step_frame(frame, renderer);
    if (drawing && !skip_matte_copy) output->CopyAlpha(scene);
}

void Bubbles::simulate_frame_images(ImageQv *birth, ImageQv *burst, ImageQv *output, double frame) {
    drawing = false;
    process_frame_images(nullptr, birth, burst, nullptr, output, frame);
    drawing = true;
}

std::vector<uint8_t> Bubbles::export_state() const { return engine.export_state(); }

bool Bubbles::import_state(const uint8_t *data, size_t size) { return engine.import_state(data, size); }
