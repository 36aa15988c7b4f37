// Bubbles::ProcessFrame: the frame's images from the effect's clips, handed
// to the frame processing.
#include "bubbles/bubbles.h"

void Bubbles::ProcessFrame() {
    process_frame_images(info.inputs[0].image, info.inputs[1].image, info.inputs[2].image, info.inputs[3].image,
                         info.output.image, current_frame);
}
