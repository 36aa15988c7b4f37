// Stopping a render part-way and resuming it with --skip-existing.
#pragma once

#include "render/options.h"

// Tells on stderr which signal stopped the render and which frames are complete.
void report_stop(int signal, const RenderOptions &options, int last_done);
