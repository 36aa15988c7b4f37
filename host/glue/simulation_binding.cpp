// The built-in effect behind the simulation and state entry points.
#include "host/effect_seam.h"
#include "host/glue/fizzle_effect.h"

// The birth matte and the burst/gather matte steer the particles, and only
// while the switches that read them are on; the scene and the reflection
// only colour pixels.
unsigned simulated_clip_mask() {
    refresh_cached_control_values();
    // The step reads only the mattes, and each under the same switches as a drawn frame.
    const Bubbles &effect = fizzle_effect();
    return (effect.reads_input(1) ? 1u << 1 : 0u) | (effect.reads_input(2) ? 1u << 2 : 0u);
}

void simulate_effect_frame() {
    Bubbles &effect = fizzle_effect();
    effect.simulate_frame_images(effect.info.inputs[1].image, effect.info.inputs[2].image,
                                 effect.info.output.image, effect.current_frame);
}

std::vector<uint8_t> export_effect_state() { return fizzle_effect().export_state(); }

bool import_effect_state(const uint8_t *data, size_t size) { return fizzle_effect().import_state(data, size); }
