// Bubbles::ProcessFrame: the frame's images from the effect's clips, handed
// to the frame processing.
#include "bubbles/bubbles.h"

bool Bubbles::reads_input(int index) const {
    switch (index) {
    case 1:
        return parameters.use_birth_matte;
    case 2:
        return parameters.burst_on || parameters.congregate;
    case 3:
        return parameters.reflections_on;
    default:
        return true;
    }
}

void Bubbles::ProcessFrame() {
    process_frame_images(info.inputs[0].image, info.inputs[1].image, info.inputs[2].image, info.inputs[3].image,
                         info.output.image, current_frame);
}
