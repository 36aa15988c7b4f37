// The effect as the simulation and state entry points see it, kept apart
// like effect_binding.h so the entry points never name the effect's class.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Input clips (bit i: clip i) the effect reads when it only simulates,
// with the controls in force now.
unsigned simulated_clip_mask();

// Advances the effect one frame without drawing, from the sources and
// result the frame cycle prepared.
void simulate_effect_frame();

std::vector<uint8_t> export_effect_state();
bool import_effect_state(const uint8_t *data, size_t size);
