// Placeholder host functions: the simplest behaviour that lets a plug-in
// link and run. Replaced piece by piece by the real host.
#include <cstdint>
#include <map>
#include <utility>

#include "spark/spark.h"
#include "spark/spark_gl.h"

namespace {
// Keys by (control, frame); a frame without a key reads 0.
std::map<std::pair<int, float>, float> &keys() {
    static std::map<std::pair<int, float>, float> store;
    return store;
}
}  // namespace

extern "C" {
void sparkLoadSetup(SparkInfoStruct *) {}
void sparkSaveSetup(SparkInfoStruct *) {}
void sparkControlTitle(int, const char *) {}
void sparkClipControlTitle(int, const char *) {}
float sparkGetCurveValuef(int, int control, float frame) {
    auto found = keys().find({control, frame});
    return found == keys().end() ? 0.0f : found->second;
}
int sparkSetCurveKey(int, int control, float frame, float value) {
    keys()[{control, frame}] = value;
    return 1;
}
void sparkCeAddFolder(int, const char *) {}
void sparkCeAddControl(int, int, int) {}
void sparkSetControlName(int, const char *) {}
}
