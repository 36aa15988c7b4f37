// What the renderer knows about one bubble while it draws the bubble's
// sprite: worked out once per bubble, read by every pixel the sprite covers.
#pragma once

#include <cstdint>

#include "bubbles/render/sprite.h"
#include "bubbles/render/unit_power.h"
#include "framework/image.h"

struct BubbleShade {
    // Colour and density after fading and the light, 0..32767.
    int32_t red = 0;
    int32_t green = 0;
    int32_t blue = 0;
    int32_t density = 0;
    // Strength of the highlight; -1 while the light is off.
    int32_t glint = -1;
    float light = 0.0f;  // the light's strength at the bubble, 0..1 and more
    // Unit vector from the bubble towards the light source.
    float lx = 0.0f;
    float ly = 0.0f;
    float lz = 0.0f;
    // Lighting terms of the controls: a percent and two exponents.
    double min_bright = 0.0;
    UnitPower shine;
    UnitPower highlight;
    // The image the bubble reflects (null when reflections are off or there
    // is none), its strength in percent, and the frame it is spread over.
    const ImageQv *reflection = nullptr;
    double ref_intensity = 0.0;
    int32_t frame_width = 0;
    int32_t frame_height = 0;
};

// Where one band draws a sprite: the image, the sprite centred on (px, py),
// and the band's rows, inclusive.
struct SpritePlacement {
    ImageQv *image = nullptr;
    const tagPARTLUMP *lump = nullptr;
    int32_t px = 0;
    int32_t py = 0;
    long first = 0;
    long last = 0;
};
