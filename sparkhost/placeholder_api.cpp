// Placeholder host functions: the simplest behaviour that lets a plug-in
// link and run. Replaced piece by piece by the real host.
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "spark/spark.h"

namespace {
thread_local unsigned int current_worker = 0;
}

extern "C" {
double sparkAPIVersionInfo(void) { return 4.0; }
void sparkError(const char *text) { std::fprintf(stderr, "spark error: %s\n", text); }
void sparkMessage(const char *text) { std::fprintf(stderr, "spark message: %s\n", text); }
int sparkMessageConfirm(const char *) { return 1; }
int sparkMemGetFreeMemory(void) { return 16; }
int sparkMemGetBuffer(int, SparkMemBufStruct *) { return 0; }
int sparkGraphSetup(SparkGraphInfoStruct *graph) {
    graph->PixelAspectRatio = 1.0f;
    return 1;
}
float sparkGetViewerRatio(void) { return 1.0f; }
void sparkCursorBusy(void) {}
void sparkViewingCursor(int) {}
void sparkViewingDraw(void) {}
void sparkWorkingDir(char *buffer) {
    if (!getcwd(buffer, SPARK_SETUP_PATH_MAX)) std::strcpy(buffer, ".");
}
void sparkFileBrowserDisplay(const char *, const char *, SparkFileBrowserCallback) {}
int sparkGetFrame(int, int, void *) { return 0; }

// Runs the workers one after another; the count is the fourth argument
// that the framework passes.
int sparkMpFork(SparkMpWorker worker, int, void *a0, void *a1, void *a2, void *a3) {
    unsigned int count = static_cast<unsigned int>(reinterpret_cast<intptr_t>(a3));
    if (count < 1) count = 1;
    for (unsigned int i = 0; i < count; ++i) {
        current_worker = i;
        worker(a0, a1, a2, a3);
    }
    current_worker = 0;
    return 1;
}
void sparkMpInfo(unsigned int *position, unsigned int *stride) {
    *position = current_worker;
    *stride = 1;
}

}
