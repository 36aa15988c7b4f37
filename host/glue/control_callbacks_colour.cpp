// The colour callbacks: a packed host colour and its three percent sliders
// kept in step, in either direction.
#include "host/glue/control_callbacks_colour.h"

#include <cmath>

#include "host/effect_seam.h"
#include "host/glue/control_binding.h"
#include "host/glue/control_table.h"
#include "host/glue/default_callbacks.h"
#include "host/glue/fizzle_effect.h"

namespace {

constexpr double kEightBitScale = 2.551;
constexpr double kTwelveBitScale = 40.951;

SparkColorStruct &colour_structure(int number) {
    return *static_cast<SparkColorStruct *>(find_host_control(number)->structure);
}

SparkFloatStruct &slider(int word_number, int component) {
    return *static_cast<SparkFloatStruct *>(find_host_control(word_number + 1 + component)->structure);
}

void pack_sliders(int word_number, ColourControlQv &control) {
    SparkColorStruct &colour = colour_structure(word_number);
    uint32_t word = colour.Value & 0xFF000000u;
    for (int i = 0; i < 3; ++i)
        word |= colour_byte_from_percent(slider(word_number, i).Value, host_frames_deep()) << (8 * i);
    colour.Value = word;
    sparkControlUpdate(word_number);
    control.Sync();
}

void unpack_to_sliders(int word_number) {
    const uint32_t word = colour_structure(word_number).Value;
    for (int i = 0; i < 3; ++i) {
        slider(word_number, i).Value = float(percent_from_colour_byte((word >> (8 * i)) & 0xFFu, host_frames_deep()));
        sparkControlUpdate(word_number + 1 + i);
    }
}

}  // namespace

uint32_t colour_byte_from_percent(double percent, bool deep) {
    if (!(percent > 0.0)) return 0;
    if (deep) {
        const long twelve = std::lround(percent * kTwelveBitScale);
        return uint32_t((twelve > 4095 ? 4095 : twelve) >> 4);
    }
    const long byte = std::lround(percent * kEightBitScale);
    return uint32_t(byte >= 255 ? 255 : byte);
}

double percent_from_colour_byte(uint32_t byte, bool deep) {
    byte &= 0xFFu;
    if (deep) return double((byte << 4) | (byte >> 4)) / kTwelveBitScale;
    return double(byte) / kEightBitScale;
}

unsigned long *SetBubbleColourCB(int reason, SparkInfoStruct info) {
    pack_sliders(number_of::bubbleColour, fizzle_effect().info.bubbleColour);
    return DefaultCB(reason, info);
}

unsigned long *SetLightColourCB(int reason, SparkInfoStruct info) {
    pack_sliders(number_of::lightColour, fizzle_effect().info.lightColour);
    return DefaultCB(reason, info);
}

void GetBubbleColourCB() { unpack_to_sliders(number_of::bubbleColour); }

void GetLightColourCB() { unpack_to_sliders(number_of::lightColour); }
