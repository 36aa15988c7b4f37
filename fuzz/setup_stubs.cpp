// Stand-ins for the host functions the setup loader and the control code
// link against, so they can be fuzzed without the whole host library.
#include "spark/spark.h"

extern "C" {
void sparkError(const char *) {}
}
