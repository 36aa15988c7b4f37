// fizzle-render's main job: check everything, then render and write each frame.
#pragma once

#include "render/options.h"

// Returns 0 when every frame was written, or the stopped exit code when a
// signal asked it to stop between frames; throws sparkhost::Error naming the
// first problem otherwise.
int render(const RenderOptions &options);
