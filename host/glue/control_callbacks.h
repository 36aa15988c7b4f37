// What the control callbacks share: the re-render rule, the parameter
// callback behind every dlcb_ function, and the colour conversions.
#pragma once

#include <cstdint>

#include "spark/spark.h"

// Re-renders when "Auto Preview" is on and the user made the change (reason
// 1); otherwise only asks the host to redraw the viewer and returns null.
unsigned long *DefaultCB(int reason, SparkInfoStruct info);
// Redraws the viewer; returns null.
unsigned long *OverlayCB(int reason, SparkInfoStruct info);

// The callback of parameter control number: Sync its framework control,
// run the effect's reaction, then DefaultCB when the control asks for it.
unsigned long *parameter_callback(int number, int reason, SparkInfoStruct info);

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

// Gives the channel-editor entries the names users know them by.
void RenameChannelEditorEntries();
