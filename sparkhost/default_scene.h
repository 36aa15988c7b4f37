// The built-in moving scene, drawn for every frame of a render: deep water
// with a colour wave, drifting light bands, a moving checker and grain.
#pragma once

#include "sparkhost/frame.h"

namespace sparkhost {

// Draws frame `number` of the scene into `into`, reshaped to `format`.
void draw_scene(int number, const FrameFormat &format, Frame &into);

}  // namespace sparkhost
