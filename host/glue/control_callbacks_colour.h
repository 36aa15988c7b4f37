// A packed host colour and its three percent sliders, kept in step. The
// slider callbacks (SetBubbleColourCB, SetLightColourCB) are the table's.
#pragma once

#include <cstdint>

// The percent sliders of a colour from its packed word, each written and
// updated (71: the bubble colour, 94: the light colour).
void GetBubbleColourCB();
void GetLightColourCB();

// A colour component in percent and the byte the packed colour holds for
// it. In 8-bit mode the byte is round(p x 2.551). In 12-bit mode the
// component is round(p x 40.951) on 0..4095, and the byte keeps its top
// eight bits: the packed word has a byte per component in both modes.
uint32_t colour_byte_from_percent(double percent, bool deep);
double percent_from_colour_byte(uint32_t byte, bool deep);
