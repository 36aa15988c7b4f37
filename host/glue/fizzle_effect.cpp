// The plug-in's one effect instance, made by a static initialiser so that it
// exists before the host calls any entry point.
#include "host/glue/fizzle_effect.h"

namespace {

Bubbles Instance;

}  // namespace

Bubbles &fizzle_effect() { return Instance; }
