// The plug-in's one effect instance, made when the library is loaded and
// destroyed at process exit.
#pragma once

#include "bubbles/bubbles.h"

extern Bubbles Instance;
