// The built-in moving scene, drawn for every frame of a render: deep water
// with a colour wave, drifting light bands, a moving checker and grain.
#pragma once

#include "sparkhost/frame.h"

namespace sparkhost {

// Draws frame `number` of the scene into `into`, reshaped to `format`. The
// same bytes on every machine, whichever vector instructions it has.
void draw_scene(int number, const FrameFormat &format, Frame &into);

// The same drawn with SSE2 only, as a processor without AVX2 draws it, for
// the tests to compare.
void draw_scene_baseline(int number, const FrameFormat &format, Frame &into);

}  // namespace sparkhost
