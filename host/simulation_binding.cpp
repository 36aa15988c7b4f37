// The built-in effect behind the simulation and state entry points.
#include "host/simulation_binding.h"

#include "host/instance.h"

// The birth matte and the burst/gather matte steer the particles; the scene
// and the reflection only colour pixels.
unsigned simulated_clip_mask() { return (1u << 1) | (1u << 2); }

void simulate_effect_frame() {
    Instance.simulate_frame_images(Instance.info.inputs[1].image, Instance.info.inputs[2].image,
                                   Instance.info.output.image, Instance.current_frame);
}

std::vector<uint8_t> export_effect_state() { return Instance.export_state(); }

bool import_effect_state(const uint8_t *data, size_t size) { return Instance.import_state(data, size); }
