// The glue's hold on the plug-in's one effect. Only the glue knows that it
// is a Bubbles; the adapter reaches it through host/effect_seam.h.
#pragma once

#include "bubbles/bubbles.h"

// The global Instance, constructed when the library is loaded and destroyed
// at process exit.
Bubbles &fizzle_effect();
