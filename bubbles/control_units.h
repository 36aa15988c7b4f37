// How a control's value in host units becomes the value the particle engine
// reads: positions and sizes are fractions of the frame (the host shows
// percent), lists count from 1, colours are 15-bit components.
#pragma once

#include <cstdint>

#include "framework/controls.h"

template <class Control>
constexpr double kHostUnitsPerEffectUnit = 1.0;
template <>
constexpr double kHostUnitsPerEffectUnit<SizeControlQv> = 100.0;
constexpr double kHostUnitsPerFrameFraction = 100.0;

// Component 0 (red), 1 or 2 of a packed host colour, widened to 15 bits.
constexpr uint16_t colour_component(uint32_t word, int component) {
    const uint32_t byte = (word >> (8 * component)) & 0xFFu;
    return uint16_t((byte << 7) | (byte >> 1));
}

// The per-frame reads, from the caches the host adapter refreshed. Sizes
// read their cache directly: the static GetValue divides by 100 once more.
inline double effect_value(const FloatControlQv &control) { return control.GetValue(-1.0); }
inline double effect_value(const SizeControlQv &control) { return control.cached; }
inline double effect_value(const IntegerControlQv &control) { return double(control.GetValue(-1.0)); }
inline bool effect_value(const CheckboxControlQv &control) { return control.GetValue(-1.0); }
inline int effect_value(ListControlQv &control) { return int(control.GetValue(-1.0)); }
