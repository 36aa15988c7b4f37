// The test plug-in's control structures, linked into the fuzzer itself, as
// a control table the fuzz targets load setups and values into.
#pragma once

#include <dlfcn.h>

#include "sparkhost/controls/controls.h"

inline sparkhost::ControlTable &fuzz_controls() {
    // The structures are exported from the fuzzer (-rdynamic) and found by name.
    static sparkhost::ControlTable table = sparkhost::ControlTable::discover(dlopen(nullptr, RTLD_NOW));
    if (table.empty()) __builtin_trap();
    return table;
}
