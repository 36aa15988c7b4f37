// No output may land on an input: a render that would overwrite its own
// plate, setup or amplitude file is refused before anything is written.
#pragma once

#include "render/options.h"

// Throws sparkhost::Error naming the option and the file when an output of
// the run (frames, the bubbles layer, overlay SVGs, the saved setup,
// checkpoints in the cache) is the same file as an input (clips, setup,
// amplitude file, colour config, plug-in),
// whatever names, links or hard links lead to it, or names a device or a
// FIFO (which the renaming into place would replace).
void check_outputs_spare_inputs(const RenderOptions &options);
