// The built-in effect behind the simulation and state entry points.
#include "host/simulation_binding.h"

#include "host/effect_seam.h"
#include "host/instance.h"

// The birth matte and the burst/gather matte steer the particles, and only
// while the switches that read them are on; the scene and the reflection
// only colour pixels.
unsigned simulated_clip_mask() {
    refresh_cached_control_values();
    // The step reads only the mattes, and each under the same switches as a drawn frame.
    return (Instance.reads_input(1) ? 1u << 1 : 0u) | (Instance.reads_input(2) ? 1u << 2 : 0u);
}

void simulate_effect_frame() {
    Instance.simulate_frame_images(Instance.info.inputs[1].image, Instance.info.inputs[2].image,
                                   Instance.info.output.image, Instance.current_frame);
}

std::vector<uint8_t> export_effect_state() { return Instance.export_state(); }

bool import_effect_state(const uint8_t *data, size_t size) { return Instance.import_state(data, size); }
