// The bubbles as a layer of their own. The effect composites every bubble
// pixel over the scene by an over operation whose weights do not depend on
// the scene: out = colour + scene × (1 − coverage), plus clamping and
// truncation. Rendered from one simulation state over black and over a
// constant grey, the frame therefore gives the layer: the render over black
// is the premultiplied colour, what the grey adds is the transparency. Grey
// rather than white, because bubbles add light (highlights, reflections)
// beyond their coverage, and over white that clamps and hides the coverage.
#pragma once

#include <cstddef>

#include "sparkhost/core/frame.h"
#include "sparkhost/colour/plate_io.h"

namespace sparkhost {

// The grey the layer is measured over, in the depth's levels: a quarter of
// full scale, so light added by a bubble clamps only above 0.75.
int layer_grey_level(Depth depth);

// A frame of one value in every channel, in the depth's levels.
Frame constant_frame(const FrameFormat &format, int level);

// Premultiplied RGBA, top row first, from the same frame rendered over black
// and over layer_grey_level (host frames, bottom row first). Coverage is the
// same in the three channels, so it is averaged over those that did not
// clamp over the grey. Where no bubble falls the layer is exactly 0 in all
// four channels.
PlateImage layer_from_renders(const Frame &over_black, const Frame &over_grey);
// The same into `layer`, whose storage is reused when it has the size.
void layer_from_renders(const Frame &over_black, const Frame &over_grey, PlateImage &layer);

// Converts a premultiplied layer's colours. The bubble's own colour (up to
// its coverage) is un-premultiplied, converted and premultiplied again; light
// a bubble adds beyond its coverage (highlights, or colour with no coverage
// at all) is converted as it is, as light over black, and added. Empty
// pixels stay exactly 0.
void convert_layer(PlateImage &layer, const ColourConversion &conversion);

// `layer` over `plate`, in place, in float: colour + plate × (1 − alpha) for
// the three colours, and for a plate's alpha alike. Where the layer is empty
// the plate keeps its bits (NaN, infinity and −0 included); under a bubble a
// non-finite plate value goes through the arithmetic as it is. Layer and
// plate have the same size.
void composite_over(const PlateImage &layer, PlateImage &plate);
// The same into `out` (whose storage is reused), leaving `plate` as it is:
// a still plate is composited over frame after frame without a copy first.
void composite_over(const PlateImage &layer, const PlateImage &plate, PlateImage &out);

// How many of the plate's samples are NaN or infinite.
std::size_t count_non_finite(const PlateImage &plate);

}  // namespace sparkhost
