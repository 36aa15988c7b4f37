// The built-in moving scene, drawn for every frame of a render: deep water
// with a colour wave, drifting light bands, a moving checker and grain.
#pragma once

#include "sparkhost/core/frame.h"

namespace sparkhost {

// The vector instructions the scene can be drawn with: the baseline's (SSE2
// on x86-64), AVX2 or AVX-512. All give the same bytes.
enum class SceneVectors { Baseline, Avx2, Avx512 };

// Whether this processor runs `vectors`.
bool runs_here(SceneVectors vectors);

// Draws frame `number` of the scene into `into`, reshaped to `format`, with
// the widest vectors the processor runs.
void draw_scene(int number, const FrameFormat &format, Frame &into);

// The same with the given vectors, which must run here: for the tests to
// compare them.
void draw_scene(int number, const FrameFormat &format, Frame &into, SceneVectors vectors);

}  // namespace sparkhost
