// Stand-ins for the host functions the amplitude import links against, so
// the reader can be fuzzed without a host library.
#include "spark/spark.h"

extern "C" {
int sparkSetCurveKey(int, int, float, float) { return 1; }
void sparkMessage(const char *) {}
void sparkWorkingDir(char *buffer) { buffer[0] = '\0'; }
void sparkFileBrowserDisplay(const char *, const char *, SparkFileBrowserCallback) {}
}
