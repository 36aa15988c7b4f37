// Host functions: frame buffers, picture geometry and random frame access.
#include "spark/spark.h"
#include "sparkhost/core/host.h"

using sparkhost::Host;

extern "C" {

int sparkMemGetFreeMemory(void) {
    Host *host = Host::current();
    return host ? host->settings().free_buffers : 8;
}

int sparkMemGetBuffer(int id, SparkMemBufStruct *buffer) {
    Host *host = Host::current();
    return host ? host->memory_buffer(id, buffer) : 0;
}

int sparkGraphSetup(SparkGraphInfoStruct *graph) {
    if (!graph) return 0;
    if (Host *host = Host::current()) {
        host->graph_setup(graph);
    } else {
        graph->PixelAspectRatio = 1.0f;
        graph->FrameWidth = graph->FrameHeight = graph->FrameDepth = 0;
    }
    return 1;
}

int sparkGetFrame(int clip, int frame, void *buffer) {
    Host *host = Host::current();
    return host ? host->fetch_frame(clip, frame, buffer) : 0;
}

}  // extern "C"
